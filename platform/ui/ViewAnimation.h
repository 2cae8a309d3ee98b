#pragma once

#include <functional>

#include <QtGlobal>

class QWidget;

namespace ui {

// Block-based opacity animations of widgets.
//
// A widget's alpha is carried by a QGraphicsOpacityEffect that exists only while the alpha is
// below 1 or animating. Below 0.01 the widget lets mouse input through to what lies beneath, as
// the platform's hit-testing skips nearly transparent views.
//
// setAlpha calls made inside an animate() block are collected and animated from the widget's
// displayed alpha to the new value; a new animation of a widget replaces the one it has. An
// explicit setAlpha outside a block stops the widget's animation and applies at once.
class ViewAnimation {
public:
    // The platform's raw option values.
    enum AnimationOption : unsigned {
        allowUserInteraction = 1u << 1,
        beginFromCurrentState = 1u << 2, // always the behaviour here: animations start where shown
        repeat = 1u << 3,
        autoreverse = 1u << 4,
        curveEaseInOut = 0u << 16,
        curveEaseIn = 1u << 16,
        curveEaseOut = 2u << 16,
        curveLinear = 3u << 16,
    };
    using AnimationOptions = unsigned;

    ViewAnimation() = delete;

    static void setAlpha(QWidget* widget, qreal alpha);
    // The displayed alpha: mid-animation it is the value shown at this moment.
    static qreal alpha(const QWidget* widget);

    // Durations and delays in seconds. The completion receives false when any animation of the
    // block was stopped before its end (removeAllAnimations, a newer animation of the widget, the
    // widget destroyed); a repeating animation ends only that way. Without
    // allowUserInteraction the animated widgets take no mouse input while they animate.
    static void animate(double duration, double delay, AnimationOptions options,
                        std::function<void()> animations,
                        std::function<void(bool finished)> completion = {});
    static void animate(double duration, std::function<void()> animations,
                        std::function<void(bool finished)> completion = {});

    // Stops the widget's animation where it is; its block's completion runs with false.
    static void removeAllAnimations(QWidget* widget);
    static bool isAnimating(const QWidget* widget);
};

} // namespace ui
