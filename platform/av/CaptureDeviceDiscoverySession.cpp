#include "platform/av/CaptureDeviceDiscoverySession.h"

#include "platform/av/FileCameraDevice.h"
#include "platform/av/Gst.h"
#include "platform/av/SystemCaptureDevice.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/av/VirtualMicrophoneDevice.h"

#include <QCoreApplication>
#include <QHash>
#include <QLoggingCategory>
#include <QTextStream>

#include <algorithm>

namespace av {

namespace {

// Every device ever seen, by unique ID; devices live for the process so settings stick.
struct Catalog {
    QHash<QString, CaptureDevice*> byId;
    std::vector<CaptureDevice*> system; // in the order the system lists them
    bool probed = false;
    bool systemEnabled = true;
    bool virtualEnabled = true;
    QString selection;
    QString warnedSelection;

    template <class Device, class... Args>
    CaptureDevice* device(const QString& id, Args&&... args) {
        if (CaptureDevice* known = byId.value(id))
            return known;
        auto* made = new Device(std::forward<Args>(args)...);
        byId.insert(made->uniqueID(), made);
        return made;
    }

    void probe() {
        probed = true;
        std::vector<CaptureDevice*> found;
        if (systemEnabled) {
            Gst::ensureInitialized();
            GstDeviceMonitor* monitor = gst_device_monitor_new();
            gst_device_monitor_add_filter(monitor, "Video/Source", nullptr);
            gst_device_monitor_add_filter(monitor, "Audio/Source", nullptr);
            GList* devices = gst_device_monitor_get_devices(monitor);
            for (GList* item = devices; item; item = item->next) {
                GstDevice* gstDevice = GST_DEVICE(item->data);
                const bool video = gst_device_has_classes(gstDevice, "Video");
                if (video && !SystemCaptureDevice::isUsableCamera(gstDevice))
                    continue;
                const QString id = SystemCaptureDevice::uniqueIdOf(gstDevice);
                found.push_back(device<SystemCaptureDevice>(id, gstDevice));
            }
            g_list_free_full(devices, gst_object_unref);
            gst_object_unref(monitor);
        }
        for (CaptureDevice* old : system)
            if (std::find(found.begin(), found.end(), old) == found.end())
                old->setDisconnected();
        system = std::move(found);
    }

    CaptureDevice* chosenCamera() {
        if (selection.isEmpty() || selection == QStringLiteral("virtual"))
            return nullptr;
        if (selection.startsWith(QStringLiteral("file:"))) {
            const QString path = selection.mid(5);
            return device<FileCameraDevice>(QStringLiteral("file:") + path, path);
        }
        for (CaptureDevice* candidate : system)
            if (candidate->mediaType() == MediaType::video &&
                (candidate->localizedName() == selection || candidate->uniqueID() == selection))
                return candidate;
        if (warnedSelection != selection) {
            warnedSelection = selection;
            QTextStream(stdout) << QCoreApplication::translate(
                                       "av", "The camera “%1” is not there; using the default "
                                             "camera instead.")
                                       .arg(selection)
                                << Qt::endl;
        }
        return nullptr;
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
    if (!c.probed)
        c.probe();

    std::vector<CaptureDevice*> real;
    for (CaptureDevice* device : c.system)
        if (device->mediaType() == media)
            real.push_back(device);

    std::vector<CaptureDevice*> virtuals;
    if (media == MediaType::video) {
        virtuals.push_back(
            c.device<VirtualCameraDevice>(QStringLiteral("virtual:back"), DevicePosition::back));
        virtuals.push_back(
            c.device<VirtualCameraDevice>(QStringLiteral("virtual:front"), DevicePosition::front));
    } else {
        virtuals.push_back(c.device<VirtualMicrophoneDevice>(QStringLiteral("virtual:microphone")));
    }

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

void CaptureDeviceDiscoverySession::setVirtualDevicesEnabled(bool enabled) {
    catalog().virtualEnabled = enabled;
}

void CaptureDeviceDiscoverySession::refresh() {
    catalog().probe();
}

} // namespace av
