#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <memory>

namespace av {

struct VirtualCameraScene;

// Draws the virtual camera's scene for one frame size and camera, as seen by a walker whose
// distance follows the zoom factor: after the zoom stage has cropped the centre by 1/zoom, the
// subject keeps its size while the background stretches. Scenes are shared between renderers of
// the same height and camera and never change, so renderers may run on several threads at once.
class VirtualCameraRenderer {
public:
    // The walker stops here; larger factors render as this one.
    static constexpr double maxZoom = 16.0;

    VirtualCameraRenderer(int width, int height, bool front);
    ~VirtualCameraRenderer();
    // A copy draws the same scene and keeps a picture of its own.
    VirtualCameraRenderer(const VirtualCameraRenderer& other);
    VirtualCameraRenderer& operator=(const VirtualCameraRenderer& other);

    int width() const { return frameWidth; }
    int height() const { return frameHeight; }
    bool front() const { return frontCamera; }

    // Draws the scene as seen at this zoom factor into an I420 or NV12 frame of the renderer's
    // size; the clock in the background shows time. Returns false for any other frame. While the
    // zoom and torch stay as they were for the frame before, the scene is copied from that
    // frame's picture and only the clock is drawn anew. A zoom stage downstream that crops every
    // frame to its centre 1/zoom, with zoom at least cropZoom, sees only that centre: the rest
    // (a margin beside) is left black and costs nothing to draw. One thread at a time per
    // renderer.
    bool render(GstVideoFrame* frame, double zoom, bool torch, GstClockTime time,
                double cropZoom = 1.0) const;
    // Frames drawn from the kept picture, for tests and benchmarks.
    guint64 framesCopied() const;

private:
    struct Kept;

    int frameWidth;
    int frameHeight;
    bool frontCamera;
    std::shared_ptr<const VirtualCameraScene> sharedScene;
    std::unique_ptr<Kept> last;
};

} // namespace av
