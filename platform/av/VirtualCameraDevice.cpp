#include "platform/av/VirtualCameraDevice.h"

#include "platform/av/VirtualCameraSource.h"

#include <QCoreApplication>

namespace av {

VirtualCameraDevice::VirtualCameraDevice(DevicePosition position, QObject* parent)
    : VirtualCameraDevice(position == DevicePosition::front ? QStringLiteral("virtual:front")
                                                            : QStringLiteral("virtual:back"),
                          position, sceneFormats(), parent) {}

VirtualCameraDevice::VirtualCameraDevice(QString uniqueID, DevicePosition position,
                                         std::vector<CaptureDeviceFormat> formats, QObject* parent)
    : CaptureDevice(std::move(uniqueID),
                    position == DevicePosition::front ? qtTrId("virtual_virtual_front_camera")
                                                      : qtTrId("virtual_virtual_back_camera"),
                    MediaType::video, position, parent) {
    setVirtual(true);
    setFormats(std::move(formats));
    setTorchSupported(position != DevicePosition::front);
    setMaxZoom(VirtualCameraSource::maxZoom);
}

std::vector<CaptureDeviceFormat> VirtualCameraDevice::sceneFormats() {
    std::vector<CaptureDeviceFormat> formats;
    for (const VirtualFormat& format : VirtualCameraSource::formats())
        formats.push_back({format.width,
                           format.height,
                           {{double(format.minFps), double(format.maxFps)}},
                           QStringLiteral("video/x-raw")});
    return formats;
}

GstElement* VirtualCameraDevice::createSourceElement() const {
    GstElement* source = VirtualCameraSource::create();
    // A capture session follows its camera with the zoom stage, which keeps only the centre.
    g_object_set(source, "front", position() == DevicePosition::front, "zoom-crops", TRUE, nullptr);
    return source;
}

void VirtualCameraDevice::applyTorch(GstElement* source, TorchMode mode) const {
    // The scene is always well lit, so an automatic torch stays off.
    g_object_set(source, "torch", mode == TorchMode::on, nullptr);
}

void VirtualCameraDevice::applyZoom(GstElement* source, double factor) const {
    g_object_set(source, "zoom", factor, nullptr);
}

} // namespace av
