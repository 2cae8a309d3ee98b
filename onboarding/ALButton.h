#pragma once

#include "platform/ui/Button.h"

// A push button whose only press feedback is a fade: drawn at 40 % opacity while a finger or
// the pointer is down on it, at full opacity once the touch leaves, ends or is cancelled. The
// image is not darkened on highlight. The feedback sits beside the button's own actions.
class ALButton : public ui::Button {
    Q_OBJECT

public:
    static constexpr qreal pressedAlpha = 0.4;

    explicit ALButton(QWidget* parent = nullptr);

    // The pressed look. The names are the feedback's historic ones, not what they do.
    void onTouchUpInside();
    // The released look.
    void onTouchUpOutside();

private:
    void configureTouchFeedback();
};
