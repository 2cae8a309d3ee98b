#pragma once

#include "platform/av/CaptureDevice.h"

#include <chrono>

namespace av {

// A picture (PNG or JPEG) or a video file shown as a live back camera, for demos and tests
// (--camera file:PATH). The session scales either to its format, keeping the aspect ratio
// (black bars), and adapts the frame rate.
//
// A video loops forever, without its sound. The source is a bin holding a playbin and a live
// appsrc; the playbin's frames are pushed into the appsrc, which is what the session links.
// Playbin loops without a gap when given the same file again as it is about to finish (a
// segment seek would need the bus), and the appsrc stamps each frame with the session's time on
// arrival, so the loop's restarting clock never shows. Being in the session's pipeline, the
// playbin starts and stops with it and its failures reach the session's bus like a camera's.
// The bin handles the playbin's preroll itself: a live pipeline does not wait for one.
class FileCameraDevice : public CaptureDevice {
    Q_OBJECT

public:
    explicit FileCameraDevice(QString path, QObject* parent = nullptr);

    const QString& path() const { return filePath; }
    bool isStillPicture() const;
    GstElement* createSourceElement() const override;
    // What the header says against the file (missing, empty, not a picture, too large).
    std::optional<Error> sourceProblem() const override;

    // Larger pictures are refused before they are decoded.
    static constexpr int largestPictureSide = 16384;
    // Why the file cannot serve as a camera, in words; nullopt when it can. Beyond the header it
    // decodes a picture whole and a video's first picture, so a file cut short is caught before
    // the camera starts. A video the machine cannot decode within the patience (a fraction of a
    // second normally) is given the benefit of the doubt.
    static std::optional<Error>
    problemWith(const QString& path, std::chrono::milliseconds patience = std::chrono::seconds(3));

private:
    GstElement* createPictureSource() const;
    GstElement* createVideoSource() const;

    QString filePath;
};

} // namespace av
