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
    : Control(parent), minimumTrackColor(0x0a, 0x84, 0xff), maximumTrackColor(0x78, 0x78, 0x80) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Slider::setValue(float value, bool animated) {
    stopAnimation();
    const float from = shownValue;
    sliderValue = qBound(sliderMinimum, value, sliderMaximum);
    if (!animated || from == sliderValue) {
        shownValue = sliderValue;
        update();
        return;
    }
    auto* animation = new QVariantAnimation(this);
    animation->setDuration(glideMilliseconds);
    animation->setStartValue(from);
    animation->setEndValue(sliderValue);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& shown) {
        shownValue = shown.toFloat();
        update();
    });
    sliderAnimation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void Slider::stopAnimation() {
    if (sliderAnimation)
        sliderAnimation->stop();
}

void Slider::setMinimumValue(float minimum) {
    sliderMinimum = minimum;
    sliderMaximum = qMax(sliderMaximum, sliderMinimum);
    setValue(sliderValue);
}

void Slider::setMaximumValue(float maximum) {
    sliderMaximum = maximum;
    sliderMinimum = qMin(sliderMinimum, sliderMaximum);
    setValue(sliderValue);
}

void Slider::setThumbImage(const QIcon& image, unsigned state) {
    thumbImages.insert(state, image);
    updateGeometry();
    update();
}

QIcon Slider::thumbImage(unsigned state) const {
    const auto it = thumbImages.constFind(state);
    return it != thumbImages.constEnd() ? *it : thumbImages.value(normal);
}

QSize Slider::thumbSize() const {
    const QIcon image = thumbImage(normal);
    if (image.isNull())
        return sliderThumbSize.isValid() ? sliderThumbSize : defaultThumbSize;
    QSize box = sliderThumbSize;
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
    sliderThumbSize = size;
    updateGeometry();
    update();
}

void Slider::setMinimumTrackTintColor(const QColor& color) {
    minimumTrackColor = color;
    update();
}

void Slider::setMaximumTrackTintColor(const QColor& color) {
    maximumTrackColor = color;
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
    const float range = sliderMaximum - sliderMinimum;
    const qreal fraction = range > 0 ? (value - sliderMinimum) / range : 0.0;
    return track.left() + fraction * track.width();
}

float Slider::valueAt(qreal x) const {
    const QRectF track = trackRect();
    if (track.width() <= 0)
        return sliderMinimum;
    const qreal fraction = qBound(0.0, (x - track.left()) / track.width(), 1.0);
    return qBound(sliderMinimum, float(sliderMinimum + fraction * (sliderMaximum - sliderMinimum)),
                  sliderMaximum);
}

QRectF Slider::thumbRect() const {
    const QSizeF size = thumbSize();
    return QRectF(positionOf(shownValue) - size.width() / 2.0, (height() - size.height()) / 2.0,
                  size.width(), size.height());
}

QSize Slider::sizeHint() const {
    const QSize thumb = thumbSize();
    return QSize(qMax(120, 4 * thumb.width()), qMax(31, thumb.height()));
}

void Slider::trackTo(float value) {
    if (value == sliderValue)
        return;
    sliderValue = value;
    shownValue = value;
    update();
    if (sliderContinuous)
        sendActions(valueChanged);
}

void Slider::beginTracking(QPointF position) {
    stopAnimation();
    shownValue = sliderValue;
    valueAtTrackingStart = sliderValue;
    const QRectF thumb = thumbRect();
    if (thumb.left() <= position.x() && position.x() <= thumb.right()) {
        grabOffset = position.x() - thumb.center().x();
    } else {
        grabOffset = 0;
        trackTo(valueAt(position.x()));
    }
}

void Slider::continueTracking(QPointF position) {
    trackTo(valueAt(position.x() - grabOffset));
}

void Slider::endTracking(QPointF position) {
    trackTo(valueAt(position.x() - grabOffset));
    finishTracking();
}

void Slider::cancelTracking() {
    finishTracking();
}

void Slider::finishTracking() {
    if (!sliderContinuous && sliderValue != valueAtTrackingStart)
        sendActions(valueChanged);
}

void Slider::keyPressEvent(QKeyEvent* event) {
    const float step = (sliderMaximum - sliderMinimum) * keyStep;
    float target = sliderValue;
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
    target = qBound(sliderMinimum, target, sliderMaximum);
    if (target == sliderValue)
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
    const qreal split = positionOf(shownValue);
    const qreal radius = trackHeight / 2.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(maximumTrackColor);
    painter.drawRoundedRect(track, radius, radius);
    painter.setBrush(minimumTrackColor);
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
