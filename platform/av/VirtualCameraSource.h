#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <memory>
#include <span>

namespace av {

// One format of the virtual camera, as a device lists it: a frame size and a frame-rate range.
struct VirtualFormat {
    int width;
    int height;
    int minFps;
    int maxFps;
};

// The camera that is always there: a live GStreamer source ("tessaravirtualcam") rendering a
// subject in front of a distant background, seen by a walker whose distance follows the applied
// zoom factor. After the zoom stage has cropped the centre by 1/zoom, the subject keeps its size
// while the background stretches, as in a real dolly zoom.
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
    static constexpr double maxZoom = 16.0;

    // Adds the element to the registry without a plugin file. Safe to call more than once and
    // from any thread; needs gst_init().
    static void registerElement();
    // A new floating element, registered first if needed.
    static GstElement* create(const char* name = nullptr);
    // The formats in the order the device lists them; the caps list them in the same order.
    static std::span<const VirtualFormat> formats();
    // Caps for formats(): I420 and NV12, frame-rate ranges. Transfer full.
    static GstCaps* caps();

    // The pre-rendered scene for one frame size and camera, and the per-frame renderer. Textures
    // are shared between renderers of the same size and camera. Immutable after construction,
    // so render() may run on several threads at once.
    class Renderer {
    public:
        Renderer(int width, int height, bool front);
        ~Renderer();
        // A copy draws the same scene and keeps a picture of its own.
        Renderer(const Renderer& other);
        Renderer& operator=(const Renderer& other);

        int width() const { return m_width; }
        int height() const { return m_height; }
        bool front() const { return m_front; }

        // Draws the scene as seen at this zoom factor into an I420 or NV12 frame of the
        // renderer's size; the clock in the background shows time. Returns false for any other
        // frame. While the zoom and torch stay as they were for the frame before, the scene is
        // copied from that frame's picture and only the clock is drawn anew. One thread at a
        // time per renderer.
        bool render(GstVideoFrame* frame, double zoom, bool torch, GstClockTime time) const;
        // Frames drawn from the kept picture, for tests and benchmarks.
        guint64 framesCopied() const;

        struct Scene;
        struct Kept;

    private:
        int m_width;
        int m_height;
        bool m_front;
        std::shared_ptr<const Scene> m_scene;
        std::unique_ptr<Kept> m_kept;
    };
};

} // namespace av
