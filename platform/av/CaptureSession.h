#pragma once

#include "platform/av/CaptureDeviceFormat.h"
#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"
#include "platform/av/MediaType.h"

#include <QMutex>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace av {

class BusWatch;
class CaptureDevice;
class CaptureInput;
class CaptureOutput;

// One capture pipeline built from the inputs and outputs: camera → format → zoom stage → the
// outputs, and microphone → the outputs. Starting and stopping are synchronous. A format change
// on a running camera rebuilds the pipeline on the next turn of the event loop.
class CaptureSession : public QObject {
    Q_OBJECT

public:
    static inline const QString preset1920x1080 = QStringLiteral("1920x1080");
    static inline const QString preset3840x2160 = QStringLiteral("3840x2160");
    static inline const QString preset1280x720 = QStringLiteral("1280x720");
    // Full HD where the camera has it, else its largest picture.
    static inline const QString presetHigh = QStringLiteral("high");

    explicit CaptureSession(QObject* parent = nullptr);
    ~CaptureSession() override;

    const QString& sessionPreset() const { return preset; }
    void setSessionPreset(const QString& value) { preset = value; }

    // The session keeps what is added (as the QObject parent) and lets go of what is removed.
    const std::vector<CaptureInput*>& inputs() const { return sessionInputs; }
    bool canAddInput(CaptureInput* input) const;
    void addInput(CaptureInput* input);
    void removeInput(CaptureInput* input);
    const std::vector<CaptureOutput*>& outputs() const { return sessionOutputs; }
    bool canAddOutput(CaptureOutput* output) const;
    void addOutput(CaptureOutput* output);
    void removeOutput(CaptureOutput* output);

    void startRunning();
    // Stops the session, and with it any waiting for a busy camera.
    void stopRunning();
    bool isRunning() const { return running; }
    // A camera held by another program is tried again every busyRetryInterval until it starts or
    // the session is stopped; the error is reported once, and didStartRunning says it is back.
    bool isWaitingForBusyCamera() const { return busyRetry.isActive(); }
    static constexpr int busyRetryInterval = 2000; // ms

    // What the running pipeline delivers, for outputs and tests.
    CaptureDeviceFormat runningFormat() const { return format; }
    double runningFrameRate() const { return frameRate; }
    GstElement* pipeline() const { return pipe.get(); }

    // The format and frame rate a device runs at in this session.
    static CaptureDeviceFormat formatFor(const CaptureDevice& device, const QString& preset);
    static double frameRateFor(const CaptureDevice& device, const CaptureDeviceFormat& format);

signals:
    // Something stopped the running session (camera unplugged, busy, refused, device error), or
    // kept it from starting; it is stopped now and any recording is finished.
    void runtimeError(const av::Error& error);
    void didStartRunning();
    void didStopRunning();
    // The microphone went or failed: the session runs on without it (a recording running then is
    // finished first, so what it holds plays), and description says so.
    void microphoneLost(const QString& description);

public:
    // The outputs one appsink hands its samples to, on the streaming thread.
    struct Fanout {
        QMutex mutex;
        MediaType type = MediaType::video;
        std::vector<CaptureOutput*> outputs;
    };

private:
    CaptureDevice* deviceOf(int mediaType) const;
    GstElement* appSinkFor(MediaType type);
    bool build(std::optional<Error>* problem);
    // The branches of build(); they throw av::Error. buildVideo() needs videoDevice set, and
    // both give the caps their branch delivers.
    GstHandle<GstCaps> buildVideo();
    GstHandle<GstCaps> buildAudio(CaptureDevice* microphone);
    GstElement* addToPipeline(GstElement* element);
    void teardown();
    void handleBusMessage(GstMessage* message);
    void scheduleRebuild();
    std::optional<Error> errorFromBus();
    Error errorFrom(GstMessage* message) const;
    void deviceWasDisconnected(CaptureDevice* device);
    // Stops the session and reports the error, once, on the next turn of the event loop.
    void fail(const Error& error);
    void goOnWithoutMicrophone(CaptureDevice* microphone);
    // Reports a failure to run, once for a camera that stays busy, and waits for a busy one.
    void reportFailure(const Error& error);

    QString preset = preset1920x1080;
    std::vector<CaptureInput*> sessionInputs;
    std::vector<CaptureOutput*> sessionOutputs;
    GstHandle<GstElement> pipe;
    std::unique_ptr<BusWatch> busWatch;
    CaptureDevice* videoDevice = nullptr;
    GstElement* videoSource = nullptr; // the pipeline's
    CaptureDevice* audioDevice = nullptr;
    GstElement* audioSource = nullptr; // the pipeline's
    CaptureDeviceFormat format;
    double frameRate = 0;
    bool running = false;
    bool rebuildPending = false;
    bool failing = false;
    std::vector<std::shared_ptr<Fanout>> fanouts; // of the running pipeline
    QTimer busyRetry;
    bool waitingForBusy = false;
};

} // namespace av
