// Ramp fidelity under load: the real recording screen records a zoom-out ramp from 3.0 in each
// video mode from the virtual camera. For every frame in the finished file, the zoom it carries
// (logged by the zoom stage with the frame's timestamp) is compared with the ideal line from the
// press; the clip's length is compared with the ramp's; and each zoom write is compared with the
// moment its tick was due. Then, in each mode and for each kind of camera (virtual, a picture,
// a video of that picture), a short ramp: the zoom of the file's first and last frame read from
// their pixels, and how long after the press the first frame was taken.
//
// Usage: bench_ramp [SECONDS [SHORT_SECONDS]]   (default 5 and 2)

#include "bench/EventLoopTiming.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFSessionDelegate.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/AssetImageGenerator.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/PictureZoom.h"
#include "platform/av/ZoomFilter.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Button.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <vector>

namespace {

constexpr float startZoom = 3.0f;

// The zoom writes of the ramp, with when they happened (GUI-thread clock, from the press).
struct WriteLog : QObject, CKFSessionDelegate {
    QElapsedTimer sincePress;
    std::vector<qint64> writeNanoseconds;
    void didChangeValue(CKFSession*, const QVariant&, const QString&) override {
        if (sincePress.isValid())
            writeNanoseconds.push_back(sincePress.nsecsElapsed());
    }
};

struct FrameLog {
    std::mutex mutex; // guards frames
    std::vector<std::pair<GstClockTime, double>> frames;
};

GstClockTime runningTime(GstElement* pipeline) {
    const av::GstHandle<GstClock> clock(gst_element_get_clock(pipeline), av::GstRef::adopt);
    if (!clock)
        return GST_CLOCK_TIME_NONE;
    const GstClockTime now = gst_clock_get_time(clock.get());
    return now - gst_element_get_base_time(pipeline);
}

// A camera kind of the short runs: its --camera selection and its picture before the zoom.
struct Camera {
    const char* name;
    QString selection;
    av::PictureZoom::Reference reference;
};

// Blocks of every size at random (the same each run): a picture no crop but the right one
// matches.
QImage blocksPicture() {
    QImage picture(1920, 1080, QImage::Format_RGB32);
    picture.fill(QColor(128, 128, 128));
    QPainter painter(&picture);
    QRandomGenerator random(7);
    for (int i = 0; i < 900; ++i) {
        const int width = random.bounded(8, 160);
        const int height = random.bounded(8, 160);
        const int grey = random.bounded(256);
        painter.fillRect(random.bounded(1920 - width), random.bounded(1080 - height), width, height,
                         QColor(grey, grey, grey));
    }
    return picture;
}

// Two seconds of the picture as an H.264 movie, for the video-file camera.
bool writeVideoOf(const QString& picture, const QString& video) {
    const QByteArray launch = "filesrc location=\"" + picture.toUtf8() +
                              "\" ! pngdec ! imagefreeze num-buffers=60 ! videoconvert ! "
                              "video/x-raw,format=I420,framerate=30/1 ! x264enc ! mp4mux ! "
                              "filesink location=\"" +
                              video.toUtf8() + "\"";
    return av::Gst::runToEnd(launch, std::chrono::seconds(60));
}

// A ramp with the full report (camera null: the virtual camera), or a short one with the zoom
// of the first and last frame from their pixels and the first frame's age.
void measure(int videoMode, int seconds, const Camera* camera = nullptr) {
    const CameraViewController::VideoFormat& format = CameraViewController::videoFormats[videoMode];
    const QByteArray prefix =
        QByteArray(format.title) + (camera ? QByteArray("_") + camera->name : QByteArray());
    const char* name = prefix.constData();
    av::CaptureDeviceDiscoverySession::setCameraSelection(camera ? camera->selection
                                                                 : QStringLiteral("virtual"));
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(foundation::PreferenceSchema::zoomDuration, float(seconds));
    defaults.setInteger(foundation::PreferenceSchema::zoomMode, 0);
    defaults.setInteger(foundation::PreferenceSchema::videoMode, (videoMode + 2) % 3);

    ui::Window window;
    auto* screen = new CameraViewController;
    window.setRootViewController(screen);
    window.resize(390, 844);
    window.show();
    const auto frames = [screen] {
        return screen->previewView ? screen->previewView->framesTaken() : quint64(0);
    };
    if (!waitFor([&] { return screen->videoSession() && frames() > 2; }, 15000)) {
        std::printf("%s_failed 1 bool\n", name);
        return;
    }
    CKFVideoSession* session = screen->videoSession();
    screen->hdButton->sendActions(ui::Control::touchUpInside);
    QCoreApplication::processEvents();
    const quint64 switched = frames();
    waitFor([&] { return frames() > switched + 10; }, 15000);
    screen->zoomSlider->setValue(startZoom);
    screen->zoomSlider->sendActions(ui::Control::valueChanged);

    // The screen does nothing with the zoom notices, so listening in changes nothing.
    WriteLog writes;
    session->setDelegate(&writes);
    FrameLog frameLog;
    GstElement* pipeline = session->session()->pipeline();
    const av::GstHandle<GstElement> stage(gst_bin_get_by_name(GST_BIN(pipeline), "zoom"),
                                          av::GstRef::adopt);
    av::ZoomFilter::setFrameObserver(stage.get(), [&frameLog](GstClockTime pts, double zoom) {
        std::lock_guard lock(frameLog.mutex);
        frameLog.frames.emplace_back(pts, zoom);
    });

    QUrl clip;
    QObject::connect(screen, &CameraViewController::clipFinished,
                     [&clip](const QUrl& url) { clip = url; });
    const GstClockTime press = runningTime(pipeline);
    writes.sincePress.start();
    screen->cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
    // What the press costs the GUI thread: the ramp's timer starts when it returns.
    const double pressMs = double(writes.sincePress.nsecsElapsed()) / 1e6;
    const bool finished = waitFor([&] { return !clip.isEmpty(); }, (seconds + 30) * 1000);
    av::ZoomFilter::setFrameObserver(stage.get(), {});
    if (!finished) {
        std::printf("%s_failed 1 bool\n", name);
        return;
    }

    const av::CaptureMovieFileOutput* movie = session->movieFileOutput();
    if (camera) {
        const av::AssetImageGenerator frames(clip);
        // The movie's time starts at its first frame; a millisecond in is inside a frame.
        const double lastAt =
            double(movie->lastFrameTime() - movie->firstFrameTime()) / GST_SECOND + 0.001;
        std::printf("%s_first_zoom_pixels %.3f x\n", name,
                    av::PictureZoom::measure(frames.imageAt(0.001, format.width), camera->reference,
                                             startZoom));
        std::printf("%s_last_zoom_pixels %.3f x\n", name,
                    av::PictureZoom::measure(frames.imageAt(lastAt, format.width),
                                             camera->reference, startZoom));
        std::printf("%s_first_frame_age %.1f ms\n", name,
                    double(movie->firstFrameTime() - movie->requestTime()) / GST_MSECOND);
        std::printf("%s_frames_dropped %lld frames\n", name, (long long)movie->framesDropped());
        std::fflush(stdout);
        return;
    }

    // Frames in the file against the ideal line: tick n (from 1) writes S - (n - 1) step at
    // n × 10 ms after the press.
    const double range = double(startZoom) - 1.0;
    double worst = 0.0;
    qint64 counted = 0;
    {
        std::lock_guard lock(frameLog.mutex);
        for (const auto& [pts, zoom] : frameLog.frames) {
            if (pts < movie->firstFrameTime() || pts > movie->lastFrameTime())
                continue;
            const double t = double(pts - press) / double(GST_SECOND) - 0.01;
            const double ideal =
                std::clamp(double(startZoom) - range * t / double(seconds), 1.0, double(startZoom));
            worst = std::max(worst, std::abs(zoom - ideal));
            ++counted;
        }
    }
    // Tick lateness: the k-th write (from 1) was due k × 10 ms after the press.
    std::vector<double> late;
    for (size_t k = 0; k < writes.writeNanoseconds.size(); ++k)
        late.push_back(double(writes.writeNanoseconds[k] - qint64(k + 1) * 10'000'000) / 1e6);
    std::sort(late.begin(), late.end());
    const double length = av::AssetImageGenerator(clip).duration().value_or(0.0);

    std::printf("%s_frames_checked %lld frames\n", name, (long long)counted);
    std::printf("%s_max_zoom_deviation %.3f percent_of_ramp\n", name, 100.0 * worst / range);
    std::printf("%s_clip_length_minus_duration %.3f s\n", name, length - double(seconds));
    std::printf("%s_ticks %zu ticks\n", name, late.size());
    if (!late.empty()) {
        std::printf("%s_tick_late_median %.2f ms\n", name, late[late.size() / 2]);
        std::printf("%s_tick_late_p99 %.2f ms\n", name, late[late.size() * 99 / 100]);
        std::printf("%s_tick_late_max %.2f ms\n", name, late.back());
    }
    std::printf("%s_press_blocks_gui %.1f ms\n", name, pressMs);
    std::printf("%s_frames_dropped %lld frames\n", name, (long long)movie->framesDropped());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const int seconds = argc > 1 ? std::max(1, std::min(15, std::atoi(argv[1]))) : 5;
    const int shortSeconds = argc > 2 ? std::max(1, std::min(15, std::atoi(argv[2]))) : 2;
    QTemporaryDir folder;
    qputenv("TESSARO_CONFIG_DIR", folder.filePath(QStringLiteral("config")).toUtf8());
    qputenv("TESSARO_DOCUMENTS_DIR", folder.filePath(QStringLiteral("documents")).toUtf8());
    for (int mode = 0; mode < 3; ++mode)
        measure(mode, seconds);

    const QImage picture = blocksPicture();
    const QString picturePath = folder.filePath(QStringLiteral("blocks.png"));
    const QString videoPath = folder.filePath(QStringLiteral("blocks.mp4"));
    if (!picture.save(picturePath) || !writeVideoOf(picturePath, videoPath)) {
        std::printf("camera_files_failed 1 bool\n");
        return 1;
    }
    for (int mode = 0; mode < 3; ++mode) {
        const CameraViewController::VideoFormat& format = CameraViewController::videoFormats[mode];
        const QSize size(format.width, format.height);
        const Camera cameras[] = {
            {"virtual", QStringLiteral("virtual"), av::PictureZoom::virtualScene()},
            {"picture", QStringLiteral("file:") + picturePath,
             av::PictureZoom::still(picture, size)},
            {"video", QStringLiteral("file:") + videoPath, av::PictureZoom::still(picture, size)},
        };
        for (const Camera& camera : cameras)
            measure(mode, shortSeconds, &camera);
    }
    return 0;
}
