#include "platform/ui/ImageView.h"

#include <algorithm>

#include <QPainter>

namespace ui {

ImageView::ImageView(QWidget* parent) : QWidget(parent) {}

ImageView::ImageView(const QIcon& image, QWidget* parent) : QWidget(parent) {
    setImage(image);
}

void ImageView::setImage(const QIcon& image) {
    shownImage = image;
    pixmapSize = {};
    updateGeometry();
    update();
}

void ImageView::setImage(const QPixmap& image) {
    shownImage = image.isNull() ? QIcon() : QIcon(image);
    pixmapSize = image.deviceIndependentSize().toSize();
    updateGeometry();
    update();
}

void ImageView::setContentMode(ContentMode mode) {
    shownContentMode = mode;
    update();
}

QSize ImageView::imageSize() const {
    if (shownImage.isNull())
        return {};
    if (pixmapSize.isValid())
        return pixmapSize;
    const QList<QSize> sizes = shownImage.availableSizes();
    if (!sizes.isEmpty()) {
        return *std::max_element(sizes.begin(), sizes.end(), [](QSize a, QSize b) {
            return a.width() * a.height() < b.width() * b.height();
        });
    }
    return shownImage.actualSize(size().isEmpty() ? QSize(64, 64) : size());
}

QSize ImageView::sizeHint() const {
    const QSize natural = imageSize();
    return natural.isValid() ? natural : QWidget::sizeHint();
}

QRectF ImageView::imageRect() const {
    const QSizeF natural = imageSize();
    const QRectF bounds = rect();
    if (natural.isEmpty())
        return {};
    QSizeF size;
    switch (shownContentMode) {
    case ContentMode::scaleToFill:
        return bounds;
    case ContentMode::scaleAspectFit:
        size = natural.scaled(bounds.size(), Qt::KeepAspectRatio);
        break;
    case ContentMode::scaleAspectFill:
        size = natural.scaled(bounds.size(), Qt::KeepAspectRatioByExpanding);
        break;
    case ContentMode::center:
        size = natural;
        break;
    }
    return QRectF(bounds.center().x() - size.width() / 2.0,
                  bounds.center().y() - size.height() / 2.0, size.width(), size.height());
}

void ImageView::paintEvent(QPaintEvent*) {
    const QRectF target = imageRect();
    if (target.isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // Raster icons never come out larger than their source; drawPixmap scales them up.
    const QPixmap pixmap = shownImage.pixmap(target.size().toSize(), devicePixelRatioF());
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
}

} // namespace ui
