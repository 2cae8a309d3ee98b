#pragma once

#include "platform/av/CaptureConnection.h"
#include "platform/av/GstHandle.h"
#include "platform/av/VideoFrameConverter.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRectF>

namespace av {

class CapturePreviewOutput;
class CaptureSession;

// Shows a session's live picture: a preview output added to the session hands over the newest
// frame, and the layer draws it into its frame with its gravity, turned as its connection's
// orientation says. Whoever displays the layer sets its frame and paints contents() there when
// told that the layer needs display. Frames are converted only when painted, so a slow painter
// skips frames and never holds the camera back.
class CaptureVideoPreviewLayer : public QObject {
    Q_OBJECT

public:
    enum class VideoGravity { resize, resizeAspect, resizeAspectFill };
    Q_ENUM(VideoGravity)

    explicit CaptureVideoPreviewLayer(CaptureSession* session, QObject* parent = nullptr);
    ~CaptureVideoPreviewLayer() override;

    CaptureSession* session() const;
    CaptureConnection* connection() const;
    CapturePreviewOutput* output() const { return previewOutput; }

    // How the picture fills the frame; resizeAspect (letter-boxed) until changed.
    VideoGravity videoGravity() const { return gravity; }
    void setVideoGravity(VideoGravity value);

    // Where the layer lies in its owner's coordinates.
    QRectF frame() const { return layerFrame; }
    void setFrame(const QRectF& value);
    // Image pixels per unit of the frame.
    qreal contentsScale() const { return scale; }
    void setContentsScale(qreal value);

    // The newest picture at the frame's size (times the contents scale, black outside the
    // video), or a null image before the first frame. The last picture stays after the session
    // stops.
    QImage contents();
    // The capture time (running time) of the frame in contents(), or GST_CLOCK_TIME_NONE.
    GstClockTime contentsTimestamp() const { return shownTimestamp; }
    quint64 framesDisplayed() const { return displayed; }

    // A point of the layer (its own coordinates: (0, 0) at the frame's top left) as a point of the
    // camera's picture, from (0, 0) top left to (1, 1) bottom right of the unturned frame,
    // clamped to that square.
    QPointF captureDevicePointOfInterestForPoint(const QPointF& point) const;

signals:
    // A new frame arrived or the way it is drawn changed.
    void needsDisplay();

private:
    void takeFrame();
    void invalidate();
    QSize videoSize() const;
    // The rectangle, in frame coordinates, that the whole turned picture covers.
    QRectF pictureRect(const QSize& video, int rotationDegrees) const;

    QPointer<CaptureSession> captureSession;
    CapturePreviewOutput* previewOutput;
    VideoGravity gravity = VideoGravity::resizeAspect;
    QRectF layerFrame;
    qreal scale = 1.0;

    GstHandle<GstSample> current;
    bool currentShown = false;
    QSize currentSize;
    VideoFrameConverter converter;
    QImage picture;
    bool pictureValid = false;
    int pictureRotation = 0;
    GstClockTime shownTimestamp = GST_CLOCK_TIME_NONE;
    quint64 displayed = 0;
};

} // namespace av
