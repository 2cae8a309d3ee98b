#include "platform/av/CaptureConnection.h"

namespace av {

CaptureConnection::CaptureConnection(MediaType mediaType, QObject* parent)
    : QObject(parent), type(mediaType) {}

int CaptureConnection::rotationDegrees() const {
    // Portrait is the camera's natural orientation. A device turned a quarter to the left sees the
    // world turned a quarter to the right, so the player turns it back by three quarters.
    switch (orientation) {
    case VideoOrientation::portrait:
        return 0;
    case VideoOrientation::portraitUpsideDown:
        return 180;
    case VideoOrientation::landscapeRight:
        return 270;
    case VideoOrientation::landscapeLeft:
        return 90;
    }
    return 0;
}

} // namespace av
