#include "platform/ui/PinchGestureRecognizer.h"

#include <QGestureEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QWheelEvent>
#include <QWidget>

#include <cmath>

namespace ui {

PinchGestureRecognizer::PinchGestureRecognizer(QWidget* view) : QObject(view) {
    view->setAttribute(Qt::WA_AcceptTouchEvents);
    view->grabGesture(Qt::PinchGesture);
    view->installEventFilter(this);
}

QWidget* PinchGestureRecognizer::view() const {
    return static_cast<QWidget*>(parent());
}

void PinchGestureRecognizer::enter(State state) {
    currentState = state;
    emit action(this);
}

void PinchGestureRecognizer::scaleBy(double factor) {
    if (!std::isfinite(factor) || factor <= 0)
        return;
    if (!active()) {
        currentScale = 1.0;
        enter(State::began);
    }
    currentScale *= factor;
    enter(State::changed);
}

void PinchGestureRecognizer::end() {
    if (active())
        enter(State::ended);
}

void PinchGestureRecognizer::cancel() {
    if (active())
        enter(State::cancelled);
}

bool PinchGestureRecognizer::eventFilter(QObject* watched, QEvent* event) {
    if (watched != parent())
        return false;
    switch (event->type()) {
    case QEvent::Gesture: {
        auto* gestures = static_cast<QGestureEvent*>(event);
        auto* pinch = static_cast<QPinchGesture*>(gestures->gesture(Qt::PinchGesture));
        if (!pinch)
            return false;
        gestures->accept(pinch);
        switch (pinch->state()) {
        case Qt::GestureStarted:
        case Qt::GestureUpdated:
            // Two fingers that only turn or move are no pinch yet.
            if (pinch->changeFlags() & QPinchGesture::ScaleFactorChanged)
                scaleBy(pinch->scaleFactor());
            break;
        case Qt::GestureFinished:
            end();
            break;
        case Qt::GestureCanceled:
            cancel();
            break;
        case Qt::NoGesture:
            break;
        }
        return true;
    }
    case QEvent::NativeGesture: {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            // The touchpad reports how much the spread grew since its last report.
            scaleBy(1.0 + gesture->value());
            return true;
        }
        if (gesture->gestureType() == Qt::EndNativeGesture)
            end();
        return false;
    }
    case QEvent::Wheel: {
        auto* wheel = static_cast<QWheelEvent*>(event);
        if (!(wheel->modifiers() & Qt::ControlModifier))
            return false;
        const double notches = wheel->angleDelta().y() / 120.0;
        if (notches != 0) {
            // Inside a touchpad pinch the wheel only adds to it.
            const bool alone = !active();
            scaleBy(std::pow(wheelNotchFactor, notches));
            if (alone)
                end();
        }
        return true;
    }
    case QEvent::Hide:
        cancel();
        return false;
    default:
        return false;
    }
}

} // namespace ui
