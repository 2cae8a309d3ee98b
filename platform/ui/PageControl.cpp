#include "platform/ui/PageControl.h"

#include <QPainter>

#include <algorithm>

namespace ui {

namespace {

constexpr int dotSide = 8;
constexpr int dotSpacing = 10;

} // namespace

PageControl::PageControl(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void PageControl::setNumberOfPages(int pages) {
    pages_ = std::max(0, pages);
    setCurrentPage(current_);
    updateGeometry();
    update();
}

void PageControl::setCurrentPage(int page) {
    current_ = std::clamp(page, 0, std::max(0, pages_ - 1));
    update();
}

void PageControl::setPageIndicatorTintColor(const QColor& color) {
    dot_ = color;
    update();
}

void PageControl::setCurrentPageIndicatorTintColor(const QColor& color) {
    currentDot_ = color;
    update();
}

QSize PageControl::sizeHint() const {
    return QSize(std::max(0, pages_ * dotSide + (pages_ - 1) * dotSpacing) + 2 * dotSpacing,
                 dotSide + 2 * dotSpacing);
}

void PageControl::paintEvent(QPaintEvent*) {
    if (pages_ == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const int row = pages_ * dotSide + (pages_ - 1) * dotSpacing;
    const QPointF first((width() - row) / 2.0, (height() - dotSide) / 2.0);
    for (int page = 0; page < pages_; ++page) {
        painter.setBrush(page == current_ ? currentDot_ : dot_);
        painter.drawEllipse(
            QRectF(first + QPointF(page * (dotSide + dotSpacing), 0), QSizeF(dotSide, dotSide)));
    }
}

} // namespace ui
