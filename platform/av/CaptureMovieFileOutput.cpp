#include "platform/av/CaptureMovieFileOutput.h"

#include "platform/desktop/SleepInhibitor.h"
#include "platform/foundation/FileManager.h"

#include <QThreadPool>

#include "platform/av/EncoderChoice.h"
#include "platform/av/Gst.h"
#include "platform/av/Logging.h"

#include "platform/av/MovieWriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <gst/video/video.h>

#include <chrono>

// Debug lines only when asked for (QT_LOGGING_RULES="tessaro.av.debug=true").

namespace av {

namespace {

// How long the end of a recording may take: the encoder's frames in flight and the last header.
constexpr std::chrono::milliseconds finishTimeout{10000};
// How long after a stop the frames taken before it may still arrive.
constexpr std::chrono::milliseconds stopGrace{500};

// Drops are logged at the 1st, 2nd, 4th, 8th ... so a slow machine does not flood the log.
bool isPowerOfTwo(qint64 count) {
    return count > 0 && (count & (count - 1)) == 0;
}

// Frames the camera never delivered between two captures: a gap of more than one and a half
// frames counts the frames that fit in it.
qint64 missingFrames(GstClockTime previous, GstClockTime captured, GstClockTime frame) {
    if (!GST_CLOCK_TIME_IS_VALID(previous) || !GST_CLOCK_TIME_IS_VALID(frame) || frame == 0 ||
        captured <= previous || 2 * (captured - previous) <= 3 * frame)
        return 0;
    return qint64((captured - previous + frame / 2) / frame) - 1;
}

// Where the file a recording replaces waits until the new one has a frame: hidden beside it.
QString asidePath(const QString& path) {
    const QFileInfo info(path);
    return info.dir().filePath(QLatin1Char('.') + info.fileName() + QStringLiteral(".previous"));
}

// The folder is made if missing; an old file is moved aside rather than overwritten, so whoever
// is still reading the previous clip (a copy to the photo library) keeps reading it whole, and a
// recording that never gets a frame can put it back.
QString prepareFile(const QUrl& url) {
    if (!url.isLocalFile())
        throw Error(Error::Code::fileNotWritable,
                    qtTrId("movie_tessaro_records_files_computer").arg(url.toDisplayString()));
    const QString path = url.toLocalFile();
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        throw Error(Error::Code::fileNotWritable,
                    qtTrId("movie_recording_cannot_saved_folder").arg(folder));
    if (QFileInfo(path).isFile()) {
        const QString aside = asidePath(path);
        foundation::FileManager::removeItem(aside);
        if (!QFile::rename(path, aside))
            foundation::FileManager::removeItem(path);
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw Error(Error::Code::fileNotWritable,
                    qtTrId("movie_recording_cannot_saved_file").arg(path, file.errorString()));
    return path;
}

Error errorFrom(GstMessage* message, const QString& path) {
    const GstMessageError error = Gst::errorOf(message);
    qCWarning(lcAv).noquote() << "recording to" << path << "failed in"
                              << GST_OBJECT_NAME(GST_MESSAGE_SRC(message)) << ":" << error.message
                              << error.debug;
    if (error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT))
        return Error(Error::Code::diskFull, qtTrId("movie_disk_full_recording_stopped").arg(path));
    if (error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_WRITE) ||
        error.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ_WRITE))
        return Error(Error::Code::fileNotWritable,
                     qtTrId("movie_recording_cannot_saved_file_2").arg(path));
    return Error(Error::Code::recordingFailed,
                 qtTrId("movie_recording_failed").arg(path, error.message));
}

} // namespace

// One requested recording, as its delegate hears of it. GUI thread only.
struct CaptureMovieFileOutput::Clip {
    QUrl url;
    RecordingDelegate* delegate;
    bool started = false;
    bool finished = false;
};

CaptureMovieFileOutput::CaptureMovieFileOutput(QObject* parent)
    : CaptureOutput(parent), videoConnection(new CaptureConnection(MediaType::video, this)),
      audioConnection(new CaptureConnection(MediaType::audio, this)) {}

CaptureMovieFileOutput::~CaptureMovieFileOutput() {
    // Quitting mid-recording still leaves a complete movie; there is no one left to tell.
    finishAndWait();
}

CaptureConnection* CaptureMovieFileOutput::connectionWithMediaType(MediaType type) const {
    return type == MediaType::video ? videoConnection : audioConnection;
}

bool CaptureMovieFileOutput::wantsMedia(MediaType) const {
    return true;
}

void CaptureMovieFileOutput::sessionDidStart(GstCaps* videoCaps, GstCaps* audioCaps,
                                             GstElement* pipeline) {
    sessionVideoCaps = GstHandle<GstCaps>(videoCaps, GstRef::add);
    sessionAudioCaps = GstHandle<GstCaps>(audioCaps, GstRef::add);
    sessionClock =
        GstHandle<GstClock>(pipeline ? gst_element_get_clock(pipeline) : nullptr, GstRef::adopt);
    sessionBaseTime = pipeline ? gst_element_get_base_time(pipeline) : GST_CLOCK_TIME_NONE;
    GstVideoInfo info;
    frameDuration =
        videoCaps && gst_video_info_from_caps(&info, videoCaps) && info.fps_n > 0
            ? gst_util_uint64_scale(GST_SECOND, guint64(info.fps_d), guint64(info.fps_n))
            : GST_CLOCK_TIME_NONE;
    // Tries the hardware encoders now, off this thread, rather than when the user presses record.
    if (videoCaps && state == State::idle) {
        EncoderChoice::probeVideo(videoCaps);
        QThreadPool::globalInstance()->start([caps = GstHandle<GstCaps>(videoCaps, GstRef::add)] {
            EncoderChoice::loadPlugins(EncoderChoice::video(caps.get()));
        });
    }
}

void CaptureMovieFileOutput::sessionWillStop() {
    // No frame comes after this, so the movie ends now; its own pipeline completes the file and
    // did-finish follows from there, so stopping or reformatting the session never waits for it.
    if (state == State::recording) {
        state = State::finishing;
        if (!endWriterStreams())
            finish(nothingRecorded());
        else
            limitFinish();
    } else if (state == State::finishing) {
        endWriterStreams(); // a stop that waited for a later frame gets none
    }
    sessionVideoCaps.reset();
    sessionAudioCaps.reset();
    sessionClock.reset();
    sessionBaseTime = GST_CLOCK_TIME_NONE;
}

GstClockTime CaptureMovieFileOutput::sessionRunningTime() const {
    if (!sessionClock || !GST_CLOCK_TIME_IS_VALID(sessionBaseTime))
        return GST_CLOCK_TIME_NONE;
    const GstClockTime now = gst_clock_get_time(sessionClock.get());
    return now > sessionBaseTime ? now - sessionBaseTime : 0;
}

bool CaptureMovieFileOutput::startRecordingToOutputFileURL(const QUrl& fileURL,
                                                           RecordingDelegate* delegate) {
    if (!delegate)
        qFatal("av::CaptureMovieFileOutput: startRecordingToOutputFileURL needs a delegate");
    if (state != State::idle) {
        qCWarning(lcAv).noquote() << "already recording to" << url.toDisplayString()
                                  << "- refusing the request for" << fileURL.toDisplayString();
        return false;
    }
    // Taken first: the frames the camera delivers from here on were captured after it.
    requested = sessionRunningTime();
    finishError.reset();
    auto next = std::make_shared<Clip>(Clip{fileURL, delegate});
    clip = next;
    url = fileURL;
    written = 0;
    dropped = 0;
    firstPts = GST_CLOCK_TIME_NONE;
    lastPts = GST_CLOCK_TIME_NONE;
    QString path;
    try {
        if (!sessionVideoCaps)
            throw Error(Error::Code::sessionNotRunning,
                        qtTrId("movie_recording_needs_camera_running"));
        path = prepareFile(fileURL);
        writer = std::make_unique<MovieWriter>(
            path, sessionVideoCaps.get(), sessionAudioCaps.get(),
            videoConnection->rotationDegrees(),
            [this](GstMessage* message) { handleWriterMessage(message); });
    } catch (const Error& error) {
        // A recording that never started leaves no empty file behind, and the previous clip.
        if (!path.isEmpty())
            restorePrevious(path);
        qCWarning(lcAv).noquote() << error.localizedDescription();
        state = State::finished;
        finishError = error;
        deliverFinish(next, error);
        return true;
    }
    encoder = writer->encoderName();
    state = State::recording;
    awake = std::make_unique<desktop::SleepInhibitor>(qtTrId("movie_recording_clip"));
    std::lock_guard lock(feedLock);
    feedWriter = writer.get();
    feedClip = clip;
    feedStarted = false;
    feedRequestTime = requested;
    feedLastCapture = GST_CLOCK_TIME_NONE;
    feedStopTime = GST_CLOCK_TIME_NONE;
    feedAudioDropped = 0;
    return true;
}

void CaptureMovieFileOutput::stopRecording() {
    if (state != State::recording)
        return;
    state = State::finishing;
    // Frames the camera took before the stop are still on their way: the streams end with the
    // first frame taken after it, so the movie ends where the user (or the ramp) stopped it.
    const GstClockTime stopTime = sessionRunningTime();
    bool waiting = false;
    {
        std::lock_guard lock(feedLock);
        waiting = feedWriter && feedStarted && GST_CLOCK_TIME_IS_VALID(stopTime);
        if (waiting)
            feedStopTime = stopTime;
    }
    if (!waiting && !endWriterStreams()) {
        finish(nothingRecorded());
        return;
    }
    // A camera that stalls must not keep the movie open.
    if (waiting)
        QTimer::singleShot(stopGrace, this, [this, stopped = clip] {
            if (clip == stopped && state == State::finishing)
                endWriterStreams();
        });
    limitFinish();
}

void CaptureMovieFileOutput::limitFinish() {
    // An encoder that hangs must not leave the recording unfinished forever.
    QTimer::singleShot(finishTimeout, this, [this, stopped = clip] {
        if (clip == stopped && state == State::finishing)
            finish(Error(Error::Code::recordingFailed,
                         qtTrId("movie_recording_did_not_finish").arg(url.toLocalFile())));
    });
}

void CaptureMovieFileOutput::finishAndWait() {
    if (state != State::recording && state != State::finishing)
        return;
    state = State::finishing;
    if (!endWriterStreams()) {
        finish(nothingRecorded());
        return;
    }
    GstHandle<GstMessage> end = writer->waitForEnd(finishTimeout);
    if (!end)
        finish(Error(Error::Code::recordingFailed,
                     qtTrId("movie_recording_did_not_finish_2").arg(url.toLocalFile())));
    else if (GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_ERROR)
        finish(errorFrom(end.get(), url.toLocalFile()));
    else
        finish(std::nullopt);
}

bool CaptureMovieFileOutput::endWriterStreams() {
    std::lock_guard lock(feedLock);
    endFeed();
    return feedStarted;
}

void CaptureMovieFileOutput::endFeed() {
    if (!feedWriter)
        return;
    if (feedStarted)
        feedWriter->endOfStream();
    feedWriter = nullptr;
    feedClip.reset();
}

Error CaptureMovieFileOutput::nothingRecorded() const {
    return Error(Error::Code::recordingFailed,
                 qtTrId("movie_recording_stopped_before_any").arg(url.toLocalFile()));
}

void CaptureMovieFileOutput::handleWriterMessage(GstMessage* message) {
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        finish(std::nullopt);
        break;
    case GST_MESSAGE_ERROR:
        finish(errorFrom(message, url.toLocalFile()));
        break;
    case GST_MESSAGE_WARNING:
        qCWarning(lcAv) << "recording:" << GST_OBJECT_NAME(GST_MESSAGE_SRC(message))
                        << Gst::errorOf(message).message;
        break;
    default:
        break;
    }
}

void CaptureMovieFileOutput::finish(std::optional<Error> error) {
    bool hadFrames = false;
    {
        std::lock_guard lock(feedLock);
        feedWriter = nullptr;
        feedClip.reset();
        hadFrames = std::exchange(feedStarted, false);
    }
    // Destroying the writer closes the file before anyone hears that it is done.
    writer.reset();
    const QString path = url.toLocalFile();
    // Without a frame there is no movie, only a header; never a device such as /dev/full.
    if (!hadFrames && QFileInfo(path).isFile())
        restorePrevious(path);
    else if (hadFrames)
        foundation::FileManager::removeItem(asidePath(path));
    qCDebug(lcAv).noquote() << "recorded" << path << "with" << encoder << ":" << written.load()
                            << "frames," << dropped.load() << "dropped";
    state = State::finished;
    finishError = error;
    awake.reset();
    deliverFinish(clip, error);
}

void CaptureMovieFileOutput::restorePrevious(const QString& path) {
    QFile::remove(path);
    const QString aside = asidePath(path);
    if (QFileInfo::exists(aside) && !QFile::rename(aside, path))
        qCWarning(lcAv).noquote() << "could not put the previous clip back from" << aside;
}

void CaptureMovieFileOutput::deliverStart(const std::shared_ptr<Clip>& started) {
    if (started->started || started->finished)
        return;
    started->started = true;
    started->delegate->didStartRecording(this, started->url);
}

void CaptureMovieFileOutput::deliverFinish(const std::shared_ptr<Clip>& ended,
                                           const std::optional<Error>& error) {
    QMetaObject::invokeMethod(
        this,
        [this, ended, error] {
            if (ended->finished)
                return;
            ended->finished = true;
            // Idle first: the delegate may start the next recording from here.
            if (clip == ended) {
                clip.reset();
                state = State::idle;
            }
            ended->delegate->didFinishRecording(this, ended->url, error);
        },
        Qt::QueuedConnection);
}

void CaptureMovieFileOutput::handleSample(MediaType type, GstSample* sample) {
    std::lock_guard lock(feedLock);
    if (!feedWriter)
        return;
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!buffer)
        return;
    if (type == MediaType::audio) {
        // Sound runs to the end of the last frame.
        if (GST_CLOCK_TIME_IS_VALID(feedStopTime) &&
            GST_BUFFER_PTS(buffer) >=
                feedStopTime + (GST_CLOCK_TIME_IS_VALID(frameDuration) ? frameDuration : 0))
            return;
        if (!feedWriter->pushAudio(buffer) && isPowerOfTwo(++feedAudioDropped))
            qCWarning(lcAv) << "the recording fell behind:" << feedAudioDropped
                            << "blocks of sound dropped so far";
        return;
    }
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    const GstClockTime captured =
        gst_segment_to_running_time(gst_sample_get_segment(sample), GST_FORMAT_TIME, pts);
    // A frame taken before the request shows the camera as it was before the user pressed.
    if (GST_CLOCK_TIME_IS_VALID(feedRequestTime) &&
        (!GST_CLOCK_TIME_IS_VALID(captured) || captured < feedRequestTime))
        return;
    // The first frame taken at or after the stop shows the zoom the stop left, and ends the movie.
    const bool last = GST_CLOCK_TIME_IS_VALID(feedStopTime) && captured >= feedStopTime;
    pushFrame(buffer, captured);
    if (last)
        endFeed();
}

void CaptureMovieFileOutput::pushFrame(GstBuffer* buffer, GstClockTime captured) {
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    if (GST_CLOCK_TIME_IS_VALID(captured)) {
        dropped += missingFrames(feedLastCapture, captured, frameDuration);
        feedLastCapture = captured;
    }
    if (!feedWriter->pushVideo(buffer)) {
        const qint64 count = ++dropped;
        if (isPowerOfTwo(count))
            qCWarning(lcAv) << "the recording fell behind:" << count << "frames dropped so far";
        return;
    }
    ++written;
    lastPts = pts;
    if (!feedStarted) {
        firstPts = pts;
        feedStarted = true;
        // Posted under the lock, so it is queued before any did-finish of the same clip.
        QMetaObject::invokeMethod(
            this, [this, started = feedClip] { deliverStart(started); }, Qt::QueuedConnection);
    }
}

} // namespace av
