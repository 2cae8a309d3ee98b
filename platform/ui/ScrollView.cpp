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

ScrollView::ScrollView(QWidget* parent) : QWidget(parent), content_(new QWidget(this)) {
    content_->setObjectName(QStringLiteral("contentView"));
    setAttribute(Qt::WA_AcceptTouchEvents);
    setFocusPolicy(Qt::StrongFocus);
    wheelRest_.setSingleShot(true);
    wheelRest_.setInterval(wheelRestMs);
    connect(&wheelRest_, &QTimer::timeout, this, [this] {
        if (!wheelScrolling_)
            return;
        wheelScrolling_ = false;
        glideTo(restingOffset(wheelVelocity_, dragStartOffset_));
    });
    layoutContent();
}

ScrollView::~ScrollView() = default;

void ScrollView::addSubview(QWidget* view) {
    view->setParent(content_);
    view->show();
}

void ScrollView::setContentSize(QSizeF size) {
    contentSize_ = size;
    layoutContent();
    applyOffset(clamped(offset_));
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
    return glide_ && glide_->state() == QAbstractAnimation::Running;
}

QPointF ScrollView::maximumOffset() const {
    return QPointF(std::max(0.0, contentSize_.width() - width()),
                   std::max(0.0, contentSize_.height() - height()));
}

QPointF ScrollView::clamped(QPointF offset) const {
    const QPointF most = maximumOffset();
    return QPointF(std::clamp(offset.x(), 0.0, most.x()), std::clamp(offset.y(), 0.0, most.y()));
}

void ScrollView::applyOffset(QPointF offset) {
    if (offset == offset_)
        return;
    offset_ = offset;
    content_->move(-offset.toPoint());
    emit didScroll();
}

void ScrollView::layoutContent() {
    // Pages taller than the content height still show whole.
    const QSize size(std::max(int(std::ceil(contentSize_.width())), width()),
                     std::max(int(std::ceil(contentSize_.height())), height()));
    content_->setGeometry(QRect(-offset_.toPoint(), size));
}

QPointF ScrollView::restingOffset(QPointF velocity, QPointF began) const {
    if (!paging_ || width() <= 0 || height() <= 0)
        return clamped(offset_);
    QPointF target;
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        const double page = orientation == Qt::Horizontal ? width() : height();
        const double at = axis(offset_, orientation) / page;
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
    if (target == offset_) {
        finishScroll();
        return;
    }
    glide_ = new QVariantAnimation(this);
    glide_->setStartValue(offset_);
    glide_->setEndValue(target);
    glide_->setDuration(int(pageGlideDuration * 1000));
    glide_->setEasingCurve(QEasingCurve::OutCubic);
    connect(glide_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { applyOffset(value.toPointF()); });
    connect(glide_, &QVariantAnimation::finished, this, [this, target] {
        glide_->deleteLater();
        glide_ = nullptr;
        // The eased value can stop a fraction short; rest exactly on the page.
        applyOffset(target);
        finishScroll();
    });
    glide_->start();
}

void ScrollView::stopGlide() {
    if (!glide_)
        return;
    QVariantAnimation* glide = std::exchange(glide_, nullptr);
    glide->disconnect(this);
    glide->stop();
    glide->deleteLater();
}

void ScrollView::finishScroll() {
    if (delegate_)
        delegate_->scrollViewDidEndDecelerating(this);
}

void ScrollView::beginDrag(QPointF position, quint64 time) {
    stopGlide();
    wheelScrolling_ = false;
    pressed_ = true;
    dragging_ = false;
    pressPosition_ = lastPosition_ = position;
    dragStartOffset_ = offset_;
    velocity_ = QPointF();
    lastMoveTime_ = time;
}

void ScrollView::moveDrag(QPointF position, quint64 time) {
    if (!pressed_)
        return;
    if (!dragging_ &&
        (position - pressPosition_).manhattanLength() < QApplication::startDragDistance())
        return;
    dragging_ = true;
    if (position == lastPosition_)
        return;
    const qint64 elapsed = std::max(minimumInterval, qint64(time - lastMoveTime_));
    lastMoveTime_ = time;
    const QPointF moved = -(position - lastPosition_) * 1000.0 / double(elapsed);
    velocity_ = moved * 0.8 + velocity_ * 0.2;
    lastPosition_ = position;
    applyOffset(clamped(dragStartOffset_ - (position - pressPosition_)));
}

void ScrollView::endDrag(bool cancelled, quint64 time) {
    if (!pressed_)
        return;
    pressed_ = false;
    const bool dragged = std::exchange(dragging_, false);
    const bool thrown = !cancelled && qint64(time - lastMoveTime_) < restBeforeRelease;
    // A tap leaves a resting pager alone; one that stopped a glide puts it back on a page.
    if (dragged || restingOffset({}, offset_) != offset_)
        glideTo(restingOffset(thrown ? velocity_ : QPointF(), dragStartOffset_));
}

bool ScrollView::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel: {
        auto* touch = static_cast<QTouchEvent*>(event);
        if (event->type() == QEvent::TouchCancel) {
            if (trackingTouch_)
                endDrag(true, touch->timestamp());
            trackingTouch_ = false;
            return true;
        }
        if (event->type() == QEvent::TouchBegin) {
            if (touch->points().isEmpty() || pressed_) {
                event->ignore();
                return false;
            }
            const QEventPoint& point = touch->points().constFirst();
            touchPointId_ = point.id();
            trackingTouch_ = true;
            beginDrag(point.position(), touch->timestamp());
            event->accept();
            return true;
        }
        if (!trackingTouch_)
            return true;
        for (const QEventPoint& point : touch->points()) {
            if (point.id() != touchPointId_)
                continue;
            if (point.state() == QEventPoint::Released || event->type() == QEvent::TouchEnd) {
                moveDrag(point.position(), touch->timestamp());
                trackingTouch_ = false;
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
        if (pressed_ && (event->type() == QEvent::Hide || !trackingTouch_)) {
            trackingTouch_ = false;
            endDrag(true, lastMoveTime_);
        }
        return QWidget::event(event);
    default:
        return QWidget::event(event);
    }
}

void ScrollView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || pressed_) {
        event->ignore();
        return;
    }
    trackingTouch_ = false;
    beginDrag(event->position(), event->timestamp());
}

void ScrollView::mouseMoveEvent(QMouseEvent* event) {
    if (trackingTouch_)
        return;
    moveDrag(event->position(), event->timestamp());
}

void ScrollView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || trackingTouch_)
        return;
    moveDrag(event->position(), event->timestamp());
    endDrag(false, event->timestamp());
}

void ScrollView::wheelEvent(QWheelEvent* event) {
    if (pressed_)
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
            isDecelerating() ? glide_->endValue().toPointF() : restingOffset({}, offset_);
        auto sign = [](double value) { return value > 0 ? 1.0 : value < 0 ? -1.0 : 0.0; };
        const QPointF step =
            paging_ ? QPointF(sign(notches.x()) * width(), sign(notches.y()) * height())
                    : notches * lineStep;
        glideTo(clamped(base + step));
        event->accept();
        return;
    }

    if (event->phase() == Qt::ScrollMomentum && !wheelScrolling_) {
        // The pager has already come to rest from this scroll.
        event->accept();
        return;
    }
    const bool begins = event->phase() == Qt::ScrollBegin || !wheelScrolling_;
    if (begins) {
        stopGlide();
        wheelScrolling_ = true;
        dragStartOffset_ = offset_;
        wheelVelocity_ = QPointF();
        lastWheelTime_ = event->timestamp();
    }
    const QPointF delta =
        -folded(QPointF(event->pixelDelta().isNull() ? QPointF(event->angleDelta()) / 8.0
                                                     : QPointF(event->pixelDelta())));
    const qint64 elapsed = std::max(minimumInterval, qint64(event->timestamp() - lastWheelTime_));
    lastWheelTime_ = event->timestamp();
    // The first movement of a scroll has no time to be measured against.
    if (!delta.isNull() && !begins)
        wheelVelocity_ = delta * 1000.0 / double(elapsed);
    applyOffset(clamped(offset_ + delta));
    event->accept();
    if (event->phase() == Qt::ScrollEnd) {
        wheelRest_.stop();
        wheelScrolling_ = false;
        glideTo(restingOffset(wheelVelocity_, dragStartOffset_));
        return;
    }
    wheelRest_.start();
}

void ScrollView::keyPressEvent(QKeyEvent* event) {
    const QPointF most = maximumOffset();
    const Qt::Orientation orientation = most.y() == 0 ? Qt::Horizontal : Qt::Vertical;
    const double page = orientation == Qt::Horizontal ? width() : height();
    const double step = paging_ ? page : lineStep;
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
        move = -axis(QPointF(contentSize_.width(), contentSize_.height()), orientation);
        break;
    case Qt::Key_End:
        move = axis(QPointF(contentSize_.width(), contentSize_.height()), orientation);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    const QPointF base = isDecelerating() ? glide_->endValue().toPointF()
                                          : (paging_ ? restingOffset({}, offset_) : offset_);
    const QPointF target = clamped(base + alongAxis(move, orientation));
    // At either end a key press changes nothing and tells nobody.
    if (target != base || target != offset_)
        glideTo(target);
}

void ScrollView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutContent();
    applyOffset(clamped(offset_));
}

} // namespace ui
