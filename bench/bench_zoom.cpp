#include "LineReporter.h"

#include "platform/av/GstHandle.h"
#include "platform/av/ZoomFilter.h"

#include <gst/video/video.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

// Time per frame of the digital zoom stage beside what GStreamer offers for the same job
// (videocrop ! videoscale, which can only crop whole pixels) and beside a plain copy of a frame.
//
// Each chain of elements ends in a fakesink and is fed from a pad of our own on the calling
// thread, so one gst_pad_push carries a frame through every element and returns when the sink has
// released it. Input frames are filled once before timing and pushed as new buffers sharing their
// memory; output buffers return to the elements' pools. What is timed is thus the elements' work
// plus a few microseconds of pad traffic, not allocation. The zoom changes every frame along a
// 1..3 ramp that skips 1 itself (which passes frames through; see zoom_stage_unity_*).
//
// The reporter gives wall time per frame in microseconds. NAME/ms_per_frame is the calling
// thread's processor time per frame in milliseconds: all of the work, since nothing runs on
// another thread, and unlike wall time not inflated when others share the machine.

namespace {

constexpr int rampFrames = 120;

double rampZoom(std::int64_t frame) {
    return 1.0 + 2.0 * double(frame % rampFrames + 1) / rampFrames;
}

std::string capsFor(int width, int height) {
    return "video/x-raw,format=I420,width=" + std::to_string(width) +
           ",height=" + std::to_string(height) + ",framerate=30/1";
}

// A few frames of noise over a gradient, cycled so the caches see changing input as from a
// camera.
std::vector<av::GstHandle<GstBuffer>> makeFrames(int width, int height) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, guint(width), guint(height));
    std::vector<av::GstHandle<GstBuffer>> frames;
    std::uint32_t noise = 12345;
    for (int i = 0; i < 4; ++i) {
        GstBuffer* buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_WRITE);
        for (gsize byte = 0; byte < map.size; ++byte) {
            noise = noise * 1664525u + 1013904223u;
            map.data[byte] = std::uint8_t((byte / 7 + (noise >> 28)) & 0xff);
        }
        gst_buffer_unmap(buffer, &map);
        frames.emplace_back(buffer, av::GstRef::adopt);
    }
    return frames;
}

// A pipeline from a description whose first element is named "first" and whose last is a
// fakesink, fed frame by frame on the calling thread.
class Chain {
public:
    Chain(const std::string& description, int width, int height)
        : pipeline(gst_parse_launch(description.c_str(), nullptr), av::GstRef::adopt),
          feed(gst_pad_new("feed", GST_PAD_SRC), av::GstRef::adopt) {
        if (!pipeline)
            return;
        av::GstHandle<GstElement> first(gst_bin_get_by_name(GST_BIN(pipeline.get()), "first"),
                                        av::GstRef::adopt);
        av::GstHandle<GstPad> sink(gst_element_get_static_pad(first.get(), "sink"),
                                   av::GstRef::adopt);
        gst_pad_link(feed.get(), sink.get());
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
        gst_pad_set_active(feed.get(), TRUE);
        gst_pad_push_event(feed.get(), gst_event_new_stream_start("bench"));
        const av::GstHandle<GstCaps> caps(gst_caps_from_string(capsFor(width, height).c_str()),
                                          av::GstRef::adopt);
        gst_pad_push_event(feed.get(), gst_event_new_caps(caps.get()));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        gst_pad_push_event(feed.get(), gst_event_new_segment(&segment));
    }
    ~Chain() {
        if (pipeline)
            gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        gst_pad_set_active(feed.get(), FALSE);
    }

    GstElement* element(const char* name) const {
        return gst_bin_get_by_name(GST_BIN(pipeline.get()), name);
    }

    bool push(GstBuffer* frame, std::int64_t index) {
        if (!pipeline)
            return false;
        // A new buffer sharing the frame's memory, so the time stamp is ours to set.
        GstBuffer* input = gst_buffer_copy(frame);
        GST_BUFFER_PTS(input) = GstClockTime(index) * (GST_SECOND / 30);
        GST_BUFFER_DURATION(input) = GST_SECOND / 30;
        return gst_pad_push(feed.get(), input) == GST_FLOW_OK;
    }

private:
    av::GstHandle<GstElement> pipeline;
    av::GstHandle<GstPad> feed;
};

double threadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

void reportMilliseconds(benchmark::State& state, double startMilliseconds) {
    state.counters["ms_per_frame"] =
        (threadMilliseconds() - startMilliseconds) / double(state.iterations());
}

// Runs the chain with `adjust` called before every frame, after a few frames of warm-up.
template <typename Adjust>
void run(benchmark::State& state, Chain& chain, int width, int height, Adjust adjust) {
    const auto frames = makeFrames(width, height);
    std::int64_t index = 0;
    for (; index < 8; ++index) {
        adjust(index);
        if (!chain.push(frames[std::size_t(index) % frames.size()].get(), index)) {
            state.SkipWithError("the chain refused a frame");
            return;
        }
    }
    const double start = threadMilliseconds();
    for (auto _ : state) {
        adjust(index);
        if (!chain.push(frames[std::size_t(index) % frames.size()].get(), index)) {
            state.SkipWithError("the chain refused a frame");
            return;
        }
        ++index;
    }
    reportMilliseconds(state, start);
}

void zoomStage(benchmark::State& state, int width, int height, bool ramp) {
    Chain chain(std::string(av::ZoomFilter::factoryName) +
                    " name=first ! fakesink sync=false async=false",
                width, height);
    av::GstHandle<GstElement> zoom(chain.element("first"), av::GstRef::adopt);
    run(state, chain, width, height, [&](std::int64_t index) {
        g_object_set(zoom.get(), "zoom", ramp ? rampZoom(index) : 1.0, nullptr);
    });
}

// The stock pair doing the ramp's crop, rounded to whole pixels. Changing the crop renegotiates
// videoscale's input every frame; that is part of what using them for a ramp costs.
void cropAndScale(benchmark::State& state, int width, int height) {
    Chain chain("videocrop name=first ! videoscale n-threads=1 method=bilinear ! " +
                    capsFor(width, height) + " ! fakesink sync=false async=false",
                width, height);
    av::GstHandle<GstElement> crop(chain.element("first"), av::GstRef::adopt);
    run(state, chain, width, height, [&](std::int64_t index) {
        const double zoom = rampZoom(index);
        const int sides = int((width - width / zoom) / 2);
        const int topAndBottom = int((height - height / zoom) / 2);
        g_object_set(crop.get(), "left", sides, "right", sides, "top", topAndBottom, "bottom",
                     topAndBottom, nullptr);
    });
}

void frameCopy(benchmark::State& state, int width, int height) {
    const auto frames = makeFrames(width, height);
    std::vector<GstMapInfo> maps(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        gst_buffer_map(frames[i].get(), &maps[i], GST_MAP_READ);
    std::vector<std::uint8_t> target(maps[0].size);
    std::size_t index = 0;
    const double start = threadMilliseconds();
    for (auto _ : state) {
        std::memcpy(target.data(), maps[index++ % maps.size()].data, target.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    reportMilliseconds(state, start);
    for (std::size_t i = 0; i < frames.size(); ++i)
        gst_buffer_unmap(frames[i].get(), &maps[i]);
}

} // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    av::ZoomFilter::registerElement();
    struct Size {
        const char* name;
        int width;
        int height;
    };
    for (const Size size : {Size{"1080p", 1920, 1080}, Size{"2160p", 3840, 2160}}) {
        const std::string suffix = std::string("_") + size.name;
        const int w = size.width;
        const int h = size.height;
        benchmark::RegisterBenchmark(("zoom_stage" + suffix).c_str(), zoomStage, w, h, true)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("zoom_stage_unity" + suffix).c_str(), zoomStage, w, h, false)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("videocrop_videoscale" + suffix).c_str(), cropAndScale, w, h)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("frame_copy" + suffix).c_str(), frameCopy, w, h)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    LineReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
