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
            std::any_of(controlTargets.begin(), controlTargets.end(),
                        [receiver](const Target& t) { return t.receiver == receiver; });
        if (!watched)
            connect(receiver, &QObject::destroyed, this, &Control::pruneTargets);
    }
    controlTargets.push_back({receiver, receiver != nullptr, std::move(action), events});
}

void Control::removeTargets(QObject* receiver, unsigned events) {
    for (Target& t : controlTargets) {
        if (t.receiver == receiver && t.guarded == (receiver != nullptr))
            t.events &= ~events;
    }
    pruneTargets();
}

unsigned Control::allControlEvents() const {
    unsigned events = 0;
    for (const Target& t : controlTargets) {
        if (!t.guarded || t.receiver)
            events |= t.events;
    }
    return events;
}

void Control::pruneTargets() {
    std::erase_if(controlTargets,
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
        const std::vector<Target> targets = controlTargets;
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
    if (controlHighlighted == highlighted)
        return;
    controlHighlighted = highlighted;
    update();
}

void Control::setSelected(bool selected) {
    if (controlSelected == selected)
        return;
    controlSelected = selected;
    update();
}

unsigned Control::state() const {
    return (controlHighlighted ? highlighted : normal) | (isEnabled() ? normal : disabled) |
           (controlSelected ? selected : normal);
}

QRectF Control::trackingBounds() const {
    const qreal m = controlTrackingMargin;
    return QRectF(rect()).adjusted(-m, -m, m, m);
}

void Control::touchBegan(QPointF position, bool repeat) {
    controlTracking = true;
    touchInside = true;
    setHighlighted(true);
    beginTracking(position);
    sendActions(repeat ? touchDown | touchDownRepeat : touchDown);
}

void Control::touchMoved(QPointF position) {
    const bool wasInside = touchInside;
    touchInside = trackingBounds().contains(position);
    setHighlighted(touchInside);
    continueTracking(position);
    QPointer<Control> self(this);
    if (touchInside != wasInside) {
        sendActions(touchInside ? touchDragEnter : touchDragExit);
        // The action may have hidden or disabled the control, which cancelled the touch.
        if (!self || !controlTracking)
            return;
    }
    sendActions(touchInside ? touchDragInside : touchDragOutside);
}

void Control::touchEnded(QPointF position) {
    controlTracking = false;
    touchInside = trackingBounds().contains(position);
    setHighlighted(false);
    sinceLastTouchEnd.start();
    lastTouchEnd = position;
    endTracking(position);
    sendActions(touchInside ? touchUpInside : touchUpOutside);
}

void Control::touchCancelled() {
    if (!controlTracking)
        return;
    controlTracking = false;
    touchInside = false;
    setHighlighted(false);
    cancelTracking();
    sendActions(touchCancel);
}

bool Control::handleTouch(QTouchEvent* event) {
    if (event->type() == QEvent::TouchCancel) {
        if (trackingTouchScreen)
            touchCancelled();
        return true;
    }
    if (event->type() == QEvent::TouchBegin) {
        if (!isEnabled() || controlTracking || event->points().isEmpty()) {
            event->ignore();
            return false;
        }
        const QEventPoint& point = event->points().constFirst();
        touchPointId = point.id();
        trackingTouchScreen = true;
        const QStyleHints* hints = QGuiApplication::styleHints();
        const bool repeat =
            sinceLastTouchEnd.isValid() &&
            sinceLastTouchEnd.elapsed() < hints->mouseDoubleClickInterval() &&
            (point.position() - lastTouchEnd).manhattanLength() < hints->mouseDoubleClickDistance();
        touchBegan(point.position(), repeat);
        event->accept();
        return true;
    }
    if (!controlTracking || !trackingTouchScreen)
        return true;
    for (const QEventPoint& point : event->points()) {
        if (point.id() != touchPointId)
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
        if (!trackingTouchScreen)
            touchCancelled();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void Control::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || controlTracking) {
        event->ignore();
        return;
    }
    trackingTouchScreen = false;
    touchBegan(event->position(), false);
}

void Control::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || controlTracking) {
        event->ignore();
        return;
    }
    trackingTouchScreen = false;
    touchBegan(event->position(), true);
}

void Control::mouseMoveEvent(QMouseEvent* event) {
    if (!controlTracking || trackingTouchScreen) {
        event->ignore();
        return;
    }
    touchMoved(event->position());
}

void Control::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !controlTracking || trackingTouchScreen) {
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
    if (event->isAutoRepeat() || controlTracking)
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
