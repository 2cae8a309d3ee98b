#pragma once

#include "platform/av/CaptureOutput.h"
#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"

#include <QUrl>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace av {

class MovieWriter;
class SleepInhibitor;

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
    // missing. Ignored while a recording is in progress. The delegate must outlive the
    // recording's did-finish. Problems (no running session, a file that cannot be written)
    // arrive as did-finish with an error.
    void startRecordingToOutputFileURL(const QUrl& url, RecordingDelegate* delegate);
    // Finishes the movie; did-finish follows once the file is complete. Does nothing when idle.
    void stopRecording();

    // From the start request until the file is complete.
    bool isRecording() const { return state != State::idle; }
    // The file being recorded, empty when idle.
    QUrl outputFileURL() const { return isRecording() ? url : QUrl(); }
    // For the current or last recording: frames handed to the encoder, and frames left out
    // because the encoder had fallen a second behind.
    qint64 framesWritten() const { return written.load(); }
    qint64 framesDropped() const { return dropped.load(); }
    // The session timestamps of the first and last frame in the current or last recording
    // (GST_CLOCK_TIME_NONE before the first), to match frames against what the session did.
    GstClockTime firstFrameTime() const { return firstPts.load(); }
    GstClockTime lastFrameTime() const { return lastPts.load(); }
    // The H.264 encoder of the current or last recording ("x264enc", "vah264enc" ...).
    QString encoderName() const { return encoder; }

    CaptureConnection* connectionWithMediaType(MediaType type) const override;
    bool wantsMedia(MediaType type) const override;
    void sessionDidStart(GstCaps* videoCaps, GstCaps* audioCaps) override;
    // Finishes a recording in progress and waits (a few seconds at most) for the file.
    void sessionWillStop() override;
    void handleSample(MediaType type, GstSample* sample) override;

private:
    enum class State { idle, recording, finishing };
    struct Clip;

    void handleWriterMessage(GstMessage* message);
    // Ends the writer's streams; false when no frame had reached it yet.
    bool endWriterStreams();
    // Ends a recording in progress and blocks until its file is complete (or the wait is over).
    void finishAndWait();
    // Takes the writer from the streaming threads, tears it down and queues did-finish.
    void finish(std::optional<Error> error);
    Error nothingRecorded() const;
    void deliverStart(const std::shared_ptr<Clip>& clip);
    void deliverFinish(const std::shared_ptr<Clip>& clip, const std::optional<Error>& error);

    CaptureConnection* videoConnection;
    CaptureConnection* audioConnection;
    GstHandle<GstCaps> sessionVideoCaps;
    GstHandle<GstCaps> sessionAudioCaps;

    State state = State::idle;
    QUrl url;
    QString encoder;
    std::shared_ptr<Clip> clip;
    std::unique_ptr<MovieWriter> writer;
    // The machine stays awake while a recording runs.
    std::unique_ptr<SleepInhibitor> awake;

    std::mutex feedLock; // guards the feed members below
    // What the streaming threads push into: null when not recording.
    MovieWriter* feedWriter = nullptr;
    std::shared_ptr<Clip> feedClip;
    bool feedStarted = false;
    qint64 feedAudioDropped = 0;

    std::atomic<qint64> written{0};
    std::atomic<qint64> dropped{0};
    std::atomic<GstClockTime> firstPts{GST_CLOCK_TIME_NONE};
    std::atomic<GstClockTime> lastPts{GST_CLOCK_TIME_NONE};
};

} // namespace av
