#pragma once

#include <QObject>
#include <QPointF>

#include <optional>

class QWidget;

namespace ui {

// One tap: a left click, or one finger on a touch screen, let go without moving further than a
// drag would start. A drag, a second finger or another button makes it no tap.
class TapGestureRecognizer : public QObject {
    Q_OBJECT

public:
    // Watches the view's events; the view is the parent.
    explicit TapGestureRecognizer(QWidget* view);

    QWidget* view() const;
    // Where the last tap was let go, in the view's coordinates.
    QPointF locationInView() const { return location; }

signals:
    void action(TapGestureRecognizer* recognizer);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void press(const QPointF& point);
    void move(const QPointF& point);
    void release(const QPointF& point);

    std::optional<QPointF> pressedAt;
    QPointF location;
};

} // namespace ui
