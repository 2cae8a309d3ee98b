// The virtual camera draws only the centre its session's zoom stage keeps.
#include "platform/av/GstHandle.h"
#include "platform/av/VirtualCameraSource.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using av::GstHandle;
using av::GstRef;
using av::VirtualCameraRenderer;
using av::VirtualCameraSource;

constexpr int width = 1280, height = 720;

// The luma plane of an I420 frame drawn at a zoom, with the stage downstream cropping to cropZoom.
std::vector<std::uint8_t> lumaDrawn(const VirtualCameraRenderer& renderer, double zoom,
                                    double cropZoom) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, width, height);
    GstHandle<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr),
                                GstRef::adopt);
    gst_buffer_memset(buffer.get(), 0, 0x5a, info.size);
    GstVideoFrame frame;
    EXPECT_TRUE(gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_READWRITE));
    EXPECT_TRUE(renderer.render(&frame, zoom, false, 0, cropZoom));
    std::vector<std::uint8_t> luma(size_t(width) * height);
    const auto* data = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    for (int y = 0; y < height; ++y)
        std::copy_n(data + size_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), width,
                    luma.begin() + ptrdiff_t(y) * width);
    gst_video_frame_unmap(&frame);
    return luma;
}

// What a stage cropping to 1/zoom shows is drawn exactly as in a whole frame; the corners, which
// it never shows, are black instead of whatever the buffer held.
class VirtualCameraCrop : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!gst_is_initialized())
            gst_init(nullptr, nullptr);
        VirtualCameraSource::registerElement();
    }
};

TEST_F(VirtualCameraCrop, drawsWhatTheZoomStageKeepsAndBlackensTheRest) {
    const VirtualCameraRenderer renderer(width, height, false);
    for (double zoom : {1.0, 1.3, 3.0, 16.0, 40.0}) {
        SCOPED_TRACE(zoom);
        const std::vector<std::uint8_t> whole = lumaDrawn(renderer, zoom, 1.0);
        const std::vector<std::uint8_t> cropped = lumaDrawn(renderer, zoom, zoom);
        const double keptHalfWidth = 0.5 * width / std::min(zoom, 16.0) + 1;
        const double keptHalfHeight = 0.5 * height / std::min(zoom, 16.0) + 1;
        int differing = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (std::abs(x + 0.5 - width / 2.0) <= keptHalfWidth &&
                    std::abs(y + 0.5 - height / 2.0) <= keptHalfHeight)
                    differing += whole[size_t(y) * width + x] != cropped[size_t(y) * width + x];
        EXPECT_EQ(differing, 0);
        const std::uint8_t corner = cropped.front();
        EXPECT_EQ(corner, zoom < 1.1 ? whole.front() : 16);
        EXPECT_EQ(cropped.back(), zoom < 1.1 ? whole.back() : 16);
    }
    // A zoom the stage takes as 1 crops nothing.
    const std::vector<std::uint8_t> nan = lumaDrawn(renderer, 3.0, std::nan(""));
    EXPECT_EQ(nan.front(), lumaDrawn(renderer, 3.0, 1.0).front());
}

// A zoom written and overwritten between two frames may be the one the stage gives the next
// frame, so that frame is drawn for the lower of the two.
TEST_F(VirtualCameraCrop, aZoomWrittenBetweenFramesWidensTheNextOne) {
    GstHandle<GstElement> pipeline(
        gst_parse_launch("tessaravirtualcam name=camera zoom=4 zoom-crops=true ! "
                         "video/x-raw,format=I420,width=1280,height=720,framerate=60/1 ! "
                         "appsink name=sink max-buffers=2 sync=false",
                         nullptr),
        GstRef::adopt);
    ASSERT_TRUE(pipeline);
    GstHandle<GstElement> camera(gst_bin_get_by_name(GST_BIN(pipeline.get()), "camera"),
                                 GstRef::adopt);
    GstHandle<GstElement> sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"), GstRef::adopt);
    ASSERT_NE(gst_element_set_state(pipeline.get(), GST_STATE_PLAYING), GST_STATE_CHANGE_FAILURE);
    // The corner's luma: 16 where the frame was cropped.
    const auto nextCorner = [&] {
        GstHandle<GstSample> sample(
            gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), 5 * GST_SECOND), GstRef::adopt);
        if (!sample)
            return -1;
        GstMapInfo map;
        gst_buffer_map(gst_sample_get_buffer(sample.get()), &map, GST_MAP_READ);
        const int corner = map.data[0];
        gst_buffer_unmap(gst_sample_get_buffer(sample.get()), &map);
        return corner;
    };
    int corner = nextCorner();
    for (int frames = 0; corner != 16 && corner >= 0 && frames < 10; ++frames)
        corner = nextCorner();
    ASSERT_EQ(corner, 16) << "frames at zoom 4 keep their corners";
    g_object_set(camera.get(), "zoom", 1.0, nullptr);
    g_object_set(camera.get(), "zoom", 4.0, nullptr);
    bool widened = false;
    for (int frames = 0; !widened && frames < 6; ++frames)
        widened = nextCorner() > 16;
    EXPECT_TRUE(widened);
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
}

} // namespace
