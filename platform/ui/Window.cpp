#include "platform/ui/Window.h"

#include <QGuiApplication>

#include <QResizeEvent>
#include <QShowEvent>

#include "platform/ui/ViewController.h"

namespace ui {
namespace {

QPointer<Window>& keyWindowPointer() {
    static QPointer<Window> key;
    return key;
}

} // namespace

Window::Window() : QWidget(nullptr) {}

Window::~Window() {
    // Controllers go before the views they own, so that no transition ends mid-teardown.
    for (const auto& c : std::as_const(windowPresented)) {
        if (c)
            c->transitionEnd = {};
    }
    delete windowRoot.data();
}

void Window::setRootViewController(ViewController* controller) {
    if (controller == windowRoot)
        return;
    if (controller && controller->presentingViewController())
        qFatal("ui::Window::setRootViewController: %s is presented and cannot become a root",
               controller->metaObject()->className());

    const bool onScreen = isVisible();
    QList<QPointer<ViewController>> leaving;
    for (ViewController* c : shownControllers())
        leaving.append(c);
    if (onScreen) {
        for (auto it = leaving.crbegin(); it != leaving.crend(); ++it)
            (*it)->beginAppearanceTransition(false, false);
    }

    QPointer<ViewController> old = windowRoot;
    windowRoot = controller;
    if (controller) {
        controller->setParent(this);
        QWidget* view = controller->view();
        view->setParent(this);
        view->setGeometry(rect());
        view->lower();
        if (onScreen)
            controller->beginAppearanceTransition(true, false);
        view->show();
    }

    // What the old root presented goes with it; unfinished transitions are dropped.
    for (const auto& c : std::as_const(windowPresented)) {
        if (c) {
            c->transitionEnd = {};
            if (c->controllerView)
                c->controllerView->hide();
        }
    }
    windowPresented.clear();
    if (old && old->controllerView)
        old->controllerView->hide();

    if (onScreen) {
        for (auto it = leaving.crbegin(); it != leaving.crend(); ++it) {
            if (*it)
                (*it)->endAppearanceTransition();
        }
        if (controller)
            controller->endAppearanceTransition();
    }
    if (old)
        old->deleteLater();
    setNeedsStatusBarAppearanceUpdate();
}

void Window::makeKeyAndVisible() {
    keyWindowPointer() = this;
    statusBarHidden = prefersStatusBarHidden();
    if (windowFullScreenWhenStatusBarHidden && statusBarHidden)
        showFullScreen();
    else
        show();
    // The offscreen platform has no stacking and says so on every call.
    if (QGuiApplication::platformName() != QLatin1String("offscreen")) {
        raise();
        activateWindow();
    }
}

Window* Window::keyWindow() {
    return keyWindowPointer();
}

ViewController* Window::topViewController() const {
    for (auto it = windowPresented.crbegin(); it != windowPresented.crend(); ++it) {
        if (*it && !(*it)->isBeingDismissed())
            return *it;
    }
    return windowRoot;
}

bool Window::prefersStatusBarHidden() const {
    const ViewController* top = topViewController();
    return top && top->prefersStatusBarHidden();
}

void Window::setNeedsStatusBarAppearanceUpdate() {
    const bool hidden = prefersStatusBarHidden();
    if (hidden == statusBarHidden)
        return;
    statusBarHidden = hidden;
    applyStatusBarPolicy();
    emit statusBarHiddenChanged(hidden);
}

void Window::setFullScreenWhenStatusBarHidden(bool enabled) {
    windowFullScreenWhenStatusBarHidden = enabled;
    statusBarHidden = prefersStatusBarHidden();
    applyStatusBarPolicy();
}

void Window::applyStatusBarPolicy() {
    if (!windowFullScreenWhenStatusBarHidden || !isVisible())
        return;
    if (statusBarHidden && !isFullScreen())
        showFullScreen();
    else if (!statusBarHidden && isFullScreen())
        showNormal();
}

void Window::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // The first resize comes with the first show and is no transition.
    if (event->oldSize().isValid() && event->oldSize() != event->size()) {
        QList<QPointer<ViewController>> controllers{windowRoot};
        controllers += windowPresented;
        for (const auto& c : controllers) {
            if (c)
                c->viewWillTransition(event->size());
        }
    }
    layoutViews();
}

void Window::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    layoutViews();
    const QList<ViewController*> shown = shownControllers();
    for (ViewController* c : shown)
        c->beginAppearanceTransition(true, false);
    for (ViewController* c : shown)
        c->endAppearanceTransition();
}

void Window::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (event->spontaneous())
        return;
    const QList<ViewController*> shown = shownControllers();
    for (auto it = shown.crbegin(); it != shown.crend(); ++it)
        (*it)->beginAppearanceTransition(false, false);
    for (auto it = shown.crbegin(); it != shown.crend(); ++it)
        (*it)->endAppearanceTransition();
}

void Window::addPresented(ViewController* controller) {
    windowPresented.append(controller);
    if (controller->controllerView)
        controller->controllerView->setGeometry(controller->presentationFrame());
}

void Window::removePresented(ViewController* controller) {
    windowPresented.removeIf(
        [controller](const QPointer<ViewController>& c) { return !c || c == controller; });
}

void Window::layoutViews() {
    if (windowRoot && windowRoot->controllerView)
        windowRoot->controllerView->setGeometry(rect());
    for (const auto& c : std::as_const(windowPresented)) {
        if (c && c->controllerView)
            c->controllerView->setGeometry(c->presentationFrame());
    }
}

QList<ViewController*> Window::shownControllers() const {
    QList<ViewController*> shown;
    if (windowRoot && windowRoot->controllerView && !windowRoot->controllerView->isHidden())
        shown.append(windowRoot);
    for (const auto& c : windowPresented) {
        if (c && c->controllerView && !c->controllerView->isHidden())
            shown.append(c);
    }
    return shown;
}

} // namespace ui
