#include "platform/av/VirtualCameraSource.h"

#include <QColor>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <gst/base/gstpushsrc.h>
#include <gst/video/gstvideopool.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

GST_DEBUG_CATEGORY_STATIC(tessaro_virtual_cam_debug);
#define GST_CAT_DEFAULT tessaro_virtual_cam_debug

namespace av {

namespace {

constexpr VirtualFormat formatTable[] = {
    {1920, 1080, 1, 60},
    {3840, 2160, 1, 30},
    {1280, 720, 1, 60},
};

// Lengths are in frame heights as seen at zoom 1 on the plane in question; at zoom 1 one level-0
// texel of either plane covers one pixel.

// The background's distance behind the subject, in walker distances at zoom 1.
constexpr double backgroundDistance = 8.0;
// One period of the background: the widest view up to zoom 4 shows no repeat. Past zoom 5.7 the
// view is taller than the background; the rows beyond repeat its edge rows, plain sky and floor.
constexpr double backgroundWidth = 2.4;
constexpr double backgroundHeight = 1.5;
constexpr double backgroundAxisX = 1.2;
constexpr double backgroundAxisY = 0.75;
// Up to zoom 16 the background is seen at under 2.7 texels a pixel, the subject at up to 16.
constexpr int backgroundLevels = 2;
constexpr int subjectLevels = 5;

// The clock on the background, far enough left of the subject that it is never hidden.
constexpr double clockLeft = 0.775;
constexpr double clockTop = 0.43;
constexpr double clockDigitHeight = 0.032;

double walkerZoom(double zoom) {
    // NaN fails the comparison as well.
    return zoom >= 1.0 ? std::min(zoom, VirtualCameraSource::maxZoom) : 1.0;
}

// --- Textures -------------------------------------------------------------------------------

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

struct Layer {
    std::vector<Texture> levels; // level n is 1/2^n of level 0
    // The view axis and the scale of the paint, in level-0 texels.
    double axisX = 0;
    double axisY = 0;
    double texelsPerUnitX = 0;
    double texelsPerUnitY = 0;
};

struct Ycbcr {
    int y, cb, cr;
};

// BT.709, limited range: what GStreamer assumes for our HD sizes when caps leave it open.
Ycbcr toYcbcr(QRgb premultiplied, int alpha) {
    if (alpha == 0)
        return {16, 128, 128};
    int r = qRed(premultiplied), g = qGreen(premultiplied), b = qBlue(premultiplied);
    if (alpha != 255) {
        r = std::min(255, r * 255 / alpha);
        g = std::min(255, g * 255 / alpha);
        b = std::min(255, b * 255 / alpha);
    }
    return {16 + ((47 * r + 157 * g + 16 * b + 128) >> 8),
            128 + ((-26 * r - 87 * g + 112 * b + 128) >> 8),
            128 + ((112 * r - 102 * g - 10 * b + 128) >> 8)};
}

// Converts painted rows (an even count, from an even row) into the texture; chroma is the
// coverage-weighted mean of each 2x2 block so transparent texels lend no colour.
void storeRows(const QImage& image, int firstRow, Texture& texture) {
    const int w = texture.width;
    const bool opaque = texture.opaque();
    for (int r = 0; r + 1 < image.height(); r += 2) {
        const QRgb* lines[2] = {reinterpret_cast<const QRgb*>(image.constScanLine(r)),
                                reinterpret_cast<const QRgb*>(image.constScanLine(r + 1))};
        const size_t chromaRow = size_t((firstRow + r) / 2) * (w / 2);
        for (int x = 0; x < w; x += 2) {
            int cb = 0, cr = 0, weight = 0;
            for (int i = 0; i < 2; ++i) {
                for (int j = 0; j < 2; ++j) {
                    const QRgb pixel = lines[i][x + j];
                    const int a = opaque ? 255 : qAlpha(pixel);
                    const Ycbcr c = toYcbcr(pixel, opaque ? std::max(qAlpha(pixel), 1) : a);
                    const size_t at = size_t(firstRow + r + i) * w + x + j;
                    texture.samples[0][at] = uint8_t(c.y);
                    if (!opaque)
                        texture.alpha[at] = uint8_t(a);
                    cb += c.cb * a;
                    cr += c.cr * a;
                    weight += a;
                }
            }
            const size_t at = chromaRow + x / 2;
            texture.samples[1][at] = weight > 0 ? uint8_t((cb + weight / 2) / weight) : 128;
            texture.samples[2][at] = weight > 0 ? uint8_t((cr + weight / 2) / weight) : 128;
            if (!opaque)
                texture.chromaAlpha[at] = uint8_t((weight + 2) / 4);
        }
    }
}

// The next mip level: 2x2 means, weighted by coverage like storeRows.
Texture downsample(const Texture& source) {
    Texture result(source.width / 2, source.height / 2, source.opaque());
    for (int component = 0; component < 3; ++component) {
        const int sw = source.widthOf(component);
        const int dw = result.widthOf(component);
        const int dh = result.heightOf(component);
        const uint8_t* from = source.samples[component].data();
        const uint8_t* weights = source.alphaOf(component);
        uint8_t* to = result.samples[component].data();
        uint8_t* toAlpha = component == 0   ? result.alpha.data()
                           : component == 1 ? result.chromaAlpha.data()
                                            : nullptr;
        for (int y = 0; y < dh; ++y) {
            for (int x = 0; x < dw; ++x) {
                const size_t at[4] = {size_t(2 * y) * sw + 2 * x, size_t(2 * y) * sw + 2 * x + 1,
                                      size_t(2 * y + 1) * sw + 2 * x,
                                      size_t(2 * y + 1) * sw + 2 * x + 1};
                const size_t out = size_t(y) * dw + x;
                if (!weights) {
                    to[out] =
                        uint8_t((from[at[0]] + from[at[1]] + from[at[2]] + from[at[3]] + 2) / 4);
                    continue;
                }
                int sum = 0, weight = 0;
                for (size_t i : at) {
                    sum += from[i] * weights[i];
                    weight += weights[i];
                }
                to[out] = weight ? uint8_t((sum + weight / 2) / weight) : from[at[0]];
                if (toAlpha && !source.opaque())
                    toAlpha[out] = uint8_t((weight + 2) / 4);
            }
        }
    }
    return result;
}

// Two box passes on premultiplied pixels: soft edges whose colour stays the subject's own.
void blur(QImage& image, int radius) {
    const int w = image.width();
    const int h = image.height();
    const int span = 2 * radius + 1;
    std::vector<uint32_t> line(size_t(std::max(w, h)));
    auto pass = [&](uint32_t* first, int count, size_t step) {
        for (int i = 0; i < count; ++i)
            line[size_t(i)] = first[size_t(i) * step];
        auto at = [&](int i) { return line[size_t(std::clamp(i, 0, count - 1))]; };
        int sum[4] = {};
        for (int i = -radius; i <= radius; ++i) {
            for (int c = 0; c < 4; ++c)
                sum[c] += int(at(i) >> (8 * c)) & 255;
        }
        for (int i = 0; i < count; ++i) {
            uint32_t pixel = 0;
            for (int c = 0; c < 4; ++c)
                pixel |= uint32_t((sum[c] + span / 2) / span) << (8 * c);
            first[size_t(i) * step] = pixel;
            const uint32_t entering = at(i + radius + 1), leaving = at(i - radius);
            for (int c = 0; c < 4; ++c)
                sum[c] += (int(entering >> (8 * c)) & 255) - (int(leaving >> (8 * c)) & 255);
        }
    };
    auto* pixels = reinterpret_cast<uint32_t*>(image.bits());
    const size_t stride = size_t(image.bytesPerLine() / 4);
    for (int round = 0; round < 2; ++round) {
        for (int y = 0; y < h; ++y)
            pass(pixels + y * stride, w, 1);
        for (int x = 0; x < w; ++x)
            pass(pixels + x, h, stride);
    }
}

struct LayerLayout {
    double width;
    double height;
    double axisX;
    double axisY;
    int levels;
    bool opaque;
    void (*paint)(QPainter&);
};

Layer buildLayer(const LayerLayout& layout, int frameHeight) {
    // Every level keeps even sizes for its half-size chroma.
    const int align = 1 << layout.levels;
    auto alignedSize = [&](double units) {
        return std::max(align, int(std::lround(units * frameHeight / align)) * align);
    };
    const int w = alignedSize(layout.width);
    const int h = alignedSize(layout.height);
    Layer layer;
    layer.texelsPerUnitX = w / layout.width;
    layer.texelsPerUnitY = h / layout.height;
    layer.axisX = layout.axisX * layer.texelsPerUnitX;
    layer.axisY = layout.axisY * layer.texelsPerUnitY;

    Texture base(w, h, layout.opaque);
    // The opaque background is painted in strips to bound the RGB scratch; the subject in one go
    // for its blur.
    const int stripRows = layout.opaque ? 512 : h;
    for (int row = 0; row < h; row += stripRows) {
        QImage image(w, std::min(stripRows, h - row), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.translate(0, -row);
            painter.scale(layer.texelsPerUnitX, layer.texelsPerUnitY);
            layout.paint(painter);
        }
        if (!layout.opaque)
            blur(image, std::max(1, int(std::lround(0.0012 * frameHeight))));
        storeRows(image, row, base);
    }
    layer.levels.push_back(std::move(base));
    while (int(layer.levels.size()) < layout.levels)
        layer.levels.push_back(downsample(layer.levels.back()));
    return layer;
}

// --- Painting (in frame heights) ------------------------------------------------------------

// Deterministic, so every size paints the same scene.
class Random {
public:
    explicit Random(uint32_t seed) : m_state(seed * 2654435761u + 1u) {}
    double uniform(double low, double high) {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return low + (high - low) * double(m_state) / 4294967296.0;
    }
    bool chance(double p) { return uniform(0, 1) < p; }

private:
    uint32_t m_state;
};

QColor mix(const QColor& a, const QColor& b, double t) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

// Seven-segment characters: the painted display and the per-frame clock share the layout.
// Calls lit(x, y, w, h) for each segment of text, in digit heights from the top left.
template <typename Function> void forEachSegment(const char* text, Function&& segment) {
    constexpr double w = 0.55, t = 0.12;
    struct Box {
        double x, y, w, h;
    };
    static constexpr Box segments[7] = {
        {t, 0, w - 2 * t, t},               // a
        {w - t, t * 0.5, t, 0.5 - t * 0.5}, // b
        {w - t, 0.5, t, 0.5 - t * 0.5},     // c
        {t, 1 - t, w - 2 * t, t},           // d
        {0, 0.5, t, 0.5 - t * 0.5},         // e
        {0, t * 0.5, t, 0.5 - t * 0.5},     // f
        {t, 0.5 - t * 0.5, w - 2 * t, t},   // g
    };
    static constexpr uint8_t digits[10] = {0x3f, 0x06, 0x5b, 0x4f, 0x66,
                                           0x6d, 0x7d, 0x07, 0x7f, 0x6f};
    double x = 0;
    for (const char* c = text; *c; ++c) {
        if (*c >= '0' && *c <= '9') {
            for (int s = 0; s < 7; ++s) {
                if (digits[*c - '0'] & (1 << s))
                    segment(x + segments[s].x, segments[s].y, segments[s].w, segments[s].h);
            }
            x += 0.75;
        } else {
            if (*c == ':')
                segment(x + 0.06, 0.25, t, t);
            if (*c == ':' || *c == '.')
                segment(x + 0.06, 1 - t - (*c == ':' ? 0.15 : 0), t, t);
            x += 0.35;
        }
    }
}

constexpr const char* clockPattern = "88:88.88";

double clockWidth() {
    double right = 0;
    forEachSegment(clockPattern,
                   [&](double x, double, double w, double) { right = std::max(right, x + w); });
    return right;
}

void paintClock(QPainter& p) {
    const double h = clockDigitHeight;
    const double pad = 0.4 * h;
    const QRectF panel(clockLeft - pad, clockTop - pad, clockWidth() * h + 2 * pad, h + 2 * pad);
    p.setPen(QPen(QColor(92, 96, 108), 0.003));
    p.setBrush(QColor(22, 25, 31));
    p.drawRoundedRect(panel, 0.006, 0.006);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(34, 48, 44));
    forEachSegment(clockPattern, [&](double x, double y, double w, double sh) {
        p.drawRect(QRectF(clockLeft + x * h, clockTop + y * h, w * h, sh * h));
    });
}

// Draws the periodic background three times over so shapes that cross an edge wrap around.
void paintPeriodic(QPainter& p, void (*paintOnce)(QPainter&)) {
    for (int copy = -1; copy <= 1; ++copy) {
        p.save();
        p.translate(copy * backgroundWidth, 0);
        paintOnce(p);
        p.restore();
    }
}

void paintBuilding(QPainter& p, const QRectF& r, const QColor& base, int style, Random& random) {
    p.fillRect(r, base);
    p.fillRect(QRectF(r.right() - r.width() * 0.12, r.top(), r.width() * 0.12, r.height()),
               base.darker(118));
    p.fillRect(QRectF(r.left(), r.top(), r.width(), 0.008), base.lighter(125));
    const QColor lit(250, 214, 140), dark(52, 66, 92), sky(96, 122, 158);
    const double margin = 0.016;
    if (style == 0) {
        const int columns = std::max(1, int((r.width() - 2 * margin) / 0.034));
        const double pitch = (r.width() - 2 * margin) / columns;
        for (double y = r.top() + 0.03; y + 0.03 < r.bottom() - 0.02; y += 0.048) {
            for (int c = 0; c < columns; ++c) {
                const QColor& glass = random.chance(0.28) ? lit : random.chance(0.5) ? dark : sky;
                p.fillRect(
                    QRectF(r.left() + margin + c * pitch + (pitch - 0.018) / 2, y, 0.018, 0.028),
                    glass);
            }
        }
    } else if (style == 1) {
        p.fillRect(
            QRectF(r.left() + margin, r.top() + 0.02, r.width() - 2 * margin, r.height() - 0.04),
            dark);
        for (double y = r.top() + 0.05; y < r.bottom() - 0.03; y += 0.048)
            p.fillRect(QRectF(r.left() + margin, y, r.width() - 2 * margin, 0.005),
                       base.darker(140));
        const QColor pillar = mix(base, Qt::white, 0.3);
        for (double x = r.left() + margin; x < r.right() - margin; x += 0.03)
            p.fillRect(QRectF(x, r.top() + 0.02, 0.008, r.height() - 0.04), pillar);
        for (double y = r.top() + 0.03; y < r.bottom() - 0.03; y += 0.048) {
            if (random.chance(0.3))
                p.fillRect(QRectF(r.left() + margin + 0.01, y + 0.01, r.width() * 0.3, 0.03),
                           QColor(lit.red(), lit.green(), lit.blue(), 90));
        }
    } else {
        for (double y = r.top() + 0.03; y + 0.022 < r.bottom() - 0.02; y += 0.045) {
            p.fillRect(QRectF(r.left() + margin, y, r.width() - 2 * margin, 0.022),
                       random.chance(0.25) ? lit : dark);
            for (double x = r.left() + margin; x < r.right() - margin; x += 0.025)
                p.fillRect(QRectF(x, y, 0.003, 0.022), base);
        }
    }
    if (random.chance(0.4)) {
        const double x = r.left() + r.width() * random.uniform(0.2, 0.8);
        p.fillRect(QRectF(x, r.top() - random.uniform(0.05, 0.12), 0.003, 0.12),
                   QColor(50, 54, 62));
    }
}

constexpr double cityHorizon = 0.87;

void paintCityOnce(QPainter& p) {
    const double w = backgroundWidth;
    QLinearGradient sky(0, 0.05, 0, cityHorizon);
    sky.setColorAt(0.0, QColor(38, 70, 140));
    sky.setColorAt(0.45, QColor(95, 150, 210));
    sky.setColorAt(0.8, QColor(180, 205, 225));
    sky.setColorAt(1.0, QColor(240, 224, 204));
    p.fillRect(QRectF(0, 0, w, cityHorizon), sky);

    QRadialGradient sun(QPointF(1.85, 0.5), 0.34);
    sun.setColorAt(0.0, QColor(255, 250, 232));
    sun.setColorAt(0.09, QColor(255, 246, 218));
    sun.setColorAt(0.13, QColor(255, 238, 205, 150));
    sun.setColorAt(1.0, QColor(255, 238, 205, 0));
    p.fillRect(QRectF(1.5, 0.16, 0.7, 0.68), sun);

    Random random(7);
    p.setPen(Qt::NoPen);
    for (int cloud = 0; cloud < 9; ++cloud) {
        const double cx = random.uniform(0, w);
        const double cy = random.uniform(0.1, 0.38);
        const double size = random.uniform(0.03, 0.06);
        p.setBrush(QColor(255, 255, 255, 150));
        for (int puff = 0; puff < 6; ++puff) {
            const double r = size * random.uniform(0.6, 1.1);
            p.drawEllipse(QPointF(cx + random.uniform(-2.5, 2.5) * size,
                                  cy + random.uniform(-0.4, 0.3) * size),
                          r * 1.6, r);
        }
    }

    const QColor haze(160, 180, 205);
    for (double x = 0; x < w;) {
        const double width = random.uniform(0.05, 0.15);
        const double top = random.uniform(0.42, 0.62);
        p.fillRect(QRectF(x, top, width, cityHorizon - top),
                   mix(haze, QColor(120, 140, 170), random.uniform(0, 0.5)));
        x += width;
    }

    const QColor palette[] = {QColor(70, 90, 120),   QColor(150, 142, 126), QColor(95, 120, 118),
                              QColor(178, 176, 170), QColor(62, 68, 84),    QColor(120, 130, 150)};
    for (double x = 0; x < w - 0.01;) {
        double width = random.uniform(0.11, 0.24);
        const double gap = random.uniform(0.0, 0.03);
        if (w - (x + width + gap) < 0.12)
            width = w - x;
        const bool central = std::abs(x + width / 2 - backgroundAxisX) < 0.4;
        const double top = central ? random.uniform(0.14, 0.28) : random.uniform(0.3, 0.62);
        const QColor& base = palette[int(random.uniform(0, 5.999))];
        paintBuilding(p, QRectF(x, top, width, cityHorizon - top), base,
                      int(random.uniform(0, 2.999)), random);
        x += width + (width == w - x ? 0 : gap);
    }

    // The plaza: a low wall along the horizon, paving below, plain at the very bottom.
    p.fillRect(QRectF(0, cityHorizon, w, 0.025), QColor(172, 166, 156));
    p.fillRect(QRectF(0, cityHorizon, w, 0.004), QColor(204, 198, 188));
    int band = 0;
    for (double y = cityHorizon + 0.025; y < backgroundHeight - 0.06; y += 0.035, ++band) {
        p.fillRect(QRectF(0, y, w, 0.035),
                   band % 2 ? QColor(140, 137, 133) : QColor(128, 126, 124));
        for (double x = band % 2 ? 0.035 : 0.0; x < w; x += 0.07)
            p.fillRect(QRectF(x, y, 0.003, 0.035), QColor(108, 106, 104));
    }
    p.fillRect(QRectF(0, backgroundHeight - 0.06, w, 0.06), QColor(128, 126, 124));

    for (int i = 0; i < 8; ++i) {
        const double x = 0.1 + i * 0.3 + random.uniform(-0.04, 0.04);
        p.fillRect(QRectF(x - 0.006, cityHorizon - 0.09, 0.012, 0.1), QColor(85, 65, 50));
        const QColor leaves[] = {QColor(52, 95, 62), QColor(64, 112, 70), QColor(44, 82, 56)};
        for (int puff = 0; puff < 6; ++puff) {
            p.setBrush(leaves[puff % 3]);
            const double r = random.uniform(0.035, 0.05);
            p.drawEllipse(QPointF(x + random.uniform(-0.04, 0.04),
                                  cityHorizon - 0.13 + random.uniform(-0.03, 0.03)),
                          r, r);
        }
        const double lamp = x + 0.15;
        p.fillRect(QRectF(lamp - 0.0025, cityHorizon - 0.2, 0.005, 0.2), QColor(45, 50, 60));
        p.fillRect(QRectF(lamp - 0.012, cityHorizon - 0.205, 0.024, 0.007), QColor(45, 50, 60));
        p.setBrush(QColor(255, 236, 180));
        p.drawEllipse(QPointF(lamp, cityHorizon - 0.195), 0.007, 0.005);
    }
    paintClock(p);
}

void paintCity(QPainter& p) {
    paintPeriodic(p, paintCityOnce);
}

constexpr double roomFloor = 0.95;

void paintRoomOnce(QPainter& p) {
    const double w = backgroundWidth;
    p.fillRect(QRectF(0, 0, w, roomFloor), QColor(226, 212, 188));
    for (double x = 0; x < w; x += 0.05)
        p.fillRect(QRectF(x, 0.15, 0.02, roomFloor - 0.15), QColor(216, 201, 176));
    p.fillRect(QRectF(0, 0, w, 0.14), QColor(242, 238, 230));
    p.fillRect(QRectF(0, 0.14, w, 0.012), QColor(250, 248, 244));
    p.fillRect(QRectF(0, 0.152, w, 0.004), QColor(200, 188, 168));

    // Floorboards, plain at the very bottom.
    int board = 0;
    for (double y = roomFloor; y < backgroundHeight - 0.06; y += 0.03, ++board) {
        p.fillRect(QRectF(0, y, w, 0.03), board % 2 ? QColor(156, 113, 76) : QColor(166, 122, 82));
        for (double x = std::fmod(board * 0.37, 0.22); x < w; x += 0.22)
            p.fillRect(QRectF(x, y, 0.003, 0.03), QColor(120, 86, 58));
    }
    p.fillRect(QRectF(0, backgroundHeight - 0.06, w, 0.06), QColor(160, 117, 79));
    p.fillRect(QRectF(0, roomFloor - 0.025, w, 0.025), QColor(240, 236, 228));

    // A window with curtains.
    p.fillRect(QRectF(1.5, 0.3, 0.45, 0.5), QColor(245, 245, 242));
    QLinearGradient view(0, 0.32, 0, 0.78);
    view.setColorAt(0, QColor(120, 170, 225));
    view.setColorAt(0.7, QColor(200, 222, 242));
    view.setColorAt(0.71, QColor(110, 150, 100));
    view.setColorAt(1, QColor(90, 130, 85));
    p.fillRect(QRectF(1.52, 0.32, 0.41, 0.46), view);
    p.fillRect(QRectF(1.719, 0.32, 0.012, 0.46), QColor(245, 245, 242));
    p.fillRect(QRectF(1.52, 0.545, 0.41, 0.012), QColor(245, 245, 242));
    p.fillRect(QRectF(1.38, 0.235, 0.71, 0.008), QColor(90, 80, 70));
    for (double left : {1.4, 1.97}) {
        p.fillRect(QRectF(left, 0.24, 0.1, 0.66), QColor(70, 125, 135));
        for (double x = left + 0.008; x < left + 0.1; x += 0.018)
            p.fillRect(QRectF(x, 0.24, 0.006, 0.66), QColor(56, 104, 114));
    }

    // A bookshelf.
    const QRectF shelf(0.15, 0.32, 0.5, roomFloor - 0.025 - 0.32);
    p.fillRect(shelf, QColor(120, 86, 58));
    p.fillRect(shelf.adjusted(0.015, 0.015, -0.015, 0), QColor(82, 58, 40));
    const QColor books[] = {QColor(40, 60, 110), QColor(150, 60, 62),   QColor(210, 170, 70),
                            QColor(60, 110, 80), QColor(200, 200, 190), QColor(90, 90, 95),
                            QColor(176, 110, 70)};
    Random random(23);
    for (double y = shelf.top() + 0.015; y + 0.11 < shelf.bottom(); y += 0.12) {
        for (double x = shelf.left() + 0.02; x < shelf.right() - 0.04;) {
            const double bw = random.uniform(0.01, 0.022);
            const double bh = random.uniform(0.07, 0.098);
            p.fillRect(QRectF(x, y + 0.105 - bh, bw, bh), books[int(random.uniform(0, 6.999))]);
            x += bw + 0.002;
        }
        p.fillRect(QRectF(shelf.left(), y + 0.105, shelf.width(), 0.012), QColor(138, 100, 68));
    }

    // Two pictures, behind the subject's head.
    auto picture = [&](const QRectF& frame) {
        p.fillRect(frame, QColor(60, 50, 45));
        const QRectF art = frame.adjusted(0.02, 0.02, -0.02, -0.02);
        p.fillRect(frame.adjusted(0.008, 0.008, -0.008, -0.008), QColor(240, 235, 225));
        p.fillRect(art, QColor(150, 195, 230));
        p.fillRect(QRectF(art.left(), art.center().y(), art.width(), art.height() / 2),
                   QColor(96, 150, 90));
        p.setBrush(QColor(250, 220, 120));
        p.drawEllipse(QPointF(art.left() + art.width() * 0.7, art.top() + art.height() * 0.3),
                      art.height() * 0.12, art.height() * 0.12);
    };
    p.setPen(Qt::NoPen);
    picture(QRectF(0.98, 0.28, 0.17, 0.15));
    picture(QRectF(1.24, 0.25, 0.13, 0.19));

    // A plant in the corner by the window.
    p.fillRect(QRectF(2.17, roomFloor - 0.11, 0.07, 0.1), QColor(176, 104, 74));
    for (int leaf = 0; leaf < 9; ++leaf) {
        p.setBrush(leaf % 2 ? QColor(60, 120, 70) : QColor(80, 140, 80));
        p.drawEllipse(QPointF(2.205 + random.uniform(-0.06, 0.06),
                              roomFloor - 0.17 + random.uniform(-0.06, 0.05)),
                      0.025, 0.045);
    }
    paintClock(p);
}

void paintRoom(QPainter& p) {
    paintPeriodic(p, paintRoomOnce);
}

// A soft dark oval around an eye: the detector knows a face by its eye band, darker than the
// cheeks and the nose bridge.
void paintEyeShadow(QPainter& p, QPointF centre, QSizeF radii) {
    QRadialGradient socket(0, 0, 1);
    socket.setColorAt(0, QColor(100, 62, 48, 255));
    socket.setColorAt(1, QColor(100, 62, 48, 0));
    p.save();
    p.translate(centre);
    p.scale(radii.width(), radii.height());
    p.setBrush(socket);
    p.drawEllipse(QPointF(0, 0), 1, 1);
    p.restore();
}

// The back camera's subject: a walker's friend in an orange jacket, cut off by the frame's
// bottom edge like a real subject filmed from the chest up.
void paintPerson(QPainter& p) {
    p.translate(0.25, 0.35);
    p.setPen(Qt::NoPen);
    QPainterPath jacket;
    jacket.moveTo(-0.07, -0.09);
    jacket.cubicTo(-0.14, -0.085, -0.19, -0.06, -0.195, 0.03);
    jacket.lineTo(-0.205, 0.55);
    jacket.lineTo(0.205, 0.55);
    jacket.lineTo(0.195, 0.03);
    jacket.cubicTo(0.19, -0.06, 0.14, -0.085, 0.07, -0.09);
    jacket.closeSubpath();
    QLinearGradient orange(0, -0.09, 0, 0.55);
    orange.setColorAt(0, QColor(245, 112, 42));
    orange.setColorAt(1, QColor(222, 86, 30));
    p.setBrush(orange);
    p.drawPath(jacket);
    // Sleeves a shade darker than the chest, then the arm creases and the zip.
    p.save();
    p.setClipPath(jacket);
    for (double x : {-0.21, 0.15})
        p.fillRect(QRectF(x, -0.1, 0.06, 0.7), QColor(214, 88, 32));
    p.restore();
    for (double x : {-0.15, 0.15})
        p.fillRect(QRectF(x - 0.003, 0.0, 0.006, 0.55), QColor(186, 68, 24));
    p.fillRect(QRectF(-0.003, -0.02, 0.006, 0.57), QColor(70, 60, 56));

    p.setBrush(QColor(212, 160, 128));
    p.drawRect(QRectF(-0.03, -0.135, 0.06, 0.07));
    QPainterPath shirt;
    shirt.moveTo(-0.045, -0.088);
    shirt.lineTo(0.045, -0.088);
    shirt.lineTo(0, -0.015);
    shirt.closeSubpath();
    p.setBrush(QColor(238, 238, 232));
    p.drawPath(shirt);
    QPainterPath collar;
    collar.moveTo(-0.075, -0.092);
    collar.lineTo(-0.04, -0.092);
    collar.lineTo(-0.004, -0.01);
    collar.lineTo(-0.045, -0.04);
    collar.closeSubpath();
    p.setBrush(QColor(200, 76, 28));
    p.drawPath(collar);
    p.drawPath(QTransform::fromScale(-1, 1).map(collar));

    p.setBrush(QColor(60, 42, 35));
    p.drawEllipse(QPointF(0, -0.212), 0.066, 0.078);
    p.setBrush(QColor(224, 172, 140));
    p.drawEllipse(QPointF(-0.062, -0.19), 0.012, 0.02);
    p.drawEllipse(QPointF(0.062, -0.19), 0.012, 0.02);
    p.drawEllipse(QPointF(0, -0.185), 0.058, 0.07);
    p.setBrush(QColor(60, 42, 35));
    p.drawEllipse(QPointF(0.01, -0.245), 0.062, 0.032);
    // Shadowed eyes under brows, a lit nose bridge and the shade under the nose.
    for (double x : {-0.024, 0.024})
        paintEyeShadow(p, QPointF(x, -0.195), QSizeF(0.027, 0.02));
    p.setBrush(QColor(244, 204, 172));
    p.drawEllipse(QPointF(0, -0.18), 0.006, 0.02);
    p.setBrush(QColor(176, 118, 94));
    p.drawEllipse(QPointF(0, -0.163), 0.012, 0.0045);
    p.setBrush(QColor(40, 32, 30));
    p.drawEllipse(QPointF(-0.024, -0.194), 0.0075, 0.0075);
    p.drawEllipse(QPointF(0.024, -0.194), 0.0075, 0.0075);
    p.setPen(QPen(QColor(64, 44, 36), 0.007, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(-0.036, -0.207), QPointF(-0.011, -0.209));
    p.drawLine(QPointF(0.011, -0.209), QPointF(0.036, -0.207));
    p.setPen(QPen(QColor(130, 60, 56), 0.007, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    QPainterPath smile;
    smile.moveTo(-0.02, -0.146);
    smile.quadTo(0, -0.134, 0.02, -0.146);
    p.drawPath(smile);
}

// The front camera's subject: the user's own face, close.
void paintFace(QPainter& p) {
    p.translate(0.35, 0.45);
    p.setPen(Qt::NoPen);
    QPainterPath shirt;
    shirt.moveTo(-0.07, 0.13);
    shirt.cubicTo(-0.2, 0.14, -0.3, 0.18, -0.315, 0.32);
    shirt.lineTo(-0.33, 0.55);
    shirt.lineTo(0.33, 0.55);
    shirt.lineTo(0.315, 0.32);
    shirt.cubicTo(0.3, 0.18, 0.2, 0.14, 0.07, 0.13);
    shirt.closeSubpath();
    p.setBrush(QColor(38, 132, 140));
    p.drawPath(shirt);
    p.setBrush(QColor(200, 150, 120));
    p.drawRect(QRectF(-0.055, 0.04, 0.11, 0.1));
    p.setBrush(QColor(30, 104, 112));
    p.drawEllipse(QPointF(0, 0.135), 0.075, 0.03);
    p.setBrush(QColor(206, 156, 126));
    p.drawEllipse(QPointF(0, 0.13), 0.062, 0.022);

    p.setBrush(QColor(58, 40, 32));
    p.drawEllipse(QPointF(0, -0.085), 0.145, 0.178);
    p.setBrush(QColor(228, 180, 148));
    p.drawEllipse(QPointF(-0.118, -0.02), 0.02, 0.036);
    p.drawEllipse(QPointF(0.118, -0.02), 0.02, 0.036);
    p.drawEllipse(QPointF(0, -0.02), 0.118, 0.15);
    p.setBrush(QColor(58, 40, 32));
    p.drawEllipse(QPointF(0.025, -0.15), 0.12, 0.058);

    QRadialGradient blush(0, 0, 1);
    blush.setColorAt(0, QColor(236, 140, 130, 110));
    blush.setColorAt(1, QColor(236, 140, 130, 0));
    for (double x : {-0.065, 0.065}) {
        p.save();
        p.translate(x, 0.03);
        p.scale(0.03, 0.022);
        p.setBrush(blush);
        p.drawEllipse(QPointF(0, 0), 1, 1);
        p.restore();
    }
    for (double x : {-0.045, 0.045})
        paintEyeShadow(p, QPointF(x, -0.04), QSizeF(0.05, 0.036));
    for (double x : {-0.045, 0.045}) {
        p.setBrush(QColor(214, 204, 194));
        p.drawEllipse(QPointF(x, -0.035), 0.021, 0.011);
        p.setBrush(QColor(58, 70, 44));
        p.drawEllipse(QPointF(x, -0.035), 0.011, 0.011);
        p.setBrush(QColor(20, 20, 20));
        p.drawEllipse(QPointF(x, -0.035), 0.0045, 0.0045);
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(x + 0.003, -0.038), 0.002, 0.002);
    }
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(64, 44, 36), 0.014, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(-0.07, -0.066), QPointF(-0.022, -0.07));
    p.drawLine(QPointF(0.022, -0.07), QPointF(0.07, -0.066));
    // A lit nose bridge between the shadowed eyes, and the shade under the nose.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(244, 204, 172));
    p.drawEllipse(QPointF(0, -0.015), 0.012, 0.04);
    p.setBrush(QColor(176, 118, 94));
    p.drawEllipse(QPointF(0, 0.04), 0.024, 0.009);
    p.setPen(QPen(QColor(196, 146, 116), 0.005, Qt::SolidLine, Qt::RoundCap));
    QPainterPath nose;
    nose.moveTo(0.002, -0.02);
    nose.lineTo(-0.01, 0.032);
    nose.lineTo(0.008, 0.036);
    p.drawPath(nose);
    p.setPen(QPen(QColor(140, 56, 56), 0.014, Qt::SolidLine, Qt::RoundCap));
    QPainterPath smile;
    smile.moveTo(-0.042, 0.068);
    smile.quadTo(0, 0.1, 0.042, 0.068);
    p.drawPath(smile);
}

constexpr LayerLayout cityLayout{backgroundWidth, backgroundHeight, backgroundAxisX,
                                 backgroundAxisY, backgroundLevels, true,
                                 paintCity};
constexpr LayerLayout roomLayout{backgroundWidth, backgroundHeight, backgroundAxisX,
                                 backgroundAxisY, backgroundLevels, true,
                                 paintRoom};
constexpr LayerLayout personLayout{0.5, 0.9, 0.25, 0.35, subjectLevels, false, paintPerson};
constexpr LayerLayout faceLayout{0.7, 1.0, 0.35, 0.45, subjectLevels, false, paintFace};

} // namespace

// --- Per-frame rendering ----------------------------------------------------------------------

struct VirtualCameraSource::Renderer::Scene {
    int frameHeight;
    Layer background;
    Layer subject;
};

namespace {

using Scene = VirtualCameraSource::Renderer::Scene;

// Textures scale with the frame height only: all our formats are 16:9.
std::shared_ptr<const Scene> sharedScene(int height, bool front) {
    static std::mutex mutex; // guards cache; held while building so a scene is built once
    static std::map<std::pair<int, bool>, std::weak_ptr<const Scene>> cache;
    std::lock_guard lock(mutex);
    std::weak_ptr<const Scene>& entry = cache[{height, front}];
    if (std::shared_ptr<const Scene> scene = entry.lock())
        return scene;
    GST_DEBUG("building the %s scene for height %d", front ? "front" : "back", height);
    auto scene = std::make_shared<const Scene>(
        Scene{height, buildLayer(front ? roomLayout : cityLayout, height),
              buildLayer(front ? faceLayout : personLayout, height)});
    entry = scene;
    return scene;
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
    const Texture* texture;
    double axisX, axisY; // level texels
    double stepX, stepY; // level texels per output pixel
};

Sampling sampling(const Layer& layer, int frameHeight, double distanceRatio) {
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

template <bool withGain>
void drawOpaqueRows(const OutputPlane& out, const uint8_t* texels, int texelsWidth,
                    const std::vector<int>& columns, const std::vector<int>& rows,
                    const uint8_t* gain) {
    const int* column = columns.data();
    for (int y = 0; y < out.height; ++y) {
        const uint8_t* from = texels + size_t(rows[size_t(y)]) * texelsWidth;
        uint8_t* to = out.data + size_t(y) * out.stride;
        if (out.pixelStride == 1) {
            for (int x = 0; x < out.width; ++x)
                to[x] = withGain ? gain[from[column[x]]] : from[column[x]];
        } else {
            for (int x = 0; x < out.width; ++x)
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
        for (int x = left; x < right; ++x)
            to[x * out.pixelStride] = value;
    }
}

} // namespace

// The scene as last drawn without its clock, for frames whose zoom and torch repeat the last.
struct VirtualCameraSource::Renderer::Kept {
    double zoom = -1;
    bool torch = false;
    bool repeated = false; // the last frame had the zoom and torch of the one before
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    bool valid = false;
    std::vector<uint8_t> planes[3];
    guint64 copied = 0;
};

VirtualCameraSource::Renderer::Renderer(int width, int height, bool front)
    : m_width(width), m_height(height), m_front(front), m_scene(sharedScene(height, front)),
      m_kept(std::make_unique<Kept>()) {}

VirtualCameraSource::Renderer::Renderer(const Renderer& other)
    : m_width(other.m_width), m_height(other.m_height), m_front(other.m_front),
      m_scene(other.m_scene), m_kept(std::make_unique<Kept>()) {}

VirtualCameraSource::Renderer& VirtualCameraSource::Renderer::operator=(const Renderer& other) {
    if (this != &other) {
        m_width = other.m_width;
        m_height = other.m_height;
        m_front = other.m_front;
        m_scene = other.m_scene;
        m_kept = std::make_unique<Kept>();
    }
    return *this;
}

VirtualCameraSource::Renderer::~Renderer() = default;

guint64 VirtualCameraSource::Renderer::framesCopied() const {
    return m_kept->copied;
}

bool VirtualCameraSource::Renderer::render(GstVideoFrame* frame, double zoom, bool torch,
                                           GstClockTime time) const {
    const GstVideoFormat format = GST_VIDEO_FRAME_FORMAT(frame);
    if ((format != GST_VIDEO_FORMAT_I420 && format != GST_VIDEO_FORMAT_NV12) ||
        GST_VIDEO_FRAME_WIDTH(frame) != m_width || GST_VIDEO_FRAME_HEIGHT(frame) != m_height)
        return false;
    OutputPlane planes[3];
    for (int component = 0; component < 3; ++component) {
        planes[component] = {static_cast<uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(frame, component)),
                             GST_VIDEO_FRAME_COMP_STRIDE(frame, component),
                             GST_VIDEO_FRAME_COMP_PSTRIDE(frame, component),
                             GST_VIDEO_FRAME_COMP_WIDTH(frame, component),
                             GST_VIDEO_FRAME_COMP_HEIGHT(frame, component)};
    }

    const Scene& scene = *m_scene;
    const double walker = walkerZoom(zoom);
    const double backgroundRatio = (walker + backgroundDistance) / (1.0 + backgroundDistance);

    // The clock: segments placed on the background plane, so they move and scale with it. It
    // lies clear of the subject, so it is drawn last, over the kept scene as well.
    const auto drawClock = [&] {
        const Layer& layer = scene.background;
        const double period = layer.levels[0].width;
        const double h = clockDigitHeight;
        const double texelsPerPixelX = backgroundRatio * layer.texelsPerUnitX / scene.frameHeight;
        const double texelsPerPixelY = backgroundRatio * layer.texelsPerUnitY / scene.frameHeight;
        const guint64 hundredths = GST_CLOCK_TIME_IS_VALID(time) ? time / (GST_SECOND / 100) : 0;
        char text[16];
        g_snprintf(text, sizeof text, "%02u:%02u.%02u", unsigned(hundredths / 6000 % 100),
                   unsigned(hundredths / 100 % 60), unsigned(hundredths % 100));
        const Ycbcr led = toYcbcr(qRgb(130, 255, 200), 255);
        const uint8_t values[3] = {uint8_t(led.y), uint8_t(led.cb), uint8_t(led.cr)};
        for (int copy = -1; copy <= 1; ++copy) {
            forEachSegment(text, [&](double x, double y, double w, double sh) {
                const double left = (clockLeft + x * h) * layer.texelsPerUnitX + copy * period;
                const double top = (clockTop + y * h) * layer.texelsPerUnitY;
                const double x0 = m_width * 0.5 + (left - layer.axisX) / texelsPerPixelX;
                const double x1 = x0 + w * h * layer.texelsPerUnitX / texelsPerPixelX;
                const double y0 = m_height * 0.5 + (top - layer.axisY) / texelsPerPixelY;
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
        const int rows = plane == 0 ? m_height : (m_height + 1) / 2;
        return size_t(GST_VIDEO_FRAME_PLANE_STRIDE(frame, plane)) * size_t(rows);
    };
    Kept& kept = *m_kept;
    kept.repeated = zoom == kept.zoom && torch == kept.torch;
    if (!kept.repeated)
        kept.valid = false;
    kept.zoom = zoom;
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

    thread_local std::vector<int> columns, rows;
    for (int component = 0; component < 3; ++component) {
        const OutputPlane& out = planes[component];
        const Texture& texture = *background.texture;
        const double scale = component ? 0.5 : 1.0;
        texelIndices(out.width, background.axisX * scale, background.stepX,
                     texture.widthOf(component), Edge::wrap, columns);
        texelIndices(out.height, background.axisY * scale, background.stepY,
                     texture.heightOf(component), Edge::clamp, rows);
        const uint8_t* texels = texture.samples[size_t(component)].data();
        if (torch && component == 0)
            drawOpaqueRows<true>(out, texels, texture.widthOf(0), columns, rows,
                                 backgroundGain.data());
        else
            drawOpaqueRows<false>(out, texels, texture.widthOf(component), columns, rows, nullptr);
    }

    for (int component = 0; component < 3; ++component) {
        const OutputPlane& out = planes[component];
        const Texture& texture = *subject.texture;
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
        const auto [x0, x1] = span(columns);
        const auto [y0, y1] = span(rows);
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

// --- The element --------------------------------------------------------------------------------

namespace {

struct SourceState {
    // Guarded by the object lock: the properties, the frame wait that unlock() cancels, and
    // whether it did.
    double zoom = 1.0;
    bool torch = false;
    bool front = false;
    GstClockID pendingWait = nullptr;
    bool flushing = false;
    // One frame's time at the negotiated rate, for latency queries from any thread; none before
    // the caps are set.
    GstClockTime frameDuration = GST_CLOCK_TIME_NONE;

    // Streaming thread only (and start/stop, which run while it does not).
    GstVideoInfo info{};
    std::optional<VirtualCameraSource::Renderer> renderer;
    // Frames are slots on the running clock from epoch on; a frame whose slot has passed is gone.
    GstClockTime epoch = GST_CLOCK_TIME_NONE;
    guint64 nextSlot = 0;
};

struct TessaroVirtualCam {
    GstPushSrc parent;
    SourceState* state;
};

struct TessaroVirtualCamClass {
    GstPushSrcClass parentClass;
};

enum { PROP_0, PROP_ZOOM, PROP_TORCH, PROP_FRONT };

G_DEFINE_TYPE(TessaroVirtualCam, tessaro_virtual_cam, GST_TYPE_PUSH_SRC)

TessaroVirtualCam* self(gpointer object) {
    return reinterpret_cast<TessaroVirtualCam*>(object);
}

// Locks the element's object lock for a scope.
class ObjectLocker {
public:
    explicit ObjectLocker(gpointer object) : m_object(GST_OBJECT(object)) {
        GST_OBJECT_LOCK(m_object);
    }
    ~ObjectLocker() { GST_OBJECT_UNLOCK(m_object); }
    ObjectLocker(const ObjectLocker&) = delete;
    ObjectLocker& operator=(const ObjectLocker&) = delete;

private:
    GstObject* m_object;
};

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    SourceState& state = *self(object)->state;
    ObjectLocker lock(object);
    switch (id) {
    case PROP_ZOOM:
        state.zoom = g_value_get_double(value);
        break;
    case PROP_TORCH:
        state.torch = g_value_get_boolean(value);
        break;
    case PROP_FRONT:
        state.front = g_value_get_boolean(value);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    SourceState& state = *self(object)->state;
    ObjectLocker lock(object);
    switch (id) {
    case PROP_ZOOM:
        g_value_set_double(value, state.zoom);
        break;
    case PROP_TORCH:
        g_value_set_boolean(value, state.torch);
        break;
    case PROP_FRONT:
        g_value_set_boolean(value, state.front);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void finalize(GObject* object) {
    delete self(object)->state;
    G_OBJECT_CLASS(tessaro_virtual_cam_parent_class)->finalize(object);
}

GstCaps* fixate(GstBaseSrc* source, GstCaps* caps) {
    caps = gst_caps_make_writable(caps);
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure* structure = gst_caps_get_structure(caps, i);
        gst_structure_fixate_field_string(structure, "format", "I420");
        gst_structure_fixate_field_nearest_int(structure, "width", 1920);
        gst_structure_fixate_field_nearest_int(structure, "height", 1080);
        gst_structure_fixate_field_nearest_fraction(structure, "framerate", 30, 1);
    }
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->fixate(source, caps);
}

gboolean setCaps(GstBaseSrc* source, GstCaps* caps) {
    SourceState& state = *self(source)->state;
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps) || info.fps_n <= 0 || info.fps_d <= 0) {
        GST_ERROR_OBJECT(source, "unusable caps %" GST_PTR_FORMAT, caps);
        return FALSE;
    }
    bool front;
    {
        ObjectLocker lock(source);
        front = state.front;
        state.frameDuration = gst_util_uint64_scale_int(GST_SECOND, info.fps_d, info.fps_n);
    }
    state.info = info;
    // The textures are made here, once, rather than on the first frame.
    state.renderer.emplace(info.width, info.height, front);
    gst_base_src_set_blocksize(source, guint(info.size));
    GST_DEBUG_OBJECT(source, "negotiated %" GST_PTR_FORMAT, caps);
    return TRUE;
}

gboolean decideAllocation(GstBaseSrc* source, GstQuery* query) {
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstVideoInfo info;
    if (!caps || !gst_video_info_from_caps(&info, caps))
        return FALSE;
    GstBufferPool* pool = nullptr;
    guint size = guint(info.size), minimum = 0, maximum = 0;
    const bool update = gst_query_get_n_allocation_pools(query) > 0;
    if (update) {
        gst_query_parse_nth_allocation_pool(query, 0, &pool, &size, &minimum, &maximum);
        size = std::max(size, guint(info.size));
    }
    if (!pool)
        pool = gst_video_buffer_pool_new();
    GstStructure* config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, caps, size, minimum, maximum);
    if (gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr))
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    gst_buffer_pool_set_config(pool, config);
    if (update)
        gst_query_set_nth_allocation_pool(query, 0, pool, size, minimum, maximum);
    else
        gst_query_add_allocation_pool(query, pool, size, minimum, maximum);
    gst_object_unref(pool);
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->decide_allocation(source, query);
}

gboolean start(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    state.epoch = GST_CLOCK_TIME_NONE;
    state.nextSlot = 0;
    return TRUE;
}

gboolean stop(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    {
        ObjectLocker lock(source);
        state.frameDuration = GST_CLOCK_TIME_NONE;
    }
    state.renderer.reset();
    state.epoch = GST_CLOCK_TIME_NONE;
    return TRUE;
}

gboolean unlock(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    ObjectLocker lock(source);
    state.flushing = true;
    if (state.pendingWait)
        gst_clock_id_unschedule(state.pendingWait);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    ObjectLocker lock(source);
    state.flushing = false;
    return TRUE;
}

gboolean query(GstBaseSrc* source, GstQuery* query) {
    SourceState& state = *self(source)->state;
    if (GST_QUERY_TYPE(query) == GST_QUERY_LATENCY) {
        // Asked from any thread, while the streaming thread may be negotiating: only what the
        // object lock guards is read.
        GstClockTime frame;
        {
            ObjectLocker lock(source);
            frame = state.frameDuration;
        }
        if (!GST_CLOCK_TIME_IS_VALID(frame))
            return FALSE;
        // A frame is an exposure of one frame time, stamped with its start. Nothing here holds
        // frames back, so there is no upper bound.
        gst_query_set_latency(query, TRUE, frame, GST_CLOCK_TIME_NONE);
        return TRUE;
    }
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->query(source, query);
}

GstClockTime slotTime(const SourceState& state, guint64 slot) {
    return state.epoch + gst_util_uint64_scale(slot, GST_SECOND * guint64(state.info.fps_d),
                                               guint64(state.info.fps_n));
}

// Waits for the next frame slot on the pipeline clock, like a sensor delivering frames at its own
// pace. A caller that comes late gets the newest slot: the frames in between are dropped, never
// delivered in a hurry. Sets *slot; FLUSHING when unlock() interrupts.
GstFlowReturn waitForSlot(GstElement* element, SourceState& state, guint64* slot) {
    g_autoptr(GstClock) clock = gst_element_get_clock(element);
    if (!clock) {
        // Outside a running pipeline there is no time to keep: frames come as asked.
        if (!GST_CLOCK_TIME_IS_VALID(state.epoch))
            state.epoch = 0;
        *slot = state.nextSlot++;
        return GST_FLOW_OK;
    }
    const GstClockTime base = gst_element_get_base_time(element);
    const GstClockTime now = gst_clock_get_time(clock);
    const GstClockTime running = now > base ? now - base : 0;
    if (!GST_CLOCK_TIME_IS_VALID(state.epoch)) {
        state.epoch = running;
        state.nextSlot = 0;
    }
    const GstClockTime due = slotTime(state, state.nextSlot);
    if (running < due) {
        GstClockID wait = gst_clock_new_single_shot_id(clock, base + due);
        {
            ObjectLocker lock(element);
            if (state.flushing) {
                gst_clock_id_unref(wait);
                return GST_FLOW_FLUSHING;
            }
            state.pendingWait = wait;
        }
        const GstClockReturn result = gst_clock_id_wait(wait, nullptr);
        {
            ObjectLocker lock(element);
            state.pendingWait = nullptr;
        }
        gst_clock_id_unref(wait);
        if (result == GST_CLOCK_UNSCHEDULED)
            return GST_FLOW_FLUSHING;
        *slot = state.nextSlot;
    } else {
        *slot = std::max(state.nextSlot,
                         gst_util_uint64_scale(running - state.epoch, guint64(state.info.fps_n),
                                               GST_SECOND * guint64(state.info.fps_d)));
        if (*slot > state.nextSlot)
            GST_DEBUG_OBJECT(element, "late: dropped %" G_GUINT64_FORMAT " frames",
                             *slot - state.nextSlot);
    }
    state.nextSlot = *slot + 1;
    return GST_FLOW_OK;
}

GstFlowReturn fill(GstPushSrc* pushSource, GstBuffer* buffer) {
    GstElement* element = GST_ELEMENT(pushSource);
    SourceState& state = *self(pushSource)->state;
    if (!state.renderer)
        return GST_FLOW_NOT_NEGOTIATED;
    guint64 slot = 0;
    const GstFlowReturn waited = waitForSlot(element, state, &slot);
    if (waited != GST_FLOW_OK)
        return waited;

    double zoom;
    bool torch, front;
    {
        ObjectLocker lock(element);
        zoom = state.zoom;
        torch = state.torch;
        front = state.front;
    }
    if (front != state.renderer->front())
        state.renderer.emplace(state.info.width, state.info.height, front);

    const GstClockTime pts = slotTime(state, slot);
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &state.info, buffer, GST_MAP_WRITE)) {
        GST_ELEMENT_ERROR(element, RESOURCE, WRITE, (nullptr), ("could not map the frame"));
        return GST_FLOW_ERROR;
    }
    state.renderer->render(&frame, zoom, torch, pts);
    gst_video_frame_unmap(&frame);

    GST_BUFFER_PTS(buffer) = pts;
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(buffer) = slotTime(state, slot + 1) - pts;
    GST_BUFFER_OFFSET(buffer) = slot;
    GST_BUFFER_OFFSET_END(buffer) = slot + 1;
    return GST_FLOW_OK;
}

void tessaro_virtual_cam_class_init(TessaroVirtualCamClass* klass) {
    GObjectClass* objectClass = G_OBJECT_CLASS(klass);
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    objectClass->finalize = finalize;

    const auto flags =
        GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        objectClass, PROP_ZOOM,
        g_param_spec_double("zoom", "Zoom",
                            "The zoom factor applied downstream, which the walker follows "
                            "(below 1 counts as 1)",
                            -G_MAXDOUBLE, G_MAXDOUBLE, 1.0, flags));
    g_object_class_install_property(
        objectClass, PROP_TORCH,
        g_param_spec_boolean("torch", "Torch", "Light the scene", FALSE, flags));
    g_object_class_install_property(
        objectClass, PROP_FRONT,
        g_param_spec_boolean("front", "Front", "Show the front camera's scene", FALSE, flags));

    GstElementClass* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(
        elementClass, "Tessaro virtual camera", "Source/Video",
        "A rendered dolly-zoom scene whose walker follows the zoom", "Tessaro");
    GstCaps* caps = VirtualCameraSource::caps();
    gst_element_class_add_pad_template(
        elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    GstBaseSrcClass* baseClass = GST_BASE_SRC_CLASS(klass);
    baseClass->fixate = fixate;
    baseClass->set_caps = setCaps;
    baseClass->decide_allocation = decideAllocation;
    baseClass->start = start;
    baseClass->stop = stop;
    baseClass->unlock = unlock;
    baseClass->unlock_stop = unlockStop;
    baseClass->query = query;
    GST_PUSH_SRC_CLASS(klass)->fill = fill;
}

void tessaro_virtual_cam_init(TessaroVirtualCam* source) {
    source->state = new SourceState;
    GstBaseSrc* base = GST_BASE_SRC(source);
    gst_base_src_set_live(base, TRUE);
    gst_base_src_set_format(base, GST_FORMAT_TIME);
}

} // namespace

void VirtualCameraSource::registerElement() {
    static std::once_flag once;
    std::call_once(once, [] {
        GST_DEBUG_CATEGORY_INIT(tessaro_virtual_cam_debug, "tessaravirtualcam", 0,
                                "Tessaro virtual camera");
        if (!gst_element_register(nullptr, factoryName, GST_RANK_NONE,
                                  tessaro_virtual_cam_get_type()))
            g_error("could not register the %s element", factoryName);
    });
}

GstElement* VirtualCameraSource::create(const char* name) {
    registerElement();
    return gst_element_factory_make(factoryName, name);
}

std::span<const VirtualFormat> VirtualCameraSource::formats() {
    return formatTable;
}

GstCaps* VirtualCameraSource::caps() {
    GstCaps* caps = gst_caps_new_empty();
    for (const VirtualFormat& format : formatTable) {
        GValue formats = G_VALUE_INIT;
        g_value_init(&formats, GST_TYPE_LIST);
        for (const char* name : {"I420", "NV12"}) {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, G_TYPE_STRING);
            g_value_set_static_string(&value, name);
            gst_value_list_append_and_take_value(&formats, &value);
        }
        GstStructure* structure = gst_structure_new_empty("video/x-raw");
        gst_structure_take_value(structure, "format", &formats);
        gst_structure_set(structure, "width", G_TYPE_INT, format.width, "height", G_TYPE_INT,
                          format.height, "framerate", GST_TYPE_FRACTION_RANGE, format.minFps, 1,
                          format.maxFps, 1, "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr);
        gst_caps_append_structure(caps, structure);
    }
    return caps;
}

} // namespace av
