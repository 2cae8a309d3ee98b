#include "platform/av/CaptureVideoPreviewLayer.h"

#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"

#include <QSize>

#include <algorithm>
#include <cmath>

namespace av {

CaptureVideoPreviewLayer::CaptureVideoPreviewLayer(CaptureSession* session, QObject* parent)
    : QObject(parent), captureSession(session), previewOutput(new CapturePreviewOutput) {
    connect(previewOutput, &CapturePreviewOutput::frameAvailable, this,
            &CaptureVideoPreviewLayer::takeFrame);
    if (captureSession)
        captureSession->addOutput(previewOutput);
}

CaptureVideoPreviewLayer::~CaptureVideoPreviewLayer() {
    if (captureSession && previewOutput->session() == captureSession) {
        const bool running = captureSession->isRunning();
        captureSession->removeOutput(previewOutput);
        if (running) {
            // The running pipeline hands frames to the output until the session rebuilds
            // without it, so it lives until then (or until the session goes).
            previewOutput->setParent(captureSession);
            connect(captureSession, &CaptureSession::didStopRunning, previewOutput,
                    &QObject::deleteLater);
            return;
        }
    }
    delete previewOutput;
}

CaptureSession* CaptureVideoPreviewLayer::session() const {
    return captureSession;
}

CaptureConnection* CaptureVideoPreviewLayer::connection() const {
    return previewOutput->connectionWithMediaType(MediaType::video);
}

void CaptureVideoPreviewLayer::setVideoGravity(VideoGravity value) {
    if (std::exchange(gravity, value) != value)
        invalidate();
}

void CaptureVideoPreviewLayer::setFrame(const QRectF& value) {
    if (std::exchange(layerFrame, value) != value)
        invalidate();
}

void CaptureVideoPreviewLayer::setContentsScale(qreal value) {
    if (value > 0 && !qFuzzyCompare(std::exchange(scale, value), value))
        invalidate();
}

void CaptureVideoPreviewLayer::invalidate() {
    pictureValid = false;
    emit needsDisplay();
}

void CaptureVideoPreviewLayer::takeFrame() {
    GstHandle<GstSample> frame = previewOutput->takeLatestFrame();
    if (!frame)
        return;
    current = std::move(frame);
    currentShown = false;
    GstVideoInfo info;
    if (GstCaps* caps = gst_sample_get_caps(current.get());
        caps && gst_video_info_from_caps(&info, caps))
        currentSize = QSize(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info));
    emit needsDisplay();
}

QSize CaptureVideoPreviewLayer::videoSize() const {
    if (currentSize.isValid())
        return currentSize;
    if (captureSession && captureSession->isRunning()) {
        const CaptureDeviceFormat format = captureSession->runningFormat();
        return QSize(format.width, format.height);
    }
    return {};
}

QRectF CaptureVideoPreviewLayer::pictureRect(const QSize& video, int rotationDegrees) const {
    const QRectF bounds(QPointF(0, 0), layerFrame.size());
    if (video.isEmpty() || bounds.isEmpty() || gravity == VideoGravity::resize)
        return bounds;
    const QSizeF turned = rotationDegrees % 180 == 0 ? QSizeF(video) : QSizeF(video).transposed();
    const qreal widthRatio = bounds.width() / turned.width();
    const qreal heightRatio = bounds.height() / turned.height();
    const qreal factor = gravity == VideoGravity::resizeAspectFill
                             ? std::max(widthRatio, heightRatio)
                             : std::min(widthRatio, heightRatio);
    const QSizeF shown = turned * factor;
    return QRectF(
        QPointF((bounds.width() - shown.width()) / 2, (bounds.height() - shown.height()) / 2),
        shown);
}

QImage CaptureVideoPreviewLayer::contents() {
    if (!current)
        return picture;
    const int rotation = connection()->rotationDegrees();
    if (currentShown && pictureValid && rotation == pictureRotation)
        return picture;
    const QSize pixels(qRound(layerFrame.width() * scale), qRound(layerFrame.height() * scale));
    const QRectF placed = pictureRect(currentSize, rotation);
    const QRectF target(placed.topLeft() * scale, placed.size() * scale);
    if (!converter.convert(current.get(), pixels, target, rotation, &picture))
        return picture;
    picture.setDevicePixelRatio(scale);
    pictureValid = true;
    pictureRotation = rotation;
    if (!std::exchange(currentShown, true)) {
        ++displayed;
        shownTimestamp = GST_BUFFER_PTS(gst_sample_get_buffer(current.get()));
    }
    return picture;
}

QPointF CaptureVideoPreviewLayer::captureDevicePointOfInterestForPoint(const QPointF& point) const {
    const int rotation = connection()->rotationDegrees();
    const QRectF placed = pictureRect(videoSize(), rotation);
    if (placed.isEmpty())
        return QPointF(0.5, 0.5);
    // Across the turned picture, then back through the turn to the camera's own picture.
    const qreal u = (point.x() - placed.left()) / placed.width();
    const qreal v = (point.y() - placed.top()) / placed.height();
    QPointF unturned;
    switch (rotation) {
    case 90:
        unturned = QPointF(v, 1 - u);
        break;
    case 180:
        unturned = QPointF(1 - u, 1 - v);
        break;
    case 270:
        unturned = QPointF(1 - v, u);
        break;
    default:
        unturned = QPointF(u, v);
    }
    return QPointF(std::clamp(unturned.x(), 0.0, 1.0), std::clamp(unturned.y(), 0.0, 1.0));
}

} // namespace av
