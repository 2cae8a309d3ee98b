#include "platform/av/CaptureDevice.h"

#include "platform/av/Error.h"

#include <QCoreApplication>

namespace av {

AuthorizationStatus CaptureDevice::authorizationStatus(MediaType) {
    return AuthorizationStatus::authorized;
}

void CaptureDevice::requestAccess(MediaType type, std::function<void(bool granted)> handler) {
    handler(authorizationStatus(type) == AuthorizationStatus::authorized);
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
        throw Error(
            Error::Code::deviceDisconnected,
            QCoreApplication::translate("av", "The camera “%1” is no longer connected.").arg(name));
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
    if (focusSupported)
        focusPoint = point;
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
    }
}

void CaptureDevice::detachPipeline() {
    runningSource.reset();
    runningZoom.reset();
}

void CaptureDevice::applyTorch(GstElement*, TorchMode) const {}

void CaptureDevice::applyZoom(GstElement*, double) const {}

} // namespace av
