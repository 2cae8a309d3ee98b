#include "LineReporter.h"

#include "platform/av/GstHandle.h"
#include "platform/av/VirtualCameraRenderer.h"

#include <QCoreApplication>

#include <gst/video/video.h>

#include <chrono>
#include <cstdint>

// What the virtual camera costs on its streaming thread: one rendered frame (the live element
// spends this per frame, then waits for the next slot), and the scene built when caps are set.
// Rendering is timed through the element's renderer directly, so no pacing is involved. The zoom
// follows a 1..3 ramp, as while recording. Besides the reporter's microseconds, each figure is
// given again as NAME/ms.

namespace {

constexpr int rampFrames = 90;

void render(benchmark::State& state, int width, int height, bool torch) {
    const av::VirtualCameraRenderer renderer(width, height, false);
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, guint(width), guint(height));
    av::GstHandle<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr),
                                    av::GstRef::adopt);
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE);
    std::int64_t count = 0;
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        const double zoom = 1.0 + 2.0 * double(count % rampFrames) / rampFrames;
        if (!renderer.render(&frame, zoom, torch, GstClockTime(count) * GST_SECOND / 30))
            state.SkipWithError("render refused the frame");
        benchmark::DoNotOptimize(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
        ++count;
    }
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    gst_video_frame_unmap(&frame);
    state.counters["ms"] = elapsed.count() / double(state.iterations());
}

void buildScene(benchmark::State& state, int height) {
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        // The last renderer of a size takes its scene with it, so each one builds anew.
        const av::VirtualCameraRenderer renderer(height * 16 / 9, height, false);
        benchmark::DoNotOptimize(&renderer);
    }
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    state.counters["ms"] = elapsed.count() / double(state.iterations());
}

void virtual_camera_render_720p(benchmark::State& state) {
    render(state, 1280, 720, false);
}
void virtual_camera_render_1080p(benchmark::State& state) {
    render(state, 1920, 1080, false);
}
void virtual_camera_render_2160p(benchmark::State& state) {
    render(state, 3840, 2160, false);
}
void virtual_camera_render_2160p_torch(benchmark::State& state) {
    render(state, 3840, 2160, true);
}
void virtual_camera_scene_build_1080p(benchmark::State& state) {
    buildScene(state, 1080);
}
void virtual_camera_scene_build_2160p(benchmark::State& state) {
    buildScene(state, 2160);
}

} // namespace

BENCHMARK(virtual_camera_render_720p)->Unit(benchmark::kMillisecond);
BENCHMARK(virtual_camera_render_1080p)->Unit(benchmark::kMillisecond);
BENCHMARK(virtual_camera_render_2160p)->Unit(benchmark::kMillisecond);
BENCHMARK(virtual_camera_render_2160p_torch)->Unit(benchmark::kMillisecond);
BENCHMARK(virtual_camera_scene_build_1080p)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(virtual_camera_scene_build_2160p)->Unit(benchmark::kMillisecond)->Iterations(2);

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    gst_init(&argc, &argv);
    benchmark::Initialize(&argc, argv);
    LineReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
