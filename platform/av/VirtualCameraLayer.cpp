#include "platform/av/VirtualCameraLayer.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace av {

namespace {

using Texture = VirtualCameraLayer::Texture;
using Ycbcr = VirtualCameraLayer::Ycbcr;

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
                    const Ycbcr c =
                        VirtualCameraLayer::toYcbcr(pixel, opaque ? std::max(qAlpha(pixel), 1) : a);
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

} // namespace

VirtualCameraLayer::Ycbcr VirtualCameraLayer::toYcbcr(QRgb premultiplied, int alpha) {
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

VirtualCameraLayer VirtualCameraLayer::build(const Layout& layout, int frameHeight) {
    // Every level keeps even sizes for its half-size chroma.
    const int align = 1 << layout.levels;
    auto alignedSize = [&](double units) {
        return std::max(align, int(std::lround(units * frameHeight / align)) * align);
    };
    const int w = alignedSize(layout.width);
    const int h = alignedSize(layout.height);
    VirtualCameraLayer layer;
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

} // namespace av
