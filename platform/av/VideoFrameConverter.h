#pragma once

#include <QImage>
#include <QRectF>

#include <gst/gst.h>
#include <gst/video/video.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace av {

// Turns a camera frame (I420) into an RGB picture of the size it is shown at. Upright pictures are
// scaled with GStreamer's converter, filtering linearly (no aliasing on a downscaled preview);
// turned ones read, for each output pixel, its nearest source pixel. Either way only the part of
// the frame that lands in the picture is read.
class VideoFrameConverter {
public:
    // Draws the frame into an RGB32 image of imageSize, turned clockwise by rotationDegrees (0,
    // 90, 180 or 270) so that the turned frame covers target (in image pixels; it may reach past
    // the image); the rest of the image is black. The image's memory is reused when it has the
    // size already. False, and the image untouched, for a frame that is not I420.
    bool convert(GstSample* sample, const QSize& imageSize, const QRectF& target,
                 int rotationDegrees, QImage* image);

private:
    bool scaleSmoothly(GstVideoFrame* frame, const QRectF& target, const QRect& shown,
                       QImage* image);
    struct SmoothKey {
        int width = 0, height = 0;
        GstVideoColorMatrix matrix = GST_VIDEO_COLOR_MATRIX_UNKNOWN;
        GstVideoColorRange range = GST_VIDEO_COLOR_RANGE_UNKNOWN;
        QSize image;
        QRect source, shown;
        bool operator==(const SmoothKey&) const = default;
    };
    struct FreeConverter {
        void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
    };
    std::unique_ptr<GstVideoConverter, FreeConverter> smooth;
    SmoothKey smoothKey;

    // Levels out per level in, in 1/65536.
    struct Coefficients {
        GstVideoColorMatrix matrix = GST_VIDEO_COLOR_MATRIX_UNKNOWN;
        GstVideoColorRange range = GST_VIDEO_COLOR_RANGE_UNKNOWN;
        std::int32_t blackLevel = 16;
        std::int32_t luma = 0, redFromV = 0, greenFromU = 0, greenFromV = 0, blueFromU = 0;
    };
    void prepareCoefficients(const GstVideoColorimetry& colorimetry);

    Coefficients coefficients;
    // Per output row and column: plane offsets of the source pixel, rebuilt per frame.
    std::vector<std::int32_t> rowY, rowU, rowV, columnY, columnU, columnV;
    // One output row's source samples, gathered so the colour arithmetic runs on whole rows.
    std::vector<std::uint8_t> lineY, lineU, lineV;
};

} // namespace av
