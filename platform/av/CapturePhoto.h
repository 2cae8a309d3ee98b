#pragma once

#include "platform/av/CapturePhotoSettings.h"

#include <QByteArray>
#include <QDateTime>
#include <QImage>

namespace av {

// One still as the photo output delivers it: a JPEG with the EXIF orientation and capture time.
class CapturePhoto {
public:
    CapturePhoto(QByteArray jpeg, CaptureResolvedPhotoSettings settings)
        : data(std::move(jpeg)), settings(settings) {}

    // Empty when the picture could not be encoded.
    const QByteArray& fileDataRepresentation() const { return data; }
    const CaptureResolvedPhotoSettings& resolvedSettings() const { return settings; }

    // A JPEG of picture whose EXIF says how to show it (tag 1 to 8) and when it was taken;
    // empty when the picture cannot be encoded.
    static QByteArray encodeJpeg(const QImage& picture, int exifOrientation,
                                 const QDateTime& captureTime, int quality = 92);

private:
    QByteArray data;
    CaptureResolvedPhotoSettings settings;
};

} // namespace av
