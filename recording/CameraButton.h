#pragma once

#include <QColor>
#include <QPointer>
#include <QRectF>

#include "platform/ui/Control.h"

class QVariantAnimation;

enum class CameraButtonType : int {
    photo = 0,
    video = 1,
};

// The round shutter button of the recording screen: a white ring around a filled shape that
// morphs between the idle disc and the selected shape (a smaller disc for photo, a rounded square
// for video), and whose fill brightens while a photo button is pressed.
//
// Shape and fill changes are animations that stay in place once finished and hold the last value
// shown; the stored values underneath (the idle disc, the type's rest colour) show again only when
// a type change drops the animations.
//
// The member functions touchDown, touchUpInside and touchCancel hide the control-event constants of
// the same names; name those as ui::Control::touchUpInside and so on.
class CameraButton : public ui::Control {
    Q_OBJECT

public:
    static constexpr int side = 66;

    explicit CameraButton(QWidget* parent = nullptr);

    CameraButtonType type() const { return buttonType; }
    // Drops every animation, including those holding the current shape and fill.
    void setType(CameraButtonType type);

    // Seconds, for every animation of the button.
    double animateDuration() const { return buttonAnimateDuration; }
    void setAnimateDuration(double seconds) { buttonAnimateDuration = seconds; }

    // Every write animates the shape, even to the one already shown.
    void setSelected(bool selected) override;

    // Bound to touch down, touch-up inside and drag exit (not to the touch-cancel event).
    void touchDown(ui::Control* sender);
    void touchUpInside(ui::Control* sender);
    void touchCancel(ui::Control* sender);

    // What is shown at this moment, mid-animation included.
    QRectF innerRect() const;
    qreal innerCornerRadius() const;
    QColor innerColor() const;
    bool isAnimating() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Shape {
        QRectF rect;
        qreal cornerRadius = 0;
    };

    static Shape idleShape();
    static Shape selectedShape(CameraButtonType type);
    Shape shownShape() const;
    void animatePath();
    void animateFill(const QColor& to);
    QVariantAnimation* startAnimation(const QVariant& from, const QVariant& to);

    CameraButtonType buttonType = CameraButtonType::photo;
    double buttonAnimateDuration = 0.3;
    QColor fillColor;
    Shape pathFrom;
    Shape pathTo;
    // Progress 0 to 1 from pathFrom to pathTo, eased.
    QPointer<QVariantAnimation> pathAnimation;
    QPointer<QVariantAnimation> fillAnimation;
};
