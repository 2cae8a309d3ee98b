#pragma once

#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureOutput.h"
#include "platform/av/CapturePhoto.h"
#include "platform/av/CapturePhotoSettings.h"
#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"

#include <QDateTime>
#include <QMutex>
#include <QPointer>

#include <atomic>
#include <optional>
#include <vector>

namespace av {

// Takes stills: the first whole frame the camera captures after the request, encoded as JPEG off
// the GUI thread. With the flash the camera's torch lights the frame taken and goes back to what
// it was. Each request ends in one notice to its delegate on the GUI thread.
class CapturePhotoOutput : public CaptureOutput {
    Q_OBJECT

public:
    class PhotoCaptureDelegate {
    public:
        // photo is empty (no data) when error is set.
        virtual void didFinishProcessingPhoto(CapturePhotoOutput* output, const CapturePhoto& photo,
                                              const std::optional<Error>& error) = 0;

    protected:
        ~PhotoCaptureDelegate() = default;
    };

    explicit CapturePhotoOutput(QObject* parent = nullptr);
    ~CapturePhotoOutput() override;

    CaptureConnection* connectionWithMediaType(MediaType type) const override;
    bool wantsMedia(MediaType type) const override { return type == MediaType::video; }
    void sessionDidStart(GstCaps* videoCaps, GstCaps* audioCaps, GstElement* pipeline) override;
    void sessionWillStop() override;
    void handleSample(MediaType type, GstSample* sample) override;

    // The delegate must outlive the request's notice.
    void capturePhoto(const CapturePhotoSettings& settings, PhotoCaptureDelegate* delegate);

    // The older platforms' form of a photo's data: the JPEG of a photo sample (a JPEG already, or
    // a raw frame encoded upright); empty when either sample is missing or cannot be read.
    static QByteArray JPEGPhotoDataRepresentation(GstSample* photoSampleBuffer,
                                                  GstSample* previewPhotoSampleBuffer);

    // Requests whose notice has not gone out yet.
    int pendingPhotos() const { return pending.load(); }

    // A picture this dark (mean luma 0 to 255) calls for the automatic flash.
    static constexpr int darkLuma = 60;
    // Frames between lighting the torch and the frame taken: what the camera has in flight.
    static constexpr int flashFrames = 3;

private:
    struct Request {
        qint64 id = 0;
        PhotoCaptureDelegate* delegate = nullptr;
        int exifOrientation = 1;
        GstClockTime notBefore = 0;
        // Lit for this photo, until the torch goes back.
        bool flash = false;
        bool flashFired = false;
        GstHandle<GstSample> frame;
        QDateTime captureTime;
    };

    CaptureDevice* cameraDevice() const;
    bool flashFires(const CapturePhotoSettings& settings, const CaptureDevice* camera) const;
    void setTorch(Request& request, bool lit);
    // GUI thread: the requests that have their frame go to the encoder.
    void takeFrames();
    void failWaiting();
    void finish(const Request& request, QByteArray jpeg, QSize size,
                const std::optional<Error>& error);
    void fail(Request request, const Error& error);

    CaptureConnection* videoConnection;
    GstHandle<GstElement> pipe;
    double frameRate = 30;
    // GUI thread: flash photos not taken yet, and the torch they put back.
    int litRequests = 0;
    CaptureDevice::TorchMode torchBeforeFlash = CaptureDevice::TorchMode::off;
    qint64 nextID = 1;
    QMutex mutex; // guards requests and noticePending
    std::vector<Request> requests;
    bool noticePending = false;
    std::atomic<int> pending{0};
    std::atomic<int> latestLuma{255};
};

} // namespace av
