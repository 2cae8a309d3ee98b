#pragma once

#include <QSize>

namespace av {

// What one photo is asked with.
struct CapturePhotoSettings {
    // The platform's raw values, those of the torch.
    enum class FlashMode { off = 0, on = 1, automatic = 2 };
    FlashMode flashMode = FlashMode::off;
};

// What the photo was taken with, once the output has decided.
struct CaptureResolvedPhotoSettings {
    qint64 uniqueID = 0;
    QSize photoDimensions;
    bool isFlashEnabled = false;
};

} // namespace av
