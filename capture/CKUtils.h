#pragma once

#include "platform/foundation/Device.h"
#include "platform/ui/Image.h"

#include <QRectF>

#include <optional>

// Turns a captured still into a picture of the size the user asked for.
class CKUtils {
public:
    // The centre of image cropped to width:height as the user sees it and scaled to that size,
    // tagged so that it shows the way the device was held. The picture is taken to be in the
    // sensor's landscape layout, so the bitmap is height wide and width tall. nullopt when a
    // step fails: no pixels, an empty crop, a bitmap that cannot be made.
    static std::optional<ui::Image> cropAndScale(const ui::Image& image, qint64 width,
                                                 qint64 height,
                                                 foundation::Device::Orientation orientation,
                                                 bool mirrored);

    // The centred crop, in the picture's shown size, applied to its pixels as they are stored.
    static QRectF cropRect(QSizeF imageSize, qint64 width, qint64 height);
    // Mirrored swaps only the two landscape cases; the mirrored orientations are never used.
    static ui::Image::Orientation imageOrientation(foundation::Device::Orientation orientation,
                                                   bool mirrored);
};
