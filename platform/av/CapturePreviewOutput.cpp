#include "platform/av/CapturePreviewOutput.h"

#include <QMetaObject>
#include <QMutexLocker>

namespace av {

CapturePreviewOutput::CapturePreviewOutput(QObject* parent)
    : CaptureOutput(parent), videoConnection(new CaptureConnection(MediaType::video, this)) {}

CaptureConnection* CapturePreviewOutput::connectionWithMediaType(MediaType type) const {
    return type == MediaType::video ? videoConnection : nullptr;
}

void CapturePreviewOutput::handleSample(MediaType type, GstSample* sample) {
    if (type != MediaType::video)
        return;
    ++received;
    bool notify = false;
    {
        QMutexLocker lock(&mutex);
        latest = GstHandle<GstSample>(sample, GstRef::add);
        notify = !std::exchange(noticePending, true);
    }
    if (notify)
        QMetaObject::invokeMethod(this, &CapturePreviewOutput::deliverNotice, Qt::QueuedConnection);
}

void CapturePreviewOutput::deliverNotice() {
    {
        QMutexLocker lock(&mutex);
        noticePending = false;
    }
    emit frameAvailable();
}

GstHandle<GstSample> CapturePreviewOutput::takeLatestFrame() {
    QMutexLocker lock(&mutex);
    GstHandle<GstSample> frame = std::move(latest);
    latest = {};
    if (frame)
        ++taken;
    return frame;
}

void CapturePreviewOutput::sessionWillStop() {
    QMutexLocker lock(&mutex);
    latest = {};
}

} // namespace av
