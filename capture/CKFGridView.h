#pragma once

#include <QColor>
#include <QWidget>

// A rule-of-thirds grid over the live picture: two vertical and two horizontal lines, one unit
// wide, on a transparent background. It takes no input, so taps and pinches reach the picture.
class CKFGridView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QColor color READ color WRITE setColor)

public:
    explicit CKFGridView(QWidget* parent = nullptr);
    CKFGridView(const QRect& frame, QWidget* parent = nullptr);

    QColor color() const { return lineColor; }
    void setColor(const QColor& value);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor lineColor = QColor(255, 255, 255, 128);
};
