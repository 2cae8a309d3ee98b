#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/BusWatch.h"
#include "platform/av/MovieWriter.h"
#include "tests/MovieInfo.h"
#include "tests/av/Frames.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gst/app/gstappsink.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include <sys/mount.h>

namespace {

using av::CaptureConnection;
using av::CaptureMovieFileOutput;
using av::Error;
using av::GstHandle;
using av::GstRef;
using av::MediaType;

// Recording, encoding and finishing a file take far longer than an ordinary wait.
constexpr int patience = 15000;

// Stands in for the capture session: live test sources whose samples reach the output from
// their streaming threads, timestamped in the pipeline's running time.
class FakeSession {
public:
    // The time stamps of what the output took in for its latest recording: its first and last
    // frame written, and the end of the sound handed to it from that first frame on, until a
    // frame shows that it stopped taking them (so at most a frame's time too late).
    struct Fed {
        GstClockTime firstFrame = GST_CLOCK_TIME_NONE;
        GstClockTime lastFrame = GST_CLOCK_TIME_NONE;
        GstClockTime soundEnd = GST_CLOCK_TIME_NONE;
    };

    // Frames reach the output delayMilliseconds after they were taken, as through a camera's
    // converters. The pattern "snow" gives pictures that hardly compress.
    FakeSession(CaptureMovieFileOutput* output, int width, int height, bool withAudio,
                int delayMilliseconds, const char* pattern)
        : output(output) {
        QString description = QString::asprintf(
            "videotestsrc is-live=true pattern=%s ! video/x-raw,format=I420,width=%d,height=%d,"
            "framerate=30/1,pixel-aspect-ratio=1/1 ! queue max-size-buffers=0 max-size-bytes=0 "
            "max-size-time=0 min-threshold-time=%lld ! appsink name=video sync=false",
            pattern, width, height, qint64(delayMilliseconds) * GST_MSECOND);
        if (withAudio)
            description += QStringLiteral(" audiotestsrc is-live=true ! audio/x-raw,rate=48000,"
                                          "channels=2,format=S16LE,layout=interleaved ! "
                                          "appsink name=audio sync=false");
        pipeline = GstHandle<GstElement>(
            gst_parse_launch(description.toUtf8().constData(), nullptr), GstRef::adopt);
        videoSink = connect("video");
        if (withAudio)
            audioSink = connect("audio");
    }

    ~FakeSession() { gst_element_set_state(pipeline.get(), GST_STATE_NULL); }

    // Plays, then hands the output the negotiated formats, as the session does.
    void start() {
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
        ASSERT_TRUE(QTest::qWaitFor(
            [this] { return caps(videoSink) && (!audioSink || caps(audioSink)); }, patience));
        output->sessionDidStart(caps(videoSink).get(), audioSink ? caps(audioSink).get() : nullptr,
                                pipeline.get());
    }

    GstClockTime runningTime() const { return ::runningTime(pipeline.get()); }

    Fed fed() const {
        std::lock_guard lock(fedLock);
        return m_fed;
    }

    std::atomic<bool> feeding{true};

private:
    GstHandle<GstElement> connect(const char* name) {
        GstHandle<GstElement> sink = child(pipeline.get(), name);
        GstAppSinkCallbacks callbacks{};
        callbacks.new_sample = [](GstAppSink* appSink, gpointer data) {
            auto* session = static_cast<FakeSession*>(data);
            const GstHandle<GstSample> sample(gst_app_sink_pull_sample(appSink), GstRef::adopt);
            if (!sample)
                return GST_FLOW_EOS;
            if (session->feeding)
                session->feed(GST_ELEMENT(appSink) == session->videoSink.get() ? MediaType::video
                                                                               : MediaType::audio,
                              sample.get());
            return GST_FLOW_OK;
        };
        gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, this, nullptr);
        return sink;
    }

    // On the type's streaming thread.
    void feed(MediaType type, GstSample* sample) {
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        const GstClockTime pts = GST_BUFFER_PTS(buffer);
        if (type == MediaType::audio) {
            output->handleSample(type, sample);
            const GstClockTime duration = GST_BUFFER_DURATION(buffer);
            const GstClockTime end = pts + (GST_CLOCK_TIME_IS_VALID(duration) ? duration : 0);
            std::lock_guard lock(fedLock);
            if (soundOpen && (!GST_CLOCK_TIME_IS_VALID(m_fed.soundEnd) || end > m_fed.soundEnd))
                m_fed.soundEnd = end;
            return;
        }
        const qint64 written = output->framesWritten();
        const qint64 dropped = output->framesDropped();
        output->handleSample(type, sample);
        const qint64 writtenNow = output->framesWritten();
        std::lock_guard lock(fedLock);
        // Only this thread counts up, and a new recording only resets the counts to 0: a count
        // of written frames that moved and is not 0 took this frame, and 1 begins a recording.
        if (writtenNow != written && writtenNow > 0) {
            if (writtenNow == 1)
                m_fed = Fed{pts, pts, GST_CLOCK_TIME_NONE};
            m_fed.lastFrame = pts;
            soundOpen = true;
        } else if (writtenNow == written && output->framesDropped() == dropped) {
            soundOpen = false; // not recording
        }
    }

    static GstHandle<GstCaps> caps(const GstHandle<GstElement>& sink) {
        GstHandle<GstPad> pad(gst_element_get_static_pad(sink.get(), "sink"), GstRef::adopt);
        return GstHandle<GstCaps>(gst_pad_get_current_caps(pad.get()), GstRef::adopt);
    }

    CaptureMovieFileOutput* output;
    mutable std::mutex fedLock; // guards the two below
    Fed m_fed;
    bool soundOpen = false;
    GstHandle<GstElement> pipeline;
    GstHandle<GstElement> videoSink;
    GstHandle<GstElement> audioSink;
};

// Records what the output tells its delegate, and whether it told it properly: on the GUI
// thread, did-start before did-finish, never from inside start or stop.
struct Delegate : CaptureMovieFileOutput::RecordingDelegate {
    void didStartRecording(CaptureMovieFileOutput*, const QUrl& url) override {
        check();
        startedAfterFinish = startedAfterFinish || finishes > 0;
        ++starts;
        startURL = url;
    }
    void didFinishRecording(CaptureMovieFileOutput*, const QUrl& url,
                            const std::optional<Error>& finishError) override {
        check();
        ++finishes;
        finishURL = url;
        error = finishError;
    }
    void check() {
        offGuiThread = offGuiThread || QThread::currentThread() != qApp->thread();
        synchronous = synchronous || insideCall;
    }
    std::string said() const { return error ? error->localizedDescription().toStdString() : ""; }
    bool says(const QString& text) const {
        return error && error->localizedDescription().contains(text);
    }

    int starts = 0, finishes = 0;
    QUrl startURL, finishURL;
    std::optional<Error> error;
    bool startedAfterFinish = false, offGuiThread = false, synchronous = false, insideCall = false;
};

// Decodes the movie's pictures; -1 when decoding fails before the end.
int decodedFrames(const QString& path) {
    const QString description = QStringLiteral("filesrc location=\"%1\" ! qtdemux ! h264parse ! "
                                               "avdec_h264 ! appsink name=frames sync=false")
                                    .arg(path);
    GstHandle<GstElement> pipeline(gst_parse_launch(description.toUtf8().constData(), nullptr),
                                   GstRef::adopt);
    GstHandle<GstElement> sink = child(pipeline.get(), "frames");
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    int frames = 0;
    while (GstHandle<GstSample>(
        gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 10 * GST_SECOND), GstRef::adopt))
        ++frames;
    const bool complete = gst_app_sink_is_eos(GST_APP_SINK(sink.get()));
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return complete ? frames : -1;
}

// The movie starts at the first frame written and lasts at least to the end of the last one; it
// ends no later than the sound fed after them, which runs on past the pictures when a loaded
// machine makes the picture source fall behind real time. Its length comes from the time stamps,
// not from a count of frames, give or take a frame and the sound's last blocks (a source block
// and the encoder's padding to whole AAC blocks).
void expectDurationOfWhatWasFed(const MovieInfo& movie, const FakeSession::Fed& fed,
                                bool withSound = true) {
    ASSERT_TRUE(GST_CLOCK_TIME_IS_VALID(fed.firstFrame));
    const double frame = 1 / 30.0;
    const double slack = frame + (withSound ? 3 * 1024 / 48000.0 : 0.001);
    const auto since = [&fed](GstClockTime time) {
        return double(GST_CLOCK_DIFF(fed.firstFrame, time)) / GST_SECOND;
    };
    const double pictures = since(fed.lastFrame) + frame;
    const double sound = GST_CLOCK_TIME_IS_VALID(fed.soundEnd) ? since(fed.soundEnd) : 0.0;
    EXPECT_EQ(GST_CLOCK_TIME_IS_VALID(fed.soundEnd), withSound);
    EXPECT_GE(movie.seconds, pictures - slack);
    EXPECT_LE(movie.seconds, std::max(pictures, sound) + slack);
}

class CaptureMovieFileOutputTest : public ::testing::Test {
protected:
    void SetUp() override {
        gst_init(nullptr, nullptr);
        ASSERT_TRUE(folder.isValid());
    }

    // A started session feeding the output.
    FakeSession& startSession(int width = 640, int height = 360, bool withAudio = true,
                              int delayMilliseconds = 0, const char* pattern = "ball") {
        session.emplace(&output, width, height, withAudio, delayMilliseconds, pattern);
        session->start();
        return *session;
    }

    QUrl fileURL(const QString& name) const { return QUrl::fromLocalFile(folder.filePath(name)); }

    bool start(const QUrl& url, Delegate& delegate) {
        delegate.insideCall = true;
        const bool taken = output.startRecordingToOutputFileURL(url, &delegate);
        delegate.insideCall = false;
        return taken;
    }

    void stop(Delegate& delegate) {
        delegate.insideCall = true;
        output.stopRecording();
        delegate.insideCall = false;
    }

    // Starts, records for about this long after the first frame, stops and waits for the file.
    void record(const QUrl& url, Delegate& delegate, int milliseconds) {
        start(url, delegate);
        ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.starts == 1 || delegate.finishes == 1; },
                                    patience));
        QTest::qWait(milliseconds);
        stop(delegate);
        ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.finishes == 1; }, patience));
    }

    QTemporaryDir folder;
    CaptureMovieFileOutput output;
    std::optional<FakeSession> session;
};

// At the session's size, with sound when there is a microphone and without it otherwise, each
// clip to the same place, turned as the connection says: the pixels keep the camera's shape and
// only the player turns them, and turning back upright leaves no turn behind.
TEST_F(CaptureMovieFileOutputTest, RecordsAQuickTimeMovieWithH264AndAacTurnedAsTheConnection) {
    using Orientation = CaptureConnection::VideoOrientation;
    const struct {
        int width, height;
        bool withAudio;
        int milliseconds;
        Orientation orientation;
        QString tag;
    } rows[] = {{640, 360, true, 1500, Orientation::landscapeLeft, "rotate-90"},
                {1920, 1080, true, 1000, Orientation::portraitUpsideDown, "rotate-180"},
                {640, 360, false, 800, Orientation::landscapeRight, "rotate-270"},
                {640, 360, true, 500, Orientation::portrait, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << " " << row.withAudio
                                        << " " << row.tag.toStdString());
        startSession(row.width, row.height, row.withAudio);
        output.connectionWithMediaType(MediaType::video)->setVideoOrientation(row.orientation);
        Delegate delegate;
        const QUrl url = fileURL(QStringLiteral("Tessaro Video.mov"));
        record(url, delegate, row.milliseconds);

        EXPECT_EQ(delegate.starts, 1);
        EXPECT_EQ(delegate.finishes, 1);
        ASSERT_FALSE(delegate.error) << delegate.said();
        EXPECT_FALSE(delegate.startedAfterFinish || delegate.offGuiThread || delegate.synchronous);
        EXPECT_EQ(delegate.startURL, url);
        EXPECT_EQ(delegate.finishURL, url);
        EXPECT_FALSE(output.isRecording());
        EXPECT_TRUE(output.outputFileURL().isEmpty());
        EXPECT_FALSE(output.encoderName().isEmpty());
        EXPECT_TRUE(row.width > 640 || output.framesDropped() == 0) << output.framesDropped();
        ASSERT_GT(output.framesWritten(), 15);

        // Each clip replaces the one before.
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
        const MovieInfo movie = inspectMovie(url.toLocalFile());
        ASSERT_TRUE(movie.readable);
        EXPECT_EQ(movie.container, "video/quicktime");
        EXPECT_EQ(movie.videoCodec, "video/x-h264");
        EXPECT_EQ(movie.width, row.width);
        EXPECT_EQ(movie.height, row.height);
        EXPECT_TRUE(movie.orientation == row.tag ||
                    (row.tag.isEmpty() && movie.orientation == "rotate-0"))
            << movie.orientation.toStdString();
        EXPECT_EQ(movie.audioCodec, row.withAudio ? "audio/mpeg" : "");
        EXPECT_EQ(movie.audioMpegVersion, row.withAudio ? 4 : 0);
        EXPECT_EQ(movie.audioStreams, row.withAudio ? 1 : 0);
        expectDurationOfWhatWasFed(movie, session->fed(), row.withAudio);
        EXPECT_EQ(decodedFrames(url.toLocalFile()), output.framesWritten());
    }
}

// Stop and session end with nothing recording do nothing; a start without a session, or a stop
// before the first frame, fails without a file; a second start while one runs is ignored.
TEST_F(CaptureMovieFileOutputTest, StartsAndStopsOnlyWhenItMayAndEndsWithTheSession) {
    FakeSession& session = startSession();
    output.stopRecording();
    output.sessionWillStop();
    Delegate late;
    start(fileURL(QStringLiteral("late.mov")), late);
    ASSERT_TRUE(QTest::qWaitFor([&] { return late.finishes == 1; }, patience));
    ASSERT_TRUE(late.error);
    EXPECT_EQ(late.error->code(), Error::Code::sessionNotRunning);

    session.start();
    session.feeding = false;
    Delegate empty;
    const QUrl emptyURL = fileURL(QStringLiteral("empty.mov"));
    EXPECT_TRUE(start(emptyURL, empty));
    stop(empty);
    ASSERT_TRUE(QTest::qWaitFor([&] { return empty.finishes == 1; }, patience));
    EXPECT_EQ(empty.starts, 0);
    ASSERT_TRUE(empty.error);
    EXPECT_EQ(empty.error->code(), Error::Code::recordingFailed);
    EXPECT_TRUE(empty.says("before any picture")) << empty.said();
    EXPECT_FALSE(empty.synchronous);
    EXPECT_FALSE(QFile::exists(emptyURL.toLocalFile()));
    EXPECT_FALSE(output.isRecording());

    // Refused while starting and while running, before anything changes. The session stopping
    // (or restarting in another format) ends the movie without waiting for the encoder: the file
    // completes afterwards, and no new recording starts until did-finish.
    Delegate first, second;
    const QUrl url = fileURL(QStringLiteral("first.mov"));
    const QUrl other = fileURL(QStringLiteral("second.mov"));
    EXPECT_TRUE(start(url, first));
    EXPECT_TRUE(output.isRecording());
    EXPECT_FALSE(start(other, second));
    session.feeding = true;
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.starts == 1; }, patience));
    EXPECT_FALSE(start(other, second));
    EXPECT_EQ(output.outputFileURL(), url);
    QTest::qWait(800);
    output.sessionWillStop();
    session.start();
    EXPECT_EQ(first.finishes, 0);
    EXPECT_TRUE(output.isRecording());
    EXPECT_FALSE(start(other, second));
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.finishes == 1; }, patience));
    EXPECT_FALSE(output.isRecording());
    ASSERT_FALSE(first.error) << first.said();
    EXPECT_FALSE(first.synchronous);
    EXPECT_EQ(second.starts + second.finishes, 0);
    EXPECT_FALSE(QFile::exists(other.toLocalFile()));
    expectDurationOfWhatWasFed(inspectMovie(url.toLocalFile()), session.fed());

    // The next one records; stopped twice, it finishes once.
    Delegate next;
    start(fileURL(QStringLiteral("next.mov")), next);
    ASSERT_TRUE(QTest::qWaitFor([&] { return next.starts == 1; }, patience));
    QTest::qWait(300);
    stop(next);
    stop(next);
    ASSERT_TRUE(QTest::qWaitFor([&] { return next.finishes == 1; }, patience));
    QTest::qWait(200);
    EXPECT_EQ(next.finishes, 1);
    EXPECT_FALSE(next.error);
}

// Frames arrive a tenth of a second after they were taken: the movie still starts with the first
// frame taken at or after the start and ends with the first taken at or after the stop; frames
// the camera never delivered count as dropped.
TEST_F(CaptureMovieFileOutputTest, KeepsToTheFramesTakenBetweenStartAndStop) {
    FakeSession& session = startSession(640, 360, false, 100);
    QTest::qWait(300);
    const GstClockTime frame = GST_SECOND / 30;
    Delegate delegate;
    const GstClockTime before = session.runningTime();
    ASSERT_TRUE(start(fileURL(QStringLiteral("timed.mov")), delegate));
    const GstClockTime after = session.runningTime();
    ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.starts == 1; }, patience));
    EXPECT_GE(output.requestTime(), before);
    EXPECT_LE(output.requestTime(), after);
    EXPECT_GE(output.firstFrameTime(), output.requestTime());
    EXPECT_LE(output.firstFrameTime(), after + frame);

    QTest::qWait(500);
    // A camera that delivers nothing for about ten frames.
    session.feeding = false;
    QTest::qWait(330);
    session.feeding = true;
    QTest::qWait(500);
    const GstClockTime stopped = session.runningTime();
    stop(delegate);
    ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.finishes == 1; }, patience));
    ASSERT_FALSE(delegate.error);
    EXPECT_GE(output.lastFrameTime(), stopped);
    EXPECT_LE(output.lastFrameTime(), session.runningTime());
    EXPECT_NEAR(double(output.framesDropped()), 10.0, 2.0);
    const qint64 span = qint64((output.lastFrameTime() - output.firstFrameTime()) / frame) + 1;
    EXPECT_EQ(output.framesWritten() + output.framesDropped(), span);
}

// A folder that cannot be made, a remote URL, and a full disk once the frames flow: /dev/full,
// and a small file system (mounting one needs root; left out elsewhere), which the recording
// fills and whose movie must stay playable up to there. Snow hardly compresses and fills it fast.
TEST_F(CaptureMovieFileOutputTest, ReportsWhereItCannotWriteAndKeepsWhatADiskFullOfItHolds) {
    startSession(640, 360, true, 0, "snow");
    QFile blocker(folder.filePath(QStringLiteral("blocker")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const QString full = QStringLiteral("/dev/full");
    const QString small = folder.filePath(QStringLiteral("small"));
    ASSERT_TRUE(QDir().mkpath(small));
    const bool mounted =
        ::mount("tmpfs", small.toLocal8Bit().constData(), "tmpfs", 0, "size=2m") == 0;
    const auto unmount = qScopeGuard([&] {
        if (mounted)
            ::umount2(small.toLocal8Bit().constData(), MNT_DETACH);
    });
    const struct {
        QUrl url;
        QString named;
        Error::Code code;
        bool present;
    } rows[] = {
        {fileURL(QStringLiteral("blocker/clips/clip.mov")), folder.filePath("blocker/clips"),
         Error::Code::fileNotWritable, true},
        {QUrl(QStringLiteral("https://example.com/clip.mov")), QStringLiteral("example.com"),
         Error::Code::fileNotWritable, true},
        {QUrl::fromLocalFile(full), full, Error::Code::diskFull, QFileInfo::exists(full)},
        {QUrl::fromLocalFile(small + "/full.mov"), small + "/full.mov", Error::Code::diskFull,
         mounted},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url.toString().toStdString());
        if (!row.present)
            continue;
        Delegate delegate;
        EXPECT_TRUE(start(row.url, delegate)); // taken: the problem comes as did-finish
        ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.finishes == 1; }, 2 * patience));
        EXPECT_LE(delegate.starts, row.code == Error::Code::diskFull ? 1 : 0);
        EXPECT_FALSE(delegate.synchronous);
        ASSERT_TRUE(delegate.error);
        EXPECT_EQ(delegate.error->code(), row.code);
        EXPECT_TRUE(delegate.says(row.named)) << delegate.said();
        EXPECT_FALSE(output.isRecording());
        if (row.code != Error::Code::diskFull)
            continue;
        EXPECT_TRUE(delegate.says("disk is full")) << delegate.said();
        EXPECT_TRUE(QFileInfo::exists(full));
        if (row.named == full)
            continue;
        const MovieInfo movie = inspectMovie(row.url.toLocalFile());
        ASSERT_TRUE(movie.readable);
        EXPECT_GT(movie.seconds, 0.5);
        EXPECT_GT(decodedFrames(row.url.toLocalFile()), 15);
    }
}

TEST(MovieWriterTest, QueueRidesOutAQuarterSecondWithinItsMemory) {
    constexpr quint64 frame1080 = 1920 * 1080 * 3 / 2, frame2160 = 3840 * 2160 * 3 / 2;
    // A loaded two-core machine has up to 7 frames of a 1080p30 take waiting.
    EXPECT_EQ(av::MovieWriter::queuedFrames(frame1080, 30), 8u);
    EXPECT_EQ(av::MovieWriter::queuedFrames(frame1080, 60), 15u);
    EXPECT_EQ(av::MovieWriter::queuedFrames(frame1080, 0), 8u);
    EXPECT_EQ(av::MovieWriter::queuedFrames(frame2160, 30), 5u); // 64 MiB at most
    // Never so few that one late frame is a drop.
    EXPECT_EQ(av::MovieWriter::queuedFrames(7680 * 4320 * 3 / 2, 30), 2u);
    EXPECT_EQ(av::MovieWriter::queuedFrames(320 * 240 * 3 / 2, 5), 2u);
}

int numberOf(GstMessage* message) {
    int number = -1;
    gst_structure_get_int(gst_message_get_structure(message), "number", &number);
    return number;
}

// Messages posted on another thread arrive on the GUI thread, in order, never inside the post;
// a handler that destroys its watch gets no more of them, which stay on the bus.
TEST(BusWatchTest, DeliversInOrderOnTheGuiThreadUntilTheHandlerDestroysIt) {
    gst_init(nullptr, nullptr);
    const GstHandle<GstBus> bus(gst_bus_new(), GstRef::adopt);
    std::vector<int> numbers;
    bool offGuiThread = false;
    std::unique_ptr<av::BusWatch> watch;
    watch =
        std::make_unique<av::BusWatch>(GstHandle<GstBus>(bus).release(), [&](GstMessage* message) {
            offGuiThread = offGuiThread || QThread::currentThread() != qApp->thread();
            numbers.push_back(numberOf(message));
            if (numbers.back() == 99)
                watch.reset();
        });
    std::thread([&bus] {
        for (int i = 0; i < 102; ++i)
            gst_bus_post(bus.get(),
                         gst_message_new_application(
                             nullptr, gst_structure_new("test", "number", G_TYPE_INT, i, nullptr)));
    }).join();
    EXPECT_TRUE(numbers.empty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watch; }, 5000));
    QTest::qWait(50);
    EXPECT_FALSE(offGuiThread);
    ASSERT_EQ(numbers.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(numbers[size_t(i)], i);
    GstHandle<GstMessage> left(gst_bus_pop(bus.get()), GstRef::adopt);
    ASSERT_TRUE(left);
    EXPECT_EQ(numberOf(left.get()), 100);
}

} // namespace
