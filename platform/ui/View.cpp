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

void View::setBorderColor(const QColor& color) {
    borderColor_ = color;
    update();
}

void View::setBorderWidth(qreal width) {
    borderWidth_ = width;
    update();
}

void View::paintEvent(QPaintEvent*) {
    const bool filled = backgroundColor_.isValid() && backgroundColor_.alpha() > 0;
    const bool bordered = borderWidth_ > 0 && borderColor_.isValid();
    if (!filled && !bordered)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, cornerRadius_ > 0);
    const qreal radius = qMin(cornerRadius_, qMin(width(), height()) / 2.0);
    if (filled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(backgroundColor_);
        painter.drawRoundedRect(QRectF(rect()), radius, radius);
    }
    if (bordered) {
        painter.setPen(QPen(borderColor_, borderWidth_));
        painter.setBrush(Qt::NoBrush);
        const qreal inset = borderWidth_ / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius,
                                radius);
    }
}

} // namespace ui
