#pragma once

#include "platform/av/CaptureDevice.h"

namespace av {

// The camera that is always there: the rendered dolly scene. The back one has a torch that
// lights the scene; the front one has none. The walker in the scene follows the zoom factor.
class VirtualCameraDevice : public CaptureDevice {
    Q_OBJECT

public:
    VirtualCameraDevice(DevicePosition position, QObject* parent = nullptr);
    // A camera that offers only some of the scene's formats, as a small webcam does.
    VirtualCameraDevice(QString uniqueID, DevicePosition position,
                        std::vector<CaptureDeviceFormat> formats, QObject* parent = nullptr);

    GstElement* createSourceElement() const override;

    // The formats of the rendered scene, which picture sources scaled to any size offer too.
    static std::vector<CaptureDeviceFormat> sceneFormats();

protected:
    void applyTorch(GstElement* source, TorchMode mode) const override;
    void applyZoom(GstElement* source, double factor) const override;
};

} // namespace av
