#include "platform/ui/TapGestureRecognizer.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWidget>

namespace ui {

TapGestureRecognizer::TapGestureRecognizer(QWidget* view) : QObject(view) {
    view->setAttribute(Qt::WA_AcceptTouchEvents);
    view->installEventFilter(this);
}

QWidget* TapGestureRecognizer::view() const {
    return static_cast<QWidget*>(parent());
}

void TapGestureRecognizer::press(const QPointF& point) {
    pressedAt = point;
}

void TapGestureRecognizer::move(const QPointF& point) {
    if (pressedAt && (point - *pressedAt).manhattanLength() >= QApplication::startDragDistance())
        pressedAt.reset();
}

void TapGestureRecognizer::release(const QPointF& point) {
    move(point);
    if (!pressedAt)
        return;
    pressedAt.reset();
    location = point;
    emit action(this);
}

bool TapGestureRecognizer::eventFilter(QObject* watched, QEvent* event) {
    if (watched != parent())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        // Touches come as touch events; a mouse event made from one would tap twice.
        if (mouse->source() != Qt::MouseEventNotSynthesized)
            return false;
        if (event->type() == QEvent::MouseMove) {
            move(mouse->position());
        } else if (mouse->button() != Qt::LeftButton || mouse->buttons() & ~Qt::LeftButton) {
            pressedAt.reset();
        } else if (event->type() == QEvent::MouseButtonPress) {
            press(mouse->position());
        } else {
            release(mouse->position());
        }
        // Accepted, so the release comes back here rather than to the parent.
        return true;
    }
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd: {
        auto* touch = static_cast<QTouchEvent*>(event);
        if (touch->pointCount() != 1) {
            pressedAt.reset();
        } else if (event->type() == QEvent::TouchBegin) {
            press(touch->point(0).position());
        } else if (event->type() == QEvent::TouchUpdate) {
            move(touch->point(0).position());
        } else {
            release(touch->point(0).position());
        }
        // Accepting the touch keeps the rest of it (and the pinch made of it) coming here.
        event->accept();
        return true;
    }
    case QEvent::TouchCancel:
    case QEvent::Hide:
        pressedAt.reset();
        return false;
    default:
        return false;
    }
}

} // namespace ui
