#include "capture/CKUtils.h"

#include <limits>

QRectF CKUtils::cropRect(QSizeF imageSize, qint64 width, qint64 height) {
    const double imageRatio = imageSize.width() / imageSize.height();
    const double targetRatio = double(height) / double(width);
    if (targetRatio <= imageRatio) {
        const double cropWidth = targetRatio * imageSize.height();
        return {(imageSize.width() - cropWidth) * 0.5, 0, cropWidth, imageSize.height()};
    }
    const double cropHeight = imageSize.width() / targetRatio;
    return {0, (imageSize.height() - cropHeight) * 0.5, imageSize.width(), cropHeight};
}

ui::Image::Orientation CKUtils::imageOrientation(foundation::Device::Orientation orientation,
                                                 bool mirrored) {
    using D = foundation::Device::Orientation;
    using I = ui::Image::Orientation;
    switch (orientation) {
    case D::portraitUpsideDown:
        return I::left;
    case D::landscapeLeft:
        return mirrored ? I::down : I::up;
    case D::landscapeRight:
        return mirrored ? I::up : I::down;
    default:
        return I::right;
    }
}

std::optional<ui::Image> CKUtils::cropAndScale(const ui::Image& image, qint64 width, qint64 height,
                                               foundation::Device::Orientation orientation,
                                               bool mirrored) {
    const QImage& pixels = image.cgImage();
    if (pixels.isNull())
        return std::nullopt;
    // The platform's bitmap row is height × bits per pixel bytes; only its overflow matters here,
    // the bitmap below is packed.
    qint64 rowLength = 0;
    if (__builtin_mul_overflow(height, qint64(pixels.depth()), &rowLength))
        qFatal("CKUtils::cropAndScale: a row of %lld pixels overflows", height);
    if (width <= 0 || height <= 0 || width > std::numeric_limits<int>::max() ||
        height > std::numeric_limits<int>::max())
        return std::nullopt;
    // Whole pixels covering the rectangle, as the platform's crop rounds it.
    const QRect crop =
        cropRect(image.size(), width, height).toAlignedRect().intersected(pixels.rect());
    if (crop.isEmpty())
        return std::nullopt;
    const QImage scaled = pixels.copy(crop).scaled(int(height), int(width), Qt::IgnoreAspectRatio,
                                                   Qt::SmoothTransformation);
    if (scaled.isNull())
        return std::nullopt;
    return ui::Image(scaled, imageOrientation(orientation, mirrored));
}
