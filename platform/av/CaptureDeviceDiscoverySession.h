#pragma once

#include "platform/av/CaptureDeviceFormat.h"
#include "platform/av/MediaType.h"

#include <QObject>
#include <QString>

#include <gst/gst.h>

#include <vector>

namespace av {

class CaptureDevice;

// Says on the GUI thread that the device monitor saw a camera or microphone plugged in or out.
class CaptureDeviceChanges : public QObject {
    Q_OBJECT

signals:
    void devicesChanged();
};

// Finds the cameras and microphones to use, in order of preference. Real devices come first;
// the virtual camera and microphone are listed after them when no real one of their kind
// exists, or first when the user asked for them. Infrared and loopback cameras are never listed.
class CaptureDeviceDiscoverySession {
public:
    // An unspecified position lists devices of every position.
    CaptureDeviceDiscoverySession(MediaType mediaType, DevicePosition position);

    std::vector<CaptureDevice*> devices() const;

    // Every camera or microphone of the kind, the stand-ins last, whatever is chosen: for a list
    // the user picks from.
    static std::vector<CaptureDevice*> allDevices(MediaType mediaType);
    // The system camera that a choice names (its name or node), or null when it is not there.
    static CaptureDevice* systemCamera(const QString& nameOrNode);

    // The user's choice of camera: empty (automatic), "virtual", "file:PATH", or a device's
    // name or node. A chosen camera that is not there falls back to the automatic choice with a
    // warning, so a stale choice never stops the app.
    static void setCameraSelection(const QString& selection);
    static QString cameraSelection();
    // Tests turn the system's devices off so they see only the virtual ones.
    static void setSystemDevicesEnabled(bool enabled);
    static CaptureDeviceChanges& changes();
    // Tests turn the stand-ins off to see a machine with no device at all.
    static void setVirtualDevicesEnabled(bool enabled);
    // The virtual cameras become these until reset with an empty list, so that tests and
    // screenshots can show a machine with one camera, a front-only one or a 720p webcam.
    struct VirtualCamera {
        DevicePosition position;
        std::vector<CaptureDeviceFormat> formats;
    };
    static void setVirtualCamerasForTesting(const std::vector<VirtualCamera>& cameras);
    // Probes the system's devices again (devices that went away are marked disconnected).
    static void refresh();

    // While system devices are enabled, a device monitor watches for cameras and microphones
    // plugged in or out, on the GUI thread: a new one is listed by the next discovery, one that
    // goes is marked disconnected (and a session using it stops). Tests stand in for the monitor.
    static void deviceAddedForTesting(GstDevice* device);
    static void deviceRemovedForTesting(const QString& uniqueID);

private:
    MediaType media;
    DevicePosition wanted;
};

} // namespace av
