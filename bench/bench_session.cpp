// How long the camera session's own steps hold the calling (GUI) thread, with the virtual camera:
// starting, changing the format, switching cameras, stopping. Each step is timed around the call
// and around the turn of the event loop that carries out what it scheduled; the goal is 16 ms.
#include "bench/EventLoopTiming.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureSession.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

// The step's longest hold of the thread: the call itself, then every event it left queued.
double holdMilliseconds(const std::function<void()>& step) {
    QElapsedTimer timer;
    timer.start();
    step();
    double longest = double(timer.nsecsElapsed()) / 1e6;
    for (int turn = 0; turn < 5; ++turn) {
        timer.restart();
        QCoreApplication::processEvents();
        longest = std::max(longest, double(timer.nsecsElapsed()) / 1e6);
    }
    return longest;
}

void report(const char* name, std::vector<double> holds) {
    std::sort(holds.begin(), holds.end());
    std::printf("session_%s_median %.1f ms\n", name, holds[holds.size() / 2]);
    std::printf("session_%s_max %.1f ms\n", name, holds.back());
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    constexpr int rounds = 7;
    std::vector<double> starts, formats, switches, stops;
    for (int round = 0; round < rounds; ++round) {
        CKFVideoSession session(CKFSession::CameraPosition::back);
        session.setWidth(1920, 1080, 30);
        starts.push_back(holdMilliseconds([&] { session.start(); }));
        waitFor([&] { return false; }, 300);
        formats.push_back(holdMilliseconds([&] { session.setWidth(1920, 1080, 60); }));
        waitFor([&] { return false; }, 300);
        switches.push_back(holdMilliseconds([&] { session.togglePosition(); }));
        waitFor([&] { return false; }, 300);
        stops.push_back(holdMilliseconds([&] { session.stop(); }));
    }
    report("start", starts);
    report("format_change", formats);
    report("camera_switch", switches);
    report("stop", stops);
    return 0;
}
