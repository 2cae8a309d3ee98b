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
    transitionEnd_ = {};
    delete view_.data();
}

QWidget* ViewController::view() {
    if (!view_) {
        loadView();
        if (!view_)
            qFatal("ui::ViewController: loadView() of %s set no view", qPrintable(describe(this)));
    }
    if (!viewDidLoadCalled_) {
        viewDidLoadCalled_ = true;
        viewDidLoad();
    }
    return view_;
}

void ViewController::setView(QWidget* view) {
    if (!view)
        qFatal("ui::ViewController::setView: null view for %s", qPrintable(describe(this)));
    if (view_ && view_ != view)
        qFatal("ui::ViewController::setView: %s already has a view", qPrintable(describe(this)));
    if (view->objectName().isEmpty())
        view->setObjectName(QString::fromLatin1(metaObject()->className()));
    view_ = view;
}

void ViewController::loadView() {
    setView(new QWidget);
}

Window* ViewController::window() const {
    return view_ ? qobject_cast<Window*>(view_->window()) : nullptr;
}

void ViewController::setNeedsStatusBarAppearanceUpdate() {
    if (Window* w = window())
        w->setNeedsStatusBarAppearanceUpdate();
}

bool ViewController::hidesPresenter() const {
    return style_ != ModalPresentationStyle::overCurrentContext;
}

QRect ViewController::presentationFrame() const {
    Window* w = window();
    if (!w)
        return {};
    if (style_ == ModalPresentationStyle::fullScreen || !presenting_ || !presenting_->view_ ||
        !w->isAncestorOf(presenting_->view_))
        return w->rect();
    const QWidget* area = presenting_->view_;
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
    if (controller == this || controller->presenting_ || controller->presented_ ||
        (controllerWindow && controllerWindow->rootViewController() == controller))
        qFatal("ui::ViewController::present: %s is already on screen and cannot be presented by %s",
               qPrintable(describe(controller)), qPrintable(describe(this)));
    if (presented_)
        return refuse(controller, "it already presents a controller");
    if (transition_ == Transition::dismissing)
        return refuse(controller, "it is being dismissed");
    Window* win = window();
    if (!win)
        return refuse(controller, "its view is not in a window");

    controller->setParent(this);
    presented_ = controller;
    controller->presenting_ = this;
    controller->transition_ = Transition::presenting;
    QWidget* view = controller->view();
    view->setParent(win);
    if (controller->style_ != ModalPresentationStyle::overCurrentContext)
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
    controller->transitionEnd_ = [presenter, controller, hides,
                                  completion = std::move(completion)] {
        controller->transition_ = Transition::none;
        controller->endAppearanceTransition();
        if (presenter && hides) {
            if (presenter->view_)
                presenter->view_->hide();
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
    if (!transitionEnd_)
        return;
    const auto end = std::move(transitionEnd_);
    transitionEnd_ = {};
    end();
}

void ViewController::finishRunningPresentations() {
    // A completion run here may present or dismiss, so look again after each one.
    for (bool again = true; again;) {
        again = false;
        for (QPointer<ViewController> c = presented_; c; c = c->presented_) {
            if (c->transition_ != Transition::presenting)
                continue;
            if (c->view_)
                ViewAnimation::setAlpha(c->view_, 1.0); // ends the fade and its completion
            if (c)
                c->completeTransition();
            if (c && c->transition_ == Transition::presenting)
                c->transition_ = Transition::none;
            again = true;
            break;
        }
    }
}

void ViewController::dismiss(bool animated, std::function<void()> completion) {
    if (!presented_) {
        if (presenting_ && transition_ != Transition::dismissing)
            presenting_->dismiss(animated, std::move(completion));
        return;
    }
    if (presented_->transition_ == Transition::dismissing)
        return;
    QPointer<ViewController> self(this);
    finishRunningPresentations();
    if (!self || !presented_ || presented_->transition_ == Transition::dismissing)
        return;

    QList<QPointer<ViewController>> chain;
    for (ViewController* c = presented_; c; c = c->presented_)
        chain.append(c);
    for (const auto& c : chain)
        c->transition_ = Transition::dismissing;
    ViewController* top = chain.last();
    const bool restores = chain.first()->hidesPresenter();

    for (auto it = chain.crbegin(); it != chain.crend(); ++it)
        (*it)->beginAppearanceTransition(false, animated);
    if (restores) {
        beginAppearanceTransition(true, animated);
        if (view_)
            view_->show();
    }
    // Only the top view fades out; what lies between goes at once.
    for (const auto& c : chain) {
        if (c != top && c->view_)
            c->view_->hide();
    }

    QPointer<Window> win = top->window();
    top->transitionEnd_ = [self, chain, restores, win, completion = std::move(completion)] {
        for (auto it = chain.crbegin(); it != chain.crend(); ++it) {
            if (ViewController* c = *it) {
                if (c->view_)
                    c->view_->hide();
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
            bottom->presenting_ = nullptr;
        if (self && self->presented_ == bottom)
            self->presented_ = nullptr;
        if (win)
            win->setNeedsStatusBarAppearanceUpdate();
        if (completion)
            completion();
        if (bottom)
            bottom->deleteLater();
    };

    if (animated && top->view_) {
        QPointer<ViewController> leaving(top);
        QWidget* view = top->view_;
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
        if (appearance_ == Appearance::appearing || appearance_ == Appearance::appeared)
            return;
        view();
        appearance_ = Appearance::appearing;
        appearanceAnimated_ = animated;
        viewWillAppear(animated);
    } else {
        if (appearance_ == Appearance::disappearing || appearance_ == Appearance::disappeared)
            return;
        appearance_ = Appearance::disappearing;
        appearanceAnimated_ = animated;
        viewWillDisappear(animated);
    }
}

void ViewController::endAppearanceTransition() {
    if (appearance_ == Appearance::appearing) {
        appearance_ = Appearance::appeared;
        viewDidAppear(appearanceAnimated_);
    } else if (appearance_ == Appearance::disappearing) {
        appearance_ = Appearance::disappeared;
        viewDidDisappear(appearanceAnimated_);
    }
}

} // namespace ui
