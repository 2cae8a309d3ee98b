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
    pageCount = std::max(0, pages);
    setCurrentPage(shownPage);
    updateGeometry();
    update();
}

void PageControl::setCurrentPage(int page) {
    shownPage = std::clamp(page, 0, std::max(0, pageCount - 1));
    update();
}

void PageControl::setPageIndicatorTintColor(const QColor& color) {
    dot = color;
    update();
}

void PageControl::setCurrentPageIndicatorTintColor(const QColor& color) {
    currentDot = color;
    update();
}

QSize PageControl::sizeHint() const {
    return QSize(std::max(0, pageCount * dotSide + (pageCount - 1) * dotSpacing) + 2 * dotSpacing,
                 dotSide + 2 * dotSpacing);
}

void PageControl::paintEvent(QPaintEvent*) {
    if (pageCount == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const int row = pageCount * dotSide + (pageCount - 1) * dotSpacing;
    const QPointF first((width() - row) / 2.0, (height() - dotSide) / 2.0);
    for (int page = 0; page < pageCount; ++page) {
        painter.setBrush(page == shownPage ? currentDot : dot);
        painter.drawEllipse(
            QRectF(first + QPointF(page * (dotSide + dotSpacing), 0), QSizeF(dotSide, dotSide)));
    }
}

} // namespace ui
