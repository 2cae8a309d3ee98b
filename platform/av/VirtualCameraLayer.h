#pragma once

#include <QRgb>

#include <array>
#include <cstdint>
#include <vector>

class QPainter;

namespace av {

// One plane of the virtual camera's scene (the background or the subject): painted once per frame
// height, kept as YCbCr 4:2:0 texels in mip levels for the renderer to sample. Lengths are in
// frame heights as seen at zoom 1 on the plane; at zoom 1 one level-0 texel covers one pixel.
struct VirtualCameraLayer {
    struct Texture {
        int width = 0; // luma texels; chroma is half each way
        int height = 0;
        std::array<std::vector<uint8_t>, 3> samples; // Y, U, V
        std::vector<uint8_t> alpha;                  // per luma texel; empty when opaque
        std::vector<uint8_t> chromaAlpha;            // per chroma texel

        Texture(int w, int h, bool opaque) : width(w), height(h) {
            samples[0].resize(size_t(w) * h);
            samples[1].resize(size_t(w / 2) * (h / 2));
            samples[2].resize(samples[1].size());
            if (!opaque) {
                alpha.resize(samples[0].size());
                chromaAlpha.resize(samples[1].size());
            }
        }
        bool opaque() const { return alpha.empty(); }
        int widthOf(int component) const { return component ? width / 2 : width; }
        int heightOf(int component) const { return component ? height / 2 : height; }
        const uint8_t* alphaOf(int component) const {
            if (opaque())
                return nullptr;
            return component ? chromaAlpha.data() : alpha.data();
        }
    };

    struct Ycbcr {
        int y, cb, cr;
    };

    // What to paint, how large, where the view axis falls and how many mip levels to keep.
    struct Layout {
        double width;
        double height;
        double axisX;
        double axisY;
        int levels;
        bool opaque;
        void (*paint)(QPainter&);
    };

    static VirtualCameraLayer build(const Layout& layout, int frameHeight);
    // BT.709, limited range: what GStreamer assumes for our HD sizes when caps leave it open.
    static Ycbcr toYcbcr(QRgb premultiplied, int alpha);

    std::vector<Texture> levels; // level n is 1/2^n of level 0
    // The view axis and the scale of the paint, in level-0 texels.
    double axisX = 0;
    double axisY = 0;
    double texelsPerUnitX = 0;
    double texelsPerUnitY = 0;
};

} // namespace av
