#pragma once

#include "platform/av/CaptureOutput.h"
#include "platform/av/MetadataObject.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QStringList>

#include <atomic>
#include <memory>
#include <vector>

namespace av {

// Finds faces in the camera's frames. The streaming thread only copies the grey plane of the
// newest frame; one detection at a time runs on a worker, always on the newest copy, so a slow
// detector skips frames and never holds the camera. Results reach the delegate on the GUI thread,
// one notice per detected frame at the most and a few a second.
class CaptureMetadataOutput : public CaptureOutput {
    Q_OBJECT

public:
    class MetadataOutputObjectsDelegate {
    public:
        virtual void didOutputMetadataObjects(CaptureMetadataOutput* output,
                                              const std::vector<MetadataObject>& objects) = 0;

    protected:
        ~MetadataOutputObjectsDelegate() = default;
    };

    explicit CaptureMetadataOutput(QObject* parent = nullptr);
    ~CaptureMetadataOutput() override;

    // Faces when the detector's model could be loaded (a missing one is reported once), else
    // nothing.
    QStringList availableMetadataObjectTypes() const;
    QStringList metadataObjectTypes() const { return types; }
    // Types outside the available ones are a programming error.
    void setMetadataObjectTypes(const QStringList& value);
    // Held, not owned; null stops the notices.
    void setMetadataObjectsDelegate(MetadataOutputObjectsDelegate* delegate) {
        objectsDelegate = delegate;
    }

    CaptureConnection* connectionWithMediaType(MediaType type) const override;
    bool wantsMedia(MediaType type) const override { return type == MediaType::video; }
    void handleSample(MediaType type, GstSample* sample) override;
    void sessionWillStop() override;

    quint64 framesSeen() const { return seen.load(); }
    quint64 framesDetected() const { return detected; }
    // The worker's time per detection so far, without loading the model.
    double averageDetectionMilliseconds() const {
        return detected ? double(detectionNanoseconds) / 1e6 / double(detected) : 0.0;
    }

    // The frame's width the detector looks at; faces narrower than 24 of its pixels (5 %) are
    // missed.
    static constexpr int detectionWidth = 480;
    // Boxes follow a face well at a few updates a second; more would only take the machine's
    // time from the camera and the recording.
    static constexpr int minimumInterval = 150; // ms between detections' starts
    // The first face model found under /usr/share/opencv4 (or $TESSARO_FACE_MODEL_DIR); empty when
    // none is installed.
    static QString cascadePath();

    struct Detector;
    struct GreyFrame;

private:
    void startDetection();

    CaptureConnection* videoConnection;
    std::shared_ptr<Detector> detector;
    QStringList types;
    MetadataOutputObjectsDelegate* objectsDelegate = nullptr;
    std::atomic<bool> detecting{false}; // whether frames are wanted at all
    QMutex mutex;                       // guards latest and noticePending
    std::shared_ptr<GreyFrame> latest;
    bool noticePending = false;
    bool running = false;  // a detection is under way or its interval is not over
    QElapsedTimer started; // the detection under way
    std::atomic<quint64> seen{0};
    quint64 detected = 0;
    qint64 detectionNanoseconds = 0;
};

} // namespace av
