#pragma once

#include <QImage>
#include <QRectF>

#include <gst/gst.h>
#include <gst/video/video.h>

#include <cstdint>
#include <vector>

namespace av {

// Turns a camera frame (I420) into an RGB picture of the size it is shown at: only the pixels
// that land in the picture are read, each output pixel from its nearest source pixel, so a
// cropped, downscaled preview costs in proportion to the view, not to the frame.
class VideoFrameConverter {
public:
    // Draws the frame into an RGB32 image of imageSize, turned clockwise by rotationDegrees (0,
    // 90, 180 or 270) so that the turned frame covers target (in image pixels; it may reach past
    // the image); the rest of the image is black. The image's memory is reused when it has the
    // size already. False, and the image untouched, for a frame that is not I420.
    bool convert(GstSample* sample, const QSize& imageSize, const QRectF& target,
                 int rotationDegrees, QImage* image);

private:
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
