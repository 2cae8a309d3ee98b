// What the live preview costs the GUI thread: converting one 1080p camera frame into the picture
// of a view (filled, cropped to the view's shape), alone and while the virtual camera delivers
// 1920x1080 at 60 into a 1280x720 view, and into a 2560x1440 one (a HiDPI laptop's), offscreen
// for a few seconds each. The live run also counts
// frames delivered against frames shown, and how old a frame is when it is painted, which stays
// under two frame times when no queue builds up.
#include "bench/EventLoopTiming.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/VideoFrameConverter.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <gst/video/video.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

using Gravity = av::CaptureVideoPreviewLayer::VideoGravity;

av::GstHandle<GstSample> testFrame(int width, int height) {
    av::GstHandle<GstCaps> caps(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "I420",
                                                    "width", G_TYPE_INT, width, "height",
                                                    G_TYPE_INT, height, "framerate",
                                                    GST_TYPE_FRACTION, 60, 1, nullptr),
                                av::GstRef::adopt);
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps.get());
    av::GstHandle<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr),
                                    av::GstRef::adopt);
    GstMapInfo map;
    gst_buffer_map(buffer.get(), &map, GST_MAP_WRITE);
    for (gsize i = 0; i < map.size; ++i)
        map.data[i] = guint8(i * 7 + i / 1920);
    gst_buffer_unmap(buffer.get(), &map);
    return av::GstHandle<GstSample>(gst_sample_new(buffer.get(), caps.get(), nullptr, nullptr),
                                    av::GstRef::adopt);
}

// Converting alone, filled into a view of the given size.
void convert(const char* name, const QSize& view) {
    const av::GstHandle<GstSample> frame = testFrame(1920, 1080);
    av::VideoFrameConverter converter;
    QImage image;
    const double scale = std::max(view.width() / 1920.0, view.height() / 1080.0);
    const QSizeF shown(1920 * scale, 1080 * scale);
    const QRectF target(
        QPointF((view.width() - shown.width()) / 2, (view.height() - shown.height()) / 2), shown);
    constexpr int rounds = 300;
    for (int i = 0; i < 10; ++i)
        converter.convert(frame.get(), view, target, 0, &image);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < rounds; ++i)
        converter.convert(frame.get(), view, target, 0, &image);
    std::printf("%s %.3f ms\n", name, double(timer.nsecsElapsed()) / 1e6 / rounds);
}

// The view, timing its own painting and how old each painted frame is.
class TimedPreview : public CKFPreviewView {
public:
    double paintMilliseconds = 0;
    int paints = 0;
    std::vector<double> ages;

private:
    GstClockTime lastPainted = GST_CLOCK_TIME_NONE;

protected:
    void paintEvent(QPaintEvent* event) override {
        QElapsedTimer timer;
        timer.start();
        CKFPreviewView::paintEvent(event);
        paintMilliseconds += double(timer.nsecsElapsed()) / 1e6;
        ++paints;
        // A frame's age is taken when it is first painted; pictures are drawn ahead of painting.
        const GstClockTime shown =
            previewLayer() ? previewLayer()->contentsTimestamp() : GST_CLOCK_TIME_NONE;
        if (shown == lastPainted)
            return;
        lastPainted = shown;
        GstElement* pipeline = session()->session()->pipeline();
        const av::GstHandle<GstClock> clock(pipeline ? gst_element_get_clock(pipeline) : nullptr,
                                            av::GstRef::adopt);
        if (clock && GST_CLOCK_TIME_IS_VALID(shown)) {
            const GstClockTime now =
                gst_clock_get_time(clock.get()) - gst_element_get_base_time(pipeline);
            ages.push_back(double(GST_CLOCK_DIFF(shown, now)) / 1e6);
        }
    }
};

void live(const char* name, const QSize& size, double seconds) {
    auto session = std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back);
    session->setWidth(1920, 1080, 60);
    TimedPreview view;
    view.resize(size);
    view.show();
    view.setSession(session);
    view.previewLayer()->setVideoGravity(Gravity::resizeAspectFill);
    if (!session->session()->isRunning()) {
        std::printf("%s_failed 1 bool\n", name);
        return;
    }
    const av::CapturePreviewOutput* output = view.previewLayer()->output();
    waitFor([&] { return view.previewLayer()->framesDisplayed() >= 10; }, 10000);

    const quint64 delivered0 = output->framesReceived();
    const quint64 shown0 = view.previewLayer()->framesDisplayed();
    view.paintMilliseconds = 0;
    view.paints = 0;
    view.ages.clear();
    const double cpu0 = threadCpuMilliseconds();
    QElapsedTimer wall;
    wall.start();
    waitFor([] { return false; }, int(seconds * 1000));
    const double elapsed = double(wall.nsecsElapsed()) / 1e9;
    const double cpu = threadCpuMilliseconds() - cpu0;
    const quint64 delivered = output->framesReceived() - delivered0;
    const quint64 shown = view.previewLayer()->framesDisplayed() - shown0;

    std::sort(view.ages.begin(), view.ages.end());
    const double median = view.ages.empty() ? 0 : view.ages[view.ages.size() / 2];
    const double worst = view.ages.empty() ? 0 : view.ages.back();
    std::printf("%s_paint_per_frame %.3f ms\n", name,
                view.paintMilliseconds / std::max(1, view.paints));
    std::printf("%s_gui_thread_cpu_per_frame %.3f ms\n", name,
                cpu / double(std::max<quint64>(1, shown)));
    std::printf("%s_frames_delivered %llu frames\n", name, (unsigned long long)delivered);
    std::printf("%s_frames_shown %llu frames\n", name, (unsigned long long)shown);
    std::printf("%s_frames_dropped %llu frames\n", name,
                (unsigned long long)(delivered - std::min(delivered, shown)));
    std::printf("%s_delivered_rate %.1f fps\n", name, double(delivered) / elapsed);
    std::printf("%s_shown_rate %.1f fps\n", name, double(shown) / elapsed);
    std::printf("%s_frame_age_median %.1f ms\n", name, median);
    std::printf("%s_frame_age_max %.1f ms\n", name, worst);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    av::Gst::ensureInitialized();
    QTemporaryDir documents;
    qputenv("TESSARO_DOCUMENTS_DIR", documents.path().toUtf8());
    av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
    const double seconds = argc > 1 ? QByteArray(argv[1]).toDouble() : 5.0;

    convert("preview_convert_1080p_into_1280x720", QSize(1280, 720));
    convert("preview_convert_1080p_into_390x844", QSize(390, 844));
    convert("preview_convert_1080p_into_2560x1440", QSize(2560, 1440));
    live("preview_1080p60", QSize(1280, 720), seconds);
    live("preview_1080p60_into_2560x1440", QSize(2560, 1440), seconds);
    return 0;
}
