#include "platform/av/CaptureMetadataOutput.h"

#include "platform/av/FaceDetector.h"
#include "platform/av/Logging.h"
#include "platform/foundation/WhenReady.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QMutexLocker>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <mutex>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gst/video/video.h>

#include <algorithm>
#include <vector>

namespace av {

struct CaptureMetadataOutput::GreyFrame {
    std::vector<unsigned char> pixels;
    int width = 0, height = 0;
    GstClockTime time = GST_CLOCK_TIME_NONE;
};

// Loaded on the worker at the first detection: parsing the model takes longer than a frame.
struct CaptureMetadataOutput::Detector {
    std::once_flag loading;
    FaceDetector faces;
    bool loaded = false;

    // nanoseconds: the detection's own time, without the model's loading.
    std::vector<MetadataObject> detect(const GreyFrame& frame, qint64* nanoseconds) {
        std::call_once(loading, [this] {
            const QString path = cascadePath();
            loaded = !path.isEmpty() && faces.load(path);
            if (!loaded)
                qCWarning(lcAv) << "no face model could be loaded (install opencv-data); no "
                                   "faces are detected";
        });
        std::vector<MetadataObject> found;
        if (!loaded)
            return found;
        QElapsedTimer timer;
        timer.start();
        for (const QRectF& box : faces.detect(frame.pixels.data(), frame.width, frame.height,
                                              frame.width, detectionWidth))
            found.push_back({MetadataObject::typeFace, box, frame.time});
        *nanoseconds = timer.nsecsElapsed();
        return found;
    }
};

namespace {

// One detection at a time for the whole process, on a thread that yields to the camera, the
// encoder and the GUI: a niced thread gets its share when the machine is busy, never theirs.
QThreadPool& detectionPool() {
    static QThreadPool* pool = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(1);
        made->setExpiryTimeout(-1);
        made->start([] { setpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)), 10); });
        return made;
    }();
    return *pool;
}

// A copy of the luma plane: a plain copy is all the streaming thread does, the worker scales it.
std::shared_ptr<CaptureMetadataOutput::GreyFrame> greyCopy(GstSample* sample) {
    GstVideoInfo info;
    GstCaps* caps = gst_sample_get_caps(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!caps || !buffer || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420)
        return nullptr;
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return nullptr;
    const int width = GST_VIDEO_INFO_WIDTH(&info);
    const int height = GST_VIDEO_INFO_HEIGHT(&info);
    const guint8* luma = map.data + GST_VIDEO_INFO_PLANE_OFFSET(&info, 0);
    const int stride = GST_VIDEO_INFO_PLANE_STRIDE(&info, 0);
    auto frame = std::make_shared<CaptureMetadataOutput::GreyFrame>();
    frame->time = GST_BUFFER_PTS(buffer);
    frame->width = width;
    frame->height = height;
    frame->pixels.resize(size_t(width) * size_t(height));
    for (int row = 0; row < height; ++row)
        std::copy_n(luma + size_t(row) * size_t(stride), width,
                    frame->pixels.data() + size_t(row) * size_t(width));
    gst_buffer_unmap(buffer, &map);
    return frame;
}

} // namespace

CaptureMetadataOutput::CaptureMetadataOutput(QObject* parent)
    : CaptureOutput(parent), videoConnection(new CaptureConnection(MediaType::video, this)),
      detector(std::make_shared<Detector>()) {}

CaptureMetadataOutput::~CaptureMetadataOutput() = default;

QString CaptureMetadataOutput::cascadePath() {
    static const QString found = [] {
        QStringList folders{QStringLiteral("/usr/share/opencv4"),
                            QStringLiteral("/usr/share/opencv")};
        // Another folder of models instead, such as one without them.
        if (const QString chosen = qEnvironmentVariable("TESSARO_FACE_MODEL_DIR");
            !chosen.isEmpty())
            folders = QStringList{chosen};
        for (const QString& folder : folders)
            for (const char* file : {"haarcascades/haarcascade_frontalface_alt2.xml",
                                     "haarcascades/haarcascade_frontalface_default.xml",
                                     "lbpcascades/lbpcascade_frontalface_improved.xml"}) {
                const QString path = folder + QLatin1Char('/') + QString::fromLatin1(file);
                if (QFileInfo(path).isReadable())
                    return path;
            }
        qCWarning(lcAv).noquote() << "no face model under" << folders.join(QStringLiteral(", "))
                                  << "(install opencv-data); faces are not detected";
        return QString();
    }();
    return found;
}

QStringList CaptureMetadataOutput::availableMetadataObjectTypes() const {
    return cascadePath().isEmpty() ? QStringList() : QStringList{MetadataObject::typeFace};
}

void CaptureMetadataOutput::setMetadataObjectTypes(const QStringList& value) {
    const QStringList available = availableMetadataObjectTypes();
    for (const QString& type : value)
        if (!available.contains(type))
            qFatal("av::CaptureMetadataOutput: type \"%s\" is not available", qPrintable(type));
    types = value;
    detecting = types.contains(MetadataObject::typeFace);
}

CaptureConnection* CaptureMetadataOutput::connectionWithMediaType(MediaType type) const {
    return type == MediaType::video ? videoConnection : nullptr;
}

void CaptureMetadataOutput::handleSample(MediaType type, GstSample* sample) {
    if (type != MediaType::video || !detecting)
        return;
    ++seen;
    {
        // A copy is made only while the worker waits for one.
        QMutexLocker lock(&mutex);
        if (noticePending || running)
            return;
        noticePending = true;
    }
    std::shared_ptr<GreyFrame> frame = greyCopy(sample);
    QMutexLocker lock(&mutex);
    latest = std::move(frame);
    QMetaObject::invokeMethod(this, &CaptureMetadataOutput::startDetection, Qt::QueuedConnection);
}

void CaptureMetadataOutput::startDetection() {
    std::shared_ptr<GreyFrame> frame;
    {
        QMutexLocker lock(&mutex);
        noticePending = false;
        frame = std::exchange(latest, nullptr);
        if (!frame)
            return;
        running = true;
    }
    started.start();
    const auto detection = QtConcurrent::run(&detectionPool(), [detector = detector, frame] {
        qint64 nanoseconds = 0;
        std::vector<MetadataObject> objects = detector->detect(*frame, &nanoseconds);
        return std::make_pair(std::move(objects), nanoseconds);
    });
    foundation::whenReady(
        detection, this, [this](const std::pair<std::vector<MetadataObject>, qint64>& result) {
            const auto& [objects, nanoseconds] = result;
            // The next frame is asked for once the interval is over.
            QTimer::singleShot(std::max<qint64>(0, minimumInterval - started.elapsed()), this,
                               [this] {
                                   QMutexLocker lock(&mutex);
                                   running = false;
                               });
            ++detected;
            detectionNanoseconds += nanoseconds;
            if (objectsDelegate && detecting)
                objectsDelegate->didOutputMetadataObjects(this, objects);
        });
}

void CaptureMetadataOutput::sessionWillStop() {
    QMutexLocker lock(&mutex);
    latest.reset();
}

} // namespace av
