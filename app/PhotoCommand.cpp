#include "app/PhotoCommand.h"

#include "app/EventLoopWait.h"
#include "app/RecordDemo.h"
#include "capture/CKFPhotoSession.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/foundation/FileManager.h"

#include <QFile>
#include <QScopeGuard>
#include <QTextStream>

namespace {

constexpr int secondsForFaces = 15;
constexpr int secondsForPhoto = 15;

// Keeps the newest faces for the summary and passes every notice on to the session's boxes.
struct FaceLog : av::CaptureMetadataOutput::MetadataOutputObjectsDelegate {
    explicit FaceLog(CKFPhotoSession* session) : session(session) {}
    void didOutputMetadataObjects(av::CaptureMetadataOutput* output,
                                  const std::vector<av::MetadataObject>& objects) override {
        ++detections;
        latest = objects;
        session->didOutputMetadataObjects(output, objects);
    }
    CKFPhotoSession* session;
    int detections = 0;
    std::vector<av::MetadataObject> latest;
};

QString fraction(double value) {
    return QString::number(value, 'f', 3);
}

} // namespace

int PhotoCommand::run(const Options& options) {
    QTextStream out(stdout);
    QTextStream err(stderr);
    QString problem;
    const QString output =
        options.output.isEmpty()
            ? RecordDemo::claimNewFile(foundation::FileManager::documentsDirectory(),
                                       QStringLiteral("Tessaro Photo"), QStringLiteral("jpg"),
                                       &problem)
            : RecordDemo::claimFile(options.output, &problem);
    if (output.isEmpty()) {
        err << problem << Qt::endl;
        return 2;
    }
    bool written = false;
    const auto releaseOutput = qScopeGuard([&] {
        if (!written)
            QFile::remove(output);
    });

    CKFPhotoSession session(CKFSession::CameraPosition::back,
                            options.faces ? CKFPhotoSession::CameraDetection::faces
                                          : CKFPhotoSession::CameraDetection::none);
    if (!session.captureDeviceInput()) {
        err << qtTrId("photo_no_camera_could_opened") << Qt::endl;
        return 1;
    }
    std::optional<av::Error> cameraProblem;
    QObject::connect(session.session(), &av::CaptureSession::runtimeError,
                     [&](const av::Error& error) { cameraProblem = error; });
    FaceLog faces(&session);
    if (av::CaptureMetadataOutput* metadata = session.metadataOutput())
        metadata->setMetadataObjectsDelegate(&faces);
    session.setZoom(options.zoom);
    if (!options.resolution.isEmpty())
        session.setResolution(QSizeF(options.resolution));
    session.start();

    const bool detecting =
        session.metadataOutput() && !session.metadataOutput()->metadataObjectTypes().isEmpty();
    if (options.faces && !detecting)
        out << qtTrId("photo_faces_no_model") << Qt::endl;
    if (detecting &&
        !waitInEventLoop([&] { return cameraProblem || faces.detections >= detectionsBeforePhoto; },
                         secondsForFaces * 1000))
        out << qtTrId("photo_faces_not_in_time").arg(secondsForFaces) << Qt::endl;

    std::optional<ui::Image> photo;
    av::CaptureResolvedPhotoSettings settings;
    QString failure;
    if (!cameraProblem)
        session.capture(
            [&](const ui::Image& image, const av::CaptureResolvedPhotoSettings& resolved) {
                photo = image;
                settings = resolved;
            },
            [&](const std::exception& error) { failure = QString::fromUtf8(error.what()); });
    waitInEventLoop([&] { return cameraProblem || photo || !failure.isEmpty(); },
                    secondsForPhoto * 1000);
    session.stop();
    if (cameraProblem)
        failure = cameraProblem->localizedDescription();
    if (!photo) {
        err << (failure.isEmpty() ? qtTrId("photo_none_came_within").arg(secondsForPhoto)
                                  : qtTrId("photo_no_photo_taken").arg(failure))
            << Qt::endl;
        return 1;
    }

    const QByteArray jpeg = av::CapturePhoto::encodeJpeg(
        photo->cgImage(), ui::Image::exifOrientation(photo->imageOrientation()),
        QDateTime::currentDateTime());
    QFile file(output);
    if (jpeg.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(jpeg) != jpeg.size() || !file.flush()) {
        err << qtTrId("rec_cannot_written").arg(output, file.errorString()) << Qt::endl;
        return 1;
    }
    file.close();
    written = true;

    const QSizeF shown = photo->size();
    out << output << Qt::endl;
    out << qtTrId("photo_size_pixels_shown")
               .arg(photo->cgImage().width())
               .arg(photo->cgImage().height())
               .arg(shown.width())
               .arg(shown.height())
               .arg(ui::Image::exifOrientation(photo->imageOrientation()))
        << Qt::endl;
    if (settings.isFlashEnabled)
        out << qtTrId("photo_flash_fired") << Qt::endl;
    if (detecting) {
        std::vector<av::MetadataObject> found;
        for (const av::MetadataObject& object : faces.latest)
            if (object.type == av::MetadataObject::typeFace)
                found.push_back(object);
        if (found.empty())
            out << qtTrId("photo_faces_none") << Qt::endl;
        for (size_t i = 0; i < found.size(); ++i) {
            const QRectF& r = found[i].bounds;
            out << qtTrId("photo_face_left_top_width")
                       .arg(i + 1)
                       .arg(fraction(r.x()), fraction(r.y()), fraction(r.width()),
                            fraction(r.height()))
                << Qt::endl;
        }
    }
    return 0;
}
