#include "platform/av/SystemCaptureDevice.h"
#include "platform/av/Gst.h"

#include <gtest/gtest.h>

namespace {

std::vector<av::CaptureDeviceFormat> formatsOf(const char* caps) {
    av::Gst::ensureInitialized();
    const av::GstHandle<GstCaps> parsed(gst_caps_from_string(caps), av::GstRef::adopt);
    return av::SystemCaptureDevice::formatsFromCaps(parsed.get());
}

// What a typical webcam lists: raw and compressed formats, discrete rates, in its own order.
TEST(SystemCaptureDeviceFormats, keepTheDeviceOrderAndItsRates) {
    const auto formats =
        formatsOf("video/x-raw, format=YUY2, width=640, height=480, framerate={ 30/1, 15/1 }; "
                  "image/jpeg, width=1920, height=1080, framerate=30/1; "
                  "video/x-raw, format=NV12, width=640, height=480, framerate=30/1; "
                  "video/x-raw, format=YUY2, width=1280, height=720, framerate=[ 1/1, 10/1 ]");
    ASSERT_EQ(formats.size(), 3u);
    EXPECT_EQ(formats[0].width, 640);
    EXPECT_EQ(formats[0].mediaType, QStringLiteral("video/x-raw"));
    EXPECT_EQ(formats[0].videoSupportedFrameRateRanges,
              (std::vector<av::FrameRateRange>{{30, 30}, {15, 15}}));
    EXPECT_EQ(formats[1].height, 1080);
    EXPECT_EQ(formats[1].mediaType, QStringLiteral("image/jpeg"));
    EXPECT_EQ(formats[2].videoSupportedFrameRateRanges, (std::vector<av::FrameRateRange>{{1, 10}}));
}

TEST(SystemCaptureDeviceFormats, greyAndUnsizedCapsAreNotFormats) {
    EXPECT_TRUE(
        formatsOf("video/x-raw, format=GRAY8, width=640, height=360, framerate=15/1").empty());
    EXPECT_TRUE(
        formatsOf("video/x-raw, format=YUY2, width=[ 1, 4096 ], height=[ 1, 2160 ]").empty());
    const auto ntsc =
        formatsOf("video/x-raw, format=YUY2, width=720, height=480, framerate=30000/1001");
    ASSERT_EQ(ntsc.size(), 1u);
    EXPECT_NEAR(ntsc[0].videoSupportedFrameRateRanges[0].maxFrameRate, 29.97, 0.001);
}

} // namespace
