// What stills and faces cost: cropping and scaling a 12-megapixel picture to a portrait 1080p one;
// face detection on the live 1080p30 virtual camera, with the preview's frame rate and a
// recording's dropped frames beside the same run without detection; and the time from a photo
// request to the delivered, decoded photo.
#include "bench/EventLoopTiming.h"
#include "capture/CKFPhotoSession.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "capture/CKUtils.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureMetadataOutput.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/av/Gst.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

void cropAndScale() {
    QImage picture(4032, 3024, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(picture.rect(), QLinearGradient(0, 0, 4032, 3024));
    for (int x = 0; x < 4032; x += 64)
        painter.fillRect(x, 0, 32, 3024, QColor(x % 256, 80, 160));
    painter.end();
    const ui::Image image(picture);
    constexpr int rounds = 10;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < rounds; ++i)
        if (!CKUtils::cropAndScale(image, 1080, 1920, foundation::Device::Orientation::portrait,
                                   false))
            std::printf("photo_crop_and_scale_failed 1 bool\n");
    std::printf("photo_crop_and_scale_4032x3024_to_1080x1920 %.1f ms\n",
                double(timer.nsecsElapsed()) / 1e6 / rounds);
}

// The preview and a recording for some seconds, with or without face detection in the session.
void previewAndRecording(const char* name, double seconds, bool faces, const QString& folder) {
    auto session = std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back);
    av::CaptureMetadataOutput* metadata = nullptr;
    if (faces) {
        metadata = new av::CaptureMetadataOutput(session.get());
        session->session()->addOutput(metadata);
        metadata->setMetadataObjectTypes(metadata->availableMetadataObjectTypes());
    }
    CKFPreviewView view;
    view.resize(1280, 720);
    view.show();
    view.setSession(session);
    waitFor([&] { return view.previewLayer()->framesDisplayed() >= 10; }, 10000);
    bool finished = false;
    session->record(
        QUrl::fromLocalFile(QDir(folder).filePath(QString::fromLatin1(name) + ".mov")),
        [&](const QUrl&) { finished = true; },
        [&](const std::exception& error) {
            finished = true;
            std::printf("# %s: %s\n", name, error.what());
        });
    waitFor([&] { return session->hasRecordingStarted(); }, 10000);
    const quint64 shown0 = view.previewLayer()->framesDisplayed();
    const quint64 detected0 = metadata ? metadata->framesDetected() : 0;
    QElapsedTimer wall;
    wall.start();
    waitFor([] { return false; }, int(seconds * 1000));
    const double elapsed = double(wall.nsecsElapsed()) / 1e9;
    const quint64 shown = view.previewLayer()->framesDisplayed() - shown0;
    const quint64 detected = metadata ? metadata->framesDetected() - detected0 : 0;
    session->stopRecording();
    waitFor([&] { return finished; }, 30000);
    std::printf("%s_preview_shown_rate %.1f fps\n", name, double(shown) / elapsed);
    std::printf("%s_recording_frames_dropped %lld frames\n", name,
                (long long)session->movieFileOutput()->framesDropped());
    if (metadata) {
        std::printf("%s_detections_rate %.1f fps\n", name, double(detected) / elapsed);
        std::printf("%s_detection_time %.1f ms\n", name, metadata->averageDetectionMilliseconds());
    }
    std::fflush(stdout);
    view.setSession(nullptr);
}

void photoLatency(const char* name, QSizeF resolution) {
    CKFPhotoSession session(CKFSession::CameraPosition::back,
                            CKFPhotoSession::CameraDetection::none);
    session.setResolution(resolution);
    session.start();
    waitFor([] { return false; }, 500);
    std::vector<double> latencies;
    for (int i = 0; i < 10; ++i) {
        bool done = false;
        QElapsedTimer timer;
        timer.start();
        session.capture(
            [&](const ui::Image&, const av::CaptureResolvedPhotoSettings&) { done = true; },
            [&](const std::exception& error) {
                done = true;
                std::printf("# %s: %s\n", name, error.what());
            });
        waitFor([&] { return done; }, 10000, 1);
        latencies.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(latencies.begin(), latencies.end());
    std::printf("%s_median %.1f ms\n", name, latencies[latencies.size() / 2]);
    std::printf("%s_max %.1f ms\n", name, latencies.back());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    av::Gst::ensureInitialized();
    QTemporaryDir documents;
    qputenv("TESSARO_DOCUMENTS_DIR", documents.path().toUtf8());
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    const double seconds = argc > 1 ? QByteArray(argv[1]).toDouble() : 5.0;

    cropAndScale();
    // Twice each, alternating, so that neither gains from coming first.
    for (int round = 0; round < 2; ++round) {
        previewAndRecording("faces_off_1080p30", seconds, false, documents.path());
        previewAndRecording("faces_on_1080p30", seconds, true, documents.path());
    }
    photoLatency("photo_request_to_delivered_1080p", QSizeF(0, 0));
    photoLatency("photo_request_to_delivered_cropped_1080x1920", QSizeF(1080, 1920));
    return 0;
}
