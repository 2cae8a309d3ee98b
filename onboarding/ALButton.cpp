#include "onboarding/ALButton.h"

#include "platform/ui/ViewAnimation.h"

ALButton::ALButton(QWidget* parent) : ui::Button(parent) {
    configureTouchFeedback();
}

void ALButton::configureTouchFeedback() {
    setAdjustsImageWhenHighlighted(false);
    auto pressed = [this](ui::Control*) { onTouchUpInside(); };
    auto released = [this](ui::Control*) { onTouchUpOutside(); };
    addTarget(this, pressed, touchDragInside);
    addTarget(this, pressed, touchDown);
    addTarget(this, released, touchDragOutside);
    addTarget(this, released, touchCancel);
    addTarget(this, released, touchUpInside);
    addTarget(this, released, touchUpOutside);
}

void ALButton::onTouchUpInside() {
    ui::ViewAnimation::setAlpha(this, pressedAlpha);
}

void ALButton::onTouchUpOutside() {
    ui::ViewAnimation::setAlpha(this, 1.0);
}
