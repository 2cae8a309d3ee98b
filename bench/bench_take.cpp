// The CPU a take costs beside what its encoder alone costs. For each format, `tessaro record`
// records a take from the virtual camera while its threads' CPU is read from /proc; then the
// frames of that very clip are encoded again, with the recorder's encoder settings, in a bare
// pipeline. Prints the ratio (goal: at most 1.3), the main thread's share of a core while
// recording (goal: under 10 %) and each kind of thread's share of the take.
//
//   bench_take [SECONDS [TESSARO]]
#include "platform/av/EncoderChoice.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <map>
#include <sys/resource.h>
#include <unistd.h>

namespace {

struct Format {
    const char* name;
    const char* option;
    int width, height, fps;
};

constexpr Format formats[] = {
    {"hd", "hd", 1920, 1080, 30}, {"hd60", "hd60", 1920, 1080, 60}, {"4k", "4k", 3840, 2160, 30}};

// The kinds of thread a take runs, by the names GStreamer and the encoder give them. The zoom
// stage runs in the camera's thread, so the two are one figure.
const char* kindOf(const QByteArray& name, bool main) {
    if (main)
        return "gui";
    if (name.startsWith("tessarovirtualc") || name.startsWith("v4l2src") ||
        name.startsWith("libcamerasrc") || name.startsWith("pipewiresrc"))
        return "camera_zoom";
    // The movie's video feed and the encoder's own workers, which inherit its name.
    if (name.startsWith("video:src"))
        return "encoder";
    if (name.startsWith("mux:") || name.startsWith("sink:"))
        return "muxer";
    if (name.startsWith("audio") || name.startsWith("pulsesrc") || name.startsWith("alsasrc"))
        return "audio";
    return "other";
}

double ticksPerSecond() {
    return double(sysconf(_SC_CLK_TCK));
}

// utime + stime of a /proc stat line, in ticks; the name is between the first '(' and the last
// ')', and may hold spaces.
bool readStat(const QString& path, QByteArray* name, qint64* ticks) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = file.readAll();
    const qsizetype open = line.indexOf('('), close = line.lastIndexOf(')');
    if (open < 0 || close < open)
        return false;
    const QList<QByteArray> fields = line.mid(close + 2).split(' ');
    if (fields.size() < 13)
        return false;
    if (name)
        *name = line.mid(open + 1, close - open - 1);
    *ticks = fields[11].toLongLong() + fields[12].toLongLong();
    return true;
}

struct Take {
    bool ok = false;
    double seconds = 0; // wall time from the press to the finished file
    double cpu = 0;     // the process's CPU over that time
    double mainCpu = 0; // the main thread's
    std::map<std::string, double> byKind;
};

Take recordTake(const QString& tessaro, const Format& format, int seconds, const QString& clip) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(tessaro, {QStringLiteral("record"), QStringLiteral("--camera"),
                            QStringLiteral("virtual"), QStringLiteral("--format"),
                            QString::fromLatin1(format.option), QStringLiteral("--duration"),
                            QString::number(seconds), QStringLiteral("--output"), clip});
    if (!process.waitForStarted(10000))
        return {};
    const QString task = QStringLiteral("/proc/%1/task/").arg(process.processId());
    const QString processStat = QStringLiteral("/proc/%1/stat").arg(process.processId());
    const qint64 pid = process.processId();

    // Per thread: its name, its ticks when the take started and the last seen.
    struct Thread {
        QByteArray name;
        qint64 start = -1, last = 0, busiest = 0;
    };
    std::map<qint64, Thread> threads;
    bool recording = false, finished = false;
    qint64 processStart = 0, processEnd = 0;
    QElapsedTimer wall;
    double takeSeconds = 0;
    QByteArray output;
    const auto sample = [&] {
        if (!recording || finished)
            return;
        readStat(processStat, nullptr, &processEnd);
        for (const QString& tid : QDir(task).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            Thread& thread = threads[tid.toLongLong()];
            QByteArray name;
            qint64 ticks = 0;
            if (!readStat(task + tid + QStringLiteral("/stat"), &name, &ticks))
                continue;
            if (thread.start < 0)
                thread.start = thread.last = ticks;
            // GStreamer's pooled threads take the name of each task they run (the movie's
            // threads serve the file's checks once it is finished): a thread counts as what it
            // was when it worked hardest.
            if (thread.name.isEmpty() || ticks - thread.last > thread.busiest) {
                thread.name = name;
                thread.busiest = ticks - thread.last;
            }
            thread.last = ticks;
        }
    };

    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, sample);
    QObject::connect(&process, &QProcess::readyRead, &loop, [&] {
        output += process.readAll();
        if (!recording && output.contains("Recording")) {
            recording = true;
            wall.start();
            readStat(processStat, nullptr, &processStart);
            sample();
        } else if (recording && !finished && output.contains(clip.toUtf8())) {
            sample();
            finished = true;
            takeSeconds = double(wall.elapsed()) / 1000.0;
        }
    });
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    poll.start(100);
    loop.exec();
    if (!finished || process.exitCode() != 0) {
        std::fprintf(stderr, "%s\n", output.constData());
        return {};
    }

    Take take;
    take.ok = true;
    take.seconds = takeSeconds;
    take.cpu = double(processEnd - processStart) / ticksPerSecond();
    double counted = 0;
    for (const auto& [tid, thread] : threads) {
        if (thread.start < 0)
            continue;
        const double cpu = double(thread.last - thread.start) / ticksPerSecond();
        take.byKind[kindOf(thread.name, tid == pid)] += cpu;
        counted += cpu;
        if (tid == pid)
            take.mainCpu = cpu;
    }
    // Threads that ended between two readings leave their last tenth of a second here.
    take.byKind["other"] += std::max(0.0, take.cpu - counted);
    return take;
}

// The process's CPU to run a pipeline to its end; an element named "encoder" in it gets the
// recorder's own settings for the format.
double pipelineCpu(const QByteArray& launch, const Format& format) {
    av::GstHandle<GstElement> pipeline(gst_parse_launch(launch.constData(), nullptr),
                                       av::GstRef::adopt);
    if (!pipeline)
        return -1;
    if (const av::GstHandle<GstElement> encoder(
            gst_bin_get_by_name(GST_BIN(pipeline.get()), "encoder"), av::GstRef::adopt);
        encoder) {
        GstVideoInfo info;
        gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, guint(format.width),
                                  guint(format.height));
        info.fps_n = format.fps;
        info.fps_d = 1;
        av::EncoderChoice::configureVideo(encoder.get(), QStringLiteral("x264enc"), info);
    }
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    av::GstHandle<GstBus> bus(gst_element_get_bus(pipeline.get()), av::GstRef::adopt);
    av::GstHandle<GstMessage> end(
        gst_bus_timed_pop_filtered(bus.get(), GST_CLOCK_TIME_NONE,
                                   GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
        av::GstRef::adopt);
    getrusage(RUSAGE_SELF, &after);
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    if (GST_MESSAGE_TYPE(end.get()) != GST_MESSAGE_EOS)
        return -1;
    const auto seconds = [](const timeval& time) {
        return double(time.tv_sec) + double(time.tv_usec) / 1e6;
    };
    return seconds(after.ru_utime) + seconds(after.ru_stime) - seconds(before.ru_utime) -
           seconds(before.ru_stime);
}

// The encoder alone on the clip's frames: decoding and encoding, less decoding alone.
double encoderCpu(const QString& clip, const Format& format) {
    const QByteArray decode =
        "filesrc location=\"" + clip.toUtf8() + "\" ! qtdemux ! h264parse ! avdec_h264 ! ";
    const double decoding = pipelineCpu(decode + "fakesink", format);
    const double both = pipelineCpu(decode + "x264enc name=encoder ! fakesink", format);
    return decoding < 0 || both < 0 ? -1 : both - decoding;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    av::Gst::ensureInitialized();
    const int seconds = argc > 1 ? std::max(1, atoi(argv[1])) : 5;
    const QString tessaro =
        argc > 2 ? QString::fromLocal8Bit(argv[2]) : QStringLiteral(TESSARO_BINARY);
    QTemporaryDir folder;
    for (const Format& format : formats) {
        const QString clip = folder.filePath(QStringLiteral("%1.mov").arg(format.name));
        Take take = recordTake(tessaro, format, seconds, clip);
        const double encoder = take.ok ? encoderCpu(clip, format) : -1;
        if (!take.ok || encoder <= 0) {
            std::printf("take_%s_failed 1 bool\n", format.name);
            continue;
        }
        std::printf("take_%s_cpu %.2f s\n", format.name, take.cpu);
        std::printf("take_%s_encoder_alone_cpu %.2f s\n", format.name, encoder);
        std::printf("take_%s_ratio %.2f x (goal 1.3)\n", format.name, take.cpu / encoder);
        // The camera stand-in renders its scene; a real camera hands frames over for little.
        std::printf("take_%s_ratio_without_camera_zoom %.2f x\n", format.name,
                    (take.cpu - take.byKind["camera_zoom"]) / encoder);
        std::printf("take_%s_main_thread %.1f %%_of_a_core (goal 10)\n", format.name,
                    100.0 * take.mainCpu / take.seconds);
        for (const auto& [kind, cpu] : take.byKind)
            std::printf("take_%s_share_%s %.1f %%\n", format.name, kind.c_str(),
                        take.cpu > 0 ? 100.0 * cpu / take.cpu : 0.0);
        std::fflush(stdout);
    }
    return 0;
}
