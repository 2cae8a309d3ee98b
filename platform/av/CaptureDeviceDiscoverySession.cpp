#include "platform/av/CaptureDeviceDiscoverySession.h"

#include "platform/av/BusWatch.h"
#include "platform/av/FileCameraDevice.h"
#include "platform/av/Gst.h"
#include "platform/av/Logging.h"
#include "platform/av/SystemCaptureDevice.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/av/VirtualMicrophoneDevice.h"

#include <QCoreApplication>
#include <QHash>
#include <QLoggingCategory>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <memory>

namespace av {

namespace {

struct Catalog;
Catalog& catalog();

// Every device ever seen, by unique ID; devices live for the process so settings stick.
struct Catalog {
    QHash<QString, CaptureDevice*> byId;
    std::vector<CaptureDevice*> system; // in the order the system lists them
    bool probed = false;
    bool systemEnabled = true;
    bool virtualEnabled = true;
    QString selection;
    QString warnedSelection;
    // Replacements for the two virtual cameras; never deleted, like every device.
    std::vector<CaptureDevice*> virtualCameras;

    GstHandle<GstDeviceMonitor> monitor;
    std::unique_ptr<BusWatch> monitorWatch;
    bool monitoring = false;

    template <class Device, class... Args>
    CaptureDevice* device(const QString& id, Args&&... args) {
        // One that went away and came back is a new device.
        if (CaptureDevice* known = byId.value(id); known && known->isConnected())
            return known;
        auto* made = new Device(std::forward<Args>(args)...);
        byId.insert(made->uniqueID(), made);
        return made;
    }

    CaptureDevice* systemDevice(GstDevice* gstDevice) {
        if (gst_device_has_classes(gstDevice, "Video") &&
            !SystemCaptureDevice::isUsableCamera(gstDevice))
            return nullptr;
        return device<SystemCaptureDevice>(SystemCaptureDevice::uniqueIdOf(gstDevice), gstDevice);
    }

    void watch() {
        if (monitor)
            return;
        monitor = GstHandle<GstDeviceMonitor>(gst_device_monitor_new(), GstRef::adopt);
        gst_device_monitor_add_filter(monitor.get(), "Video/Source", nullptr);
        gst_device_monitor_add_filter(monitor.get(), "Audio/Source", nullptr);
        // Plug events need the GUI thread's event loop; without one discovery only probes.
        QCoreApplication* app = QCoreApplication::instance();
        if (!app || QThread::currentThread() != app->thread())
            return;
        monitorWatch = std::make_unique<BusWatch>(gst_device_monitor_get_bus(monitor.get()),
                                                  [this](GstMessage* message) { handle(message); });
        monitoring = gst_device_monitor_start(monitor.get());
        if (!monitoring) {
            qCDebug(lcAv) << "no device provider reports plugged devices; probing only";
            monitorWatch.reset();
            return;
        }
        // The watch's notifier must go while the event loop is still there.
        static bool cleanupAdded = false;
        if (!std::exchange(cleanupAdded, true))
            qAddPostRoutine([] { catalog().unwatch(); });
    }

    void unwatch() {
        monitorWatch.reset();
        if (std::exchange(monitoring, false))
            gst_device_monitor_stop(monitor.get());
        monitor.reset();
    }

    void probe() {
        probed = true;
        std::vector<CaptureDevice*> found;
        if (systemEnabled) {
            Gst::ensureInitialized();
            watch();
            g_autolist(GstDevice) devices = gst_device_monitor_get_devices(monitor.get());
            for (GList* item = devices; item; item = item->next)
                if (CaptureDevice* known = systemDevice(GST_DEVICE(item->data)))
                    found.push_back(known);
        } else {
            unwatch();
        }
        for (CaptureDevice* old : system)
            if (std::find(found.begin(), found.end(), old) == found.end())
                old->setDisconnected();
        system = std::move(found);
    }

    void handle(GstMessage* message) {
        GstDevice* parsed = nullptr;
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_ADDED) {
            gst_message_parse_device_added(message, &parsed);
            added(GstHandle<GstDevice>(parsed, GstRef::adopt).get());
        } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_REMOVED) {
            gst_message_parse_device_removed(message, &parsed);
            removed(
                SystemCaptureDevice::uniqueIdOf(GstHandle<GstDevice>(parsed, GstRef::adopt).get()));
        }
    }

    void added(GstDevice* gstDevice) {
        CaptureDevice* plugged = systemDevice(gstDevice);
        if (!plugged || std::find(system.begin(), system.end(), plugged) != system.end())
            return;
        qCDebug(lcAv).noquote() << "device plugged in:" << plugged->uniqueID();
        system.push_back(plugged);
        emit CaptureDeviceDiscoverySession::changes().devicesChanged();
    }

    void removed(const QString& id) {
        CaptureDevice* gone = byId.value(id);
        if (!gone)
            return;
        qCDebug(lcAv).noquote() << "device unplugged:" << id;
        std::erase(system, gone);
        gone->setDisconnected();
        emit CaptureDeviceDiscoverySession::changes().devicesChanged();
    }

    CaptureDevice* chosenCamera() {
        if (selection.isEmpty() || selection == QStringLiteral("virtual"))
            return nullptr;
        if (selection.startsWith(QStringLiteral("file:"))) {
            const QString path = selection.mid(5);
            return device<FileCameraDevice>(QStringLiteral("file:") + path, path);
        }
        if (CaptureDevice* named = systemCamera(selection))
            return named;
        if (warnedSelection != selection) {
            warnedSelection = selection;
            QTextStream(stdout) << qtTrId("devices_camera_not_there_using").arg(selection)
                                << Qt::endl;
        }
        return nullptr;
    }

    CaptureDevice* systemCamera(const QString& nameOrNode) const {
        for (CaptureDevice* candidate : system)
            if (candidate->mediaType() == MediaType::video && candidate->isConnected() &&
                (candidate->localizedName() == nameOrNode || candidate->uniqueID() == nameOrNode))
                return candidate;
        return nullptr;
    }

    // A device that failed as unplugged stays out until the monitor or a refresh finds it.
    std::vector<CaptureDevice*> connected(MediaType media) {
        if (!probed)
            probe();
        std::vector<CaptureDevice*> result;
        for (CaptureDevice* device : system)
            if (device->mediaType() == media && device->isConnected())
                result.push_back(device);
        return result;
    }

    std::vector<CaptureDevice*> virtuals(MediaType media) {
        if (media != MediaType::video)
            return {device<VirtualMicrophoneDevice>(QStringLiteral("virtual:microphone"))};
        if (!virtualCameras.empty())
            return virtualCameras;
        return {
            device<VirtualCameraDevice>(QStringLiteral("virtual:back"), DevicePosition::back),
            device<VirtualCameraDevice>(QStringLiteral("virtual:front"), DevicePosition::front)};
    }
};

Catalog& catalog() {
    static Catalog instance;
    return instance;
}

bool matches(const CaptureDevice* device, DevicePosition position) {
    return position == DevicePosition::unspecified || device->position() == position;
}

} // namespace

CaptureDeviceDiscoverySession::CaptureDeviceDiscoverySession(MediaType mediaType,
                                                             DevicePosition position)
    : media(mediaType), wanted(position) {}

std::vector<CaptureDevice*> CaptureDeviceDiscoverySession::devices() const {
    Catalog& c = catalog();
    const std::vector<CaptureDevice*> real = c.connected(media);
    const std::vector<CaptureDevice*> virtuals = c.virtuals(media);

    std::vector<CaptureDevice*> ordered;
    const bool virtualChosen =
        c.virtualEnabled && media == MediaType::video && c.selection == QStringLiteral("virtual");
    if (virtualChosen)
        ordered = virtuals;
    // The camera the user picked is the main camera, wherever it sits.
    CaptureDevice* chosen = media == MediaType::video ? c.chosenCamera() : nullptr;
    if (chosen && wanted != DevicePosition::front)
        ordered.push_back(chosen);
    for (CaptureDevice* device : real)
        if (device != chosen && matches(device, wanted))
            ordered.push_back(device);
    if (c.virtualEnabled && !virtualChosen && real.empty() && !chosen)
        ordered.insert(ordered.end(), virtuals.begin(), virtuals.end());

    std::vector<CaptureDevice*> result;
    for (CaptureDevice* device : ordered)
        if (device == chosen || matches(device, wanted))
            result.push_back(device);
    return result;
}

std::vector<CaptureDevice*> CaptureDeviceDiscoverySession::allDevices(MediaType mediaType) {
    Catalog& c = catalog();
    std::vector<CaptureDevice*> result = c.connected(mediaType);
    if (c.virtualEnabled)
        for (CaptureDevice* device : c.virtuals(mediaType))
            result.push_back(device);
    return result;
}

CaptureDevice* CaptureDeviceDiscoverySession::systemCamera(const QString& nameOrNode) {
    Catalog& c = catalog();
    if (!c.probed)
        c.probe();
    return c.systemCamera(nameOrNode);
}

void CaptureDeviceDiscoverySession::setVirtualCamerasForTesting(
    const std::vector<VirtualCamera>& cameras) {
    static int made = 0;
    Catalog& c = catalog();
    c.virtualCameras.clear();
    for (const VirtualCamera& camera : cameras) {
        const QString id = QStringLiteral("virtual:%1:%2")
                               .arg(camera.position == DevicePosition::front ? "front" : "back")
                               .arg(++made);
        c.virtualCameras.push_back(new VirtualCameraDevice(id, camera.position, camera.formats));
    }
}

void CaptureDeviceDiscoverySession::setCameraSelection(const QString& selection) {
    catalog().selection = selection;
}

QString CaptureDeviceDiscoverySession::cameraSelection() {
    return catalog().selection;
}

void CaptureDeviceDiscoverySession::setSystemDevicesEnabled(bool enabled) {
    Catalog& c = catalog();
    if (c.systemEnabled == enabled)
        return;
    c.systemEnabled = enabled;
    c.probe();
}

CaptureDeviceChanges& CaptureDeviceDiscoverySession::changes() {
    static CaptureDeviceChanges notifier;
    return notifier;
}

void CaptureDeviceDiscoverySession::setVirtualDevicesEnabled(bool enabled) {
    catalog().virtualEnabled = enabled;
}

void CaptureDeviceDiscoverySession::refresh() {
    catalog().probe();
}

void CaptureDeviceDiscoverySession::deviceAddedForTesting(GstDevice* device) {
    Catalog& c = catalog();
    if (!c.probed)
        c.probe();
    c.added(device);
}

void CaptureDeviceDiscoverySession::deviceRemovedForTesting(const QString& uniqueID) {
    Catalog& c = catalog();
    if (!c.probed)
        c.probe();
    c.removed(uniqueID);
}

} // namespace av
