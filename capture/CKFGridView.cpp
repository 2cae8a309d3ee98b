#include "capture/CKFGridView.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

CKFGridView::CKFGridView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);
}

CKFGridView::CKFGridView(const QRect& frame, QWidget* parent) : CKFGridView(parent) {
    setGeometry(frame);
}

void CKFGridView::setColor(const QColor& value) {
    lineColor = value;
    update();
}

void CKFGridView::paintEvent(QPaintEvent*) {
    // The whole view, whatever part needs repainting: the thirds are thirds of the view.
    const QRectF bounds = rect();
    const qreal width = bounds.width(), height = bounds.height();
    // Each line covers whole device pixels, so it stays crisp instead of smearing over two, and
    // the lines are filled as one shape, so the crossings are no brighter than the lines.
    const qreal ratio = devicePixelRatioF();
    const qreal thickness = std::max(1.0, std::round(ratio)) / ratio;
    const auto snapped = [ratio](qreal position) { return std::floor(position * ratio) / ratio; };
    QPainterPath grid;
    grid.setFillRule(Qt::WindingFill);
    for (const qreal x : {width / 3, 2 * width / 3})
        grid.addRect(QRectF(snapped(x), bounds.top(), thickness, height));
    for (const qreal y : {height / 3, 2 * height / 3})
        grid.addRect(QRectF(bounds.left(), snapped(y), width, thickness));
    QPainter(this).fillPath(grid, lineColor);
}
