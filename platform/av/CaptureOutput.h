#pragma once

#include "platform/av/CaptureConnection.h"
#include "platform/av/MediaType.h"

#include <QObject>

#include <gst/gst.h>

namespace av {

class CaptureSession;

// Something the session delivers media to. The session calls the hooks below; media arrives on
// GStreamer's streaming threads, everything else on the GUI thread.
class CaptureOutput : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual CaptureConnection* connectionWithMediaType(MediaType type) const = 0;
    // Whether the output takes this kind of media at all; the session only sends what is wanted.
    virtual bool wantsMedia(MediaType type) const = 0;

    // GUI thread: the session is running with these formats (caps of the samples to come);
    // the samples' times are this pipeline's running time.
    virtual void sessionDidStart(GstCaps* videoCaps, GstCaps* audioCaps, GstElement* pipeline) {
        Q_UNUSED(videoCaps);
        Q_UNUSED(audioCaps);
        Q_UNUSED(pipeline);
    }
    // GUI thread: the session is about to stop or to change format; finish what needs finishing.
    virtual void sessionWillStop() {}

    // Streaming threads: one frame or one block of sound, timestamped in the session's running
    // time. Must not block for long, and must not call into the GUI.
    virtual void handleSample(MediaType type, GstSample* sample) = 0;

    CaptureSession* session() const { return owner; }

private:
    friend class CaptureSession;
    CaptureSession* owner = nullptr;
};

} // namespace av
