#include "platform/ui/ScrollView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace ui {

namespace {

// Points per second above which a released drag goes on to the next page.
constexpr double flickSpeed = 300.0;
// A finger that rested this long before lifting threw nothing.
constexpr qint64 restBeforeRelease = 100;
// A touchpad that sends no end of its scroll has ended it after this pause.
constexpr int wheelRestMs = 150;
// Events that arrive together are taken as a frame apart, not as an infinite speed.
constexpr qint64 minimumInterval = 8;
// A wheel notch scrolls this far where there are no pages.
constexpr double lineStep = 40.0;

double axis(QPointF point, Qt::Orientation orientation) {
    return orientation == Qt::Horizontal ? point.x() : point.y();
}

QPointF alongAxis(double value, Qt::Orientation orientation) {
    return orientation == Qt::Horizontal ? QPointF(value, 0) : QPointF(0, value);
}

} // namespace

ScrollView::ScrollView(QWidget* parent) : QWidget(parent), scrollContent(new QWidget(this)) {
    scrollContent->setObjectName(QStringLiteral("contentView"));
    setAttribute(Qt::WA_AcceptTouchEvents);
    setFocusPolicy(Qt::StrongFocus);
    wheelRest.setSingleShot(true);
    wheelRest.setInterval(wheelRestMs);
    connect(&wheelRest, &QTimer::timeout, this, [this] {
        if (!wheelScrolling)
            return;
        wheelScrolling = false;
        glideTo(restingOffset(wheelVelocity, dragStartOffset));
    });
    layoutContent();
}

ScrollView::~ScrollView() = default;

void ScrollView::addSubview(QWidget* view) {
    view->setParent(scrollContent);
    view->show();
}

void ScrollView::setContentSize(QSizeF size) {
    scrollContentSize = size;
    layoutContent();
    applyOffset(clamped(scrollOffset));
}

void ScrollView::setContentOffset(QPointF offset, bool animated) {
    if (animated) {
        glideTo(clamped(offset));
        return;
    }
    stopGlide();
    applyOffset(clamped(offset));
}

bool ScrollView::isDecelerating() const {
    return scrollGlide && scrollGlide->state() == QAbstractAnimation::Running;
}

QPointF ScrollView::maximumOffset() const {
    return QPointF(std::max(0.0, scrollContentSize.width() - width()),
                   std::max(0.0, scrollContentSize.height() - height()));
}

QPointF ScrollView::clamped(QPointF offset) const {
    const QPointF most = maximumOffset();
    return QPointF(std::clamp(offset.x(), 0.0, most.x()), std::clamp(offset.y(), 0.0, most.y()));
}

void ScrollView::applyOffset(QPointF offset) {
    if (offset == scrollOffset)
        return;
    scrollOffset = offset;
    scrollContent->move(-offset.toPoint());
    emit didScroll();
}

void ScrollView::layoutContent() {
    // Pages taller than the content height still show whole.
    const QSize size(std::max(int(std::ceil(scrollContentSize.width())), width()),
                     std::max(int(std::ceil(scrollContentSize.height())), height()));
    scrollContent->setGeometry(QRect(-scrollOffset.toPoint(), size));
}

QPointF ScrollView::restingOffset(QPointF velocity, QPointF began) const {
    if (!scrollPaging || width() <= 0 || height() <= 0)
        return clamped(scrollOffset);
    QPointF target;
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        const double page = orientation == Qt::Horizontal ? width() : height();
        const double at = axis(scrollOffset, orientation) / page;
        const double speed = axis(velocity, orientation);
        double index = speed > flickSpeed    ? std::ceil(at - 0.01)
                       : speed < -flickSpeed ? std::floor(at + 0.01)
                                             : std::round(at);
        // However fast the flick, one page on from where the scroll began.
        const double first = std::round(axis(began, orientation) / page);
        index = std::clamp(index, first - 1, first + 1);
        target += alongAxis(index * page, orientation);
    }
    return clamped(target);
}

void ScrollView::glideTo(QPointF target) {
    stopGlide();
    if (target == scrollOffset) {
        finishScroll();
        return;
    }
    scrollGlide = new QVariantAnimation(this);
    scrollGlide->setStartValue(scrollOffset);
    scrollGlide->setEndValue(target);
    scrollGlide->setDuration(int(pageGlideDuration * 1000));
    scrollGlide->setEasingCurve(QEasingCurve::OutCubic);
    connect(scrollGlide, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { applyOffset(value.toPointF()); });
    connect(scrollGlide, &QVariantAnimation::finished, this, [this, target] {
        scrollGlide->deleteLater();
        scrollGlide = nullptr;
        // The eased value can stop a fraction short; rest exactly on the page.
        applyOffset(target);
        finishScroll();
    });
    scrollGlide->start();
}

void ScrollView::stopGlide() {
    if (!scrollGlide)
        return;
    QVariantAnimation* glide = std::exchange(scrollGlide, nullptr);
    glide->disconnect(this);
    glide->stop();
    glide->deleteLater();
}

void ScrollView::finishScroll() {
    if (scrollDelegate)
        scrollDelegate->scrollViewDidEndDecelerating(this);
}

void ScrollView::beginDrag(QPointF position, quint64 time) {
    stopGlide();
    wheelScrolling = false;
    pressed = true;
    scrollDragging = false;
    pressPosition = lastPosition = position;
    dragStartOffset = scrollOffset;
    scrollVelocity = QPointF();
    lastMoveTime = time;
}

void ScrollView::moveDrag(QPointF position, quint64 time) {
    if (!pressed)
        return;
    if (!scrollDragging &&
        (position - pressPosition).manhattanLength() < QApplication::startDragDistance())
        return;
    scrollDragging = true;
    if (position == lastPosition)
        return;
    const qint64 elapsed = std::max(minimumInterval, qint64(time - lastMoveTime));
    lastMoveTime = time;
    const QPointF moved = -(position - lastPosition) * 1000.0 / double(elapsed);
    scrollVelocity = moved * 0.8 + scrollVelocity * 0.2;
    lastPosition = position;
    applyOffset(clamped(dragStartOffset - (position - pressPosition)));
}

void ScrollView::endDrag(bool cancelled, quint64 time) {
    if (!pressed)
        return;
    pressed = false;
    const bool dragged = std::exchange(scrollDragging, false);
    const bool thrown = !cancelled && qint64(time - lastMoveTime) < restBeforeRelease;
    // A tap leaves a resting pager alone; one that stopped a glide puts it back on a page.
    if (dragged || restingOffset({}, scrollOffset) != scrollOffset)
        glideTo(restingOffset(thrown ? scrollVelocity : QPointF(), dragStartOffset));
}

bool ScrollView::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel: {
        auto* touch = static_cast<QTouchEvent*>(event);
        if (event->type() == QEvent::TouchCancel) {
            if (trackingTouch)
                endDrag(true, touch->timestamp());
            trackingTouch = false;
            return true;
        }
        if (event->type() == QEvent::TouchBegin) {
            if (touch->points().isEmpty() || pressed) {
                event->ignore();
                return false;
            }
            const QEventPoint& point = touch->points().constFirst();
            touchPointId = point.id();
            trackingTouch = true;
            beginDrag(point.position(), touch->timestamp());
            event->accept();
            return true;
        }
        if (!trackingTouch)
            return true;
        for (const QEventPoint& point : touch->points()) {
            if (point.id() != touchPointId)
                continue;
            if (point.state() == QEventPoint::Released || event->type() == QEvent::TouchEnd) {
                moveDrag(point.position(), touch->timestamp());
                trackingTouch = false;
                endDrag(false, touch->timestamp());
            } else if (point.state() == QEventPoint::Updated) {
                moveDrag(point.position(), touch->timestamp());
            }
            break;
        }
        return true;
    }
    case QEvent::UngrabMouse:
    case QEvent::Hide:
        // A drag whose release will never come (another window took the pointer, the pager
        // went away) ends here, or the next press would be refused.
        if (pressed && (event->type() == QEvent::Hide || !trackingTouch)) {
            trackingTouch = false;
            endDrag(true, lastMoveTime);
        }
        return QWidget::event(event);
    default:
        return QWidget::event(event);
    }
}

void ScrollView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || pressed) {
        event->ignore();
        return;
    }
    trackingTouch = false;
    beginDrag(event->position(), event->timestamp());
}

void ScrollView::mouseMoveEvent(QMouseEvent* event) {
    if (trackingTouch)
        return;
    moveDrag(event->position(), event->timestamp());
}

void ScrollView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || trackingTouch)
        return;
    moveDrag(event->position(), event->timestamp());
    endDrag(false, event->timestamp());
}

void ScrollView::wheelEvent(QWheelEvent* event) {
    if (pressed)
        return;
    const QPointF most = maximumOffset();
    // A pager that moves one way takes either direction of the wheel or touchpad along it.
    const bool oneAxis = most.x() == 0 || most.y() == 0;
    const Qt::Orientation orientation = most.y() == 0 ? Qt::Horizontal : Qt::Vertical;
    auto folded = [&](QPointF delta) {
        if (!oneAxis)
            return delta;
        const double along = std::abs(delta.x()) >= std::abs(delta.y()) ? delta.x() : delta.y();
        return alongAxis(along, orientation);
    };

    if (event->pixelDelta().isNull() && event->phase() == Qt::NoScrollPhase) {
        // A wheel's notch: a whole page when paging.
        const QPointF notches = folded(QPointF(event->angleDelta()) / -120.0);
        const QPointF base =
            isDecelerating() ? scrollGlide->endValue().toPointF() : restingOffset({}, scrollOffset);
        auto sign = [](double value) { return value > 0 ? 1.0 : value < 0 ? -1.0 : 0.0; };
        const QPointF step =
            scrollPaging ? QPointF(sign(notches.x()) * width(), sign(notches.y()) * height())
                         : notches * lineStep;
        glideTo(clamped(base + step));
        event->accept();
        return;
    }

    if (event->phase() == Qt::ScrollMomentum && !wheelScrolling) {
        // The pager has already come to rest from this scroll.
        event->accept();
        return;
    }
    const bool begins = event->phase() == Qt::ScrollBegin || !wheelScrolling;
    if (begins) {
        stopGlide();
        wheelScrolling = true;
        dragStartOffset = scrollOffset;
        wheelVelocity = QPointF();
        lastWheelTime = event->timestamp();
    }
    const QPointF delta =
        -folded(QPointF(event->pixelDelta().isNull() ? QPointF(event->angleDelta()) / 8.0
                                                     : QPointF(event->pixelDelta())));
    const qint64 elapsed = std::max(minimumInterval, qint64(event->timestamp() - lastWheelTime));
    lastWheelTime = event->timestamp();
    // The first movement of a scroll has no time to be measured against.
    if (!delta.isNull() && !begins)
        wheelVelocity = delta * 1000.0 / double(elapsed);
    applyOffset(clamped(scrollOffset + delta));
    event->accept();
    if (event->phase() == Qt::ScrollEnd) {
        wheelRest.stop();
        wheelScrolling = false;
        glideTo(restingOffset(wheelVelocity, dragStartOffset));
        return;
    }
    wheelRest.start();
}

void ScrollView::keyPressEvent(QKeyEvent* event) {
    const QPointF most = maximumOffset();
    const Qt::Orientation orientation = most.y() == 0 ? Qt::Horizontal : Qt::Vertical;
    const double page = orientation == Qt::Horizontal ? width() : height();
    const double step = scrollPaging ? page : lineStep;
    double move = 0;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        move = -step;
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        move = step;
        break;
    case Qt::Key_PageUp:
        move = -page;
        break;
    case Qt::Key_PageDown:
        move = page;
        break;
    case Qt::Key_Home:
        move = -axis(QPointF(scrollContentSize.width(), scrollContentSize.height()), orientation);
        break;
    case Qt::Key_End:
        move = axis(QPointF(scrollContentSize.width(), scrollContentSize.height()), orientation);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    const QPointF base = isDecelerating()
                             ? scrollGlide->endValue().toPointF()
                             : (scrollPaging ? restingOffset({}, scrollOffset) : scrollOffset);
    const QPointF target = clamped(base + alongAxis(move, orientation));
    // At either end a key press changes nothing and tells nobody.
    if (target != base || target != scrollOffset)
        glideTo(target);
}

void ScrollView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutContent();
    applyOffset(clamped(scrollOffset));
}

} // namespace ui
