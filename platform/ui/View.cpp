#include "platform/ui/View.h"

#include <QPainter>

namespace ui {

View::View(QWidget* parent) : QWidget(parent) {}

void View::setBackgroundColor(const QColor& color) {
    viewBackgroundColor = color;
    update();
}

void View::setCornerRadius(qreal radius) {
    viewCornerRadius = radius;
    update();
}

void View::paintEvent(QPaintEvent*) {
    if (!viewBackgroundColor.isValid() || viewBackgroundColor.alpha() == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, viewCornerRadius > 0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(viewBackgroundColor);
    const qreal radius = qMin(viewCornerRadius, qMin(width(), height()) / 2.0);
    painter.drawRoundedRect(QRectF(rect()), radius, radius);
}

} // namespace ui
