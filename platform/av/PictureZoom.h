#pragma once

#include <QImage>

#include <functional>

namespace av {

// Tells the zoom a recorded frame shows from its pixels alone: the centre crop of the camera's
// unzoomed picture that matches the frame best. For checking recordings (tessaro record, tests,
// benchmarks) against what the metadata claims; too slow for the live path (about a second).
class PictureZoom {
public:
    // What the camera shows at a zoom before the zoom stage crops it.
    using Reference = std::function<QImage(double zoom)>;

    // A camera whose picture does not change (a still picture, or a video of one), scaled to
    // the frame's size as the session does: whole, with black bars where the shapes differ.
    static Reference still(const QImage& picture, QSize frameSize);
    // The virtual back camera, whose scene follows the zoom.
    static Reference virtualScene();

    // The zoom from 1 to highest whose crop of the reference matches the frame best, to about a
    // thousandth; 0 for a null frame.
    static double measure(const QImage& frame, const Reference& reference, double highest);
};

} // namespace av
