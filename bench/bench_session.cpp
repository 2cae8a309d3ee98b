// How long the camera session's own steps hold the calling (GUI) thread, with the virtual camera:
// starting, changing the format, switching cameras, stopping; and through the real recording
// screen, pressing record and stop in each format. Each step is timed around the call and around
// the turns of the event loop that carry out what it scheduled; the goal is 16 ms. Also how long
// the user waits for a picture: from the start of the process to the recording screen's first
// painted preview frame (goal 1 s), and from the switch button's press to the first painted
// frame of the other camera (goal 0.3 s).
#include "bench/EventLoopTiming.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Button.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gst/gst.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <vector>

namespace {

// The step's longest hold of the thread: the call itself, then every event it left queued. On a
// loaded machine a hold's wall time includes the time the thread waited for a core; its CPU time
// is what the step itself cost.
struct Hold {
    double wall = 0;
    double cpu = 0;
};

Hold hold(const std::function<void()>& step) {
    Hold longest;
    const auto measure = [&](const std::function<void()>& part) {
        QElapsedTimer timer;
        timer.start();
        const double cpu = threadCpuMilliseconds();
        part();
        longest.wall = std::max(longest.wall, double(timer.nsecsElapsed()) / 1e6);
        longest.cpu = std::max(longest.cpu, threadCpuMilliseconds() - cpu);
    };
    measure(step);
    for (int turn = 0; turn < 5; ++turn)
        measure([] { QCoreApplication::processEvents(); });
    return longest;
}

void report(const QByteArray& name, std::vector<double> values, const char* unit = "ms") {
    if (values.empty()) {
        std::printf("session_%s_failed 1 bool\n", name.constData());
        return;
    }
    std::sort(values.begin(), values.end());
    std::printf("session_%s_median %.1f %s\n", name.constData(), values[values.size() / 2], unit);
    std::printf("session_%s_max %.1f %s\n", name.constData(), values.back(), unit);
    std::fflush(stdout);
}

// Holds of one step over several rounds: the wall time's median and longest, and the longest
// CPU time.
struct Holds {
    std::vector<double> wall;
    std::vector<double> cpu;
    void add(const Hold& hold) {
        wall.push_back(hold.wall);
        cpu.push_back(hold.cpu);
    }
    void report(const QByteArray& name) const {
        ::report(name, wall);
        if (!cpu.empty())
            std::printf("session_%s_cpu_max %.1f ms\n", name.constData(),
                        *std::max_element(cpu.begin(), cpu.end()));
    }
};

// Milliseconds since the kernel started this process (its start time has a tick's resolution).
double millisecondsSinceProcessStart() {
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // The fields after the command's closing parenthesis; the start time is the 20th of them.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 20)
        return -1;
    const double startSeconds = fields[19].toDouble() / double(sysconf(_SC_CLK_TCK));
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return (double(now.tv_sec) + double(now.tv_nsec) / 1e9 - startSeconds) * 1e3;
}

void sessionSteps() {
    constexpr int rounds = 7;
    Holds starts, formats, switches, stops;
    for (int round = 0; round < rounds; ++round) {
        CKFVideoSession session(CKFSession::CameraPosition::back);
        session.setWidth(1920, 1080, 30);
        starts.add(hold([&] { session.start(); }));
        waitFor([&] { return false; }, 300);
        formats.add(hold([&] { session.setWidth(1920, 1080, 60); }));
        waitFor([&] { return false; }, 300);
        switches.add(hold([&] { session.togglePosition(); }));
        waitFor([&] { return false; }, 300);
        stops.add(hold([&] { session.stop(); }));
    }
    starts.report("start");
    formats.report("format_change");
    switches.report("camera_switch");
    stops.report("stop");
}

// The recording screen in a phone-sized window, as the app shows it.
struct Screen {
    ui::Window window;
    CameraViewController* screen = new CameraViewController;

    Screen() {
        window.setRootViewController(screen);
        window.resize(390, 844);
        window.show();
    }
    av::CaptureVideoPreviewLayer* layer() const {
        return screen->previewView ? screen->previewView->previewLayer() : nullptr;
    }
    quint64 painted() const { return layer() ? layer()->framesDisplayed() : 0; }
    bool running() const {
        return screen->videoSession() && screen->videoSession()->session()->isRunning();
    }
};

// From the process's start, and from making the screen, to its first painted frame: the first
// screen of the process pays for loading the plugins and finding the devices, as a launch does.
void launch() {
    const double sinceStartAtScreen = millisecondsSinceProcessStart();
    QElapsedTimer sinceScreen;
    sinceScreen.start();
    Screen screen;
    if (!waitFor([&] { return screen.painted() > 0; }, 10000, 1)) {
        std::printf("session_launch_failed 1 bool\n");
        return;
    }
    const double screenMs = double(sinceScreen.nsecsElapsed()) / 1e6;
    std::printf("session_launch_to_first_frame %.0f ms\n", sinceStartAtScreen + screenMs);
    std::printf("session_screen_to_first_frame %.0f ms\n", screenMs);
    std::fflush(stdout);
}

// The switch button's press until the other camera's first frame is painted. The old camera's
// frames carry running times past the last one painted before the press; the new pipeline's
// clock starts again from zero, so an earlier time marks the new camera.
void cameraSwitchTimes() {
    Screen screen;
    if (!waitFor([&] { return screen.running() && screen.painted() > 5; }, 15000)) {
        std::printf("session_switch_failed 1 bool\n");
        return;
    }
    constexpr int rounds = 8;
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        // Long enough on the old camera that its frames' times stand apart from the new one's.
        waitFor([] { return false; }, 1500);
        const quint64 before = screen.painted();
        const GstClockTime lastOld = screen.layer()->contentsTimestamp();
        QElapsedTimer sincePress;
        sincePress.start();
        screen.screen->changeCamButton->sendActions(ui::Control::touchDown |
                                                    ui::Control::touchUpInside);
        const bool shown = waitFor(
            [&] {
                const GstClockTime shownAt =
                    screen.layer() ? screen.layer()->contentsTimestamp() : GST_CLOCK_TIME_NONE;
                return screen.painted() > before && GST_CLOCK_TIME_IS_VALID(shownAt) &&
                       GST_CLOCK_TIME_IS_VALID(lastOld) && shownAt < lastOld;
            },
            5000, 1);
        if (shown)
            times.push_back(double(sincePress.nsecsElapsed()) / 1e6);
    }
    report("switch_to_first_frame", times);
}

// Record and stop pressed on the screen, a few takes per format.
void recordPresses() {
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(foundation::PreferenceSchema::zoomDuration, 15.0f);
    for (int mode = 0; mode < int(std::size(CameraViewController::videoFormats)); ++mode) {
        defaults.setInteger(foundation::PreferenceSchema::videoMode, mode);
        const QByteArray name = QByteArray(CameraViewController::videoFormats[mode].title);
        Screen screen;
        if (!waitFor([&] { return screen.running() && screen.painted() > 5; }, 15000)) {
            std::printf("session_%s_failed 1 bool\n", name.constData());
            continue;
        }
        CKFVideoSession* session = screen.screen->videoSession();
        constexpr int takes = 4;
        Holds presses, stops;
        for (int take = 0; take < takes; ++take) {
            waitFor([] { return false; }, 500);
            const auto press = [&] {
                screen.screen->cameraButton->sendActions(ui::Control::touchDown |
                                                         ui::Control::touchUpInside);
            };
            presses.add(hold(press));
            if (!waitFor([&] { return session->hasRecordingStarted(); }, 10000))
                continue;
            waitFor([] { return false; }, 1000);
            stops.add(hold(press));
            waitFor([&] { return !session->isRecording(); }, 15000);
        }
        presses.report("record_press_" + name.toLower());
        stops.report("record_stop_" + name.toLower());
    }
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    QTemporaryDir folder;
    qputenv("TESSARO_CONFIG_DIR", folder.filePath(QStringLiteral("config")).toUtf8());
    qputenv("TESSARO_DOCUMENTS_DIR", folder.filePath(QStringLiteral("documents")).toUtf8());
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    launch();
    sessionSteps();
    cameraSwitchTimes();
    recordPresses();
    return 0;
}
