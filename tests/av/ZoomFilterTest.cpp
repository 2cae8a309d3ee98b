#include "platform/av/ZoomFilter.h"
#include "platform/av/GstHandle.h"
#include "tests/av/Frames.h"

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>
#include <thread>

namespace {

using av::ZoomFilter;
using HarnessHandle = std::unique_ptr<GstHarness, decltype(&gst_harness_teardown)>;

const GstVideoFormat formats[] = {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_NV12};

const Pattern noise = [](int component, double x, double y) {
    return double((component * 7919 + int(x) * 131 + int(y) * 977 + int(x * y)) % 251);
};

class ZoomFilterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        gst_init(nullptr, nullptr);
        ZoomFilter::registerElement();
    }

    static HarnessHandle harness(const Layout& layout) {
        HarnessHandle h(gst_harness_new(ZoomFilter::factoryName), gst_harness_teardown);
        GstCaps* caps = gst_video_info_to_caps(&layout.info);
        gst_harness_set_caps(h.get(), gst_caps_ref(caps), caps);
        return h;
    }

    static Bytes bytes(GstBuffer* buffer) {
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        Bytes result(map.data, map.data + map.size);
        gst_buffer_unmap(buffer, &map);
        return result;
    }

    // Pushes a frame (taking it) and returns the bytes that come out.
    static Bytes pass(GstHarness* h, GstBuffer* input) {
        EXPECT_EQ(gst_harness_push(h, input), GST_FLOW_OK);
        av::GstHandle<GstBuffer> output(gst_harness_pull(h), av::GstRef::adopt);
        return output ? bytes(output.get()) : Bytes{};
    }

    static void setZoom(GstHarness* h, double zoom) {
        g_object_set(h->element, "zoom", zoom, nullptr);
    }
};

std::string describe(const Layout& layout) {
    return std::string(GST_VIDEO_INFO_NAME(&layout.info)) + " " +
           std::to_string(GST_VIDEO_INFO_WIDTH(&layout.info)) + "x" +
           std::to_string(GST_VIDEO_INFO_HEIGHT(&layout.info));
}

// Bit-exact at zoom 1, also after leaving it and coming back, which switches passthrough and
// renegotiates the output buffers; the same zoom again gives the same picture. Steps of a
// thousandth move a full-size picture by fractions of a pixel instead of snapping to whole-pixel
// crops, so each changes it.
// Linear ramps survive bilinear scaling, so at other zooms every output sample must show the
// source position its centre maps to, centre + (i + 0.5 - centre) / zoom - 0.5, within one level.
// Chroma planes are zoomed at their own size, down to planes one sample wide or high, and rows
// just long enough for the vector kernels. Frames of up to 16 samples each way get steep ramps,
// on which a sample blended from its two nearest neighbours by the wrong weights shows as a wrong
// level that gentle ramps hide within one. Every output sample is made from samples of its own
// plane: whatever fills the padding after rows and planes (where a tap one past the last sample
// or row would land), the picture is the same.
TEST_F(ZoomFilterTest, ZoomOneIsBitExactAndOtherZoomsShowTheCentreFromTheFramesOwnPlanes) {
    const Pattern gentle = [](int component, double x, double y) {
        return component == 0 ? x : component == 1 ? 2 * y : 200 - x;
    };
    const Pattern steep = [](int component, double x, double y) {
        return component == 0 ? 15 * x : component == 1 ? 15 * y : 240 - 15 * x;
    };
    for (GstVideoFormat format : formats) {
        for (const Layout& layout :
             {Layout(format, 256, 128), Layout(format, 255, 127), Layout(format, 1, 1),
              Layout(format, 2, 1), Layout(format, 1, 2), Layout(format, 3, 1),
              Layout(format, 1, 3), Layout(format, 2, 2), Layout(format, 3, 3),
              Layout(format, 5, 3), Layout(format, 16, 16), Layout(format, 35, 3),
              Layout(format, 67, 1), Layout(format, 1, 67), Layout(format, 640, 360),
              Layout(format, 642, 362)}) {
            SCOPED_TRACE(describe(layout));
            auto h = harness(layout);
            av::GstHandle<GstBuffer> input(layout.frame(noise), av::GstRef::adopt);
            const Bytes original = layout.picture(bytes(input.get()));
            const bool large = layout.info.width >= 640;
            Bytes previous;
            std::map<double, Bytes> seen;
            for (double zoom : {1.0, 2.0, 1.0, 1.5, 2.0, 1.001, 1.002, 1.003, 1.0}) {
                if (zoom != 1.0 && zoom < 1.01 && !large)
                    continue; // a step of a thousandth shows only on a full-size picture
                setZoom(h.get(), zoom);
                const Bytes output = layout.picture(pass(h.get(), gst_buffer_ref(input.get())));
                // A single pixel is its own centre at any zoom.
                const bool onePixel = layout.info.width == 1 && layout.info.height == 1;
                EXPECT_EQ(output == original, zoom == 1.0 || onePixel) << zoom;
                EXPECT_TRUE(!seen.contains(zoom) || output == seen[zoom]) << zoom;
                EXPECT_TRUE(!large || output != previous) << zoom;
                seen.emplace(zoom, output);
                previous = output;
            }

            const bool small = layout.info.width <= 16 && layout.info.height <= 16;
            const Pattern& ramps = small ? steep : gentle;
            for (double zoom : {2.0, 1.5, 3.7, 100.0}) {
                SCOPED_TRACE("zoom " + std::to_string(zoom));
                setZoom(h.get(), zoom);
                const Bytes output = pass(h.get(), layout.frame(ramps));
                ASSERT_EQ(output.size(), layout.info.size);
                int wrong = 0;
                // The gentle ramps fit in a byte up to 256 samples across.
                layout.forEachSample([&](int component, int x, int y, int width, int height,
                                         gsize offset) {
                    if (layout.info.width > 256)
                        return;
                    const auto source = [zoom](int i, int n) {
                        return n / 2.0 + (i + 0.5 - n / 2.0) / zoom - 0.5;
                    };
                    const double expected = ramps(component, source(x, width), source(y, height));
                    if (std::abs(output[offset] - expected) > 1.0 && wrong++ < 5)
                        ADD_FAILURE() << "component " << component << " at " << x << "," << y
                                      << ": " << int(output[offset]) << ", expected " << expected;
                });
                const Bytes clear = layout.picture(pass(h.get(), layout.frame(noise, 0, 0x00)));
                const Bytes filled = layout.picture(pass(h.get(), layout.frame(noise, 0, 0xff)));
                EXPECT_EQ(clear, filled);
            }
        }
    }
}

// The observer sees every frame with its own time stamp and the zoom written before it was
// pushed, clamped for the picture though the property keeps what was written; a removed observer
// is not called again.
TEST_F(ZoomFilterTest, WriteLandsOnTheNextFrameShownClamped) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<double, double> writtenAndShown[] = {
        {1.1, 1.1}, {1.1, 1.1},  {2.5, 2.5},   {0.0, 1.0},   {-3.0, 1.0},    {0.5, 1.0},
        {nan, 1.0}, {-inf, 1.0}, {inf, 100.0}, {1e9, 100.0}, {100.0, 100.0}, {1.05, 1.05}};

    const Layout layout(GST_VIDEO_FORMAT_I420, 642, 362);
    auto h = harness(layout);
    std::vector<std::pair<GstClockTime, double>> shown;
    ZoomFilter::setFrameObserver(
        h->element, [&](GstClockTime pts, double zoom) { shown.emplace_back(pts, zoom); });
    const Bytes original = layout.picture(
        bytes(av::GstHandle<GstBuffer>(layout.frame(noise), av::GstRef::adopt).get()));
    std::map<double, Bytes> outputs{{1.0, original}};
    for (std::size_t i = 0; i < std::size(writtenAndShown); ++i) {
        const auto [written, expected] = writtenAndShown[i];
        SCOPED_TRACE(written);
        setZoom(h.get(), written);
        double readBack = 0.0;
        g_object_get(h->element, "zoom", &readBack, nullptr);
        EXPECT_TRUE(readBack == written || (std::isnan(readBack) && std::isnan(written)));

        const Bytes output = layout.picture(pass(h.get(), layout.frame(noise, i * GST_MSECOND)));
        ASSERT_EQ(shown.size(), i + 1);
        EXPECT_EQ(shown[i], std::pair(i * GST_MSECOND, expected));
        EXPECT_TRUE(!outputs.contains(expected) || output == outputs[expected]);
        outputs.emplace(expected, output);
    }
    ZoomFilter::setFrameObserver(h->element, {});
    pass(h.get(), layout.frame(noise));
    EXPECT_EQ(shown.size(), std::size(writtenAndShown));
}

// A live camera's frames reach the stage late; with follow-capture-time each carries the zoom last
// written before its time stamp, so a ramp is exact whatever the delay.
TEST_F(ZoomFilterTest, LiveFramesCarryTheZoomWrittenBeforeTheirCapture) {
    const Layout layout(GST_VIDEO_FORMAT_I420, 64, 48);
    auto h = harness(layout);
    gst_harness_use_testclock(h.get());
    g_object_set(h->element, "follow-capture-time", TRUE, nullptr);
    std::vector<double> seen;
    ZoomFilter::setFrameObserver(h->element,
                                 [&](GstClockTime, double zoom) { seen.push_back(zoom); });
    const GstClockTime base = gst_element_get_base_time(h->element);
    for (int i = 1; i <= 3; ++i) { // 2, 3 and 4 written at 10, 20 and 30 ms
        gst_harness_set_time(h.get(), base + i * 10 * GST_MSECOND);
        setZoom(h.get(), i + 1.0);
    }
    // Frames captured at 5, 15, 25 and 35 ms, all arriving after the last write.
    for (GstClockTime captured : {5, 15, 25, 35})
        pass(h.get(), layout.frame(noise, captured * GST_MSECOND));
    EXPECT_EQ(seen, (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
    ZoomFilter::setFrameObserver(h->element, {});
}

// While another thread keeps writing, every frame must be made whole with one written zoom: its
// picture equals the reference picture for the zoom the observer reports.
TEST_F(ZoomFilterTest, ZoomWrittenFromAnotherThreadWhileFramesFlow) {
    const double values[] = {1.0, 1.25, 2.0, 3.5};
    for (GstVideoFormat format : formats) {
        const Layout layout(format, 320, 180);
        SCOPED_TRACE(describe(layout));
        av::GstHandle<GstBuffer> input(layout.frame(noise), av::GstRef::adopt);
        auto h = harness(layout);
        std::map<double, Bytes> reference;
        for (double zoom : values) {
            setZoom(h.get(), zoom);
            reference[zoom] = layout.picture(pass(h.get(), gst_buffer_ref(input.get())));
        }
        std::vector<double> seen; // the harness streams on the pushing thread
        ZoomFilter::setFrameObserver(h->element,
                                     [&](GstClockTime, double zoom) { seen.push_back(zoom); });
        std::jthread writer([&](std::stop_token stop) {
            for (std::size_t i = 0; !stop.stop_requested(); ++i)
                setZoom(h.get(), values[i % std::size(values)]);
        });
        std::size_t mismatches = 0;
        for (std::size_t i = 0; i < 500; ++i) {
            const Bytes output = layout.picture(pass(h.get(), gst_buffer_ref(input.get())));
            ASSERT_EQ(seen.size(), i + 1);
            ASSERT_TRUE(reference.contains(seen.back())) << seen.back();
            mismatches += output != reference[seen.back()];
        }
        EXPECT_EQ(mismatches, 0u);
    }
}

TEST_F(ZoomFilterTest, RefusesFormatsOtherThanI420AndNV12) {
    HarnessHandle h(gst_harness_new(ZoomFilter::factoryName), gst_harness_teardown);
    av::GstHandle<GstPad> sink(gst_element_get_static_pad(h->element, "sink"), av::GstRef::adopt);
    for (std::string format : {"I420", "NV12", "RGB", "YUY2", "GRAY8"}) {
        av::GstHandle<GstCaps> caps(
            gst_caps_from_string(("video/x-raw,width=64,height=48,format=" + format).c_str()),
            av::GstRef::adopt);
        EXPECT_EQ(bool(gst_pad_query_accept_caps(sink.get(), caps.get())),
                  format == "I420" || format == "NV12")
            << format;
    }
    gst_harness_set_src_caps_str(h.get(), "video/x-raw,format=RGB,width=64,height=48,"
                                          "framerate=30/1");
    EXPECT_EQ(gst_harness_push(h.get(), gst_buffer_new_allocate(nullptr, 64 * 48 * 3, nullptr)),
              GST_FLOW_NOT_NEGOTIATED);
}

} // namespace
