#pragma once

#include "platform/av/CaptureOutput.h"
#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"

#include <QUrl>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace desktop {
class SleepInhibitor;
}

namespace av {

class MovieWriter;

// Records the session's pictures and sound into one QuickTime movie (H.264 + AAC) at a time,
// while the session keeps running. The recording has a pipeline of its own fed from the
// session's samples, so the preview never waits for the encoder, and the movie stays playable
// if the process dies mid-recording.
//
// GUI thread for everything but handleSample(). The delegate hears of each recording on the GUI
// thread, never from inside the call that started or stopped it: did-start once the first frame
// is in the recording, then did-finish once the file is complete (or the recording failed).
class CaptureMovieFileOutput : public CaptureOutput {
    Q_OBJECT

public:
    class RecordingDelegate {
    public:
        virtual void didStartRecording(CaptureMovieFileOutput* output, const QUrl& fileURL) = 0;
        // error is empty for a complete movie; with an error, what was written may still play.
        virtual void didFinishRecording(CaptureMovieFileOutput* output, const QUrl& fileURL,
                                        const std::optional<Error>& error) = 0;

    protected:
        ~RecordingDelegate() = default;
    };

    explicit CaptureMovieFileOutput(QObject* parent = nullptr);
    ~CaptureMovieFileOutput() override;

    // Starts recording to a local file, replacing it if it exists and creating its folder if
    // missing; a recording that ends without a frame puts the replaced file back. The movie begins
    // with the first frame captured at or after this call; frames the camera took earlier are left
    // out. The delegate must outlive the recording's did-finish. Problems (no running session, a
    // file that cannot be written) arrive as did-finish with an error. Returns false, touching
    // nothing (no file, no notice), while another recording is starting, running or finishing:
    // isRecording() tells when a start will be taken.
    bool startRecordingToOutputFileURL(const QUrl& url, RecordingDelegate* delegate);
    // Finishes the movie; did-finish follows once the file is complete. Stopped before its first
    // frame, the recording ends with an error and leaves no file of its own. Does nothing when
    // idle.
    void stopRecording();

    // True from the start request until did-finish has been delivered.
    bool isRecording() const { return state != State::idle; }
    // The file being recorded, empty when idle.
    QUrl outputFileURL() const { return isRecording() ? url : QUrl(); }
    // For the current or last recording: frames handed to the encoder, and frames missing from
    // it: those the encoder refused because it had fallen a second behind, and those the camera
    // never delivered (gaps of more than one and a half frames between capture times).
    qint64 framesWritten() const { return written.load(); }
    qint64 framesDropped() const { return dropped.load(); }
    // The session timestamps of the first and last frame in the current or last recording
    // (GST_CLOCK_TIME_NONE before the first), to match frames against what the session did.
    GstClockTime firstFrameTime() const { return firstPts.load(); }
    GstClockTime lastFrameTime() const { return lastPts.load(); }
    // The session's running time at the last accepted start request (GST_CLOCK_TIME_NONE
    // without a running session): the first frame's time is at or after it.
    GstClockTime requestTime() const { return requested; }
    // What the last finished recording ended with: nullopt for a complete movie.
    const std::optional<Error>& lastError() const { return finishError; }
    // The H.264 encoder of the current or last recording ("x264enc", "vah264enc" ...).
    QString encoderName() const { return encoder; }

    CaptureConnection* connectionWithMediaType(MediaType type) const override;
    bool wantsMedia(MediaType type) const override;
    void sessionDidStart(GstCaps* videoCaps, GstCaps* audioCaps, GstElement* pipeline) override;
    // Ends a recording in progress; its file completes afterwards and did-finish follows, as
    // after stopRecording(). Never waits for the encoder.
    void sessionWillStop() override;
    void handleSample(MediaType type, GstSample* sample) override;

private:
    // finished: the file is complete and did-finish is on its way.
    enum class State { idle, recording, finishing, finished };
    struct Clip;

    void handleWriterMessage(GstMessage* message);
    // Ends the writer's streams; false when no frame had reached it yet.
    bool endWriterStreams();
    // Ends the writer's streams and stops feeding it; must be called with feedLock held.
    void endFeed();
    // Hands a frame to the writer and counts it; must be called with feedLock held.
    void pushFrame(GstBuffer* buffer, GstClockTime captured);
    // Ends a recording in progress and blocks until its file is complete (or the wait is over):
    // only for the destructor, when there is no later moment.
    void finishAndWait();
    // Fails a finishing recording whose end has not come in time.
    void limitFinish();
    // Takes the writer from the streaming threads, tears it down and queues did-finish.
    void finish(std::optional<Error> error);
    Error nothingRecorded() const;
    // Removes the file of a recording that got no frame and puts back the one it replaced.
    static void restorePrevious(const QString& path);
    GstClockTime sessionRunningTime() const;
    void deliverStart(const std::shared_ptr<Clip>& clip);
    void deliverFinish(const std::shared_ptr<Clip>& clip, const std::optional<Error>& error);

    CaptureConnection* videoConnection;
    CaptureConnection* audioConnection;
    GstHandle<GstCaps> sessionVideoCaps;
    GstHandle<GstCaps> sessionAudioCaps;
    // The session's clock and base time, to tell when a request was made in its running time.
    GstHandle<GstClock> sessionClock;
    GstClockTime sessionBaseTime = GST_CLOCK_TIME_NONE;
    GstClockTime frameDuration = GST_CLOCK_TIME_NONE;
    GstClockTime requested = GST_CLOCK_TIME_NONE;
    std::optional<Error> finishError;

    State state = State::idle;
    QUrl url;
    QString encoder;
    std::shared_ptr<Clip> clip;
    std::unique_ptr<MovieWriter> writer;
    // The machine stays awake while a recording runs.
    std::unique_ptr<desktop::SleepInhibitor> awake;

    std::mutex feedLock; // guards the feed members below
    // What the streaming threads push into: null when not recording.
    MovieWriter* feedWriter = nullptr;
    std::shared_ptr<Clip> feedClip;
    bool feedStarted = false;
    GstClockTime feedRequestTime = GST_CLOCK_TIME_NONE;
    GstClockTime feedLastCapture = GST_CLOCK_TIME_NONE;
    GstClockTime feedStopTime = GST_CLOCK_TIME_NONE;
    qint64 feedAudioDropped = 0;

    std::atomic<qint64> written{0};
    std::atomic<qint64> dropped{0};
    std::atomic<GstClockTime> firstPts{GST_CLOCK_TIME_NONE};
    std::atomic<GstClockTime> lastPts{GST_CLOCK_TIME_NONE};
};

} // namespace av
