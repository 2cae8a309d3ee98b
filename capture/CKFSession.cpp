#include "capture/CKFSession.h"

#include "capture/CKFSessionDelegate.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"

#include <QWidget>

#include <algorithm>
#include <cstdlib>

std::optional<CKFSession::DeviceType> CKFSession::deviceType(qint64 rawValue) {
    if (rawValue < 0 || rawValue > 2)
        return std::nullopt;
    return DeviceType(rawValue);
}

std::optional<CKFSession::CameraPosition> CKFSession::cameraPosition(qint64 rawValue) {
    if (rawValue < 0 || rawValue > 1)
        return std::nullopt;
    return CameraPosition(rawValue);
}

std::optional<CKFSession::FlashMode> CKFSession::flashMode(qint64 rawValue) {
    if (rawValue < 0 || rawValue > 2)
        return std::nullopt;
    return FlashMode(rawValue);
}

av::CaptureConnection::VideoOrientation
CKFSession::videoOrientation(foundation::Device::Orientation orientation) {
    using O = foundation::Device::Orientation;
    using V = av::CaptureConnection::VideoOrientation;
    switch (orientation) {
    case O::portraitUpsideDown:
        return V::portraitUpsideDown;
    case O::landscapeLeft:
        return V::landscapeRight;
    case O::landscapeRight:
        return V::landscapeLeft;
    default:
        return V::portrait;
    }
}

CKFSession::CKFSession() : captureSession(std::make_unique<av::CaptureSession>()) {
    connect(captureSession.get(), &av::CaptureSession::runtimeError, this,
            [this](const av::Error& error) { reportDeviceProblem(error.localizedDescription()); });
}

CKFSession::~CKFSession() {
    captureSession->stopRunning();
}

void CKFSession::setOverlayView(QWidget* view) {
    overlay = view;
}

CKFSessionDelegate* CKFSession::delegate() const {
    return dynamic_cast<CKFSessionDelegate*>(delegateObject.data());
}

void CKFSession::setDelegate(QObject* delegate) {
    delegateObject = delegate;
}

void CKFSession::start() {
    captureSession->startRunning();
}

void CKFSession::stop() {
    captureSession->stopRunning();
}

void CKFSession::focusAt(const QPointF&) {}

void CKFSession::notifyDelegate(const QVariant& value, const QString& key) {
    if (CKFSessionDelegate* target = delegate())
        target->didChangeValue(this, value, key);
}

void CKFSession::reportDeviceProblem(const QString& description) {
    QMetaObject::invokeMethod(
        this, [this, description] { emit deviceProblem(description); }, Qt::QueuedConnection);
}

av::CaptureDevice* CKFSession::captureDevice(DeviceType type) {
    const av::MediaType media =
        type == DeviceType::microphone ? av::MediaType::audio : av::MediaType::video;
    const av::DevicePosition position = type == DeviceType::frontCamera ? av::DevicePosition::front
                                        : type == DeviceType::backCamera
                                            ? av::DevicePosition::back
                                            : av::DevicePosition::unspecified;
    std::vector<av::CaptureDevice*> devices =
        av::CaptureDeviceDiscoverySession(media, position).devices();
    // A laptop whose only camera says it faces the user still has a main camera.
    if (devices.empty() && type == DeviceType::backCamera)
        devices =
            av::CaptureDeviceDiscoverySession(media, av::DevicePosition::unspecified).devices();
    return devices.empty() ? nullptr : devices.front();
}

std::unique_ptr<av::CaptureDeviceInput> CKFSession::captureDeviceInput(DeviceType type) {
    av::CaptureDevice* device = captureDevice(type);
    if (!device)
        throw CKFError::captureDeviceNotFound();
    return std::make_unique<av::CaptureDeviceInput>(device);
}

std::optional<av::CaptureDeviceFormat>
CKFSession::deviceInputFormat(const av::CaptureDeviceInput& input, qint64 width, qint64 height,
                              qint64 frameRate) {
    return deviceInputFormat(*input.device(), width, height, frameRate);
}

std::optional<av::CaptureDeviceFormat>
CKFSession::deviceInputFormat(const av::CaptureDevice& device, qint64 width, qint64 height,
                              qint64 frameRate) {
    for (const av::CaptureDeviceFormat& format : device.formats()) {
        if (format.width < width || format.height < height)
            continue;
        for (const av::FrameRateRange& range : format.videoSupportedFrameRateRanges)
            if (qint64(range.maxFrameRate) >= frameRate && qint64(range.minFrameRate) <= frameRate)
                return format;
    }
    return std::nullopt;
}

std::optional<CKFSession::FormatChoice>
CKFSession::nearestDeviceInputFormat(const av::CaptureDevice& device, qint64 width, qint64 height,
                                     qint64 frameRate) {
    if (std::optional<av::CaptureDeviceFormat> format =
            deviceInputFormat(device, width, height, frameRate))
        return FormatChoice{*format, frameRate, true};
    std::optional<FormatChoice> nearest;
    qint64 bestLines = 0;
    qint64 bestRate = 0;
    for (const av::CaptureDeviceFormat& format : device.formats()) {
        for (const av::FrameRateRange& range : format.videoSupportedFrameRateRanges) {
            const qint64 lowest = std::max<qint64>(1, qint64(range.minFrameRate));
            const qint64 highest = qint64(range.maxFrameRate);
            if (highest < lowest)
                continue;
            const qint64 rate = std::clamp(frameRate, lowest, highest);
            const qint64 lines = std::abs(format.height - height);
            const qint64 rateOff = std::abs(rate - frameRate);
            if (nearest && (lines > bestLines || (lines == bestLines && rateOff >= bestRate)))
                continue;
            // Named by what the camera really runs: an earlier, larger format may win the choice.
            std::optional<av::CaptureDeviceFormat> runs =
                deviceInputFormat(device, format.width, format.height, rate);
            if (!runs)
                continue;
            nearest = FormatChoice{*runs, rate, false};
            bestLines = lines;
            bestRate = rateOff;
        }
    }
    return nearest;
}

void CKFSession::configureCamera(av::CaptureDeviceInput* camera,
                                 const std::function<void(av::CaptureDevice&)>& change,
                                 const std::function<void(const av::Error&)>& onLockFailed) {
    av::CaptureDevice* device = camera ? camera->device() : nullptr;
    if (!device)
        return;
    try {
        device->lockForConfiguration();
    } catch (const av::Error& error) {
        if (onLockFailed)
            onLockFailed(error);
        return;
    }
    change(*device);
    device->unlockForConfiguration();
}

void CKFSession::zoomCamera(av::CaptureDeviceInput* camera, double value) {
    CKFSession::setZoom(value);
    if (!camera || !camera->device())
        return;
    configureCamera(camera,
                    [value](av::CaptureDevice& device) { device.setVideoZoomFactor(value); });
    notifyDelegate(value, QStringLiteral("zoom"));
}
