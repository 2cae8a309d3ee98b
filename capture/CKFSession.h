#pragma once

#include "capture/CKFError.h"
#include "platform/av/CaptureConnection.h"
#include "platform/av/CaptureDeviceFormat.h"
#include "platform/foundation/Device.h"

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace av {
class CaptureDevice;
class CaptureDeviceInput;
class CaptureSession;
class Error;
} // namespace av

class CKFSessionDelegate;

// The base of the capture library: one capture session, device lookup, format choice, and the
// delegate notice. Subclasses add inputs and outputs and make the zoom act on the camera.
class CKFSession : public QObject {
    Q_OBJECT

public:
    enum class DeviceType { frontCamera = 0, backCamera = 1, microphone = 2 };
    enum class CameraPosition { front = 0, back = 1 };
    enum class FlashMode { off = 0, on = 1, automatic = 2 };

    // Raw values outside the listed cases give no value.
    static std::optional<DeviceType> deviceType(qint64 rawValue);
    static std::optional<CameraPosition> cameraPosition(qint64 rawValue);
    static std::optional<FlashMode> flashMode(qint64 rawValue);

    // The capture orientation that shows the picture upright with the device held this way; the
    // recording and the preview follow the device alike. Face up, face down and unknown count as
    // portrait.
    static av::CaptureConnection::VideoOrientation
    videoOrientation(foundation::Device::Orientation orientation);

    CKFSession();
    ~CKFSession() override;

    av::CaptureSession* session() const { return captureSession.get(); }

    // Set by the preview that shows this session.
    QObject* previewLayer() const { return layer; }
    void setPreviewLayer(QObject* previewLayer) { layer = previewLayer; }
    QWidget* overlayView() const { return overlay; }
    void setOverlayView(QWidget* view);

    virtual double zoom() const { return zoomValue; }
    virtual void setZoom(double zoom) { zoomValue = zoom; }

    // Held weakly: a delegate that goes away is simply not told.
    CKFSessionDelegate* delegate() const;
    void setDelegate(QObject* delegate);

    void start();
    void stop();
    // Where the user tapped, in the device's point of interest; a plain session ignores it.
    virtual void focusAt(const QPointF& point);

    // Opens the first device of the kind; asked for the back camera, a machine without one gives
    // its camera of any position. Throws CKFError::captureDeviceNotFound when there is
    // none, and av::Error (unchanged) when the device cannot be opened.
    static std::unique_ptr<av::CaptureDeviceInput> captureDeviceInput(DeviceType type);
    // The device captureDeviceInput() would open, found without opening it; null when none.
    static av::CaptureDevice* captureDevice(DeviceType type);
    // The first format, in the device's order, at least this large with a frame-rate range
    // holding the rate.
    static std::optional<av::CaptureDeviceFormat>
    deviceInputFormat(const av::CaptureDeviceInput& input, qint64 width, qint64 height,
                      qint64 frameRate);
    static std::optional<av::CaptureDeviceFormat> deviceInputFormat(const av::CaptureDevice& device,
                                                                    qint64 width, qint64 height,
                                                                    qint64 frameRate);

    // What the device really runs for a size and rate it may not have: the format above when
    // one qualifies, otherwise its format nearest in lines, then in rate, at the rate it can
    // give. nullopt only for a device without formats.
    struct FormatChoice {
        av::CaptureDeviceFormat format;
        qint64 frameRate = 0;
        // The requested size and rate are served as asked.
        bool exact = false;
    };
    static std::optional<FormatChoice> nearestDeviceInputFormat(const av::CaptureDevice& device,
                                                                qint64 width, qint64 height,
                                                                qint64 frameRate);

signals:
    // A camera could not be opened, or the running session stopped because of its device (in
    // use, refused, unplugged): one sentence for the user. Queued, so a screen that connects
    // right after making the session still hears what went wrong while making it.
    void deviceProblem(const QString& description);

protected:
    // Sends the notice to the delegate, if it is still there.
    void notifyDelegate(const QVariant& value, const QString& key);
    void reportDeviceProblem(const QString& description);
    // Runs change on the camera, locked for configuration. Without a camera it does nothing; a
    // camera that cannot be locked is left alone and onLockFailed, if given, hears why.
    static void configureCamera(av::CaptureDeviceInput* camera,
                                const std::function<void(av::CaptureDevice&)>& change,
                                const std::function<void(const av::Error&)>& onLockFailed = {});
    // Keeps the zoom, sets it on the camera and tells the delegate; without a camera it is only
    // kept.
    void zoomCamera(av::CaptureDeviceInput* camera, double value);

private:
    std::unique_ptr<av::CaptureSession> captureSession;
    QPointer<QObject> layer;
    QPointer<QWidget> overlay;
    double zoomValue = 1.0;
    QPointer<QObject> delegateObject;
};
