#pragma once

#include "capture/CKFSession.h"
#include "platform/av/CaptureMetadataOutput.h"
#include "platform/av/CapturePhotoOutput.h"
#include "platform/ui/Image.h"
#include "platform/ui/View.h"

#include <QPointer>
#include <QSizeF>

#include <functional>
#include <vector>

// The still-photo session: one camera, a photo output and, when asked, face detection with a
// green box per face over the overlay view; flash, zoom, tap to focus, and an optional size the
// photos are cropped and scaled to. Each capture ends in exactly one of its two callbacks, on
// the GUI thread; photos are decoded and scaled off it, one at a time, in order.
class CKFPhotoSession : public CKFSession,
                        public av::CapturePhotoOutput::PhotoCaptureDelegate,
                        public av::CaptureMetadataOutput::MetadataOutputObjectsDelegate {
    Q_OBJECT

public:
    enum class CameraDetection { none = 0, faces = 1 };
    static std::optional<CameraDetection> cameraDetection(qint64 rawValue);

    using CaptureCallback =
        std::function<void(const ui::Image& image, const av::CaptureResolvedPhotoSettings&)>;
    using ErrorCallback = std::function<void(const std::exception& error)>;

    CKFPhotoSession(CameraPosition position, CameraDetection detection);
    ~CKFPhotoSession() override;

    CameraPosition cameraPosition() const { return position; }
    // Opens the camera of the position; one that cannot be opened is reported on standard output
    // and the current camera stays.
    void setCameraPosition(CameraPosition value);
    CameraDetection cameraDetection() const { return detection; }
    void setCameraDetection(CameraDetection value);
    FlashMode flashMode() const { return flash; }
    void setFlashMode(FlashMode value) { flash = value; }
    using CKFSession::captureDeviceInput;
    av::CaptureDeviceInput* captureDeviceInput() const { return cameraInput; }
    av::CapturePhotoOutput* photoOutput() const { return photos; }
    // The metadata output while faces are detected, else null.
    av::CaptureMetadataOutput* metadataOutput() const;
    // Boxes deleted with the overlay view read as null.
    const std::vector<QPointer<ui::View>>& faceDetectionBoxes() const { return boxes; }
    // 0 by 0: photos as the camera takes them.
    QSizeF resolution() const { return size; }
    void setResolution(const QSizeF& value);

    double zoom() const override { return CKFSession::zoom(); }
    void setZoom(double zoom) override;
    void focusAt(const QPointF& point) override;

    void capture(CaptureCallback callback, ErrorCallback errorCallback);
    void togglePosition();

    void didFinishProcessingPhoto(av::CapturePhotoOutput* output, const av::CapturePhoto& photo,
                                  const std::optional<av::Error>& error) override;
    // The older form of the same notice, with the photo and its preview as samples.
    void didFinishProcessingPhotoSampleBuffer(av::CapturePhotoOutput* output,
                                              GstSample* photoSampleBuffer,
                                              GstSample* previewPhotoSampleBuffer,
                                              const av::CaptureResolvedPhotoSettings& settings,
                                              const std::optional<av::Error>& error);
    void didOutputMetadataObjects(av::CaptureMetadataOutput* output,
                                  const std::vector<av::MetadataObject>& objects) override;

private:
    void openCamera();
    void setCaptureDeviceInput(av::CaptureDeviceInput* input);
    void detectionChanged(CameraDetection previous);
    void removeFaceBoxes();
    void deliver(const QByteArray& data, const av::CaptureResolvedPhotoSettings& settings,
                 const std::optional<av::Error>& error);
    void process(const QByteArray& data, const av::CaptureResolvedPhotoSettings& settings,
                 const CaptureCallback& onCaptured, const ErrorCallback& onError);

    CameraPosition position = CameraPosition::back;
    CameraDetection detection = CameraDetection::none;
    FlashMode flash = FlashMode::off;
    av::CaptureDeviceInput* cameraInput = nullptr;
    av::CapturePhotoOutput* photos;
    std::vector<QPointer<ui::View>> boxes;
    CaptureCallback captureCallback = [](const ui::Image&,
                                         const av::CaptureResolvedPhotoSettings&) {};
    ErrorCallback errorCallback = [](const std::exception&) {};
    QSizeF size{0, 0};
};
