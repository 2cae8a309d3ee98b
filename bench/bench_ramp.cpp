// Ramp fidelity under load: the real recording screen records a 5 s zoom-out ramp from 3.0 in
// each video mode from the virtual camera. For every frame in the finished file, the zoom it
// carries (logged by the zoom stage with the frame's timestamp) is compared with the ideal line
// from the press; the clip's length is compared with the ramp's; and each zoom write is compared
// with the moment its tick was due.
//
// Usage: bench_ramp [SECONDS]   (default 5)

#include "capture/CKFPreviewView.h"
#include "capture/CKFSessionDelegate.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/AssetImageGenerator.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/ZoomFilter.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Button.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
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
    GstClock* clock = gst_element_get_clock(pipeline);
    if (!clock)
        return GST_CLOCK_TIME_NONE;
    const GstClockTime now = gst_clock_get_time(clock);
    gst_object_unref(clock);
    return now - gst_element_get_base_time(pipeline);
}

bool waitFor(const std::function<bool()>& done, int milliseconds) {
    QDeadlineTimer deadline(milliseconds);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

void measure(int videoMode, int seconds) {
    const char* name = CameraViewController::videoFormats[videoMode].title;
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(QStringLiteral("zoomDuration"), float(seconds));
    defaults.setInteger(QStringLiteral("zoomMode"), 0);
    defaults.setInteger(QStringLiteral("videoMode"), (videoMode + 2) % 3);

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
    GstElement* stage = gst_bin_get_by_name(GST_BIN(pipeline), "zoom");
    av::ZoomFilter::setFrameObserver(stage, [&frameLog](GstClockTime pts, double zoom) {
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
    av::ZoomFilter::setFrameObserver(stage, {});
    gst_object_unref(stage);
    if (!finished) {
        std::printf("%s_failed 1 bool\n", name);
        return;
    }

    // Frames in the file against the ideal line: tick n (from 1) writes S - (n - 1) step at
    // n × 10 ms after the press.
    const av::CaptureMovieFileOutput* movie = session->movieFileOutput();
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
    QTemporaryDir folder;
    qputenv("TESSARO_CONFIG_DIR", folder.filePath(QStringLiteral("config")).toUtf8());
    qputenv("TESSARO_DOCUMENTS_DIR", folder.filePath(QStringLiteral("documents")).toUtf8());
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    for (int mode = 0; mode < 3; ++mode)
        measure(mode, seconds);
    return 0;
}
