#pragma once

#include "platform/av/CaptureOutput.h"
#include "platform/av/GstHandle.h"

#include <QMutex>

#include <atomic>

namespace av {

// Hands the latest camera frame to the preview: the streaming thread only swaps a reference
// under a lock and posts one notice; a slow consumer skips frames and never holds the camera.
class CapturePreviewOutput : public CaptureOutput {
    Q_OBJECT

public:
    explicit CapturePreviewOutput(QObject* parent = nullptr);

    CaptureConnection* connectionWithMediaType(MediaType type) const override;
    bool wantsMedia(MediaType type) const override { return type == MediaType::video; }
    void handleSample(MediaType type, GstSample* sample) override;
    void sessionWillStop() override;

    // GUI thread: the newest frame not yet taken, or null when there is none (a notice posted
    // before a stop may arrive after it).
    GstHandle<GstSample> takeLatestFrame();

    quint64 framesReceived() const { return received.load(); }
    quint64 framesTaken() const { return taken.load(); }

signals:
    // Queued to the GUI thread; at most one is pending at a time.
    void frameAvailable();

private:
    void deliverNotice();

    CaptureConnection* videoConnection;
    QMutex mutex; // guards latest and noticePending
    GstHandle<GstSample> latest;
    bool noticePending = false;
    std::atomic<quint64> received{0};
    std::atomic<quint64> taken{0};
};

} // namespace av
