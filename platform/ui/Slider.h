#pragma once

#include <QColor>
#include <QHash>
#include <QIcon>
#include <QPointer>

#include "platform/ui/Control.h"

class QVariantAnimation;

namespace ui {

// A horizontal slider: a thin track, coloured on each side of the thumb, and a thumb image.
// Dragging the thumb moves it from where it was grabbed; a press on the track moves the thumb
// there first. valueChanged is sent while dragging when continuous, else once on release; setting
// the value in code sends nothing.
class Slider : public Control {
    Q_OBJECT

public:
    explicit Slider(QWidget* parent = nullptr);

    float value() const { return value_; }
    // Clamped to the range. Animated, the thumb glides there; value() has the new value at once.
    void setValue(float value, bool animated = false);
    float minimumValue() const { return minimum_; }
    // Moves the other end and the value when they fall outside the new range.
    void setMinimumValue(float minimum);
    float maximumValue() const { return maximum_; }
    void setMaximumValue(float maximum);

    bool isContinuous() const { return continuous_; }
    void setContinuous(bool continuous) { continuous_ = continuous; }

    void setThumbImage(const QIcon& image, unsigned state = normal);
    QIcon thumbImage(unsigned state) const;
    // The box the thumb image is drawn in, keeping its shape; unset, the image's largest own size,
    // or 28 × 28, also the size of the round thumb drawn without an image.
    QSize thumbSize() const;
    void setThumbSize(QSize size);

    QColor minimumTrackTintColor() const { return minimumTrackColor_; }
    void setMinimumTrackTintColor(const QColor& color);
    QColor maximumTrackTintColor() const { return maximumTrackColor_; }
    void setMaximumTrackTintColor(const QColor& color);

    // In widget coordinates, for the value shown.
    QRectF trackRect() const;
    QRectF thumbRect() const;

    QSize sizeHint() const override;

protected:
    void beginTracking(QPointF position) override;
    void continueTracking(QPointF position) override;
    void endTracking(QPointF position) override;
    void cancelTracking() override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    float valueAt(qreal x) const;
    qreal positionOf(float value) const;
    void trackTo(float value);
    void finishTracking();
    void stopAnimation();

    float value_ = 0.0f;
    float minimum_ = 0.0f;
    float maximum_ = 1.0f;
    // Differs from value_ only while the thumb glides.
    float shownValue_ = 0.0f;
    bool continuous_ = true;
    QHash<unsigned, QIcon> thumbImages_;
    QSize thumbSize_;
    QColor minimumTrackColor_;
    QColor maximumTrackColor_;
    qreal grabOffset_ = 0;
    float valueAtTrackingStart_ = 0.0f;
    QPointer<QVariantAnimation> animation_;
};

} // namespace ui
