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

void View::setBorderColor(const QColor& color) {
    viewBorderColor = color;
    update();
}

void View::setBorderWidth(qreal width) {
    viewBorderWidth = width;
    update();
}

void View::paintEvent(QPaintEvent*) {
    const bool filled = viewBackgroundColor.isValid() && viewBackgroundColor.alpha() > 0;
    const bool bordered = viewBorderWidth > 0 && viewBorderColor.isValid();
    if (!filled && !bordered)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, viewCornerRadius > 0);
    const qreal radius = qMin(viewCornerRadius, qMin(width(), height()) / 2.0);
    if (filled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(viewBackgroundColor);
        painter.drawRoundedRect(QRectF(rect()), radius, radius);
    }
    if (bordered) {
        painter.setPen(QPen(viewBorderColor, viewBorderWidth));
        painter.setBrush(Qt::NoBrush);
        const qreal inset = viewBorderWidth / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius,
                                radius);
    }
}

} // namespace ui
