#pragma once

#include "platform/av/CaptureConnection.h"
#include "platform/av/GstHandle.h"
#include "platform/av/MetadataObject.h"
#include "platform/av/VideoFrameConverter.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRectF>

#include <memory>
#include <optional>

namespace av {

class CapturePreviewOutput;
class CaptureSession;

// Shows a session's live picture: a preview output added to the session hands over the newest
// frame, and the layer draws it into its frame with its gravity, turned as its connection's
// orientation says. Whoever displays the layer sets its frame and paints contents() there when
// told that the layer needs display. While the owner paints every picture, each new frame is
// converted on a preview worker thread before the owner is told, so painting only draws a ready
// picture; while a conversion runs,
// newer frames wait and only the newest is converted next, so a slow machine skips frames and
// never holds the camera back. A picture asked for at a size or turn the worker has not drawn
// yet (a resize, a turn) is converted at once on the asking thread.
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

    // With resizeAspectFill: fill only when both the frame and the turned picture are portrait (a
    // phone held upright over an upright clip); any other pair is fitted with bars, so the view
    // shows all that is recorded. Off until set.
    bool fillsOnlyPortraitOverPortrait() const { return portraitFillOnly; }
    void setFillsOnlyPortraitOverPortrait(bool value);

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
    // A frame has arrived since the session first ran (the camera shows something).
    bool hasPicture() const { return current || !picture.isNull(); }
    // Frames whose picture the worker drew, so that the owner's thread did not have to.
    quint64 framesConvertedInBackground() const { return convertedInBackground; }

    // Where the picture lies in the owner's coordinates (inside the frame, or past it when it
    // fills); the frame itself before the picture's size is known.
    QRectF pictureFrame() const;

    // A point of the layer (its own coordinates: (0, 0) at the frame's top left) as a point of the
    // camera's picture, from (0, 0) top left to (1, 1) bottom right of the unturned frame,
    // clamped to that square.
    QPointF captureDevicePointOfInterestForPoint(const QPointF& point) const;
    // A found object with its bounds in the owner's coordinates, where it is shown; nullopt
    // before the picture's size is known.
    std::optional<MetadataObject>
    transformedMetadataObjectForMetadataObject(const MetadataObject& object) const;

signals:
    // A new frame arrived or the way it is drawn changed.
    void needsDisplay();

private:
    // What a picture is drawn for: its size in pixels, where the turned picture lies, the turn.
    struct Geometry {
        QSize pixels;
        QRectF target;
        int rotation = 0;
        qreal scale = 1.0;
        bool operator==(const Geometry&) const = default;
    };
    struct Background;

    void takeFrame();
    Geometry geometry() const;
    void convertInBackground();
    void backgroundDone(quint64 frame, Geometry drawn, QImage result);
    void invalidate();
    QSize videoSize() const;
    // The rectangle, in frame coordinates, that the whole turned picture covers.
    QRectF pictureRect(const QSize& video, int rotationDegrees) const;

    QPointer<CaptureSession> captureSession;
    CapturePreviewOutput* previewOutput;
    VideoGravity gravity = VideoGravity::resizeAspect;
    bool portraitFillOnly = false;
    QRectF layerFrame;
    qreal scale = 1.0;

    GstHandle<GstSample> current;
    quint64 currentNumber = 0; // counts the frames taken, so a drawing can name its own
    bool currentShown = false;
    QSize currentSize;
    VideoFrameConverter converter;
    std::shared_ptr<Background> background;
    bool contentsAsked = false;
    bool converting = false;
    bool convertAgain = false;
    quint64 convertedInBackground = 0;
    QImage picture;
    bool pictureValid = false;
    Geometry pictureGeometry;
    GstClockTime shownTimestamp = GST_CLOCK_TIME_NONE;
    quint64 displayed = 0;
};

} // namespace av
