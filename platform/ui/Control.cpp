#include "platform/ui/Control.h"

#include <algorithm>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleHints>
#include <QTouchEvent>

namespace ui {

Control::Control(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_AcceptTouchEvents);
    // Reachable from the keyboard without stealing focus from text fields on a click.
    setFocusPolicy(Qt::TabFocus);
}

void Control::addTarget(QObject* receiver, Action action, unsigned events) {
    if (!action)
        qFatal("ui::Control::addTarget: null action for %s", metaObject()->className());
    if (events == 0)
        return;
    if (receiver && receiver != this) {
        const bool watched =
            std::any_of(targets_.begin(), targets_.end(),
                        [receiver](const Target& t) { return t.receiver == receiver; });
        if (!watched)
            connect(receiver, &QObject::destroyed, this, &Control::pruneTargets);
    }
    targets_.push_back({receiver, receiver != nullptr, std::move(action), events});
}

void Control::removeTargets(QObject* receiver, unsigned events) {
    for (Target& t : targets_) {
        if (t.receiver == receiver && t.guarded == (receiver != nullptr))
            t.events &= ~events;
    }
    pruneTargets();
}

unsigned Control::allControlEvents() const {
    unsigned events = 0;
    for (const Target& t : targets_) {
        if (!t.guarded || t.receiver)
            events |= t.events;
    }
    return events;
}

void Control::pruneTargets() {
    std::erase_if(targets_,
                  [](const Target& t) { return t.events == 0 || (t.guarded && !t.receiver); });
}

void Control::sendActions(unsigned events) {
    QPointer<Control> self(this);
    for (unsigned bit = 1; bit != 0; bit <<= 1) {
        if (!(events & bit))
            continue;
        emit controlEvent(bit);
        if (!self)
            return;
        // Actions may add or remove targets while they run.
        const std::vector<Target> targets = targets_;
        for (const Target& t : targets) {
            if (!(t.events & bit) || (t.guarded && !t.receiver))
                continue;
            t.action(this);
            if (!self)
                return;
        }
    }
}

void Control::setHighlighted(bool highlighted) {
    if (highlighted_ == highlighted)
        return;
    highlighted_ = highlighted;
    update();
}

void Control::setSelected(bool selected) {
    if (selected_ == selected)
        return;
    selected_ = selected;
    update();
}

unsigned Control::state() const {
    return (highlighted_ ? highlighted : normal) | (isEnabled() ? normal : disabled) |
           (selected_ ? selected : normal);
}

QRectF Control::trackingBounds() const {
    const qreal m = trackingMargin_;
    return QRectF(rect()).adjusted(-m, -m, m, m);
}

void Control::touchBegan(QPointF position, bool repeat) {
    tracking_ = true;
    touchInside_ = true;
    setHighlighted(true);
    beginTracking(position);
    sendActions(repeat ? touchDown | touchDownRepeat : touchDown);
}

void Control::touchMoved(QPointF position) {
    const bool wasInside = touchInside_;
    touchInside_ = trackingBounds().contains(position);
    setHighlighted(touchInside_);
    continueTracking(position);
    QPointer<Control> self(this);
    if (touchInside_ != wasInside) {
        sendActions(touchInside_ ? touchDragEnter : touchDragExit);
        // The action may have hidden or disabled the control, which cancelled the touch.
        if (!self || !tracking_)
            return;
    }
    sendActions(touchInside_ ? touchDragInside : touchDragOutside);
}

void Control::touchEnded(QPointF position) {
    tracking_ = false;
    touchInside_ = trackingBounds().contains(position);
    setHighlighted(false);
    sinceLastTouchEnd_.start();
    lastTouchEnd_ = position;
    endTracking(position);
    sendActions(touchInside_ ? touchUpInside : touchUpOutside);
}

void Control::touchCancelled() {
    if (!tracking_)
        return;
    tracking_ = false;
    touchInside_ = false;
    setHighlighted(false);
    cancelTracking();
    sendActions(touchCancel);
}

bool Control::handleTouch(QTouchEvent* event) {
    if (event->type() == QEvent::TouchCancel) {
        if (trackingTouchScreen_)
            touchCancelled();
        return true;
    }
    if (event->type() == QEvent::TouchBegin) {
        if (!isEnabled() || tracking_ || event->points().isEmpty()) {
            event->ignore();
            return false;
        }
        const QEventPoint& point = event->points().constFirst();
        touchPointId_ = point.id();
        trackingTouchScreen_ = true;
        const QStyleHints* hints = QGuiApplication::styleHints();
        const bool repeat = sinceLastTouchEnd_.isValid() &&
                            sinceLastTouchEnd_.elapsed() < hints->mouseDoubleClickInterval() &&
                            (point.position() - lastTouchEnd_).manhattanLength() <
                                hints->mouseDoubleClickDistance();
        touchBegan(point.position(), repeat);
        event->accept();
        return true;
    }
    if (!tracking_ || !trackingTouchScreen_)
        return true;
    for (const QEventPoint& point : event->points()) {
        if (point.id() != touchPointId_)
            continue;
        if (point.state() == QEventPoint::Released || event->type() == QEvent::TouchEnd)
            touchEnded(point.position());
        else if (point.state() == QEventPoint::Updated)
            touchMoved(point.position());
        break;
    }
    return true;
}

bool Control::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return handleTouch(static_cast<QTouchEvent*>(event));
    case QEvent::UngrabMouse:
        if (!trackingTouchScreen_)
            touchCancelled();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void Control::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || tracking_) {
        event->ignore();
        return;
    }
    trackingTouchScreen_ = false;
    touchBegan(event->position(), false);
}

void Control::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || tracking_) {
        event->ignore();
        return;
    }
    trackingTouchScreen_ = false;
    touchBegan(event->position(), true);
}

void Control::mouseMoveEvent(QMouseEvent* event) {
    if (!tracking_ || trackingTouchScreen_) {
        event->ignore();
        return;
    }
    touchMoved(event->position());
}

void Control::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !tracking_ || trackingTouchScreen_) {
        event->ignore();
        return;
    }
    touchEnded(event->position());
}

void Control::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key != Qt::Key_Space && key != Qt::Key_Return && key != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (event->isAutoRepeat() || tracking_)
        return;
    QPointer<Control> self(this);
    sendActions(touchDown);
    if (self)
        sendActions(touchUpInside);
}

void Control::hideEvent(QHideEvent* event) {
    touchCancelled();
    QWidget::hideEvent(event);
}

void Control::changeEvent(QEvent* event) {
    if (event->type() == QEvent::EnabledChange) {
        if (!isEnabled())
            touchCancelled();
        update();
    } else if (event->type() == QEvent::ActivationChange) {
        // Another window took the pointer, as an alert takes the platform's touches.
        if (!isActiveWindow())
            touchCancelled();
    }
    QWidget::changeEvent(event);
}

} // namespace ui
