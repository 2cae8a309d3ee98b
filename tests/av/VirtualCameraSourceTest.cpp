#include "platform/av/VirtualCameraSource.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/ZoomFilter.h"
#include "tests/av/Frames.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using av::GstHandle;
using av::GstRef;
using av::VirtualCameraSource;

// The back subject's jacket is the only strongly red-orange thing in the scene.
struct Box {
    int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
};

Box jacket(const Picture& picture) {
    Box box;
    for (int y = 0; y < picture.heightOf(2); ++y) {
        for (int x = 0; x < picture.widthOf(2); ++x) {
            if (picture.at(2, x, y) > 172) {
                box.left = std::min(box.left, x);
                box.right = std::max(box.right, x);
                box.top = std::min(box.top, y);
                box.bottom = std::max(box.bottom, y);
            }
        }
    }
    return box;
}

// The scale about the centre that best maps a's luma onto b's over a region (fractions of the
// frame), found by trying scales from 0.8 to 2.6.
double bestScale(const Picture& a, const Picture& b, double left, double top, double right,
                 double bottom) {
    const double cx = a.width / 2.0, cy = a.height / 2.0;
    double best = 0, bestError = std::numeric_limits<double>::max();
    for (double k = 0.8; k <= 2.6; k += 0.01) {
        double error = 0;
        for (int y = int(top * b.height); y < int(bottom * b.height); ++y) {
            for (int x = int(left * b.width); x < int(right * b.width); ++x) {
                // Scales below one look past a's edges there: those samples take its edge.
                const int ax = std::clamp(int(cx + (x + 0.5 - cx) / k), 0, a.width - 1);
                const int ay = std::clamp(int(cy + (y + 0.5 - cy) / k), 0, a.height - 1);
                error += std::abs(int(b.at(0, x, y)) - int(a.at(0, ax, ay)));
            }
        }
        if (error < bestError) {
            bestError = error;
            best = k;
        }
    }
    return best;
}

// "tessaravirtualcam PROPERTIES ! capsfilter caps=CAPS ! appsink", playing; the sink holds one
// frame, so a slow test is a slow consumer. The caps are set after linking, so caps the camera
// cannot produce fail in negotiation, as in the app.
class Camera {
public:
    explicit Camera(const std::string& caps, const std::string& properties = {}) {
        const std::string description = std::string(VirtualCameraSource::factoryName) +
                                        " name=camera " + properties +
                                        " ! capsfilter name=filter"
                                        " ! appsink name=sink max-buffers=1 sync=false";
        m_pipeline =
            GstHandle<GstElement>(gst_parse_launch(description.c_str(), nullptr), GstRef::adopt);
        m_camera = child(m_pipeline.get(), "camera");
        m_sink = child(m_pipeline.get(), "sink");
        if (!caps.empty()) {
            GstHandle<GstCaps> filterCaps(gst_caps_from_string(caps.c_str()), GstRef::adopt);
            g_object_set(child(m_pipeline.get(), "filter").get(), "caps", filterCaps.get(),
                         nullptr);
        }
        gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    }
    ~Camera() { gst_element_set_state(m_pipeline.get(), GST_STATE_NULL); }

    GstElement* element() const { return m_camera.get(); }
    GstElement* pipeline() const { return m_pipeline.get(); }

    GstHandle<GstSample> pull() {
        return GstHandle<GstSample>(
            gst_app_sink_try_pull_sample(GST_APP_SINK(m_sink.get()), 10 * GST_SECOND),
            GstRef::adopt);
    }
    Picture picture() { return pictureOf(pull().get()); }

    // The error the pipeline posted within five seconds, or "".
    std::string error() {
        GstHandle<GstBus> bus(gst_element_get_bus(m_pipeline.get()), GstRef::adopt);
        GstHandle<GstMessage> message(
            gst_bus_timed_pop_filtered(bus.get(), 5 * GST_SECOND, GST_MESSAGE_ERROR),
            GstRef::adopt);
        return message ? "error: " + av::Gst::errorOf(message.get()).message.toStdString() : "";
    }

private:
    GstHandle<GstElement> m_pipeline, m_camera, m_sink;
};

// A frame of one format and size, filled with a grey no drawing makes, for a renderer to draw into.
struct Canvas {
    Canvas(GstVideoFormat format, int width, int height) {
        gst_video_info_set_format(&info, format, guint(width), guint(height));
        buffer = GstHandle<GstBuffer>(gst_buffer_new_allocate(nullptr, info.size, nullptr),
                                      GstRef::adopt);
        gst_buffer_memset(buffer.get(), 0, 0x5a, info.size);
    }
    bool draw(const VirtualCameraSource::Renderer& renderer, double zoom, bool torch,
              GstClockTime time = 0, double cropZoom = 1.0) {
        GstVideoFrame frame;
        if (!gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE)) {
            ADD_FAILURE() << "could not map the frame";
            return false;
        }
        const bool drawn = renderer.render(&frame, zoom, torch, time, cropZoom);
        gst_video_frame_unmap(&frame);
        return drawn;
    }
    GstVideoInfo info;
    GstHandle<GstBuffer> buffer;
};

const char* const caps720p60 = "video/x-raw,format=I420,width=1280,height=720,framerate=60/1";

class VirtualCameraSourceTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!gst_is_initialized())
            gst_init(nullptr, nullptr);
        VirtualCameraSource::registerElement();
        VirtualCameraSource::registerElement();
        av::ZoomFilter::registerElement();
    }

    static Picture render(const VirtualCameraSource::Renderer& renderer, double zoom,
                          bool torch = false, GstVideoFormat format = GST_VIDEO_FORMAT_I420,
                          GstClockTime time = 0, double cropZoom = 1.0) {
        Canvas canvas(format, renderer.width(), renderer.height());
        EXPECT_TRUE(canvas.draw(renderer, zoom, torch, time, cropZoom));
        return pictureOf(canvas.buffer.get(), canvas.info);
    }
};

// Each listed size up to its own highest rate, I420 first, and NV12 on request; nothing else.
TEST_F(VirtualCameraSourceTest, negotiatesWhatTheDeviceListsAndNothingElse) {
    const struct {
        const char* caps;
        const char* format;
        int width, height, fps;
    } rows[] = {
        {"", "I420", 1920, 1080, 30},
        {"video/x-raw,width=1920,height=1080,framerate=60/1", "I420", 1920, 1080, 60},
        {"video/x-raw,width=3840,height=2160,framerate=30/1", "I420", 3840, 2160, 30},
        {"video/x-raw,width=1280,height=720,framerate=60/1", "I420", 1280, 720, 60},
        {"video/x-raw,format=NV12", "NV12", 1920, 1080, 30},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.caps);
        Camera camera(row.caps);
        GstHandle<GstSample> sample = camera.pull();
        ASSERT_TRUE(sample);
        GstVideoInfo info;
        ASSERT_TRUE(gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get())));
        EXPECT_STREQ(gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info)), row.format);
        EXPECT_EQ(GST_VIDEO_INFO_WIDTH(&info), row.width);
        EXPECT_EQ(GST_VIDEO_INFO_HEIGHT(&info), row.height);
        EXPECT_EQ(GST_VIDEO_INFO_FPS_N(&info), row.fps);
        EXPECT_EQ(GST_VIDEO_INFO_FPS_D(&info), 1);
        EXPECT_EQ(gst_buffer_get_size(gst_sample_get_buffer(sample.get())), info.size);
    }
    for (const char* refused : {"video/x-raw,width=3840,height=2160,framerate=60/1",
                                "video/x-raw,width=1920,height=1080,framerate=61/1",
                                "video/x-raw,width=640,height=480", "video/x-raw,format=RGBA"})
        EXPECT_NE(Camera(refused).error(), "") << refused;
}

// Frames sit on whole slots, never early: a loaded machine, or a consumer that stalls, may skip
// some, never half of one, and past a stall the camera is back at the present instead of
// delivering a backlog. Pausing and playing again keeps them coming, later than before.
TEST_F(VirtualCameraSourceTest, framesComeOnWholeSlotsNeverEarlyAndNeverInAHurry) {
    Camera camera(caps720p60);
    const GstClockTime frame = GST_SECOND / 60;
    GstClockTime previous = GST_CLOCK_TIME_NONE;
    // The frames' distances from the one before, in frames.
    const auto pull = [&](int count) {
        std::vector<double> gaps;
        for (int i = 0; i < count; ++i) {
            GstHandle<GstSample> sample = camera.pull();
            EXPECT_TRUE(sample);
            if (!sample)
                break;
            const GstBuffer* buffer = gst_sample_get_buffer(sample.get());
            const GstClockTime pts = GST_BUFFER_PTS(buffer);
            EXPECT_TRUE(GST_CLOCK_TIME_IS_VALID(pts));
            EXPECT_LE(pts, runningTime(camera.pipeline()));
            EXPECT_NEAR(double(GST_BUFFER_DURATION(buffer)), double(frame), 1.0);
            if (GST_CLOCK_TIME_IS_VALID(previous)) {
                gaps.push_back(double(GST_CLOCK_DIFF(previous, pts)) / double(frame));
                EXPECT_GE(gaps.back(), 0.999) << "frame " << i;
                EXPECT_NEAR(gaps.back(), std::round(gaps.back()), 0.001) << "frame " << i;
            }
            previous = pts;
        }
        return gaps;
    };
    pull(8);

    GstHandle<GstQuery> latency(gst_query_new_latency(), GstRef::adopt);
    ASSERT_TRUE(gst_element_query(camera.element(), latency.get()));
    gboolean live = FALSE;
    GstClockTime minimum = 0;
    gst_query_parse_latency(latency.get(), &live, &minimum, nullptr);
    EXPECT_TRUE(live);
    EXPECT_NEAR(double(minimum), double(frame), 1.0);

    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const std::vector<double> afterStall = pull(7);
    EXPECT_TRUE(std::any_of(afterStall.begin(), afterStall.end(), [](double g) { return g > 2; }));
    EXPECT_LT(runningTime(camera.pipeline()) - previous, 4 * frame);

    gst_element_set_state(camera.pipeline(), GST_STATE_PAUSED);
    gst_element_get_state(camera.pipeline(), nullptr, nullptr, 5 * GST_SECOND);
    gst_element_set_state(camera.pipeline(), GST_STATE_PLAYING);
    EXPECT_EQ(pull(4).size(), 4u);
}

TEST_F(VirtualCameraSourceTest, stoppingInterruptsTheWaitForASlowFrame) {
    Camera camera("video/x-raw,width=1280,height=720,framerate=1/1");
    ASSERT_TRUE(camera.pull());
    const auto start = std::chrono::steady_clock::now();
    gst_element_set_state(camera.pipeline(), GST_STATE_NULL);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(VirtualCameraSourceTest, subjectKeepsItsSizeWhileTheBackgroundStretches) {
    const Picture near = Camera(caps720p60, "zoom=1.0").picture();
    // As the zoom stage shows it.
    const Picture far =
        Camera(caps720p60, std::string("zoom=2.0 ! ") + av::ZoomFilter::factoryName + " zoom=2.0")
            .picture();

    const Box nearJacket = jacket(near), farJacket = jacket(far);
    ASSERT_GT(nearJacket.width(), 100);
    EXPECT_NEAR(farJacket.width(), nearJacket.width(), 0.03 * nearJacket.width());
    EXPECT_NEAR(farJacket.height(), nearJacket.height(), 0.03 * nearJacket.height());
    EXPECT_NEAR(farJacket.left, nearJacket.left, 3);
    EXPECT_NEAR(farJacket.top, nearJacket.top, 3);

    // Above the subject's shoulders, beside its head: background alone at either zoom. With the
    // background 8 walker distances behind the subject, 2x zoom shows it 2 * 9 / 10 times larger.
    EXPECT_NEAR(bestScale(near, far, 0.6, 0.05, 0.75, 0.15), 1.8, 0.05);
}

// The torch lights the near subject more than the far one the walker shows at a high zoom.
TEST_F(VirtualCameraSourceTest, torchDoesLessFartherFromTheSubject) {
    const VirtualCameraSource::Renderer back(1280, 720, false);
    const auto lit = [&](double zoom) {
        return render(back, zoom, true).meanLuma() - render(back, zoom).meanLuma();
    };
    EXPECT_GT(lit(1.0), lit(4.0) + 2);
}

// NV12 is I420 with interleaved chroma; another format, or another size than the renderer's, is
// refused; a zoom out of range renders as the nearest valid one.
TEST_F(VirtualCameraSourceTest, rendersNv12AsI420AndInvalidZoomAsTheNearestValidOne) {
    const VirtualCameraSource::Renderer renderer(1280, 720, false);
    for (double zoom : {1.0, 2.5}) {
        const Picture i420 = render(renderer, zoom);
        const Picture nv12 = render(renderer, zoom, false, GST_VIDEO_FORMAT_NV12);
        for (int plane = 0; plane < 3; ++plane)
            EXPECT_EQ(i420.planes[plane], nv12.planes[plane]) << "plane " << plane;
    }
    EXPECT_FALSE(Canvas(GST_VIDEO_FORMAT_RGBA, 1280, 720).draw(renderer, 1.0, false));
    EXPECT_FALSE(Canvas(GST_VIDEO_FORMAT_I420, 1920, 1080).draw(renderer, 1.0, false));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const Picture one = render(renderer, 1.0);
    const Picture most = render(renderer, VirtualCameraSource::maxZoom);
    for (double zoom : {0.0, -2.0, 0.5, nan, -infinity})
        EXPECT_EQ(render(renderer, zoom).planes[0], one.planes[0]) << zoom;
    for (double zoom : {infinity, 1e300})
        EXPECT_EQ(render(renderer, zoom).planes[0], most.planes[0]) << zoom;
}

// While the zoom rests, frames are copied from the scene kept from the frame before and only the
// clock is drawn anew; every frame must still be exactly what a fresh renderer draws, in both
// layouts, across a torch change, a zoom change and back.
TEST_F(VirtualCameraSourceTest, aRestingZoomCopiesTheSceneAndDrawsTheSameFrames) {
    for (const GstVideoFormat format : {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_NV12}) {
        const VirtualCameraSource::Renderer steady(640, 360, false);
        const std::pair<double, bool> steps[] = {
            {2.0, false}, {2.0, false}, {2.0, false}, {2.0, false}, {2.0, true},  {2.0, true},
            {2.0, true},  {1.5, true},  {1.5, true},  {1.5, true},  {2.0, false}, {2.0, false}};
        double seconds = 61.0;
        for (const auto& [zoom, torch] : steps) {
            seconds += 1.37; // another reading on the clock every frame
            const GstClockTime time = GstClockTime(seconds * GST_SECOND);
            const VirtualCameraSource::Renderer fresh(640, 360, false);
            EXPECT_TRUE(render(steady, zoom, torch, format, time) ==
                        render(fresh, zoom, torch, format, time))
                << "zoom " << zoom << " torch " << torch << " at " << seconds;
        }
        EXPECT_GE(steady.framesCopied(), 4u) << "format " << format;
    }
}

TEST_F(VirtualCameraSourceTest, propertiesWrittenWhilePlayingFromAnotherThread) {
    Camera camera(caps720p60);
    GstElement* element = camera.element();
    std::atomic<bool> done = false;
    std::thread writer([&] {
        const double values[] = {1.0, 3.0, 0.0, -1.0, 16.0, 1e9, 2.0};
        for (int i = 0; !done; ++i) {
            g_object_set(element, "zoom", values[i % std::size(values)], "torch", gboolean(i % 2),
                         nullptr);
            if (i == 50)
                g_object_set(element, "front", TRUE, nullptr);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (int i = 0; i < 20; ++i) {
        GstHandle<GstSample> sample = camera.pull();
        ASSERT_TRUE(sample);
        EXPECT_EQ(gst_buffer_get_size(gst_sample_get_buffer(sample.get())), 1280u * 720 * 3 / 2);
    }
    done = true;
    writer.join();

    gboolean front = FALSE;
    g_object_get(element, "front", &front, nullptr);
    EXPECT_TRUE(front);
}

// What a stage cropping to 1/zoom shows is drawn exactly as in a whole frame; the corners, which
// it never shows, are black instead of whatever the buffer held.
TEST_F(VirtualCameraSourceTest, drawsWhatTheZoomStageKeepsAndBlackensTheRest) {
    const VirtualCameraSource::Renderer renderer(1280, 720, false);
    const auto luma = [&](double zoom, double cropZoom) {
        return render(renderer, zoom, false, GST_VIDEO_FORMAT_I420, 0, cropZoom).planes[0];
    };
    for (double zoom : {1.0, 1.3, 3.0, 16.0, 40.0}) {
        SCOPED_TRACE(zoom);
        const Bytes whole = luma(zoom, 1.0), cropped = luma(zoom, zoom);
        const double kept = 0.5 / std::min(zoom, 16.0);
        int differing = 0;
        for (int y = 0; y < 720; ++y)
            for (int x = 0; x < 1280; ++x)
                if (std::abs(x + 0.5 - 640) <= kept * 1280 + 1 &&
                    std::abs(y + 0.5 - 360) <= kept * 720 + 1)
                    differing += whole[size_t(y) * 1280 + x] != cropped[size_t(y) * 1280 + x];
        EXPECT_EQ(differing, 0);
        EXPECT_EQ(cropped.front(), zoom < 1.1 ? whole.front() : 16);
        EXPECT_EQ(cropped.back(), zoom < 1.1 ? whole.back() : 16);
    }
    // A zoom the stage takes as 1 crops nothing.
    EXPECT_EQ(luma(3.0, std::nan("")).front(), luma(3.0, 1.0).front());
}

// A zoom written and overwritten between two frames may be the one the stage gives the next
// frame, so that frame is drawn for the lower of the two.
TEST_F(VirtualCameraSourceTest, aZoomWrittenBetweenFramesWidensTheNextOne) {
    Camera camera(caps720p60, "zoom=4 zoom-crops=true");
    // The corner's luma: 16 where the frame was cropped.
    const auto corner = [&] {
        const Picture picture = camera.picture();
        return picture.width ? int(picture.at(0, 0, 0)) : -1;
    };
    int seen = corner();
    for (int frames = 0; seen != 16 && seen >= 0 && frames < 10; ++frames)
        seen = corner();
    ASSERT_EQ(seen, 16) << "frames at zoom 4 keep their corners";
    g_object_set(camera.element(), "zoom", 1.0, nullptr);
    g_object_set(camera.element(), "zoom", 4.0, nullptr);
    bool widened = false;
    for (int frames = 0; !widened && frames < 6; ++frames)
        widened = corner() > 16;
    EXPECT_TRUE(widened);
}

} // namespace
