#pragma once

#include <functional>
#include <vector>

#include <QElapsedTimer>
#include <QPointF>
#include <QPointer>
#include <QWidget>

class QTouchEvent;

namespace ui {

// A widget that turns mouse, touch and keyboard input into the platform's control events and
// sends them to targets.
//
// A press inside starts tracking (touchDown, highlighted). Moves report touchDragInside or
// touchDragOutside against the tracking bounds, the rect grown by trackingMargin(), with
// touchDragExit or touchDragEnter first when the touch crosses them. The release sends
// touchUpInside or touchUpOutside; losing the touch (TouchCancel, hidden, disabled, the window
// deactivated) sends touchCancel. Space, Enter and Return on a focused control send touchDown then
// touchUpInside.
class Control : public QWidget {
    Q_OBJECT

public:
    // The platform's raw values.
    enum ControlEvent : unsigned {
        touchDown = 1u << 0,
        touchDownRepeat = 1u << 1,
        touchDragInside = 1u << 2,
        touchDragOutside = 1u << 3,
        touchDragEnter = 1u << 4,
        touchDragExit = 1u << 5,
        touchUpInside = 1u << 6,
        touchUpOutside = 1u << 7,
        touchCancel = 1u << 8,
        valueChanged = 1u << 12,
        allTouchEvents = 0x0FFFu,
        allEvents = 0xFFFFFFFFu,
    };
    enum State : unsigned {
        normal = 0,
        highlighted = 1u << 0,
        disabled = 1u << 1,
        selected = 1u << 2,
    };
    using Action = std::function<void(Control* sender)>;

    static constexpr int defaultTrackingMargin = 70;

    explicit Control(QWidget* parent = nullptr);

    // A null receiver keeps the action for the control's lifetime; otherwise the action is
    // dropped when the receiver is destroyed.
    void addTarget(QObject* receiver, Action action, unsigned events);
    // Removes the given events from the receiver's actions, and actions left with none.
    void removeTargets(QObject* receiver, unsigned events = allEvents);
    unsigned allControlEvents() const;
    // Each event in the mask, lowest first: controlEvent(), then the matching actions in the
    // order they were added. Sent whether or not the control is enabled.
    void sendActions(unsigned events);

    bool isHighlighted() const { return controlHighlighted; }
    void setHighlighted(bool highlighted);
    bool isSelected() const { return controlSelected; }
    virtual void setSelected(bool selected);
    // The platform's state mask.
    unsigned state() const;

    bool isTracking() const { return controlTracking; }
    bool isTouchInside() const { return touchInside; }
    int trackingMargin() const { return controlTrackingMargin; }
    void setTrackingMargin(int margin) { controlTrackingMargin = margin; }

signals:
    void controlEvent(unsigned event);

protected:
    // Tracking hooks for subclasses, called before the matching events are sent.
    virtual void beginTracking(QPointF /*position*/) {}
    virtual void continueTracking(QPointF /*position*/) {}
    virtual void endTracking(QPointF /*position*/) {}
    virtual void cancelTracking() {}

    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Target {
        QPointer<QObject> receiver;
        bool guarded = false; // the receiver's lifetime bounds the action
        Action action;
        unsigned events = 0;
    };

    bool handleTouch(QTouchEvent* event);
    void touchBegan(QPointF position, bool repeat);
    void touchMoved(QPointF position);
    void touchEnded(QPointF position);
    void touchCancelled();
    QRectF trackingBounds() const;
    void pruneTargets();

    std::vector<Target> controlTargets;
    bool controlHighlighted = false;
    bool controlSelected = false;
    bool controlTracking = false;
    bool trackingTouchScreen = false;
    bool touchInside = false;
    int controlTrackingMargin = defaultTrackingMargin;
    int touchPointId = -1;
    // A touch soon after and near the last one is a repeated tap.
    QElapsedTimer sinceLastTouchEnd;
    QPointF lastTouchEnd;
};

} // namespace ui
