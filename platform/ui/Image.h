#pragma once

#include <QByteArray>
#include <QImage>
#include <QSizeF>

#include <optional>

namespace ui {

// A still picture and the turn a viewer gives it: the pixels stay as captured, the orientation
// says how to show them (the EXIF orientation of a JPEG).
class Image {
public:
    // The platform's raw values.
    enum class Orientation {
        up = 0,
        down = 1,
        left = 2,
        right = 3,
        upMirrored = 4,
        downMirrored = 5,
        leftMirrored = 6,
        rightMirrored = 7
    };

    Image() = default;
    explicit Image(QImage pixels, Orientation orientation = Orientation::up)
        : pixels(std::move(pixels)), turn(orientation) {}

    // The picture of an encoded file, turned as its EXIF orientation says; nullopt for data that
    // is no picture.
    static std::optional<Image> fromData(const QByteArray& data);

    // Null for a picture without pixels.
    const QImage& cgImage() const { return pixels; }
    Orientation imageOrientation() const { return turn; }
    // As shown: width and height exchanged for the quarter turns.
    QSizeF size() const;
    // The pixels turned as they are shown.
    QImage displayedImage() const;

    // The EXIF orientation tag (1 to 8) of an orientation, and back (anything else is up).
    static int exifOrientation(Orientation orientation);
    static Orientation fromExifOrientation(int tag);

private:
    QImage pixels;
    Orientation turn = Orientation::up;
};

} // namespace ui
