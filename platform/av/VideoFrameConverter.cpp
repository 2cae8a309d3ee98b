#include "platform/av/VideoFrameConverter.h"

#include "platform/av/GstHandle.h"

#include <algorithm>
#include <cmath>

namespace av {

namespace {

// Where the centre of output pixel `index` falls across target, from 0 to 1.
double across(int index, double origin, double extent) {
    return (index + 0.5 - origin) / extent;
}

int sourceIndex(double fraction, int size) {
    return std::clamp(int(std::floor(fraction * size)), 0, size - 1);
}

inline std::uint32_t level(std::int32_t fixed) {
    const std::int32_t value = fixed >> 16;
    return std::uint32_t(value < 0 ? 0 : value > 255 ? 255 : value);
}

} // namespace

void VideoFrameConverter::prepareCoefficients(const GstVideoColorimetry& colorimetry) {
    if (coefficients.matrix == colorimetry.matrix && coefficients.range == colorimetry.range)
        return;
    coefficients.matrix = colorimetry.matrix;
    coefficients.range = colorimetry.range;
    gdouble kr = 0.299, kb = 0.114;
    if (!gst_video_color_matrix_get_Kr_Kb(colorimetry.matrix, &kr, &kb))
        kr = 0.299, kb = 0.114;
    const double kg = 1.0 - kr - kb;
    const bool full = colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    const double one = 65536.0;
    const double lumaGain = full ? 1.0 : 255.0 / 219.0;
    const double chromaGain = full ? 1.0 : 255.0 / 224.0;
    auto fixed = [](double value) { return std::int32_t(std::lround(value)); };
    coefficients.blackLevel = full ? 0 : 16;
    coefficients.luma = fixed(lumaGain * one);
    coefficients.redFromV = fixed(2 * (1 - kr) * chromaGain * one);
    coefficients.blueFromU = fixed(2 * (1 - kb) * chromaGain * one);
    coefficients.greenFromU = fixed(-2 * kb * (1 - kb) / kg * chromaGain * one);
    coefficients.greenFromV = fixed(-2 * kr * (1 - kr) / kg * chromaGain * one);
}

bool VideoFrameConverter::convert(GstSample* sample, const QSize& imageSize, const QRectF& target,
                                  int rotationDegrees, QImage* image) {
    GstCaps* caps = sample ? gst_sample_get_caps(sample) : nullptr;
    GstBuffer* buffer = sample ? gst_sample_get_buffer(sample) : nullptr;
    GstVideoInfo info;
    if (!caps || !buffer || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420)
        return false;
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ))
        return false;

    if (image->size() != imageSize || image->format() != QImage::Format_RGB32)
        *image = QImage(imageSize, QImage::Format_RGB32);
    const int width = imageSize.width(), height = imageSize.height();
    // Output pixels whose centre lies in target.
    const int x0 = std::max(0, int(std::ceil(target.left() - 0.5)));
    const int x1 = std::min(width, int(std::ceil(target.right() - 0.5)));
    const int y0 = std::max(0, int(std::ceil(target.top() - 0.5)));
    const int y1 = std::min(height, int(std::ceil(target.bottom() - 0.5)));
    if (x0 > 0 || y0 > 0 || x1 < width || y1 < height || x0 >= x1 || y0 >= y1)
        image->fill(Qt::black);
    if (x0 >= x1 || y0 >= y1 || image->isNull()) {
        gst_video_frame_unmap(&frame);
        return true;
    }

    const int rotation = ((rotationDegrees % 360) + 360) % 360;
    if (rotation == 0 && scaleSmoothly(&frame, target, QRect(x0, y0, x1 - x0, y1 - y0), image)) {
        gst_video_frame_unmap(&frame);
        return true;
    }

    prepareCoefficients(info.colorimetry);
    const int sourceWidth = GST_VIDEO_FRAME_WIDTH(&frame);
    const int sourceHeight = GST_VIDEO_FRAME_HEIGHT(&frame);
    const int strideY = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    const int strideU = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1);
    const int strideV = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 2);
    // A quarter turn makes each output row a source column: the row picks the column, the
    // output column picks the source row.
    const bool quarter = rotation == 90 || rotation == 270;
    rowY.resize(size_t(height));
    rowU.resize(size_t(height));
    rowV.resize(size_t(height));
    columnY.resize(size_t(width));
    columnU.resize(size_t(width));
    columnV.resize(size_t(width));
    for (int y = y0; y < y1; ++y) {
        const double v = across(y, target.top(), target.height());
        if (!quarter) {
            const int sy = sourceIndex(rotation == 180 ? 1 - v : v, sourceHeight);
            rowY[y] = sy * strideY;
            rowU[y] = sy / 2 * strideU;
            rowV[y] = sy / 2 * strideV;
        } else {
            const int sx = sourceIndex(rotation == 90 ? v : 1 - v, sourceWidth);
            rowY[y] = sx;
            rowU[y] = rowV[y] = sx / 2;
        }
    }
    for (int x = x0; x < x1; ++x) {
        const double u = across(x, target.left(), target.width());
        if (!quarter) {
            const int sx = sourceIndex(rotation == 180 ? 1 - u : u, sourceWidth);
            columnY[x] = sx;
            columnU[x] = columnV[x] = sx / 2;
        } else {
            const int sy = sourceIndex(rotation == 90 ? 1 - u : u, sourceHeight);
            columnY[x] = sy * strideY;
            columnU[x] = sy / 2 * strideU;
            columnV[x] = sy / 2 * strideV;
        }
    }

    const auto* planeY = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    const auto* planeU = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1));
    const auto* planeV = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 2));
    uchar* bits = image->bits();
    const qsizetype bytesPerLine = image->bytesPerLine();
    lineY.resize(size_t(width));
    lineU.resize(size_t(width));
    lineV.resize(size_t(width));
    std::uint8_t* const gatheredY = lineY.data();
    std::uint8_t* const gatheredU = lineU.data();
    std::uint8_t* const gatheredV = lineV.data();
    const std::int32_t* const cY = columnY.data();
    const std::int32_t* const cU = columnU.data();
    const std::int32_t* const cV = columnV.data();
    // Locals, so the compiler keeps them in registers and can vectorise the arithmetic.
    const std::int32_t black = coefficients.blackLevel, luma = coefficients.luma;
    const std::int32_t redFromV = coefficients.redFromV, blueFromU = coefficients.blueFromU;
    const std::int32_t greenFromU = coefficients.greenFromU;
    const std::int32_t greenFromV = coefficients.greenFromV;
    for (int y = y0; y < y1; ++y) {
        const std::uint8_t* sourceY = planeY + rowY[y];
        const std::uint8_t* sourceU = planeU + rowU[y];
        const std::uint8_t* sourceV = planeV + rowV[y];
        for (int x = x0; x < x1; ++x) {
            gatheredY[x] = sourceY[cY[x]];
            gatheredU[x] = sourceU[cU[x]];
            gatheredV[x] = sourceV[cV[x]];
        }
        auto* out = reinterpret_cast<std::uint32_t*>(bits + y * bytesPerLine);
        for (int x = x0; x < x1; ++x) {
            const std::int32_t l = (gatheredY[x] - black) * luma + 32768;
            const std::int32_t u = gatheredU[x] - 128;
            const std::int32_t v = gatheredV[x] - 128;
            out[x] = 0xff000000u | level(l + redFromV * v) << 16 |
                     level(l + greenFromU * u + greenFromV * v) << 8 | level(l + blueFromU * u);
        }
    }
    gst_video_frame_unmap(&frame);
    return true;
}

bool VideoFrameConverter::scaleSmoothly(GstVideoFrame* frame, const QRectF& target,
                                        const QRect& shown, QImage* image) {
    const int sourceWidth = GST_VIDEO_FRAME_WIDTH(frame);
    const int sourceHeight = GST_VIDEO_FRAME_HEIGHT(frame);
    // The part of the source that lands in the shown pixels (all of it unless the picture fills
    // the image past its edges).
    const double left = (shown.left() - target.left()) / target.width() * sourceWidth;
    const double top = (shown.top() - target.top()) / target.height() * sourceHeight;
    const double right = (shown.right() + 1 - target.left()) / target.width() * sourceWidth;
    const double bottom = (shown.bottom() + 1 - target.top()) / target.height() * sourceHeight;
    const int sx = std::clamp(int(std::lround(left)), 0, sourceWidth - 1);
    const int sy = std::clamp(int(std::lround(top)), 0, sourceHeight - 1);
    const int sw = std::clamp(int(std::lround(right)), sx + 1, sourceWidth) - sx;
    const int sh = std::clamp(int(std::lround(bottom)), sy + 1, sourceHeight) - sy;

    GstVideoInfo out;
    gst_video_info_set_format(&out, GST_VIDEO_FORMAT_BGRx, guint(image->width()),
                              guint(image->height()));
    if (GST_VIDEO_INFO_PLANE_STRIDE(&out, 0) != image->bytesPerLine())
        return false;
    // The converter changes format and size only; the rest must match the frame.
    out.fps_n = frame->info.fps_n;
    out.fps_d = frame->info.fps_d;
    out.interlace_mode = frame->info.interlace_mode;
    const SmoothKey key{GST_VIDEO_INFO_WIDTH(&frame->info),
                        GST_VIDEO_INFO_HEIGHT(&frame->info),
                        frame->info.colorimetry.matrix,
                        frame->info.colorimetry.range,
                        image->size(),
                        QRect(sx, sy, sw, sh),
                        shown};
    if (!smooth || !(smoothKey == key)) {
        smooth.reset();
        GstStructure* config = gst_structure_new(
            "GstVideoConverter", GST_VIDEO_CONVERTER_OPT_SRC_X, G_TYPE_INT, sx,
            GST_VIDEO_CONVERTER_OPT_SRC_Y, G_TYPE_INT, sy, GST_VIDEO_CONVERTER_OPT_SRC_WIDTH,
            G_TYPE_INT, sw, GST_VIDEO_CONVERTER_OPT_SRC_HEIGHT, G_TYPE_INT, sh,
            GST_VIDEO_CONVERTER_OPT_DEST_X, G_TYPE_INT, shown.x(), GST_VIDEO_CONVERTER_OPT_DEST_Y,
            G_TYPE_INT, shown.y(), GST_VIDEO_CONVERTER_OPT_DEST_WIDTH, G_TYPE_INT, shown.width(),
            GST_VIDEO_CONVERTER_OPT_DEST_HEIGHT, G_TYPE_INT, shown.height(),
            GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
            GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_RESAMPLER_OPT_MAX_TAPS, G_TYPE_INT, 2,
            GST_VIDEO_CONVERTER_OPT_FILL_BORDER, G_TYPE_BOOLEAN, FALSE,
            GST_VIDEO_CONVERTER_OPT_DITHER_METHOD, GST_TYPE_VIDEO_DITHER_METHOD,
            GST_VIDEO_DITHER_NONE, GST_VIDEO_CONVERTER_OPT_THREADS, G_TYPE_UINT, 1u, nullptr);
        GstVideoConverter* made = gst_video_converter_new(&frame->info, &out, config);
        if (!made)
            return false;
        smooth.reset(made);
        smoothKey = key;
    }
    // The image's own memory, lent to GStreamer for the length of the conversion.
    uchar* bits = image->bits();
    const GstHandle<GstBuffer> wrapped(
        gst_buffer_new_wrapped_full(GstMemoryFlags(0), bits, gsize(image->sizeInBytes()), 0,
                                    gsize(image->sizeInBytes()), nullptr, nullptr),
        GstRef::adopt);
    GstVideoFrame target_frame;
    const bool mapped = gst_video_frame_map(&target_frame, &out, wrapped.get(), GST_MAP_WRITE);
    if (mapped) {
        gst_video_converter_frame(smooth.get(), frame, &target_frame);
        gst_video_frame_unmap(&target_frame);
    }
    return mapped;
}

} // namespace av
