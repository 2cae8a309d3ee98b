#include "platform/av/CaptureVideoPreviewLayer.h"

#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"

#include <QCoreApplication>
#include <QSize>
#include <QThreadPool>

#include <algorithm>
#include <cmath>

namespace av {

namespace {

// The preview workers of every layer: one per core of a small machine, so that a conversion never
// waits behind another layer's for long, and never more, so that previews leave the encoder room.
QThreadPool& previewPool() {
    static QThreadPool* pool = [] {
        auto* threads = new QThreadPool(QCoreApplication::instance());
        threads->setMaxThreadCount(2);
        threads->setObjectName(QStringLiteral("preview"));
        return threads;
    }();
    return *pool;
}

} // namespace

// The worker's own converter and its two pictures: it draws into one while the owner shows the
// other, so no picture's memory is shared with a painter while it is written.
struct CaptureVideoPreviewLayer::Background {
    VideoFrameConverter converter;
    QImage pictures[2];
    int next = 0;
};

CaptureVideoPreviewLayer::CaptureVideoPreviewLayer(CaptureSession* session, QObject* parent)
    : QObject(parent), captureSession(session), previewOutput(new CapturePreviewOutput),
      background(std::make_shared<Background>()) {
    connect(previewOutput, &CapturePreviewOutput::frameAvailable, this,
            &CaptureVideoPreviewLayer::takeFrame);
    if (captureSession)
        captureSession->addOutput(previewOutput);
}

CaptureVideoPreviewLayer::~CaptureVideoPreviewLayer() {
    // Once removed, the running pipeline hands the output nothing more, so it can go at once.
    if (captureSession && previewOutput->session() == captureSession)
        captureSession->removeOutput(previewOutput);
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

void CaptureVideoPreviewLayer::setFillsOnlyPortraitOverPortrait(bool value) {
    if (std::exchange(portraitFillOnly, value) != value)
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
    ++currentNumber;
    currentShown = false;
    GstVideoInfo info;
    if (GstCaps* caps = gst_sample_get_caps(current.get());
        caps && gst_video_info_from_caps(&info, caps))
        currentSize = QSize(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info));
    // Pictures are drawn ahead only for an owner that paints them: one that did not ask for the
    // last picture (a hidden view, a page out of sight) costs nothing per frame. Before the layer
    // is placed there is nothing to draw either. The owner is told at once then.
    const bool painted = std::exchange(contentsAsked, false);
    if (!painted || geometry().pixels.isEmpty()) {
        emit needsDisplay();
        return;
    }
    convertInBackground();
}

CaptureVideoPreviewLayer::Geometry CaptureVideoPreviewLayer::geometry() const {
    Geometry result;
    result.rotation = connection() ? connection()->rotationDegrees() : 0;
    result.scale = scale;
    result.pixels = QSize(qRound(layerFrame.width() * scale), qRound(layerFrame.height() * scale));
    const QRectF placed = pictureRect(currentSize, result.rotation);
    result.target = QRectF(placed.topLeft() * scale, placed.size() * scale);
    return result;
}

void CaptureVideoPreviewLayer::convertInBackground() {
    if (converting) {
        convertAgain = true;
        return;
    }
    if (!current)
        return;
    converting = true;
    convertAgain = false;
    const Geometry drawn = geometry();
    // The worker holds its own reference to the frame and to its pictures; the layer may go while
    // it draws, and the finished picture then finds nobody. The frame goes back as soon as it is
    // drawn: while a recording's frames wait for the encoder, each frame held is megabytes more.
    previewPool().start([shared = background, sample = current, frame = currentNumber, drawn,
                         layer = QPointer<CaptureVideoPreviewLayer>(this)]() mutable {
        QImage& target = shared->pictures[shared->next];
        shared->next = 1 - shared->next;
        QImage result;
        if (shared->converter.convert(sample.get(), drawn.pixels, drawn.target, drawn.rotation,
                                      &target)) {
            target.setDevicePixelRatio(drawn.scale);
            result = target;
        }
        sample.reset();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [layer, frame, drawn, result = std::move(result)]() mutable {
                if (layer)
                    layer->backgroundDone(frame, drawn, std::move(result));
            },
            Qt::QueuedConnection);
    });
}

void CaptureVideoPreviewLayer::backgroundDone(quint64 frame, Geometry drawn, QImage result) {
    converting = false;
    // Drawn for a size or turn that is no longer asked, or for a frame already shown another
    // way: only the newest frame at the present geometry is worth showing.
    if (!result.isNull() && drawn == geometry() && frame == currentNumber && !currentShown) {
        picture = std::move(result);
        pictureValid = true;
        pictureGeometry = drawn;
        currentShown = true;
        ++displayed;
        ++convertedInBackground;
        shownTimestamp = GST_BUFFER_PTS(gst_sample_get_buffer(current.get()));
        emit needsDisplay();
    } else if (!currentShown) {
        convertAgain = true;
    }
    if (convertAgain)
        convertInBackground();
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
    const bool fills = gravity == VideoGravity::resizeAspectFill &&
                       (!portraitFillOnly ||
                        (bounds.height() > bounds.width() && turned.height() > turned.width()));
    const qreal factor =
        fills ? std::max(widthRatio, heightRatio) : std::min(widthRatio, heightRatio);
    const QSizeF shown = turned * factor;
    return QRectF(
        QPointF((bounds.width() - shown.width()) / 2, (bounds.height() - shown.height()) / 2),
        shown);
}

QImage CaptureVideoPreviewLayer::contents() {
    contentsAsked = true;
    if (!current)
        return picture;
    const Geometry wanted = geometry();
    if (currentShown && pictureValid && pictureGeometry == wanted)
        return picture;
    if (!converter.convert(current.get(), wanted.pixels, wanted.target, wanted.rotation, &picture))
        return picture;
    picture.setDevicePixelRatio(scale);
    pictureValid = true;
    pictureGeometry = wanted;
    if (!std::exchange(currentShown, true)) {
        ++displayed;
        shownTimestamp = GST_BUFFER_PTS(gst_sample_get_buffer(current.get()));
    }
    return picture;
}

QRectF CaptureVideoPreviewLayer::pictureFrame() const {
    const int rotation = connection() ? connection()->rotationDegrees() : 0;
    return pictureRect(videoSize(), rotation).translated(layerFrame.topLeft());
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

std::optional<MetadataObject> CaptureVideoPreviewLayer::transformedMetadataObjectForMetadataObject(
    const MetadataObject& object) const {
    const int rotation = connection()->rotationDegrees();
    const QRectF placed = pictureRect(videoSize(), rotation);
    if (placed.isEmpty())
        return std::nullopt;
    // The inverse of captureDevicePointOfInterestForPoint, without the clamp.
    const auto shown = [&](const QPointF& unturned) {
        QPointF turned;
        switch (rotation) {
        case 90:
            turned = QPointF(1 - unturned.y(), unturned.x());
            break;
        case 180:
            turned = QPointF(1 - unturned.x(), 1 - unturned.y());
            break;
        case 270:
            turned = QPointF(unturned.y(), 1 - unturned.x());
            break;
        default:
            turned = unturned;
        }
        return layerFrame.topLeft() + placed.topLeft() +
               QPointF(turned.x() * placed.width(), turned.y() * placed.height());
    };
    MetadataObject transformed = object;
    transformed.bounds =
        QRectF(shown(object.bounds.topLeft()), shown(object.bounds.bottomRight())).normalized();
    return transformed;
}

} // namespace av
