#pragma once

#include "capture/CKFSession.h"
#include "platform/av/CaptureMovieFileOutput.h"

#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

// The session that records movies: one camera, the microphone and a movie file output; camera
// switching, torch, zoom on the camera, format choice, and one recording at a time reported
// through a pair of one-shot callbacks on the GUI thread.
class CKFVideoSession : public CKFSession, public av::CaptureMovieFileOutput::RecordingDelegate {
    Q_OBJECT

public:
    using RecordCallback = std::function<void(const QUrl& url)>;
    using ErrorCallback = std::function<void(const std::exception& error)>;

    explicit CKFVideoSession(CameraPosition position);
    ~CKFVideoSession() override;

    // From the record request until its callback has run, so that a press before the first
    // frame stops the recording instead of starting another; also while the movie output
    // records for anyone else.
    bool isRecording() const { return recording || movieOutput->isRecording(); }
    // The requested recording holds its first frame.
    bool hasRecordingStarted() const { return started; }

    CameraPosition cameraPosition() const { return position; }
    // A camera that cannot be opened leaves the camera and the position as they were, and says
    // so through switchFailed.
    void setCameraPosition(CameraPosition value);

    FlashMode flashMode() const { return flash; }
    void setFlashMode(FlashMode value);

    double zoom() const override { return CKFSession::zoom(); }
    void setZoom(double zoom) override;

    // Records to url, or to the default file (replacing the previous clip) when none is given.
    // While recording, refuses with false and changes nothing: not the callbacks, not the file.
    bool record(const std::optional<QUrl>& url, RecordCallback onRecorded, ErrorCallback onError);
    // Also before the first frame: the movie output then finishes with an error.
    void stopRecording();
    void togglePosition();
    void setWidth(qint64 width, qint64 height, qint64 frameRate);

    // "Tessaro Video.mov" in the documents folder.
    static QUrl defaultFileURL();

    av::CaptureMovieFileOutput* movieFileOutput() const { return movieOutput; }
    // The camera recorded from; null when none could be opened.
    av::CaptureDevice* cameraDevice() const;

    // The movie output's notices, on the GUI thread.
    void didStartRecording(av::CaptureMovieFileOutput* output, const QUrl& fileURL) override;
    void didFinishRecording(av::CaptureMovieFileOutput* output, const QUrl& fileURL,
                            const std::optional<av::Error>& error) override;

signals:
    // The first frame of the requested recording is in the movie.
    void recordingStarted();
    // Another camera was asked for and could not be opened; the current one goes on.
    void switchFailed(const QString& description);

private:
    // False, with the old camera in place, when the camera of the position cannot be opened.
    bool swapCameraInput(CameraPosition wanted);
    // The virtual microphone's hiss belongs to the virtual scene: a real camera without a
    // microphone of its own records no sound.
    void matchMicrophone();
    // A record request whose callbacks have not run yet.
    bool recording = false;
    bool started = false;
    CameraPosition position = CameraPosition::back;
    av::CaptureDeviceInput* cameraInput = nullptr;
    av::CaptureDeviceInput* microphoneInput = nullptr;
    FlashMode flash = FlashMode::off;
    av::CaptureMovieFileOutput* movieOutput = nullptr;
    RecordCallback recordCallback = [](const QUrl&) {};
    ErrorCallback errorCallback = [](const std::exception&) {};
};
