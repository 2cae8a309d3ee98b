#pragma once

#include "platform/av/MediaType.h"

#include <QObject>

namespace av {

// The link between the session's inputs and one output, for one media type. For video it
// carries how the movie is to be shown: the orientation is written as the movie's rotation,
// no pixel is rotated.
class CaptureConnection : public QObject {
    Q_OBJECT

public:
    enum class VideoOrientation {
        portrait = 1,
        portraitUpsideDown = 2,
        landscapeRight = 3,
        landscapeLeft = 4
    };
    enum class VideoStabilizationMode { off = 0, standard = 1, cinematic = 2, automatic = -1 };

    CaptureConnection(MediaType mediaType, QObject* parent = nullptr);

    MediaType mediaType() const { return type; }

    VideoOrientation videoOrientation() const { return orientation; }
    void setVideoOrientation(VideoOrientation value) { orientation = value; }
    // Degrees clockwise a player turns the picture for this orientation.
    int rotationDegrees() const;

    // No camera we drive offers stabilisation; the request is kept but does nothing.
    bool isVideoStabilizationSupported() const { return false; }
    VideoStabilizationMode preferredVideoStabilizationMode() const { return stabilization; }
    void setPreferredVideoStabilizationMode(VideoStabilizationMode mode) { stabilization = mode; }

private:
    MediaType type;
    VideoOrientation orientation = VideoOrientation::portrait;
    VideoStabilizationMode stabilization = VideoStabilizationMode::off;
};

} // namespace av
