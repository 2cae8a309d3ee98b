#include "platform/ui/Slider.h"

#include <algorithm>

#include <QKeyEvent>
#include <QPainter>
#include <QVariantAnimation>

namespace ui {
namespace {

constexpr QSize defaultThumbSize(28, 28);
constexpr qreal trackHeight = 2.0;
constexpr int glideMilliseconds = 200;
// Arrow keys move the value by this share of the range.
constexpr float keyStep = 0.05f;

} // namespace

Slider::Slider(QWidget* parent)
    : Control(parent), minimumTrackColor_(0x0a, 0x84, 0xff), maximumTrackColor_(0x78, 0x78, 0x80) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Slider::setValue(float value, bool animated) {
    stopAnimation();
    const float from = shownValue_;
    value_ = qBound(minimum_, value, maximum_);
    if (!animated || from == value_) {
        shownValue_ = value_;
        update();
        return;
    }
    auto* animation = new QVariantAnimation(this);
    animation->setDuration(glideMilliseconds);
    animation->setStartValue(from);
    animation->setEndValue(value_);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& shown) {
        shownValue_ = shown.toFloat();
        update();
    });
    animation_ = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void Slider::stopAnimation() {
    if (animation_)
        animation_->stop();
}

void Slider::setMinimumValue(float minimum) {
    minimum_ = minimum;
    maximum_ = qMax(maximum_, minimum_);
    setValue(value_);
}

void Slider::setMaximumValue(float maximum) {
    maximum_ = maximum;
    minimum_ = qMin(minimum_, maximum_);
    setValue(value_);
}

void Slider::setThumbImage(const QIcon& image, unsigned state) {
    thumbImages_.insert(state, image);
    updateGeometry();
    update();
}

QIcon Slider::thumbImage(unsigned state) const {
    const auto it = thumbImages_.constFind(state);
    return it != thumbImages_.constEnd() ? *it : thumbImages_.value(normal);
}

QSize Slider::thumbSize() const {
    const QIcon image = thumbImage(normal);
    if (image.isNull())
        return thumbSize_.isValid() ? thumbSize_ : defaultThumbSize;
    QSize box = thumbSize_;
    if (!box.isValid()) {
        const QList<QSize> sizes = image.availableSizes();
        box = sizes.isEmpty() ? defaultThumbSize
                              : *std::max_element(sizes.begin(), sizes.end(), [](QSize a, QSize b) {
                                    return a.width() * a.height() < b.width() * b.height();
                                });
    }
    return image.actualSize(box);
}

void Slider::setThumbSize(QSize size) {
    thumbSize_ = size;
    updateGeometry();
    update();
}

void Slider::setMinimumTrackTintColor(const QColor& color) {
    minimumTrackColor_ = color;
    update();
}

void Slider::setMaximumTrackTintColor(const QColor& color) {
    maximumTrackColor_ = color;
    update();
}

// The thumb's centre runs from half a thumb in from the left to half a thumb in from the right.
QRectF Slider::trackRect() const {
    const qreal inset = thumbSize().width() / 2.0;
    return QRectF(inset, (height() - trackHeight) / 2.0, qMax(0.0, width() - 2 * inset),
                  trackHeight);
}

qreal Slider::positionOf(float value) const {
    const QRectF track = trackRect();
    const float range = maximum_ - minimum_;
    const qreal fraction = range > 0 ? (value - minimum_) / range : 0.0;
    return track.left() + fraction * track.width();
}

float Slider::valueAt(qreal x) const {
    const QRectF track = trackRect();
    if (track.width() <= 0)
        return minimum_;
    const qreal fraction = qBound(0.0, (x - track.left()) / track.width(), 1.0);
    return qBound(minimum_, float(minimum_ + fraction * (maximum_ - minimum_)), maximum_);
}

QRectF Slider::thumbRect() const {
    const QSizeF size = thumbSize();
    return QRectF(positionOf(shownValue_) - size.width() / 2.0, (height() - size.height()) / 2.0,
                  size.width(), size.height());
}

QSize Slider::sizeHint() const {
    const QSize thumb = thumbSize();
    return QSize(qMax(120, 4 * thumb.width()), qMax(31, thumb.height()));
}

void Slider::trackTo(float value) {
    if (value == value_)
        return;
    value_ = value;
    shownValue_ = value;
    update();
    if (continuous_)
        sendActions(valueChanged);
}

void Slider::beginTracking(QPointF position) {
    stopAnimation();
    shownValue_ = value_;
    valueAtTrackingStart_ = value_;
    const QRectF thumb = thumbRect();
    if (thumb.left() <= position.x() && position.x() <= thumb.right()) {
        grabOffset_ = position.x() - thumb.center().x();
    } else {
        grabOffset_ = 0;
        trackTo(valueAt(position.x()));
    }
}

void Slider::continueTracking(QPointF position) {
    trackTo(valueAt(position.x() - grabOffset_));
}

void Slider::endTracking(QPointF position) {
    trackTo(valueAt(position.x() - grabOffset_));
    finishTracking();
}

void Slider::cancelTracking() {
    finishTracking();
}

void Slider::finishTracking() {
    if (!continuous_ && value_ != valueAtTrackingStart_)
        sendActions(valueChanged);
}

void Slider::keyPressEvent(QKeyEvent* event) {
    const float step = (maximum_ - minimum_) * keyStep;
    float target = value_;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        target -= step;
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        target += step;
        break;
    default:
        Control::keyPressEvent(event);
        return;
    }
    target = qBound(minimum_, target, maximum_);
    if (target == value_)
        return;
    setValue(target);
    sendActions(valueChanged);
}

void Slider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!isEnabled())
        painter.setOpacity(0.5);

    const QRectF track = trackRect();
    const qreal split = positionOf(shownValue_);
    const qreal radius = trackHeight / 2.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(maximumTrackColor_);
    painter.drawRoundedRect(track, radius, radius);
    painter.setBrush(minimumTrackColor_);
    painter.drawRoundedRect(QRectF(track.left(), track.top(), split - track.left(), track.height()),
                            radius, radius);

    const QRectF thumb = thumbRect();
    const QIcon image = thumbImage(state());
    if (!image.isNull()) {
        const QPixmap pixmap = image.pixmap(thumb.size().toSize(), devicePixelRatioF());
        painter.drawPixmap(thumb, pixmap, QRectF(pixmap.rect()));
        return;
    }
    // The default thumb: a white disc with a faint rim, standing out on light and dark screens.
    painter.setPen(QPen(QColor(0, 0, 0, 40), 0.5));
    painter.setBrush(isHighlighted() ? QColor(0xf2, 0xf2, 0xf2) : QColor(Qt::white));
    painter.drawEllipse(thumb.adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace ui
