#pragma once

// What the camera tests share: frames made from a pattern, a frame's samples copied out, and a
// pipeline's parts and clock.

#include "platform/av/GstHandle.h"

#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
// A picture as a function of component (Y, U, V) and sample position in its plane.
using Pattern = std::function<double(int component, double x, double y)>;

// One video frame's layout, and every sample of it visited with its component and position.
struct Layout {
    Layout(GstVideoFormat format, int width, int height) {
        gst_video_info_set_format(&info, format, guint(width), guint(height));
    }
    template <typename Visit> void forEachSample(Visit visit) const {
        for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info); ++plane) {
            const int pixelStride = GST_VIDEO_INFO_COMP_PSTRIDE(&info, plane);
            const int width = GST_VIDEO_INFO_COMP_WIDTH(&info, plane);
            const int height = GST_VIDEO_INFO_COMP_HEIGHT(&info, plane);
            for (int y = 0; y < height; ++y) {
                for (int byte = 0; byte < width * pixelStride; ++byte)
                    visit(int(plane) + byte % pixelStride, byte / pixelStride, y, width, height,
                          info.offset[plane] + gsize(y * info.stride[plane] + byte));
            }
        }
    }
    // The padding after rows and planes is set to `padding`, so that a frame never holds
    // uninitialised bytes and a read outside a plane shows.
    GstBuffer* frame(const Pattern& pattern, GstClockTime pts = 0, std::uint8_t padding = 0) const {
        GstBuffer* buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_WRITE);
        std::memset(map.data, padding, map.size);
        forEachSample([&](int component, int x, int y, int, int, gsize offset) {
            map.data[offset] = std::uint8_t(std::lround(pattern(component, x, y)));
        });
        gst_buffer_unmap(buffer, &map);
        GST_BUFFER_PTS(buffer) = pts;
        return buffer;
    }
    // A frame's samples without its padding, which the element leaves as its buffer pool made it.
    Bytes picture(const Bytes& frame) const {
        Bytes samples;
        forEachSample(
            [&](int, int, int, int, int, gsize offset) { samples.push_back(frame.at(offset)); });
        return samples;
    }
    GstVideoInfo info;
};

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
