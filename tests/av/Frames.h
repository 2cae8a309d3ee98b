#pragma once

// What the camera tests share: a frame's samples copied out, and a pipeline's parts and clock.

#include "platform/av/GstHandle.h"

#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

// A frame's planes, copied out: Y at full size, U and V at half size each way.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> planes[3];

    int widthOf(int plane) const { return plane ? width / 2 : width; }
    int heightOf(int plane) const { return plane ? height / 2 : height; }
    std::uint8_t at(int plane, int x, int y) const {
        return planes[plane][size_t(y) * widthOf(plane) + x];
    }
    double meanLuma() const {
        double sum = 0;
        for (std::uint8_t v : planes[0])
            sum += v;
        return sum / double(planes[0].size());
    }
    bool operator==(const Picture&) const = default;
};

inline Picture pictureOf(GstBuffer* buffer, const GstVideoInfo& info) {
    Picture picture;
    picture.width = GST_VIDEO_INFO_WIDTH(&info);
    picture.height = GST_VIDEO_INFO_HEIGHT(&info);
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
        ADD_FAILURE() << "could not map the frame";
        return picture;
    }
    for (int plane = 0; plane < 3; ++plane) {
        const auto* data =
            static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(&frame, plane));
        const int stride = GST_VIDEO_FRAME_COMP_STRIDE(&frame, plane);
        const int pixelStride = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, plane);
        for (int y = 0; y < picture.heightOf(plane); ++y) {
            for (int x = 0; x < picture.widthOf(plane); ++x)
                picture.planes[plane].push_back(data[y * stride + x * pixelStride]);
        }
    }
    gst_video_frame_unmap(&frame);
    return picture;
}

// A sample's picture; an empty one, and a failure, without a sample.
inline Picture pictureOf(GstSample* sample) {
    GstVideoInfo info;
    if (!sample || !gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) {
        ADD_FAILURE() << "no frame";
        return {};
    }
    return pictureOf(gst_sample_get_buffer(sample), info);
}

inline av::GstHandle<GstElement> child(GstElement* bin, const char* name) {
    return av::GstHandle<GstElement>(gst_bin_get_by_name(GST_BIN(bin), name), av::GstRef::adopt);
}

inline GstClockTime runningTime(GstElement* pipeline) {
    const av::GstHandle<GstClock> clock(gst_element_get_clock(pipeline), av::GstRef::adopt);
    return gst_clock_get_time(clock.get()) - gst_element_get_base_time(pipeline);
}
