// The clip preview after a take, on a 2 s 1080p30 clip with sound shown in a phone-sized view
// offscreen:
// - the time from the end of a take (the finished file handed to the preview) to the preview's
//   first picture on screen;
// - the loop's seam over ten passes: the interval between the last picture of a pass and the
//   first of the next, against the intervals inside a pass (one frame is 33.3 ms), the pictures
//   shown per pass, and how dark the first picture of a pass is against the clip's own pictures
//   (a black flash would show as a much darker one);
// - the GUI thread's time per played frame (thread CPU time, painting included).
#include "bench/EventLoopTiming.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/Player.h"
#include "platform/av/PlayerItem.h"
#include "platform/av/PlayerLayer.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"
#include "playback/VideoPreviewViewController.h"
#include "tests/av/TestClip.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <gst/audio/audio.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <vector>

namespace {

constexpr QSize phone(390, 844);
constexpr int passesMeasured = 10;

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double meanLuma(const QImage& picture) {
    const QImage small = picture.scaled(32, 32);
    double sum = 0;
    for (int y = 0; y < small.height(); ++y)
        for (int x = 0; x < small.width(); ++x)
            sum += qGray(small.pixel(x, y));
    return sum / (small.width() * small.height());
}

// The preview as after a take: presented by a screen, and timed until its first picture shows.
void firstFrame(const QString& clip) {
    std::vector<double> times, blocked, released;
    for (int run = 0; run < 5; ++run) {
        ui::Window window;
        auto* camera = new ui::ViewController;
        window.setRootViewController(camera);
        window.resize(phone);
        window.show();
        QElapsedTimer timer;
        timer.start();
        auto* preview = new VideoPreviewViewController;
        preview->videoURL = QUrl::fromLocalFile(clip);
        preview->cameraVC = camera;
        QElapsedTimer call;
        call.start();
        camera->present(preview, true);
        blocked.push_back(double(call.nsecsElapsed()) / 1e6);
        waitFor([&] { return preview->playerLayer && preview->playerLayer->framesDisplayed() > 0; },
                10000, 1);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
        waitFor([] { return false; }, 200);
        call.restart();
        delete preview;
        released.push_back(double(call.nsecsElapsed()) / 1e6);
    }
    std::printf("playback_present_gui_block_max %.1f ms\n",
                *std::max_element(blocked.begin(), blocked.end()));
    std::printf("playback_release_gui_block_max %.1f ms\n",
                *std::max_element(released.begin(), released.end()));
    std::printf("playback_first_frame_median %.1f ms\n", median(times));
    std::printf("playback_first_frame_max %.1f ms\n",
                *std::max_element(times.begin(), times.end()));
}

// A container that notes when each new picture is painted and what painting costs.
class TimedContainer : public VideoContainerView {
public:
    struct Shown {
        double at;
        GstClockTime timestamp;
        double luma;
    };
    std::vector<Shown> shown;
    QElapsedTimer clock;
    double paintMilliseconds = 0;

protected:
    void paintEvent(QPaintEvent* event) override {
        const quint64 before = playerLayer()->framesDisplayed();
        QElapsedTimer timer;
        timer.start();
        VideoContainerView::paintEvent(event);
        paintMilliseconds += double(timer.nsecsElapsed()) / 1e6;
        if (playerLayer()->framesDisplayed() != before)
            shown.push_back({double(clock.nsecsElapsed()) / 1e6, playerLayer()->contentsTimestamp(),
                             meanLuma(playerLayer()->contents())});
    }
};

// The sound as the sink gets it: the largest step between two neighbouring samples at the seams
// and inside the passes. A click is a step far larger than the sound's own.
struct SoundSteps {
    std::mutex mutex; // guards the rest; the sink's streaming thread writes
    GstClockTime lastTimestamp = GST_CLOCK_TIME_NONE;
    float lastSample = 0;
    bool started = false;
    double seamMax = 0;
    double insideMax = 0;

    static GstPadProbeReturn probe(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
        auto* steps = static_cast<SoundSteps*>(data);
        GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        GstAudioInfo format;
        const av::GstHandle<GstCaps> caps(gst_pad_get_current_caps(pad), av::GstRef::adopt);
        const bool known = caps && gst_audio_info_from_caps(&format, caps.get()) &&
                           format.finfo->format == GST_AUDIO_FORMAT_F32LE;
        GstMapInfo map;
        if (!known || !gst_buffer_map(buffer, &map, GST_MAP_READ))
            return GST_PAD_PROBE_OK;
        const auto* samples = reinterpret_cast<const float*>(map.data);
        const gsize frames = map.size / gsize(format.bpf);
        std::lock_guard lock(steps->mutex);
        const bool seam = steps->started && GST_BUFFER_PTS(buffer) < steps->lastTimestamp;
        for (gsize i = 0; i < frames; ++i) {
            const float sample = samples[i * gsize(format.channels)];
            if (steps->started || i > 0) {
                const double step = std::abs(double(sample - steps->lastSample));
                double& max = seam && i == 0 ? steps->seamMax : steps->insideMax;
                max = std::max(max, step);
            }
            steps->lastSample = sample;
        }
        steps->started = true;
        steps->lastTimestamp = GST_BUFFER_PTS(buffer);
        gst_buffer_unmap(buffer, &map);
        return GST_PAD_PROBE_OK;
    }
};

void loop(const QString& clip) {
    TimedContainer view;
    view.resize(phone);
    av::Player player(QUrl::fromLocalFile(clip));
    auto* layer = new av::PlayerLayer(&player);
    layer->setVideoGravity(av::PlayerLayer::VideoGravity::resizeAspectFill);
    view.addSublayer(layer);
    view.setPlayerLayer(layer);
    layer->setFrame(view.rect());
    player.setActionAtItemEnd(av::Player::ActionAtItemEnd::none);
    QObject::connect(player.currentItem(), &av::PlayerItem::didPlayToEndTime,
                     [](av::PlayerItem* item) { item->seekToTime(0); });
    SoundSteps sound;
    GstElement* audioSink = nullptr;
    g_object_get(player.pipeline(), "audio-sink", &audioSink, nullptr);
    if (const av::GstHandle<GstElement> sink(audioSink, av::GstRef::adopt); sink) {
        av::GstHandle<GstPad> pad(gst_element_get_static_pad(sink.get(), "sink"),
                                  av::GstRef::adopt);
        if (pad)
            gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, &SoundSteps::probe, &sound,
                              nullptr);
    }
    view.show();
    view.clock.start();
    player.play();
    waitFor([&] { return player.passes() >= 1 && !view.shown.empty(); }, 10000);
    const double cpuBefore = threadCpuMilliseconds();
    const size_t shownBefore = view.shown.size();
    waitFor([&] { return player.passes() > passesMeasured; }, 40000);
    // Into the last pass, so its first picture has been shown.
    waitFor([] { return false; }, 300);
    const double cpu = threadCpuMilliseconds() - cpuBefore;
    const size_t played = view.shown.size() - shownBefore;

    std::vector<double> inside, seams, seamLuma, otherLuma;
    std::vector<int> perPass{0};
    for (size_t i = 1; i < view.shown.size(); ++i) {
        const double interval = view.shown[i].at - view.shown[i - 1].at;
        if (view.shown[i].timestamp < view.shown[i - 1].timestamp) {
            seams.push_back(interval);
            seamLuma.push_back(view.shown[i].luma);
            perPass.push_back(0);
        } else {
            inside.push_back(interval);
            otherLuma.push_back(view.shown[i].luma);
        }
        ++perPass.back();
    }
    // The first and the unfinished last pass are not whole.
    const std::vector<int> whole(perPass.size() > 2 ? perPass.begin() + 1 : perPass.end(),
                                 perPass.size() > 2 ? perPass.end() - 1 : perPass.end());
    std::printf("playback_loop_seams %zu passes\n", seams.size());
    std::printf("playback_loop_seam_max %.1f ms\n",
                seams.empty() ? 0 : *std::max_element(seams.begin(), seams.end()));
    std::printf("playback_loop_seam_median %.1f ms\n", median(seams));
    std::printf("playback_frame_interval_median %.1f ms\n", median(inside));
    std::printf("playback_frame_interval_max %.1f ms\n",
                inside.empty() ? 0 : *std::max_element(inside.begin(), inside.end()));
    std::printf("playback_frames_per_pass_min %d frames\n",
                whole.empty() ? 0 : *std::min_element(whole.begin(), whole.end()));
    std::printf("playback_seam_picture_luma_min %.0f /255\n",
                seamLuma.empty() ? 0 : *std::min_element(seamLuma.begin(), seamLuma.end()));
    std::printf("playback_picture_luma_min %.0f /255\n",
                otherLuma.empty() ? 0 : *std::min_element(otherLuma.begin(), otherLuma.end()));
    std::printf("playback_gui_thread_cpu_per_frame %.3f ms\n",
                cpu / double(std::max<size_t>(1, played)));
    std::printf("playback_paint_per_frame %.3f ms\n",
                view.paintMilliseconds / double(std::max<size_t>(1, view.shown.size())));
    std::printf("playback_sound %s\n", player.playsSilently() ? "silent (no device)" : "device");
    player.pause();
    std::lock_guard lock(sound.mutex);
    std::printf("playback_sound_seam_step_max %.3f full scale\n", sound.seamMax);
    std::printf("playback_sound_step_max %.3f full scale\n", sound.insideMax);
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    av::Gst::ensureInitialized();
    QTemporaryDir folder;
    const QString clip = folder.filePath(QStringLiteral("Tessaro Video.mov"));
    if (!writeTestClip(clip, 2.0, 1920, 1080)) {
        std::fprintf(stderr, "Could not write the test clip\n");
        return 1;
    }
    firstFrame(clip);
    loop(clip);
    std::fflush(stdout);
    return 0;
}
