// Resources over time, through the real recording screen with the virtual camera: per format
// (HD, HD60, 4K) the resident memory while previewing and while recording and the process CPU of
// an idle preview; then a run of short takes in a row, with memory, open descriptors and threads
// after every tenth; then a long idle preview sampled as it runs. Each format runs in a process
// of its own, so its peak is its own.
//
// Usage: bench_endurance [--seconds S] [--takes N] [--minutes M] [--only format|takes|preview]
//   defaults: 10 s per phase of a format, 100 takes of 1 s, a 20-minute preview sampled every
//   minute (every 10 s when shorter than 20 minutes).

#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Button.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <numeric>
#include <vector>

namespace {

// A line of /proc/self/status in MB ("VmRSS", "VmHWM").
double statusMegabytes(const char* key) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(key) + ':';
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return -1;
}

// Starts the process's peak resident size (VmHWM) afresh from what it holds now, so a peak read
// later is that phase's own: the format button passes through another format on its way.
void resetPeakMemory() {
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

qsizetype entriesIn(const char* folder) {
    return QDir(QString::fromLatin1(folder))
        .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)
        .size();
}

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

// Sleeps in the event loop between looks, so the waiting costs no CPU of its own.
bool waitFor(const std::function<bool()>& done, int milliseconds) {
    QDeadlineTimer deadline(milliseconds);
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        if (done() || deadline.hasExpired())
            loop.quit();
    });
    look.start(10);
    if (!done())
        loop.exec();
    return done();
}

void runFor(int milliseconds) {
    waitFor([] { return false; }, milliseconds);
}

// CPU of the whole process over a stretch of the event loop, in percent of one core.
double cpuPercentOver(int milliseconds) {
    QElapsedTimer wall;
    wall.start();
    const double before = cpuSeconds();
    runFor(milliseconds);
    return 100.0 * (cpuSeconds() - before) / (double(wall.nsecsElapsed()) / 1e9);
}

void print(const QByteArray& name, double value, const char* unit) {
    std::printf("%s %.1f %s\n", name.constData(), value, unit);
    std::fflush(stdout);
}

// The recording screen in a window, running the virtual camera in one format; no clip preview
// comes up after a take.
struct Screen {
    ui::Window window;
    CameraViewController* screen = new CameraViewController;
    QUrl finished;
    int finishedCount = 0;

    Screen() {
        window.setRootViewController(screen);
        window.resize(390, 844);
        window.show();
        QObject::connect(screen, &CameraViewController::clipFinished, [this](const QUrl& url) {
            finished = url;
            ++finishedCount;
        });
    }

    quint64 frames() const {
        return screen->previewView ? screen->previewView->framesTaken() : quint64(0);
    }

    // Up and running, switched to the format by one press of its button as a user would.
    bool start() {
        if (!waitFor([&] { return screen->videoSession() && frames() > 2; }, 15000))
            return false;
        screen->hdButton->sendActions(ui::Control::touchUpInside);
        QCoreApplication::processEvents();
        const quint64 switched = frames();
        return waitFor([&] { return frames() > switched + 10; }, 15000);
    }

    bool take(int seconds) {
        const int before = finishedCount;
        screen->cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
        return waitFor([&] { return finishedCount > before; }, (seconds + 30) * 1000);
    }
};

void prepare(int mode, int seconds) {
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(foundation::PreferenceSchema::zoomDuration, float(seconds));
    defaults.setInteger(foundation::PreferenceSchema::zoomMode, int(ZoomMode::zoomOut));
    defaults.setInteger(foundation::PreferenceSchema::videoMode, (mode + 2) % videoModeCount);
}

int measureFormat(int mode, int seconds) {
    const QByteArray name = CameraViewController::videoFormats[mode].title;
    prepare(mode, seconds);
    Screen screen;
    if (!screen.start()) {
        print(name + "_failed", 1, "bool");
        return 1;
    }
    // The first seconds fill caches and pools; what stays is measured after them.
    resetPeakMemory();
    runFor(2000);
    print(name + "_preview_cpu", cpuPercentOver(seconds * 1000), "percent_of_core");
    print(name + "_preview_rss_steady", statusMegabytes("VmRSS"), "MB");
    print(name + "_preview_rss_peak", statusMegabytes("VmHWM"), "MB");
    resetPeakMemory();
    std::vector<double> recording;
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout,
                     [&recording] { recording.push_back(statusMegabytes("VmRSS")); });
    sampler.start(1000);
    if (!screen.take(seconds)) {
        print(name + "_take_failed", 1, "bool");
        return 1;
    }
    sampler.stop();
    std::sort(recording.begin(), recording.end());
    print(name + "_record_rss_steady", recording.empty() ? -1 : recording[recording.size() / 2],
          "MB");
    print(name + "_record_rss_peak", statusMegabytes("VmHWM"), "MB");
    return 0;
}

void printResources(const QByteArray& prefix) {
    print(prefix + "_rss", statusMegabytes("VmRSS"), "MB");
    print(prefix + "_fds", double(entriesIn("/proc/self/fd")), "fds");
    print(prefix + "_threads", double(entriesIn("/proc/self/task")), "threads");
}

int measureTakes(int takes) {
    prepare(0, 1);
    Screen screen;
    if (!screen.start()) {
        print("takes_failed", 1, "bool");
        return 1;
    }
    for (int take = 1; take <= takes; ++take) {
        if (!screen.take(1)) {
            print("take_failed_at", take, "take");
            return 1;
        }
        // What a take left behind is measured once its last notices have run.
        runFor(300);
        if (take % 10 == 0)
            printResources("after_take_" + QByteArray::number(take));
    }
    return 0;
}

int measureLongPreview(int minutes) {
    prepare(0, 1);
    Screen screen;
    if (!screen.start()) {
        print("preview_failed", 1, "bool");
        return 1;
    }
    const int sampleMs = minutes >= 20 ? 60000 : 10000;
    const int samples = std::max(1, minutes * 60000 / sampleMs);
    std::vector<double> cpu, rss;
    for (int sample = 1; sample <= samples; ++sample) {
        cpu.push_back(cpuPercentOver(sampleMs));
        rss.push_back(statusMegabytes("VmRSS"));
        const QByteArray at = "preview_at_" + QByteArray::number(sample * sampleMs / 1000) + "s";
        print(at + "_cpu", cpu.back(), "percent_of_core");
        print(at + "_rss", rss.back(), "MB");
    }
    // The trend, not the noise of other processes: the last third against the first.
    const auto drift = [](const std::vector<double>& values) {
        const size_t third = std::max<size_t>(1, values.size() / 3);
        const double first = std::accumulate(values.begin(), values.begin() + third, 0.0) / third;
        const double last = std::accumulate(values.end() - third, values.end(), 0.0) / third;
        return first > 0 ? 100.0 * (last - first) / first : 0.0;
    };
    print("preview_cpu_drift", drift(cpu), "percent");
    print("preview_rss_drift", drift(rss), "percent");
    return 0;
}

int argument(const QStringList& arguments, const QString& name, int fallback) {
    const qsizetype at = arguments.indexOf(name);
    if (at < 0 || at + 1 >= arguments.size())
        return fallback;
    bool ok = false;
    const int value = arguments[at + 1].toInt(&ok);
    return ok && value > 0 ? value : fallback;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int seconds = argument(arguments, QStringLiteral("--seconds"), 10);
    const int takes = argument(arguments, QStringLiteral("--takes"), 100);
    const int minutes = argument(arguments, QStringLiteral("--minutes"), 20);
    const auto valueOf = [&arguments](const QString& name) {
        const qsizetype at = arguments.indexOf(name);
        return at >= 0 ? arguments.value(at + 1) : QString();
    };
    const QString only = valueOf(QStringLiteral("--only"));
    const QString part = valueOf(QStringLiteral("--part"));
    const int format = argument(arguments, QStringLiteral("--format"), 0);

    if (!part.isEmpty()) {
        QTemporaryDir folder;
        qputenv("TESSARO_CONFIG_DIR", folder.filePath(QStringLiteral("config")).toUtf8());
        qputenv("TESSARO_DOCUMENTS_DIR", folder.filePath(QStringLiteral("documents")).toUtf8());
        av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
        ui::Storyboard::unregisterFactory(QStringLiteral("Main"),
                                          QStringLiteral("VideoPreviewViewController"));
        if (part == QLatin1String("format"))
            return measureFormat(std::clamp(format, 1, 3) - 1, seconds);
        if (part == QLatin1String("takes"))
            return measureTakes(takes);
        return measureLongPreview(minutes);
    }

    // Each part in a process of its own: a format's peak is not the previous format's.
    int failures = 0;
    const auto run = [&](const QString& name, const QStringList& extra) {
        if (!only.isEmpty() && only != name)
            return;
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    QStringList{QStringLiteral("--part"), name} + extra +
                        QStringList{QStringLiteral("--seconds"), QString::number(seconds),
                                    QStringLiteral("--takes"), QString::number(takes),
                                    QStringLiteral("--minutes"), QString::number(minutes)});
        child.waitForFinished(-1);
        failures += child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0;
    };
    for (int mode = 1; mode <= 3; ++mode)
        run(QStringLiteral("format"), {QStringLiteral("--format"), QString::number(mode)});
    run(QStringLiteral("takes"), {});
    run(QStringLiteral("preview"), {});
    return failures == 0 ? 0 : 1;
}
