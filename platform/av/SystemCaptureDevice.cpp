#include "platform/av/SystemCaptureDevice.h"

#include "platform/av/Logging.h"

#include <algorithm>

namespace av {

namespace {

QString stringProperty(GstDevice* device, const char* name) {
    g_autoptr(GstStructure) properties = gst_device_get_properties(device);
    const gchar* value = properties ? gst_structure_get_string(properties, name) : nullptr;
    return value ? QString::fromUtf8(value) : QString();
}

QString displayNameOf(GstDevice* device) {
    g_autofree gchar* name = gst_device_get_display_name(device);
    return QString::fromUtf8(name);
}

QString nodeOf(GstDevice* device) {
    for (const char* key : {"device.path", "api.v4l2.path", "api.alsa.path"}) {
        const QString path = stringProperty(device, key);
        if (!path.isEmpty())
            return path;
    }
    return {};
}

void addRanges(const GValue* value, std::vector<FrameRateRange>& ranges) {
    if (GST_VALUE_HOLDS_FRACTION(value)) {
        const double fps = double(gst_value_get_fraction_numerator(value)) /
                           gst_value_get_fraction_denominator(value);
        ranges.push_back({fps, fps});
    } else if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) {
        const GValue* low = gst_value_get_fraction_range_min(value);
        const GValue* high = gst_value_get_fraction_range_max(value);
        ranges.push_back({double(gst_value_get_fraction_numerator(low)) /
                              gst_value_get_fraction_denominator(low),
                          double(gst_value_get_fraction_numerator(high)) /
                              gst_value_get_fraction_denominator(high)});
    } else if (GST_VALUE_HOLDS_LIST(value)) {
        for (guint i = 0; i < gst_value_list_get_size(value); ++i)
            addRanges(gst_value_list_get_value(value, i), ranges);
    }
}

bool isGrey(const GstStructure* structure) {
    const gchar* format = gst_structure_get_string(structure, "format");
    return format && g_str_has_prefix(format, "GRAY");
}

V4l2Controls::Ioctl& controlsForTesting() {
    static V4l2Controls::Ioctl ioctl;
    return ioctl;
}

} // namespace

SystemCaptureDevice::SystemCaptureDevice(GstDevice* gstDevice, QObject* parent)
    : CaptureDevice(uniqueIdOf(gstDevice), displayNameOf(gstDevice),
                    gst_device_has_classes(gstDevice, "Video") ? MediaType::video
                                                               : MediaType::audio,
                    positionOf(gstDevice), parent),
      device(gstDevice, GstRef::add), path(nodeOf(gstDevice)) {
    if (mediaType() == MediaType::video) {
        const GstHandle<GstCaps> caps(gst_device_get_caps(gstDevice), GstRef::adopt);
        setFormats(formatsFromCaps(caps.get()));
        // The device monitor opened the node for its caps already; one more look costs nothing new.
        const V4l2Controls node = controls();
        setTorchSupported(node.hasTorch());
        setFocusSupported(node.hasAutofocus());
    }
}

void SystemCaptureDevice::setControlsForTesting(V4l2Controls::Ioctl ioctl) {
    controlsForTesting() = std::move(ioctl);
}

V4l2Controls SystemCaptureDevice::controls() const {
    // Opened for each change, not kept: an open node keeps some USB cameras powered.
    if (controlsForTesting())
        return V4l2Controls(controlsForTesting());
    return V4l2Controls(path);
}

void SystemCaptureDevice::applyTorch(GstElement*, TorchMode mode) const {
    if (!hasTorch())
        return;
    // V4L2 does not tell how dark the scene is: an automatic torch stays off rather than light a
    // bright room.
    if (!controls().setTorch(mode == TorchMode::on))
        qCDebug(lcAv).noquote() << "the torch of" << path << "did not change";
}

void SystemCaptureDevice::applyFocus(GstElement*, QPointF point) const {
    if (isFocusPointOfInterestSupported() && !controls().focusAt(point))
        qCDebug(lcAv).noquote() << "the camera" << path << "did not take the focus point";
}

GstElement* SystemCaptureDevice::createSourceElement() const {
    return gst_device_create_element(device.get(), nullptr);
}

QString SystemCaptureDevice::uniqueIdOf(GstDevice* device) {
    const QString node = nodeOf(device);
    return node.isEmpty() ? displayNameOf(device) : node;
}

bool SystemCaptureDevice::isUsableCamera(GstDevice* device) {
    const QString driver = stringProperty(device, "v4l2.device.driver") +
                           stringProperty(device, "api.v4l2.cap.driver");
    if (driver.contains(QStringLiteral("loopback"), Qt::CaseInsensitive))
        return false;
    const QString displayName = displayNameOf(device);
    if (displayName.contains(QStringLiteral("infrared"), Qt::CaseInsensitive) ||
        displayName.contains(QStringLiteral(" IR "), Qt::CaseInsensitive) ||
        displayName.endsWith(QStringLiteral(" IR"), Qt::CaseInsensitive))
        return false;
    // A sensor that only delivers grey pictures is an infrared one (face login cameras).
    const GstHandle<GstCaps> caps(gst_device_get_caps(device), GstRef::adopt);
    bool onlyGrey = caps && gst_caps_get_size(caps.get()) > 0;
    for (guint i = 0; caps && i < gst_caps_get_size(caps.get()); ++i)
        onlyGrey = onlyGrey && isGrey(gst_caps_get_structure(caps.get(), i));
    return !onlyGrey;
}

DevicePosition SystemCaptureDevice::positionOf(GstDevice* device) {
    for (const char* key : {"api.libcamera.location", "camera.location", "location"}) {
        const QString location = stringProperty(device, key).toLower();
        if (location == QStringLiteral("front"))
            return DevicePosition::front;
        if (!location.isEmpty())
            break;
    }
    // Unknown and external cameras count as the main camera.
    return gst_device_has_classes(device, "Video") ? DevicePosition::back
                                                   : DevicePosition::unspecified;
}

std::vector<CaptureDeviceFormat> SystemCaptureDevice::formatsFromCaps(const GstCaps* caps) {
    std::vector<CaptureDeviceFormat> formats;
    for (guint i = 0; caps && i < gst_caps_get_size(caps); ++i) {
        const GstStructure* structure = gst_caps_get_structure(caps, i);
        int width = 0;
        int height = 0;
        if (isGrey(structure) || !gst_structure_get_int(structure, "width", &width) ||
            !gst_structure_get_int(structure, "height", &height))
            continue;
        CaptureDeviceFormat format{
            width, height, {}, QString::fromUtf8(gst_structure_get_name(structure))};
        if (const GValue* rates = gst_structure_get_value(structure, "framerate"))
            addRanges(rates, format.videoSupportedFrameRateRanges);
        // Several pixel formats of one size and kind read as one format to the user.
        auto same = std::find_if(formats.begin(), formats.end(), [&](const CaptureDeviceFormat& f) {
            return f.width == width && f.height == height && f.mediaType == format.mediaType;
        });
        if (same == formats.end())
            formats.push_back(std::move(format));
    }
    return formats;
}

} // namespace av
