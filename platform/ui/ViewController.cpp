#include "platform/ui/ViewController.h"

#include <QList>
#include <QWidget>

#include "platform/ui/Logging.h"
#include "platform/ui/ViewAnimation.h"
#include "platform/ui/Window.h"

namespace ui {
namespace {

QString describe(const QObject* object) {
    if (!object)
        return QStringLiteral("(none)");
    const QString name = QString::fromLatin1(object->metaObject()->className());
    return object->objectName().isEmpty()
               ? name
               : QStringLiteral("%1 \"%2\"").arg(name, object->objectName());
}

} // namespace

ViewController::ViewController(QObject* parent) : QObject(parent) {}

ViewController::~ViewController() {
    // Deleting the view stops its transition; the transition's end must not reach this
    // half-destroyed controller.
    transitionEnd = {};
    delete controllerView.data();
}

QWidget* ViewController::view() {
    if (!controllerView) {
        loadView();
        if (!controllerView)
            qFatal("ui::ViewController: loadView() of %s set no view", qPrintable(describe(this)));
    }
    if (!viewDidLoadCalled) {
        viewDidLoadCalled = true;
        viewDidLoad();
    }
    return controllerView;
}

void ViewController::setView(QWidget* view) {
    if (!view)
        qFatal("ui::ViewController::setView: null view for %s", qPrintable(describe(this)));
    if (controllerView && controllerView != view)
        qFatal("ui::ViewController::setView: %s already has a view", qPrintable(describe(this)));
    if (view->objectName().isEmpty())
        view->setObjectName(QString::fromLatin1(metaObject()->className()));
    controllerView = view;
}

void ViewController::loadView() {
    setView(new QWidget);
}

Window* ViewController::window() const {
    return controllerView ? qobject_cast<Window*>(controllerView->window()) : nullptr;
}

void ViewController::setNeedsStatusBarAppearanceUpdate() {
    if (Window* w = window())
        w->setNeedsStatusBarAppearanceUpdate();
}

bool ViewController::hidesPresenter() const {
    return controllerStyle != ModalPresentationStyle::overCurrentContext;
}

QRect ViewController::presentationFrame() const {
    Window* w = window();
    if (!w)
        return {};
    if (controllerStyle == ModalPresentationStyle::fullScreen || !controllerPresenting ||
        !controllerPresenting->controllerView ||
        !w->isAncestorOf(controllerPresenting->controllerView))
        return w->rect();
    const QWidget* area = controllerPresenting->controllerView;
    return QRect(area->mapTo(w, QPoint(0, 0)), area->size());
}

void ViewController::refuse(ViewController* controller, const char* reason) {
    qCWarning(lcUi).noquote() << describe(this) << "does not present" << describe(controller)
                              << "because" << reason;
    // Nobody else would own it.
    if (!controller->parent())
        controller->setParent(this);
}

void ViewController::present(ViewController* controller, bool animated,
                             std::function<void()> completion) {
    if (!controller)
        qFatal("ui::ViewController::present: %s was given a null controller",
               qPrintable(describe(this)));
    const Window* controllerWindow = controller->window();
    if (controller == this || controller->controllerPresenting || controller->controllerPresented ||
        (controllerWindow && controllerWindow->rootViewController() == controller))
        qFatal("ui::ViewController::present: %s is already on screen and cannot be presented by %s",
               qPrintable(describe(controller)), qPrintable(describe(this)));
    if (controllerPresented)
        return refuse(controller, "it already presents a controller");
    if (controllerTransition == Transition::dismissing)
        return refuse(controller, "it is being dismissed");
    Window* win = window();
    if (!win)
        return refuse(controller, "its view is not in a window");

    controller->setParent(this);
    controllerPresented = controller;
    controller->controllerPresenting = this;
    controller->controllerTransition = Transition::presenting;
    QWidget* view = controller->view();
    view->setParent(win);
    if (controller->controllerStyle != ModalPresentationStyle::overCurrentContext)
        view->setAutoFillBackground(true);
    win->addPresented(controller);

    const bool hides = controller->hidesPresenter();
    controller->beginAppearanceTransition(true, animated);
    if (hides)
        beginAppearanceTransition(false, animated);
    if (animated)
        ViewAnimation::setAlpha(view, 0.0);
    view->raise();
    view->show();

    QPointer<ViewController> presenter(this);
    controller->transitionEnd = [presenter, controller, hides, completion = std::move(completion)] {
        controller->controllerTransition = Transition::none;
        controller->endAppearanceTransition();
        if (presenter && hides) {
            if (presenter->controllerView)
                presenter->controllerView->hide();
            presenter->endAppearanceTransition();
        }
        if (Window* w = controller->window())
            w->setNeedsStatusBarAppearanceUpdate();
        if (completion)
            completion();
    };

    if (animated) {
        QPointer<ViewController> presented(controller);
        ViewAnimation::animate(
            transitionDuration, 0.0,
            ViewAnimation::allowUserInteraction | ViewAnimation::curveEaseInOut,
            [view] { ViewAnimation::setAlpha(view, 1.0); },
            [presented](bool) {
                if (presented)
                    presented->completeTransition();
            });
    } else {
        controller->completeTransition();
    }
}

void ViewController::completeTransition() {
    if (!transitionEnd)
        return;
    const auto end = std::move(transitionEnd);
    transitionEnd = {};
    end();
}

void ViewController::finishRunningPresentations() {
    // A completion run here may present or dismiss, so look again after each one.
    for (bool again = true; again;) {
        again = false;
        for (QPointer<ViewController> c = controllerPresented; c; c = c->controllerPresented) {
            if (c->controllerTransition != Transition::presenting)
                continue;
            if (c->controllerView)
                ViewAnimation::setAlpha(c->controllerView, 1.0); // ends the fade and its completion
            if (c)
                c->completeTransition();
            if (c && c->controllerTransition == Transition::presenting)
                c->controllerTransition = Transition::none;
            again = true;
            break;
        }
    }
}

void ViewController::dismiss(bool animated, std::function<void()> completion) {
    if (!controllerPresented) {
        if (controllerPresenting && controllerTransition != Transition::dismissing)
            controllerPresenting->dismiss(animated, std::move(completion));
        return;
    }
    if (controllerPresented->controllerTransition == Transition::dismissing)
        return;
    QPointer<ViewController> self(this);
    finishRunningPresentations();
    if (!self || !controllerPresented ||
        controllerPresented->controllerTransition == Transition::dismissing)
        return;

    QList<QPointer<ViewController>> chain;
    for (ViewController* c = controllerPresented; c; c = c->controllerPresented)
        chain.append(c);
    for (const auto& c : chain)
        c->controllerTransition = Transition::dismissing;
    ViewController* top = chain.last();
    const bool restores = chain.first()->hidesPresenter();

    for (auto it = chain.crbegin(); it != chain.crend(); ++it)
        (*it)->beginAppearanceTransition(false, animated);
    if (restores) {
        beginAppearanceTransition(true, animated);
        if (controllerView)
            controllerView->show();
    }
    // Only the top view fades out; what lies between goes at once.
    for (const auto& c : chain) {
        if (c != top && c->controllerView)
            c->controllerView->hide();
    }

    QPointer<Window> win = top->window();
    top->transitionEnd = [self, chain, restores, win, completion = std::move(completion)] {
        for (auto it = chain.crbegin(); it != chain.crend(); ++it) {
            if (ViewController* c = *it) {
                if (c->controllerView)
                    c->controllerView->hide();
                c->endAppearanceTransition();
            }
        }
        if (self && restores)
            self->endAppearanceTransition();
        ViewController* bottom = chain.first();
        if (win) {
            for (const auto& c : chain)
                win->removePresented(c);
        }
        if (bottom)
            bottom->controllerPresenting = nullptr;
        if (self && self->controllerPresented == bottom)
            self->controllerPresented = nullptr;
        if (win)
            win->setNeedsStatusBarAppearanceUpdate();
        if (completion)
            completion();
        if (bottom)
            bottom->deleteLater();
    };

    if (animated && top->controllerView) {
        QPointer<ViewController> leaving(top);
        QWidget* view = top->controllerView;
        ViewAnimation::animate(
            transitionDuration, 0.0, ViewAnimation::curveEaseInOut,
            [view] { ViewAnimation::setAlpha(view, 0.0); },
            [leaving](bool) {
                if (leaving)
                    leaving->completeTransition();
            });
    } else {
        top->completeTransition();
    }
}

void ViewController::beginAppearanceTransition(bool isAppearing, bool animated) {
    if (isAppearing) {
        if (controllerAppearance == Appearance::appearing ||
            controllerAppearance == Appearance::appeared)
            return;
        view();
        controllerAppearance = Appearance::appearing;
        appearanceAnimated = animated;
        viewWillAppear(animated);
    } else {
        if (controllerAppearance == Appearance::disappearing ||
            controllerAppearance == Appearance::disappeared)
            return;
        controllerAppearance = Appearance::disappearing;
        appearanceAnimated = animated;
        viewWillDisappear(animated);
    }
}

void ViewController::endAppearanceTransition() {
    if (controllerAppearance == Appearance::appearing) {
        controllerAppearance = Appearance::appeared;
        viewDidAppear(appearanceAnimated);
    } else if (controllerAppearance == Appearance::disappearing) {
        controllerAppearance = Appearance::disappeared;
        viewDidDisappear(appearanceAnimated);
    }
}

} // namespace ui
