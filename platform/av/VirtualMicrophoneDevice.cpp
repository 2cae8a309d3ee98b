#include "platform/av/VirtualMicrophoneDevice.h"

#include "platform/av/Gst.h"

#include <QCoreApplication>

namespace av {

VirtualMicrophoneDevice::VirtualMicrophoneDevice(QObject* parent)
    : CaptureDevice(QStringLiteral("virtual:microphone"), qtTrId("virtual_virtual_microphone"),
                    MediaType::audio, DevicePosition::unspecified, parent) {
    setVirtual(true);
}

GstElement* VirtualMicrophoneDevice::createSourceElement() const {
    GstElement* source = Gst::make("audiotestsrc");
    g_object_set(source, "is-live", TRUE, "volume", 0.02, nullptr);
    gst_util_set_object_arg(G_OBJECT(source), "wave", "pink-noise");
    return source;
}

} // namespace av
