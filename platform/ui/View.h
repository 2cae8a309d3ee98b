#pragma once

#include <QColor>
#include <QWidget>

namespace ui {

// A plain container that can fill itself with a colour and round its corners, as the screens'
// cards, badges and dots do. Children are not clipped to the corners.
class View : public QWidget {
    Q_OBJECT

public:
    explicit View(QWidget* parent = nullptr);

    // Invalid: transparent.
    QColor backgroundColor() const { return viewBackgroundColor; }
    void setBackgroundColor(const QColor& color);
    // Capped at half the shorter side, which makes a pill or a circle.
    qreal cornerRadius() const { return viewCornerRadius; }
    void setCornerRadius(qreal radius);
    // A line drawn inside the edge, as a layer's border; none while the width is 0.
    QColor borderColor() const { return viewBorderColor; }
    void setBorderColor(const QColor& color);
    qreal borderWidth() const { return viewBorderWidth; }
    void setBorderWidth(qreal width);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor viewBackgroundColor;
    qreal viewCornerRadius = 0;
    QColor viewBorderColor = Qt::black;
    qreal viewBorderWidth = 0;
};

} // namespace ui
