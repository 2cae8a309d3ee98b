#pragma once

// A webcam as the device monitor reports it: a live test picture with the given caps, no node,
// no microphone. Include it in one source file of a test program.

#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"

#include <gst/gst.h>

struct FakeWebcam {
    GstDevice parent;
};
struct FakeWebcamClass {
    GstDeviceClass parent;
};
G_DEFINE_TYPE(FakeWebcam, fake_webcam, GST_TYPE_DEVICE)

static GstElement* createFakeWebcamSource(GstDevice*, const gchar* name) {
    GstElement* source = gst_element_factory_make("videotestsrc", name);
    g_object_set(source, "is-live", TRUE, nullptr);
    return source;
}

static void fake_webcam_class_init(FakeWebcamClass* webcamClass) {
    GST_DEVICE_CLASS(webcamClass)->create_element = createFakeWebcamSource;
}

static void fake_webcam_init(FakeWebcam*) {}

// A new reference, named by its display name (which is also its unique ID, having no node).
inline GstDevice* makeFakeWebcam(const char* name, const char* caps) {
    av::Gst::ensureInitialized();
    const av::GstHandle<GstCaps> parsed(gst_caps_from_string(caps), av::GstRef::adopt);
    return GST_DEVICE(g_object_new(fake_webcam_get_type(), "display-name", name, "device-class",
                                   "Video/Source", "caps", parsed.get(), nullptr));
}
