#pragma once

#include <QObject>

class QWidget;

namespace ui {

// One pinch, whatever makes it: two fingers on a touch screen, a touchpad pinch, or Ctrl with
// the mouse wheel (each notch a short pinch of its own). The action is sent at every state:
// began (scale 1), changed, then ended or cancelled. Each step multiplies the scale as it is
// then, so an action that writes the scale at began makes the gesture continue from there.
// Hiding the view cancels a pinch under way.
class PinchGestureRecognizer : public QObject {
    Q_OBJECT

public:
    enum class State { possible = 0, began = 1, changed = 2, ended = 3, cancelled = 4 };
    Q_ENUM(State)

    // Scale per wheel notch (120 eighths of a degree); eight notches double the zoom.
    static constexpr double wheelNotchFactor = 1.0905077326652577;

    // Watches the view's events; the view is the parent.
    explicit PinchGestureRecognizer(QWidget* view);

    QWidget* view() const;
    State state() const { return currentState; }
    double scale() const { return currentScale; }
    void setScale(double value) { currentScale = value; }

    // What the event sources do; begins the gesture when none is under way. Factors that are not
    // a positive number are ignored.
    void scaleBy(double factor);
    void end();
    void cancel();

signals:
    void action(PinchGestureRecognizer* recognizer);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool active() const { return currentState == State::began || currentState == State::changed; }
    void enter(State state);

    State currentState = State::possible;
    double currentScale = 1.0;
};

} // namespace ui
