#include "platform/av/VirtualCameraRenderer.h"

#include "platform/av/VirtualCameraScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace av {

namespace {

double walkerZoom(double zoom) {
    // NaN fails the comparison as well.
    return zoom >= 1.0 ? std::min(zoom, VirtualCameraRenderer::maxZoom) : 1.0;
}

struct OutputPlane {
    uint8_t* data;
    int stride;
    int pixelStride;
    int width;
    int height;
};

enum class Edge { wrap, clamp, cut };

// The plane as seen this frame: the mip level whose texels are nearest one a pixel, and where
// the view axis falls on it.
struct Sampling {
    const VirtualCameraLayer::Texture* texture;
    double axisX, axisY; // level texels
    double stepX, stepY; // level texels per output pixel
};

Sampling sampling(const VirtualCameraLayer& layer, int frameHeight, double distanceRatio) {
    const int level = std::clamp(int(std::floor(std::log2(distanceRatio) + 1e-9)), 0,
                                 int(layer.levels.size()) - 1);
    const double scale = std::ldexp(1.0, -level);
    return {&layer.levels[size_t(level)], layer.axisX * scale, layer.axisY * scale,
            distanceRatio * layer.texelsPerUnitX / frameHeight * scale,
            distanceRatio * layer.texelsPerUnitY / frameHeight * scale};
}

// Texel index for each output pixel along one axis; -1 past a cut edge.
void texelIndices(int count, double axis, double step, int texels, Edge edge,
                  std::vector<int>& indices) {
    indices.resize(size_t(count));
    for (int i = 0; i < count; ++i) {
        int k = int(std::floor(axis + (i + 0.5 - count * 0.5) * step));
        switch (edge) {
        case Edge::wrap:
            k %= texels;
            k += k < 0 ? texels : 0;
            break;
        case Edge::clamp:
            k = std::clamp(k, 0, texels - 1);
            break;
        case Edge::cut:
            k = k < 0 || k >= texels ? -1 : k;
            break;
        }
        indices[size_t(i)] = k;
    }
}

using Gain = std::array<uint8_t, 256>;

Gain gainTable(double gain) {
    Gain table;
    for (int v = 0; v < 256; ++v)
        table[size_t(v)] = uint8_t(std::clamp(std::lround(16 + (v - 16) * gain), 16L, 235L));
    return table;
}

// The part of a plane that is drawn; the rest is left black.
struct Rect {
    int x0, x1, y0, y1;
};

template <bool withGain>
void drawOpaqueRows(const OutputPlane& out, const uint8_t* texels, int texelsWidth,
                    const std::vector<int>& columns, const std::vector<int>& rows, Rect drawn,
                    const uint8_t* gain) {
    const int* column = columns.data();
    for (int y = drawn.y0; y < drawn.y1; ++y) {
        const uint8_t* from = texels + size_t(rows[size_t(y)]) * texelsWidth;
        uint8_t* to = out.data + size_t(y) * out.stride;
        if (out.pixelStride == 1) {
            for (int x = drawn.x0; x < drawn.x1; ++x)
                to[x] = withGain ? gain[from[column[x]]] : from[column[x]];
        } else {
            for (int x = drawn.x0; x < drawn.x1; ++x)
                to[x * out.pixelStride] = withGain ? gain[from[column[x]]] : from[column[x]];
        }
    }
}

template <bool withGain>
void blendRows(const OutputPlane& out, const uint8_t* texels, const uint8_t* alpha, int texelsWidth,
               const std::vector<int>& columns, const std::vector<int>& rows, int x0, int x1,
               int y0, int y1, const uint8_t* gain) {
    const int* column = columns.data();
    for (int y = y0; y < y1; ++y) {
        const size_t row = size_t(rows[size_t(y)]) * texelsWidth;
        const uint8_t* from = texels + row;
        const uint8_t* cover = alpha + row;
        uint8_t* to = out.data + size_t(y) * out.stride;
        for (int x = x0; x < x1; ++x) {
            const int a = cover[column[x]];
            if (a == 0)
                continue;
            const int s = withGain ? gain[from[column[x]]] : from[column[x]];
            uint8_t& d = to[x * out.pixelStride];
            d = uint8_t((s * a + d * (255 - a) + 127) / 255);
        }
    }
}

void fillRect(const OutputPlane& out, double x0, double y0, double x1, double y1, uint8_t value) {
    const int left = std::max(0, int(std::lround(x0)));
    const int right = std::min(out.width, int(std::lround(x1)));
    const int top = std::max(0, int(std::lround(y0)));
    const int bottom = std::min(out.height, int(std::lround(y1)));
    for (int y = top; y < bottom; ++y) {
        uint8_t* to = out.data + size_t(y) * out.stride;
        if (out.pixelStride == 1 && right > left) {
            std::memset(to + left, value, size_t(right - left));
            continue;
        }
        for (int x = left; x < right; ++x)
            to[x * out.pixelStride] = value;
    }
}

// Black around the drawn part of a plane.
void fillOutside(const OutputPlane& out, Rect drawn, uint8_t value) {
    fillRect(out, 0, 0, out.width, drawn.y0, value);
    fillRect(out, 0, drawn.y1, out.width, out.height, value);
    fillRect(out, 0, drawn.y0, drawn.x0, drawn.y1, value);
    fillRect(out, drawn.x1, drawn.y0, out.width, drawn.y1, value);
}

// The centre a zoom stage cropping to 1/zoom keeps, widened for the pixels its filter reads and
// for a zoom that moves between the two stages; edges even, so the chroma planes halve it exactly.
Rect keptCentre(int width, int height, double cropZoom) {
    const double share = std::min(1.0, 1.1 / cropZoom);
    const auto side = [share](int length) {
        const int kept = std::min(length, (int(std::ceil(length * share)) + 8 + 3) & ~3);
        const int start = ((length - kept) / 2) & ~1;
        return std::pair{start, start + kept};
    };
    const auto [x0, x1] = side(width);
    const auto [y0, y1] = side(height);
    return {x0, x1, y0, y1};
}

} // namespace

// The scene as last drawn without its clock, for frames whose zoom and torch repeat the last.
struct VirtualCameraRenderer::Kept {
    double zoom = -1;
    double cropZoom = -1;
    bool torch = false;
    bool repeated = false; // the last frame had the zoom and torch of the one before
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    bool valid = false;
    std::vector<uint8_t> planes[3];
    guint64 copied = 0;
};

VirtualCameraRenderer::VirtualCameraRenderer(int width, int height, bool front)
    : frameWidth(width), frameHeight(height), frontCamera(front),
      sharedScene(VirtualCameraScene::shared(height, front)), last(std::make_unique<Kept>()) {}

VirtualCameraRenderer::VirtualCameraRenderer(const VirtualCameraRenderer& other)
    : frameWidth(other.frameWidth), frameHeight(other.frameHeight), frontCamera(other.frontCamera),
      sharedScene(other.sharedScene), last(std::make_unique<Kept>()) {}

VirtualCameraRenderer& VirtualCameraRenderer::operator=(const VirtualCameraRenderer& other) {
    if (this != &other) {
        frameWidth = other.frameWidth;
        frameHeight = other.frameHeight;
        frontCamera = other.frontCamera;
        sharedScene = other.sharedScene;
        last = std::make_unique<Kept>();
    }
    return *this;
}

VirtualCameraRenderer::~VirtualCameraRenderer() = default;

guint64 VirtualCameraRenderer::framesCopied() const {
    return last->copied;
}

bool VirtualCameraRenderer::render(GstVideoFrame* frame, double zoom, bool torch, GstClockTime time,
                                   double cropZoom) const {
    const GstVideoFormat format = GST_VIDEO_FRAME_FORMAT(frame);
    if ((format != GST_VIDEO_FORMAT_I420 && format != GST_VIDEO_FORMAT_NV12) ||
        GST_VIDEO_FRAME_WIDTH(frame) != frameWidth || GST_VIDEO_FRAME_HEIGHT(frame) != frameHeight)
        return false;
    OutputPlane planes[3];
    for (int component = 0; component < 3; ++component) {
        planes[component] = {static_cast<uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(frame, component)),
                             GST_VIDEO_FRAME_COMP_STRIDE(frame, component),
                             GST_VIDEO_FRAME_COMP_PSTRIDE(frame, component),
                             GST_VIDEO_FRAME_COMP_WIDTH(frame, component),
                             GST_VIDEO_FRAME_COMP_HEIGHT(frame, component)};
    }

    const VirtualCameraScene& scene = *sharedScene;
    const double walker = walkerZoom(zoom);
    const double backgroundRatio = (walker + VirtualCameraScene::backgroundDistance) /
                                   (1.0 + VirtualCameraScene::backgroundDistance);

    // The clock: segments placed on the background plane, so they move and scale with it. It
    // lies clear of the subject, so it is drawn last, over the kept scene as well.
    const auto drawClock = [&] {
        const VirtualCameraLayer& layer = scene.background;
        const double period = layer.levels[0].width;
        const double h = VirtualCameraScene::clockDigitHeight;
        const double texelsPerPixelX = backgroundRatio * layer.texelsPerUnitX / scene.frameHeight;
        const double texelsPerPixelY = backgroundRatio * layer.texelsPerUnitY / scene.frameHeight;
        const guint64 hundredths = GST_CLOCK_TIME_IS_VALID(time) ? time / (GST_SECOND / 100) : 0;
        char text[16];
        g_snprintf(text, sizeof text, "%02u:%02u.%02u", unsigned(hundredths / 6000 % 100),
                   unsigned(hundredths / 100 % 60), unsigned(hundredths % 100));
        const VirtualCameraLayer::Ycbcr led = VirtualCameraLayer::toYcbcr(qRgb(130, 255, 200), 255);
        const uint8_t values[3] = {uint8_t(led.y), uint8_t(led.cb), uint8_t(led.cr)};
        for (int copy = -1; copy <= 1; ++copy) {
            VirtualCameraScene::forEachSegment(text, [&](double x, double y, double w, double sh) {
                const double left =
                    (VirtualCameraScene::clockLeft + x * h) * layer.texelsPerUnitX + copy * period;
                const double top = (VirtualCameraScene::clockTop + y * h) * layer.texelsPerUnitY;
                const double x0 = frameWidth * 0.5 + (left - layer.axisX) / texelsPerPixelX;
                const double x1 = x0 + w * h * layer.texelsPerUnitX / texelsPerPixelX;
                const double y0 = frameHeight * 0.5 + (top - layer.axisY) / texelsPerPixelY;
                const double y1 = y0 + sh * h * layer.texelsPerUnitY / texelsPerPixelY;
                for (int component = 0; component < 3; ++component) {
                    const double scale = component ? 0.5 : 1.0;
                    fillRect(planes[component], x0 * scale, y0 * scale, x1 * scale, y1 * scale,
                             values[component]);
                }
            });
        }
    };

    // Chroma planes (two in I420, one interleaved in NV12) have half the rows.
    const auto planeBytes = [&](guint plane) {
        const int rows = plane == 0 ? frameHeight : (frameHeight + 1) / 2;
        return size_t(GST_VIDEO_FRAME_PLANE_STRIDE(frame, plane)) * size_t(rows);
    };
    Kept& kept = *last;
    kept.repeated = zoom == kept.zoom && torch == kept.torch && cropZoom == kept.cropZoom;
    if (!kept.repeated)
        kept.valid = false;
    kept.zoom = zoom;
    kept.cropZoom = cropZoom;
    kept.torch = torch;
    bool fits = kept.valid && kept.format == format;
    for (guint plane = 0; fits && plane < GST_VIDEO_FRAME_N_PLANES(frame); ++plane)
        fits = kept.planes[plane].size() == planeBytes(plane);
    if (fits) {
        for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(frame); ++plane)
            std::memcpy(GST_VIDEO_FRAME_PLANE_DATA(frame, plane), kept.planes[plane].data(),
                        kept.planes[plane].size());
        ++kept.copied;
        drawClock();
        return true;
    }
    const Sampling background = sampling(scene.background, scene.frameHeight, backgroundRatio);
    const Sampling subject = sampling(scene.subject, scene.frameHeight, walker);
    // The torch lights the near subject far more than the distant background, and less as the
    // walker backs away.
    const Gain backgroundGain = gainTable(1.12);
    const Gain subjectGain = gainTable(1.0 + 0.4 / walker);

    // Even edges, so the chroma planes' part is the luma's halved.
    const Rect lumaDrawn = keptCentre(frameWidth, frameHeight, walkerZoom(cropZoom));
    const auto drawnIn = [&](int component) {
        return component
                   ? Rect{lumaDrawn.x0 / 2, lumaDrawn.x1 / 2, lumaDrawn.y0 / 2, lumaDrawn.y1 / 2}
                   : lumaDrawn;
    };
    thread_local std::vector<int> columns, rows;
    for (int component = 0; component < 3; ++component) {
        const OutputPlane& out = planes[component];
        const VirtualCameraLayer::Texture& texture = *background.texture;
        const double scale = component ? 0.5 : 1.0;
        const Rect drawn = drawnIn(component);
        fillOutside(out, drawn, component ? 128 : 16);
        texelIndices(out.width, background.axisX * scale, background.stepX,
                     texture.widthOf(component), Edge::wrap, columns);
        texelIndices(out.height, background.axisY * scale, background.stepY,
                     texture.heightOf(component), Edge::clamp, rows);
        const uint8_t* texels = texture.samples[size_t(component)].data();
        if (torch && component == 0)
            drawOpaqueRows<true>(out, texels, texture.widthOf(0), columns, rows, drawn,
                                 backgroundGain.data());
        else
            drawOpaqueRows<false>(out, texels, texture.widthOf(component), columns, rows, drawn,
                                  nullptr);
    }

    for (int component = 0; component < 3; ++component) {
        const OutputPlane& out = planes[component];
        const VirtualCameraLayer::Texture& texture = *subject.texture;
        const double scale = component ? 0.5 : 1.0;
        texelIndices(out.width, subject.axisX * scale, subject.stepX, texture.widthOf(component),
                     Edge::cut, columns);
        texelIndices(out.height, subject.axisY * scale, subject.stepY, texture.heightOf(component),
                     Edge::cut, rows);
        // Indices grow with the pixel, so what the subject covers is one span each way.
        auto span = [](const std::vector<int>& indices) {
            const auto first =
                std::find_if(indices.begin(), indices.end(), [](int k) { return k >= 0; });
            const auto last = std::find_if(first, indices.end(), [](int k) { return k < 0; });
            return std::pair{int(first - indices.begin()), int(last - indices.begin())};
        };
        const Rect drawn = drawnIn(component);
        const auto [subjectX0, subjectX1] = span(columns);
        const auto [subjectY0, subjectY1] = span(rows);
        const int x0 = std::max(subjectX0, drawn.x0), x1 = std::min(subjectX1, drawn.x1);
        const int y0 = std::max(subjectY0, drawn.y0), y1 = std::min(subjectY1, drawn.y1);
        const uint8_t* texels = texture.samples[size_t(component)].data();
        const uint8_t* alpha = texture.alphaOf(component);
        if (torch && component == 0)
            blendRows<true>(out, texels, alpha, texture.widthOf(0), columns, rows, x0, x1, y0, y1,
                            subjectGain.data());
        else
            blendRows<false>(out, texels, alpha, texture.widthOf(component), columns, rows, x0, x1,
                             y0, y1, nullptr);
    }
    // A zoom that rests: the scene is kept for the frames after this one.
    if (kept.repeated) {
        for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(frame); ++plane) {
            std::vector<uint8_t>& copy = kept.planes[plane];
            copy.resize(planeBytes(plane));
            std::memcpy(copy.data(), GST_VIDEO_FRAME_PLANE_DATA(frame, plane), copy.size());
        }
        kept.valid = true;
        kept.format = format;
    }
    drawClock();
    return true;
}

} // namespace av
