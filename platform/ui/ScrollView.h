#pragma once

#include <QPointF>
#include <QPointer>
#include <QSizeF>
#include <QTimer>
#include <QWidget>

class QVariantAnimation;

namespace ui {

class ScrollView;

// Told when a scroll that the user set going has come to rest.
class ScrollViewDelegate {
public:
    virtual ~ScrollViewDelegate() = default;
    virtual void scrollViewDidEndDecelerating(ScrollView* /*scrollView*/) {}
};

// A viewport onto content larger than itself: subviews go into contentView(), positioned in
// content coordinates, and contentOffset is the content point at the viewport's top left.
// Content beyond contentSize is drawn but cannot be scrolled to, so a content height of one
// point keeps a horizontal pager from moving vertically.
//
// The user scrolls by dragging (mouse or touch screen), by the touchpad or wheel, and by the
// keys (arrows, Page Up/Down, Home, End) while the view has focus. With paging enabled every
// scroll comes to rest on a whole multiple of the view's size, gliding there, and the delegate
// is told once it rests; a drag released after a quick flick goes on to the next page.
class ScrollView : public QWidget {
    Q_OBJECT

public:
    // Seconds a glide to the next page lasts.
    static constexpr double pageGlideDuration = 0.3;

    explicit ScrollView(QWidget* parent = nullptr);
    ~ScrollView() override;

    QWidget* contentView() const { return scrollContent; }
    // Reparents the view into the content.
    void addSubview(QWidget* view);

    QSizeF contentSize() const { return scrollContentSize; }
    void setContentSize(QSizeF size);
    QPointF contentOffset() const { return scrollOffset; }
    // Kept within the content; an animated change glides and ends with the delegate's notice.
    void setContentOffset(QPointF offset, bool animated = false);

    bool isPagingEnabled() const { return scrollPaging; }
    void setPagingEnabled(bool enabled) { scrollPaging = enabled; }

    // Not owned; null: nobody is told.
    ScrollViewDelegate* delegate() const { return scrollDelegate; }
    void setDelegate(ScrollViewDelegate* delegate) { scrollDelegate = delegate; }

    bool isDragging() const { return scrollDragging; }
    bool isDecelerating() const;

signals:
    void didScroll();

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QPointF maximumOffset() const;
    QPointF clamped(QPointF offset) const;
    void applyOffset(QPointF offset);
    void layoutContent();

    // Times are the events' own, in milliseconds: a loaded machine that handles them late
    // does not change how fast the finger moved.
    void beginDrag(QPointF position, quint64 time);
    void moveDrag(QPointF position, quint64 time);
    void endDrag(bool cancelled, quint64 time);
    // Where a scroll that began at began and moves by velocity (points per second) comes to
    // rest: the nearest page, or the next one after a flick, never more than a page from began.
    QPointF restingOffset(QPointF velocity, QPointF began) const;
    void glideTo(QPointF target);
    void stopGlide();
    void finishScroll();

    QPointer<QWidget> scrollContent;
    QSizeF scrollContentSize;
    QPointF scrollOffset;
    bool scrollPaging = false;
    ScrollViewDelegate* scrollDelegate = nullptr;

    // A drag: where it began, the offset then, and the latest movement for the flick's speed.
    bool pressed = false;
    bool scrollDragging = false;
    bool trackingTouch = false;
    int touchPointId = -1;
    QPointF pressPosition;
    QPointF lastPosition;
    QPointF dragStartOffset;
    QPointF scrollVelocity;
    quint64 lastMoveTime = 0;

    QVariantAnimation* scrollGlide = nullptr;
    // Touchpad scrolling without begin and end phases is taken as ended after a pause.
    QTimer wheelRest;
    QPointF wheelVelocity;
    quint64 lastWheelTime = 0;
    bool wheelScrolling = false;
};

} // namespace ui
