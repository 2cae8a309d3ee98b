#pragma once

#include "platform/av/CaptureDeviceFormat.h"
#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"
#include "platform/av/MediaType.h"

#include <QObject>
#include <QPointF>

#include <functional>
#include <optional>

#include <gst/gst.h>

namespace av {

// The platform's raw values.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

// A camera or microphone. Devices live for the whole process: discovery hands out the same
// object for the same device every time, so its settings stay with it. Settings are changed
// between lockForConfiguration() and unlockForConfiguration(); a running session applies them
// to its pipeline at once (the zoom on the next frame).
class CaptureDevice : public QObject {
    Q_OBJECT

public:
    enum class TorchMode { off = 0, on = 1, automatic = 2 };
    enum class FocusMode { locked = 0, autoFocus = 1, continuousAutoFocus = 2 };

    // Whether the app may use devices of this kind. Inside a sandbox the desktop portal decides
    // and the answer is not known until asked; otherwise access is granted unless the camera's
    // device node refuses this user.
    static AuthorizationStatus authorizationStatus(MediaType type);
    // Asks once where the answer is not known yet; the handler may run on any thread. GUI thread.
    static void requestAccess(MediaType type, std::function<void(bool granted)> handler);
    // The answer outside a sandbox for a camera at this device node: denied when the node refuses
    // this user, authorized otherwise (no node, or a node that is gone, is no question of access).
    static AuthorizationStatus authorizationStatusForNode(const QString& node);
    // Answers every question of access with this status until reset with nullopt.
    static void setAuthorizationStatusForTesting(std::optional<AuthorizationStatus> status);

    CaptureDevice(QString uniqueID, QString localizedName, MediaType mediaType,
                  DevicePosition position, QObject* parent = nullptr);
    ~CaptureDevice() override;

    const QString& uniqueID() const { return id; }
    const QString& localizedName() const { return name; }
    MediaType mediaType() const { return media; }
    bool hasMediaType(MediaType type) const { return media == type; }
    DevicePosition position() const { return devicePosition; }
    bool isVirtual() const { return virtualDevice; }

    const std::vector<CaptureDeviceFormat>& formats() const { return deviceFormats; }

    bool isConnected() const { return connected; }
    // Marks the device gone (unplugged); locking fails from then on.
    void setDisconnected();

    // Throws av::Error when the device is gone.
    void lockForConfiguration();
    void unlockForConfiguration();
    bool isLockedForConfiguration() const { return locked; }

    // Setters below need the lock: changing a device without it is a programming error.
    double videoZoomFactor() const { return zoom; }
    void setVideoZoomFactor(double factor);
    double minAvailableVideoZoomFactor() const { return 1.0; }
    double maxAvailableVideoZoomFactor() const { return maxZoom; }

    bool hasTorch() const { return torchSupported; }
    bool isTorchModeSupported(TorchMode mode) const;
    TorchMode torchMode() const { return torch; }
    void setTorchMode(TorchMode mode);

    bool isFocusPointOfInterestSupported() const { return focusSupported; }
    QPointF focusPointOfInterest() const { return focusPoint; }
    void setFocusPointOfInterest(const QPointF& point);
    // Kept for the client; the cameras we drive focus on their own around the point.
    FocusMode focusMode() const { return focus; }
    void setFocusMode(FocusMode mode);

    // The format the session runs the device in; invalid until one is chosen.
    const CaptureDeviceFormat& activeFormat() const { return active; }
    void setActiveFormat(const CaptureDeviceFormat& format);
    FrameDuration activeVideoMinFrameDuration() const { return minFrameDuration; }
    FrameDuration activeVideoMaxFrameDuration() const { return maxFrameDuration; }
    void setActiveVideoMinFrameDuration(FrameDuration duration);
    void setActiveVideoMaxFrameDuration(FrameDuration duration);

    // For the session: a new source element for this device (floating; null when the device
    // cannot be opened, av::Error when the installation lacks an element it needs), and the
    // running elements the settings go to. The zoom stage may be null for a microphone.
    virtual GstElement* createSourceElement() const = 0;
    // Why the device cannot deliver pictures at all, found without opening it; nullopt when
    // nothing is known against it.
    virtual std::optional<Error> sourceProblem() const { return std::nullopt; }
    void attachPipeline(GstElement* source, GstElement* zoomStage);
    void detachPipeline();
    // The running pipeline's zoom stage, or null; borrowed for as long as the pipeline runs.
    GstElement* zoomStage() const { return runningZoom.get(); }

signals:
    // The session reconfigures its pipeline when the format or frame rate changes.
    void activeFormatChanged();
    void wasDisconnected();

protected:
    void setFormats(std::vector<CaptureDeviceFormat> formats) {
        deviceFormats = std::move(formats);
    }
    void setVirtual(bool value) { virtualDevice = value; }
    void setTorchSupported(bool value) { torchSupported = value; }
    void setFocusSupported(bool value) { focusSupported = value; }
    void setMaxZoom(double value) { maxZoom = value; }
    // Applies a setting to the running source where the device has one; the default has none.
    virtual void applyTorch(GstElement* source, TorchMode mode) const;
    virtual void applyZoom(GstElement* source, double factor) const;
    virtual void applyFocus(GstElement* source, QPointF point) const;

private:
    void requireLock(const char* what) const;

    QString id;
    QString name;
    MediaType media;
    DevicePosition devicePosition;
    bool virtualDevice = false;
    bool connected = true;
    bool locked = false;
    bool torchSupported = false;
    bool focusSupported = false;
    std::vector<CaptureDeviceFormat> deviceFormats;
    CaptureDeviceFormat active;
    FrameDuration minFrameDuration;
    FrameDuration maxFrameDuration;
    double zoom = 1.0;
    double maxZoom = 10.0;
    TorchMode torch = TorchMode::off;
    QPointF focusPoint{0.5, 0.5};
    FocusMode focus = FocusMode::continuousAutoFocus;
    GstHandle<GstElement> runningSource;
    GstHandle<GstElement> runningZoom;
};

} // namespace av
