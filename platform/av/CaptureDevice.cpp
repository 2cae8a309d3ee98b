#include "platform/av/CaptureDevice.h"

#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/Error.h"
#include "platform/av/SystemCaptureDevice.h"
#include "platform/desktop/CameraPortal.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QFile>

#include <cerrno>
#include <optional>
#include <unistd.h>

namespace av {

namespace {

// The portal's answer, kept for the process; asked on the GUI thread only.
struct PortalAccess {
    std::optional<bool> granted;
    std::vector<std::function<void(bool)>> waiting;
    desktop::CameraPortal* portal = nullptr;
};

PortalAccess& portalAccess() {
    static PortalAccess access;
    return access;
}

// Sound goes through the sound server, which the sandbox lets the app reach or not.
bool needsAsking(MediaType type) {
    return type == MediaType::video;
}

} // namespace

namespace {
std::optional<AuthorizationStatus>& statusForTesting() {
    static std::optional<AuthorizationStatus> status;
    return status;
}
} // namespace

void CaptureDevice::setAuthorizationStatusForTesting(std::optional<AuthorizationStatus> status) {
    statusForTesting() = status;
}

AuthorizationStatus CaptureDevice::authorizationStatus(MediaType type) {
    if (statusForTesting())
        return *statusForTesting();
    if (!needsAsking(type))
        return AuthorizationStatus::authorized;
    if (desktop::CameraPortal::isSandboxed()) {
        const std::optional<bool> granted = portalAccess().granted;
        return !granted   ? AuthorizationStatus::notDetermined
               : *granted ? AuthorizationStatus::authorized
                          : AuthorizationStatus::denied;
    }
    // The camera the app would open; a virtual or file camera needs no access.
    const std::vector<CaptureDevice*> cameras =
        CaptureDeviceDiscoverySession(MediaType::video, DevicePosition::unspecified).devices();
    auto* system = cameras.empty() ? nullptr : qobject_cast<SystemCaptureDevice*>(cameras.front());
    return authorizationStatusForNode(system ? system->devicePath() : QString());
}

void CaptureDevice::requestAccess(MediaType type, std::function<void(bool granted)> handler) {
    PortalAccess& access = portalAccess();
    if (statusForTesting() || !needsAsking(type) || !desktop::CameraPortal::isSandboxed()) {
        // Nothing to ask outside a sandbox: the device node's permissions are the answer.
        handler(authorizationStatus(type) == AuthorizationStatus::authorized);
        return;
    }
    if (access.granted) {
        handler(*access.granted);
        return;
    }
    access.waiting.push_back(std::move(handler));
    if (access.waiting.size() > 1)
        return;
    if (!access.portal)
        access.portal = new desktop::CameraPortal(QDBusConnection::sessionBus(), qApp);
    access.portal->accessCamera([](bool granted) {
        PortalAccess& answered = portalAccess();
        answered.granted = granted;
        for (const auto& waiting : std::exchange(answered.waiting, {}))
            waiting(granted);
    });
}

AuthorizationStatus CaptureDevice::authorizationStatusForNode(const QString& node) {
    if (!node.startsWith(QLatin1Char('/')))
        return AuthorizationStatus::authorized;
    // Asked of the kernel without opening the camera, which would wake it. Capturing needs both
    // reading and writing (buffer requests).
    if (::access(QFile::encodeName(node).constData(), R_OK | W_OK) == 0)
        return AuthorizationStatus::authorized;
    return errno == EACCES || errno == EPERM ? AuthorizationStatus::denied
                                             : AuthorizationStatus::authorized;
}

CaptureDevice::CaptureDevice(QString uniqueID, QString localizedName, MediaType mediaType,
                             DevicePosition position, QObject* parent)
    : QObject(parent), id(std::move(uniqueID)), name(std::move(localizedName)), media(mediaType),
      devicePosition(position) {}

CaptureDevice::~CaptureDevice() = default;

void CaptureDevice::setDisconnected() {
    if (!connected)
        return;
    connected = false;
    emit wasDisconnected();
}

void CaptureDevice::lockForConfiguration() {
    if (!connected)
        throw Error(Error::Code::deviceDisconnected,
                    qtTrId("device_camera_no_longer_connected").arg(name));
    locked = true;
}

void CaptureDevice::unlockForConfiguration() {
    locked = false;
}

void CaptureDevice::requireLock(const char* what) const {
    if (!locked)
        qFatal("av::CaptureDevice: %s of \"%s\" changed without lockForConfiguration()", what,
               qPrintable(name));
}

void CaptureDevice::setVideoZoomFactor(double factor) {
    requireLock("videoZoomFactor");
    zoom = factor;
    if (runningZoom)
        g_object_set(runningZoom.get(), "zoom", factor, nullptr);
    if (runningSource)
        applyZoom(runningSource.get(), factor);
}

bool CaptureDevice::isTorchModeSupported(TorchMode mode) const {
    return mode == TorchMode::off || torchSupported;
}

void CaptureDevice::setTorchMode(TorchMode mode) {
    requireLock("torchMode");
    if (!isTorchModeSupported(mode))
        return;
    torch = mode;
    if (runningSource)
        applyTorch(runningSource.get(), mode);
}

void CaptureDevice::setFocusPointOfInterest(const QPointF& point) {
    requireLock("focusPointOfInterest");
    if (!focusSupported)
        return;
    focusPoint = point;
    if (runningSource)
        applyFocus(runningSource.get(), point);
}

void CaptureDevice::setFocusMode(FocusMode mode) {
    requireLock("focusMode");
    focus = mode;
}

void CaptureDevice::setActiveFormat(const CaptureDeviceFormat& format) {
    requireLock("activeFormat");
    if (format == active)
        return;
    active = format;
    emit activeFormatChanged();
}

void CaptureDevice::setActiveVideoMinFrameDuration(FrameDuration duration) {
    requireLock("activeVideoMinFrameDuration");
    if (duration == minFrameDuration)
        return;
    minFrameDuration = duration;
    emit activeFormatChanged();
}

void CaptureDevice::setActiveVideoMaxFrameDuration(FrameDuration duration) {
    requireLock("activeVideoMaxFrameDuration");
    maxFrameDuration = duration;
}

void CaptureDevice::attachPipeline(GstElement* source, GstElement* zoomStage) {
    runningSource = GstHandle<GstElement>(source, GstRef::add);
    runningZoom = GstHandle<GstElement>(zoomStage, GstRef::add);
    if (runningZoom)
        g_object_set(runningZoom.get(), "zoom", zoom, nullptr);
    if (runningSource) {
        applyZoom(runningSource.get(), zoom);
        applyTorch(runningSource.get(), torch);
        if (focusSupported)
            applyFocus(runningSource.get(), focusPoint);
    }
}

void CaptureDevice::detachPipeline() {
    // The torch is lit only while a session runs.
    if (runningSource && torch != TorchMode::off)
        applyTorch(runningSource.get(), TorchMode::off);
    runningSource.reset();
    runningZoom.reset();
}

void CaptureDevice::applyTorch(GstElement*, TorchMode) const {}

void CaptureDevice::applyZoom(GstElement*, double) const {}

void CaptureDevice::applyFocus(GstElement*, QPointF) const {}

} // namespace av
