#pragma once

#include "platform/av/VirtualCameraRenderer.h"

#include <gst/gst.h>

#include <span>

namespace av {

// One format of the virtual camera, as a device lists it: a frame size and a frame-rate range.
struct VirtualFormat {
    int width;
    int height;
    int minFps;
    int maxFps;
};

// The camera that is always there: a live GStreamer source ("tessaravirtualcam") delivering what
// VirtualCameraRenderer draws at its own frame rate, for the zoom factor applied downstream.
//
// Properties, all writable while playing and read once per frame:
//   zoom   (double, 1.0)   the zoom factor the zoom stage applies; the scene reads values below 1
//                          as 1 and above maxZoom as maxZoom (GObject itself refuses NaN and
//                          infinities, keeping the value)
//   torch  (bool, false)   lights the scene, the near subject most
//   front  (bool, false)   the front camera's scene (a face in a room) instead of the back one
class VirtualCameraSource {
public:
    static constexpr const char* factoryName = "tessaravirtualcam";
    // The walker stops here; larger factors render as this one.
    static constexpr double maxZoom = VirtualCameraRenderer::maxZoom;

    // Adds the element to the registry without a plugin file. Safe to call more than once and
    // from any thread; needs gst_init().
    static void registerElement();
    // A new floating element, registered first if needed.
    static GstElement* create(const char* name = nullptr);
    // The formats in the order the device lists them; the caps list them in the same order.
    static std::span<const VirtualFormat> formats();
    // Caps for formats(): I420 and NV12, frame-rate ranges. Transfer full.
    static GstCaps* caps();

    // The tests draw frames without an element through this name.
    using Renderer = VirtualCameraRenderer;
};

} // namespace av
