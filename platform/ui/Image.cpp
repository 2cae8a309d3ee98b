#include "platform/ui/Image.h"

#include <QBuffer>
#include <QImageReader>
#include <QTransform>

#include <array>

namespace ui {

namespace {

// By raw value: the EXIF tag, and the Qt transformation that shows the pixels upright.
constexpr std::array<int, 8> exifTags{1, 3, 8, 6, 2, 4, 5, 7};
constexpr std::array<QImageIOHandler::Transformations::Int, 8> transformations{
    QImageIOHandler::TransformationNone,
    QImageIOHandler::TransformationRotate180,
    QImageIOHandler::TransformationRotate270,
    QImageIOHandler::TransformationRotate90,
    QImageIOHandler::TransformationMirror,
    QImageIOHandler::TransformationFlip,
    QImageIOHandler::TransformationFlipAndRotate90,
    QImageIOHandler::TransformationMirrorAndRotate90};

bool quarterTurn(Image::Orientation orientation) {
    switch (orientation) {
    case Image::Orientation::left:
    case Image::Orientation::right:
    case Image::Orientation::leftMirrored:
    case Image::Orientation::rightMirrored:
        return true;
    default:
        return false;
    }
}

} // namespace

std::optional<Image> Image::fromData(const QByteArray& data) {
    QBuffer buffer;
    buffer.setData(data);
    QImageReader reader(&buffer);
    reader.setAutoTransform(false);
    QImage pixels = reader.read();
    if (pixels.isNull())
        return std::nullopt;
    Orientation orientation = Orientation::up;
    for (size_t i = 0; i < transformations.size(); ++i)
        if (reader.transformation().toInt() == transformations[i])
            orientation = Orientation(i);
    return Image(std::move(pixels), orientation);
}

QSizeF Image::size() const {
    const QSizeF stored = pixels.size();
    return quarterTurn(turn) ? stored.transposed() : stored;
}

QImage Image::displayedImage() const {
    // Qt's transformations are a mirror and a flip, then a quarter turn clockwise.
    const auto t = transformations[int(turn)];
    QImage shown = pixels.mirrored(t & QImageIOHandler::TransformationMirror,
                                   t & QImageIOHandler::TransformationFlip);
    if (t & QImageIOHandler::TransformationRotate90)
        shown = shown.transformed(QTransform().rotate(90));
    return shown;
}

int Image::exifOrientation(Orientation orientation) {
    return exifTags[int(orientation)];
}

Image::Orientation Image::fromExifOrientation(int tag) {
    for (size_t i = 0; i < exifTags.size(); ++i)
        if (exifTags[i] == tag)
            return Orientation(i);
    return Orientation::up;
}

} // namespace ui
