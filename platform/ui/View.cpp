#include "platform/ui/View.h"

#include <QPainter>

namespace ui {

View::View(QWidget* parent) : QWidget(parent) {}

void View::setBackgroundColor(const QColor& color) {
    backgroundColor_ = color;
    update();
}

void View::setCornerRadius(qreal radius) {
    cornerRadius_ = radius;
    update();
}

void View::paintEvent(QPaintEvent*) {
    if (!backgroundColor_.isValid() || backgroundColor_.alpha() == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, cornerRadius_ > 0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(backgroundColor_);
    const qreal radius = qMin(cornerRadius_, qMin(width(), height()) / 2.0);
    painter.drawRoundedRect(QRectF(rect()), radius, radius);
}

} // namespace ui
