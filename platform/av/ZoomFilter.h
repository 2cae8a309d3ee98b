#pragma once

#include <gst/gst.h>

#include <functional>

namespace av {

// The digital zoom stage of the capture pipeline: a GStreamer element ("tessarozoom") that crops
// the centre 1/zoom of every I420 or NV12 frame and scales it back to the frame size, bilinear.
// The crop's edges are fractional, so a slow ramp moves smoothly rather than a pixel at a time.
//
// Property, writable from any thread while playing:
//   zoom   (double, 1.0)   read once per frame, so a write lands on the next frame. It keeps what
//                          was written; the picture treats values below 1 and NaN as 1 and
//                          larger ones than maxZoom (infinity too) as maxZoom.
//   follow-capture-time (bool, false)   for live sources: each frame shows the zoom last
//                          written before its timestamp, however late it reaches the stage.
// At a picture zoom of exactly 1 the element passes buffers through untouched.
class ZoomFilter {
public:
    static constexpr const char* factoryName = "tessarozoom";
    static constexpr double maxZoom = 100.0;

    // Called on the element's streaming thread for every frame that leaves it, with the frame's
    // presentation time and the zoom its picture shows (after clamping). It must be quick and must
    // not block on the GUI thread, nor call setFrameObserver on the same element.
    using FrameObserver = std::function<void(GstClockTime pts, double zoom)>;

    // Adds the element to the registry without a plugin file. Safe to call more than once and
    // from any thread; needs gst_init().
    static void registerElement();
    // A new floating element, registered first if needed.
    static GstElement* create(const char* name = nullptr);
    static GType type();

    // Replaces the element's observer (an empty one removes it). Any thread. Once this returns,
    // the previous observer is neither running nor called again, so what it captured may go.
    static void setFrameObserver(GstElement* zoomFilter, FrameObserver observer);

    // The zoom the picture shows for a written value.
    static double pictureZoom(double zoom);
};

} // namespace av
