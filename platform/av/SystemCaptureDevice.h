#pragma once

#include "platform/av/CaptureDevice.h"
#include "platform/av/V4l2Controls.h"

namespace av {

// A camera or microphone the system reports (V4L2, libcamera, PipeWire, PulseAudio, ALSA).
class SystemCaptureDevice : public CaptureDevice {
    Q_OBJECT

public:
    SystemCaptureDevice(GstDevice* device, QObject* parent = nullptr);

    // The device node, where the device has one (/dev/video0), for access checks.
    const QString& devicePath() const { return path; }
    GstDevice* gstDevice() const { return device.get(); }

    GstElement* createSourceElement() const override;

    // What discovery needs to know before making a device of it.
    static QString uniqueIdOf(GstDevice* device);
    // Infrared sensors and loopback devices are never picked as a camera.
    static bool isUsableCamera(GstDevice* device);
    static DevicePosition positionOf(GstDevice* device);
    // Formats from the device's caps, in the order it lists them.
    static std::vector<CaptureDeviceFormat> formatsFromCaps(const GstCaps* caps);

    // Answers the control ioctls of every camera node made from now on, in place of the kernel,
    // until reset with nullptr.
    static void setControlsForTesting(V4l2Controls::Ioctl ioctl);

protected:
    // Torch and focus go to the node's V4L2 controls, whichever element streams from it.
    void applyTorch(GstElement* source, TorchMode mode) const override;
    void applyFocus(GstElement* source, QPointF point) const override;

private:
    V4l2Controls controls() const;

    GstHandle<GstDevice> device;
    QString path;
};

} // namespace av
