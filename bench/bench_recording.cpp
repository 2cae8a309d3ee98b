// Records 10 s from the virtual camera in each video mode while a zoom ramp is written every
// 10 ms, as the recording screen does, and reports what reached the file and what it cost.
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/GstHandle.h"
#include "platform/av/ZoomFilter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <mutex>
#include <sys/resource.h>

namespace {

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Waits in the event loop, checking every 5 ms, so the wait itself costs no processor time.
void waitUntil(const std::function<bool()>& done, int milliseconds) {
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    check.start(5);
    if (!done())
        loop.exec();
}

struct Mode {
    const char* name;
    int width, height, fps;
};

void measure(const Mode& mode, double seconds) {
    CKFVideoSession session(CKFSession::CameraPosition::back);
    session.setWidth(mode.width, mode.height, mode.fps);
    session.start();
    if (!session.session()->isRunning()) {
        std::printf("%s_failed 1 bool\n", mode.name);
        return;
    }

    // Which zoom each frame carries, against the last one written before it was captured.
    GstElement* pipeline = session.session()->pipeline();
    const av::GstHandle<GstElement> zoom(gst_bin_get_by_name(GST_BIN(pipeline), "zoom"),
                                         av::GstRef::adopt);
    std::mutex lock; // guards writes and frames
    std::vector<std::pair<GstClockTime, double>> writes;
    qint64 frames = 0, stale = 0;
    auto runningTime = [pipeline] {
        const av::GstHandle<GstClock> clock(gst_element_get_clock(pipeline), av::GstRef::adopt);
        const GstClockTime now = clock ? gst_clock_get_time(clock.get()) : 0;
        return now - gst_element_get_base_time(pipeline);
    };
    av::ZoomFilter::setFrameObserver(zoom.get(), [&](GstClockTime pts, double applied) {
        std::lock_guard guard(lock);
        ++frames;
        double expected = 1.0;
        for (const auto& [when, value] : writes)
            if (when <= pts)
                expected = value;
        if (std::abs(expected - applied) > 1e-9)
            ++stale;
    });

    double value = 3.0;
    QTimer ramp;
    ramp.setTimerType(Qt::PreciseTimer);
    ramp.setInterval(10);
    QObject::connect(&ramp, &QTimer::timeout, [&] {
        value = std::max(1.0, value - 0.002);
        {
            std::lock_guard guard(lock);
            writes.emplace_back(runningTime(), value);
        }
        session.setZoom(value);
    });

    bool finished = false;
    QUrl file;
    session.record(
        std::nullopt,
        [&](const QUrl& url) {
            finished = true;
            file = url;
        },
        [&](const std::exception& error) {
            finished = true;
            std::printf("# %s: %s\n", mode.name, error.what());
        });
    waitUntil([&] { return session.hasRecordingStarted(); }, 10000);
    const double cpuBefore = cpuSeconds();
    ramp.start();
    QElapsedTimer wall;
    wall.start();
    waitUntil([] { return false; }, int(seconds * 1000));
    session.stopRecording();
    ramp.stop();
    waitUntil([&] { return finished; }, 30000);
    const double elapsed = wall.elapsed() / 1000.0;
    const double cpu = cpuSeconds() - cpuBefore;
    av::ZoomFilter::setFrameObserver(zoom.get(), {});

    auto* output = session.movieFileOutput();
    std::printf("%s_frames_written %lld frames\n", mode.name, (long long)output->framesWritten());
    std::printf("%s_frames_expected %.0f frames\n", mode.name, elapsed * mode.fps);
    std::printf("%s_frames_dropped %lld frames\n", mode.name, (long long)output->framesDropped());
    std::printf("%s_frames_with_other_zoom %lld frames\n", mode.name, (long long)stale);
    std::printf("%s_frames_zoomed %lld frames\n", mode.name, (long long)frames);
    std::printf("%s_cpu %.2f s\n", mode.name, cpu);
    std::printf("%s_encoder_%s 1 bool\n", mode.name, qPrintable(output->encoderName()));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QTemporaryDir documents;
    qputenv("TESSARO_DOCUMENTS_DIR", documents.path().toUtf8());
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    const double seconds = argc > 1 ? QByteArray(argv[1]).toDouble() : 10.0;
    for (const Mode& mode :
         {Mode{"recording_1080p30", 1920, 1080, 30}, Mode{"recording_1080p60", 1920, 1080, 60},
          Mode{"recording_2160p30", 3840, 2160, 30}})
        measure(mode, seconds);
    return 0;
}
