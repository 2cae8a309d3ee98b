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

    float value() const { return sliderValue; }
    // Clamped to the range. Animated, the thumb glides there; value() has the new value at once.
    void setValue(float value, bool animated = false);
    float minimumValue() const { return sliderMinimum; }
    // Moves the other end and the value when they fall outside the new range.
    void setMinimumValue(float minimum);
    float maximumValue() const { return sliderMaximum; }
    void setMaximumValue(float maximum);

    bool isContinuous() const { return sliderContinuous; }
    void setContinuous(bool continuous) { sliderContinuous = continuous; }

    void setThumbImage(const QIcon& image, unsigned state = normal);
    QIcon thumbImage(unsigned state) const;
    // The box the thumb image is drawn in, keeping its shape; unset, the image's largest own size,
    // or 28 × 28, also the size of the round thumb drawn without an image.
    QSize thumbSize() const;
    void setThumbSize(QSize size);

    QColor minimumTrackTintColor() const { return minimumTrackColor; }
    void setMinimumTrackTintColor(const QColor& color);
    QColor maximumTrackTintColor() const { return maximumTrackColor; }
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

    float sliderValue = 0.0f;
    float sliderMinimum = 0.0f;
    float sliderMaximum = 1.0f;
    // Differs from sliderValue only while the thumb glides.
    float shownValue = 0.0f;
    bool sliderContinuous = true;
    QHash<unsigned, QIcon> thumbImages;
    QSize sliderThumbSize;
    QColor minimumTrackColor;
    QColor maximumTrackColor;
    qreal grabOffset = 0;
    float valueAtTrackingStart = 0.0f;
    QPointer<QVariantAnimation> sliderAnimation;
};

} // namespace ui
