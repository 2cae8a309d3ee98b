#include "platform/av/CapturePhotoOutput.h"

#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/Logging.h"
#include "platform/av/VideoFrameConverter.h"
#include "platform/foundation/WhenReady.h"

#include <QMutexLocker>
#include <QtConcurrent/QtConcurrentRun>

#include <gst/video/video.h>

namespace av {

namespace {

int exifOrientationFor(const CaptureConnection& connection) {
    switch (connection.rotationDegrees()) {
    case 90:
        return 6;
    case 180:
        return 3;
    case 270:
        return 8;
    default:
        return 1;
    }
}

// The mean of a sparse grid of the frame's luma samples: enough to tell a dark scene.
int meanLuma(GstSample* sample) {
    GstVideoInfo info;
    GstCaps* caps = gst_sample_get_caps(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!caps || !buffer || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420)
        return 255;
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return 255;
    const int step = 32;
    quint64 sum = 0, count = 0;
    const guint8* luma = map.data + GST_VIDEO_INFO_PLANE_OFFSET(&info, 0);
    const int stride = GST_VIDEO_INFO_PLANE_STRIDE(&info, 0);
    for (int y = step / 2; y < GST_VIDEO_INFO_HEIGHT(&info); y += step)
        for (int x = step / 2; x < GST_VIDEO_INFO_WIDTH(&info); x += step, ++count)
            sum += luma[y * stride + x];
    gst_buffer_unmap(buffer, &map);
    return count ? int(sum / count) : 255;
}

struct Encoded {
    QByteArray jpeg;
    QSize size;
};

Encoded encode(const GstHandle<GstSample>& sample, int exifOrientation,
               const QDateTime& captureTime) {
    GstVideoInfo info;
    GstCaps* caps = gst_sample_get_caps(sample.get());
    if (!caps || !gst_video_info_from_caps(&info, caps))
        return {};
    const QSize size(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info));
    QImage picture;
    VideoFrameConverter converter;
    if (!converter.convert(sample.get(), size, QRectF(QPointF(0, 0), size), 0, &picture))
        return {};
    return {CapturePhoto::encodeJpeg(picture, exifOrientation, captureTime), size};
}

} // namespace

QByteArray CapturePhotoOutput::JPEGPhotoDataRepresentation(GstSample* photoSampleBuffer,
                                                           GstSample* previewPhotoSampleBuffer) {
    if (!photoSampleBuffer || !previewPhotoSampleBuffer)
        return {};
    GstCaps* caps = gst_sample_get_caps(photoSampleBuffer);
    GstBuffer* buffer = gst_sample_get_buffer(photoSampleBuffer);
    if (!caps || !buffer || gst_caps_is_empty(caps))
        return {};
    if (gst_structure_has_name(gst_caps_get_structure(caps, 0), "image/jpeg")) {
        GstMapInfo map;
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
            return {};
        QByteArray jpeg(reinterpret_cast<const char*>(map.data), qsizetype(map.size));
        gst_buffer_unmap(buffer, &map);
        return jpeg;
    }
    return encode(GstHandle<GstSample>(photoSampleBuffer, GstRef::add), 1,
                  QDateTime::currentDateTime())
        .jpeg;
}

CapturePhotoOutput::CapturePhotoOutput(QObject* parent)
    : CaptureOutput(parent), videoConnection(new CaptureConnection(MediaType::video, this)) {}

CapturePhotoOutput::~CapturePhotoOutput() = default;

CaptureConnection* CapturePhotoOutput::connectionWithMediaType(MediaType type) const {
    return type == MediaType::video ? videoConnection : nullptr;
}

CaptureDevice* CapturePhotoOutput::cameraDevice() const {
    if (!session())
        return nullptr;
    for (CaptureInput* input : session()->inputs())
        if (auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input))
            if (deviceInput->device()->hasMediaType(MediaType::video))
                return deviceInput->device();
    return nullptr;
}

void CapturePhotoOutput::sessionDidStart(GstCaps*, GstCaps*, GstElement* pipeline) {
    pipe = GstHandle<GstElement>(pipeline, GstRef::add);
    frameRate = session() && session()->runningFrameRate() > 0 ? session()->runningFrameRate() : 30;
}

void CapturePhotoOutput::sessionWillStop() {
    pipe.reset();
    {
        // Times restart with the next pipeline, and any frame of it comes after the request.
        QMutexLocker lock(&mutex);
        for (Request& request : requests)
            if (!request.frame)
                request.notBefore =
                    request.flash ? GstClockTime(flashFrames * GST_SECOND / frameRate) : 0;
    }
    // A format change restarts the session at once; only a session that stays stopped fails
    // the photos still waiting for a frame.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!pipe)
                failWaiting();
        },
        Qt::QueuedConnection);
}

void CapturePhotoOutput::failWaiting() {
    std::vector<Request> unframed;
    {
        QMutexLocker lock(&mutex);
        auto framed = std::stable_partition(requests.begin(), requests.end(),
                                            [](const Request& r) { return !r.frame; });
        std::move(requests.begin(), framed, std::back_inserter(unframed));
        requests.erase(requests.begin(), framed);
    }
    for (Request& request : unframed)
        fail(std::move(request),
             Error(Error::Code::sessionNotRunning, qtTrId("photo_camera_stopped_before")));
}

bool CapturePhotoOutput::flashFires(const CapturePhotoSettings& settings,
                                    const CaptureDevice* camera) const {
    if (!camera || !camera->isTorchModeSupported(CaptureDevice::TorchMode::on))
        return false;
    switch (settings.flashMode) {
    case CapturePhotoSettings::FlashMode::on:
        return true;
    case CapturePhotoSettings::FlashMode::automatic:
        return latestLuma.load() < darkLuma;
    default:
        return false;
    }
}

void CapturePhotoOutput::setTorch(Request& request, bool lit) {
    if (!request.flash)
        return;
    if (!lit)
        request.flash = false;
    // Overlapping flash photos share one lighting: the first lights it, the last puts it back.
    const int before = litRequests;
    litRequests += lit ? 1 : -1;
    if ((lit && before > 0) || (!lit && litRequests > 0))
        return;
    CaptureDevice* camera = cameraDevice();
    if (!camera)
        return;
    try {
        camera->lockForConfiguration();
    } catch (const Error& error) {
        qCDebug(lcAv) << "photo: no torch for the flash:" << error.localizedDescription();
        return;
    }
    if (lit)
        torchBeforeFlash = camera->torchMode();
    camera->setTorchMode(lit ? CaptureDevice::TorchMode::on : torchBeforeFlash);
    camera->unlockForConfiguration();
}

void CapturePhotoOutput::capturePhoto(const CapturePhotoSettings& settings,
                                      PhotoCaptureDelegate* delegate) {
    if (!delegate)
        qFatal("av::CapturePhotoOutput: capturePhoto needs a delegate");
    Request request;
    request.id = nextID++;
    request.delegate = delegate;
    request.exifOrientation = exifOrientationFor(*videoConnection);
    ++pending;
    const GstClockTime now =
        pipe ? gst_element_get_current_running_time(pipe.get()) : GST_CLOCK_TIME_NONE;
    if (!GST_CLOCK_TIME_IS_VALID(now)) {
        fail(std::move(request),
             Error(Error::Code::sessionNotRunning, qtTrId("photo_camera_not_running")));
        return;
    }
    request.flash = flashFires(settings, cameraDevice());
    request.flashFired = request.flash;
    setTorch(request, true);
    request.notBefore =
        now + (request.flash ? GstClockTime(flashFrames * GST_SECOND / frameRate) : 0);
    QMutexLocker lock(&mutex);
    requests.push_back(std::move(request));
}

void CapturePhotoOutput::handleSample(MediaType type, GstSample* sample) {
    if (type != MediaType::video)
        return;
    latestLuma = meanLuma(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    const GstClockTime pts = buffer ? GST_BUFFER_PTS(buffer) : GST_CLOCK_TIME_NONE;
    bool notify = false;
    {
        QMutexLocker lock(&mutex);
        for (Request& request : requests) {
            if (request.frame || !GST_CLOCK_TIME_IS_VALID(pts) || pts < request.notBefore)
                continue;
            request.frame = GstHandle<GstSample>(sample, GstRef::add);
            request.captureTime = QDateTime::currentDateTime();
            notify = !std::exchange(noticePending, true) || notify;
        }
    }
    if (notify)
        QMetaObject::invokeMethod(this, &CapturePhotoOutput::takeFrames, Qt::QueuedConnection);
}

void CapturePhotoOutput::takeFrames() {
    std::vector<Request> taken;
    {
        QMutexLocker lock(&mutex);
        noticePending = false;
        auto framed = std::stable_partition(requests.begin(), requests.end(),
                                            [](const Request& r) { return !r.frame; });
        std::move(framed, requests.end(), std::back_inserter(taken));
        requests.erase(framed, requests.end());
    }
    for (Request& request : taken) {
        setTorch(request, false);
        foundation::whenReady(
            QtConcurrent::run(encode, request.frame, request.exifOrientation, request.captureTime),
            this, [this, request](const Encoded& encoded) {
                if (encoded.jpeg.isEmpty())
                    finish(request, {}, encoded.size,
                           Error(Error::Code::recordingFailed, qtTrId("photo_not_encoded")));
                else
                    finish(request, encoded.jpeg, encoded.size, std::nullopt);
            });
    }
}

void CapturePhotoOutput::fail(Request request, const Error& error) {
    setTorch(request, false);
    QMetaObject::invokeMethod(
        this, [this, request = std::move(request), error] { finish(request, {}, {}, error); },
        Qt::QueuedConnection);
}

void CapturePhotoOutput::finish(const Request& request, QByteArray jpeg, QSize size,
                                const std::optional<Error>& error) {
    --pending;
    const CapturePhoto photo(std::move(jpeg),
                             CaptureResolvedPhotoSettings{request.id, size, request.flashFired});
    request.delegate->didFinishProcessingPhoto(this, photo, error);
}

} // namespace av
