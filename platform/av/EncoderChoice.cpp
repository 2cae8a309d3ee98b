#include "platform/av/EncoderChoice.h"

#include "platform/av/Error.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/Logging.h"

#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

// Debug lines only when asked for (QT_LOGGING_RULES="tessaro.av.debug=true").

namespace av {

namespace {

// Tried in this order; the first that encodes a test picture of the format wins.
constexpr const char* hardwareEncoders[] = {"vah264enc",   "vah264lpenc", "vaapih264enc",
                                            "v4l2h264enc", "nvh264enc",   "qsvh264enc"};
constexpr const char* softwareEncoders[] = {"x264enc", "openh264enc"};
constexpr const char* aacEncoders[] = {"avenc_aac", "voaacenc", "fdkaacenc"};

void setIfPresent(GstElement* element, const char* property, const QString& value) {
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), property))
        gst_util_set_object_arg(G_OBJECT(element), property, value.toUtf8().constData());
}

double frameRateOf(const GstVideoInfo& info) {
    return info.fps_n > 0 && info.fps_d > 0 ? double(info.fps_n) / info.fps_d : 30.0;
}

// A hardware encoder may be listed yet fail on this machine (no device, no driver, a size it
// cannot do): encode a few frames of the format to find out.
bool encoderWorks(const char* factory, const GstVideoInfo& info) {
    GstHandle<GstElement> pipeline(gst_pipeline_new("encoder-probe"), GstRef::adopt);
    GstElement* chain[6];
    try {
        size_t made = 0;
        for (const char* name :
             {"videotestsrc", "capsfilter", "videoconvert", factory, "h264parse", "fakesink"}) {
            chain[made] = Gst::make(name);
            gst_bin_add(GST_BIN(pipeline.get()), chain[made++]);
        }
    } catch (const Error&) {
        return false;
    }
    GstElement* encoder = chain[3];
    g_object_set(chain[0], "num-buffers", 3, nullptr);
    const GstHandle<GstCaps> caps(gst_video_info_to_caps(&info), GstRef::adopt);
    g_object_set(chain[1], "caps", caps.get(), nullptr);
    EncoderChoice::configureVideo(encoder, QString::fromUtf8(factory), info);
    bool works = true;
    for (size_t i = 1; i < std::size(chain); ++i)
        works = works && gst_element_link(chain[i - 1], chain[i]);
    if (works &&
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE) {
        GstHandle<GstBus> bus(gst_element_get_bus(pipeline.get()), GstRef::adopt);
        GstHandle<GstMessage> end(
            gst_bus_timed_pop_filtered(bus.get(), 5 * GST_SECOND,
                                       GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
            GstRef::adopt);
        works = end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS;
    } else {
        works = false;
    }
    Gst::stop(pipeline);
    return works;
}

// The hardware encoder that works for each picture size; absent while its probe runs, empty when
// none does.
struct EncoderProbes {
    std::mutex lock;
    std::map<std::pair<int, int>, std::optional<QString>> bySize; // guarded by lock
    std::optional<QStringList> onlyForTesting;                    // guarded by lock
};

EncoderProbes& encoderProbes() {
    static EncoderProbes probes;
    return probes;
}

QString workingHardwareEncoder(const GstVideoInfo& info) {
    for (const char* factory : hardwareEncoders) {
        if (!Gst::exists(factory))
            continue;
        const bool works = encoderWorks(factory, info);
        qCDebug(lcAv) << factory << (works ? "encodes" : "cannot encode") << info.width << "x"
                      << info.height;
        if (works)
            return QString::fromUtf8(factory);
    }
    return {};
}

} // namespace

void EncoderChoice::configureVideo(GstElement* encoder, const QString& factory,
                                   const GstVideoInfo& info) {
    const double fps = frameRateOf(info);
    const int kbps = EncoderChoice::videoBitrate(info.width, info.height, fps);
    const QString keyInterval = QString::number(std::max(1L, std::lround(fps)));
    if (factory == QLatin1String("x264enc")) {
        // The camera and the zoom stage share the cores with the encoder: the faster presets
        // for larger pictures keep it from falling behind.
        const double pixelRate = double(info.width) * info.height * fps;
        const char* preset = pixelRate <= 1280.0 * 720 * 30    ? "veryfast"
                             : pixelRate <= 1920.0 * 1080 * 30 ? "superfast"
                                                               : "ultrafast";
        gst_util_set_object_arg(G_OBJECT(encoder), "speed-preset", preset);
        // One thread per core, splitting each frame between them: threads that each take a
        // frame of their own, and the lookahead, keep a copy of every frame in flight (about
        // 25 MB at 1080p, 100 MB at 2160p) for no gain without B-frames.
        g_object_set(encoder, "bitrate", guint(kbps), "key-int-max", guint(keyInterval.toUInt()),
                     "bframes", 0u, "threads", guint(std::max(1, QThread::idealThreadCount())),
                     "sliced-threads", TRUE, "sync-lookahead", 0, "rc-lookahead", 0, nullptr);
        // Whole-pixel motion search above 720p: the sub-pixel search keeps three interpolated
        // copies of each reference picture (14 MB at 1080p) and a seventh of the encoder's CPU,
        // for 0.05 dB at this bit rate on a camera's noisy pictures.
        if (pixelRate > 1280.0 * 720 * 30)
            g_object_set(encoder, "option-string", "subme=0", nullptr);
    } else if (factory == QLatin1String("openh264enc")) {
        setIfPresent(encoder, "bitrate", QString::number(kbps * 1000));
        setIfPresent(encoder, "gop-size", keyInterval);
        setIfPresent(encoder, "complexity", QStringLiteral("low"));
    } else if (factory == QLatin1String("v4l2h264enc")) {
        g_autoptr(GstStructure) controls =
            gst_structure_new("controls", "video_bitrate", G_TYPE_INT, kbps * 1000,
                              "h264_i_frame_period", G_TYPE_INT, keyInterval.toInt(), nullptr);
        g_object_set(encoder, "extra-controls", controls, nullptr);
    } else {
        // VA-API, NVENC and Quick Sync name the same settings differently; all take kbit/s.
        setIfPresent(encoder, "rate-control", QStringLiteral("cbr"));
        setIfPresent(encoder, "rc-mode", QStringLiteral("cbr"));
        setIfPresent(encoder, "bitrate", QString::number(kbps));
        for (const char* property : {"key-int-max", "keyframe-period", "gop-size"})
            setIfPresent(encoder, property, keyInterval);
        for (const char* property : {"b-frames", "max-bframes", "bframes"})
            setIfPresent(encoder, property, QStringLiteral("0"));
    }
}

void EncoderChoice::loadPlugins(const QString& videoEncoder) {
    const QByteArray encoder = videoEncoder.toUtf8();
    for (const char* factory : {encoder.constData(), "appsrc", "audioconvert", "audioresample",
                                "h264parse", "qtmux", "filesink", "videoconvert"})
        GstHandle<GstElement>(gst_element_factory_make(factory, nullptr), GstRef::adopt);
    for (const char* factory : aacEncoders)
        if (GstHandle<GstElement>(gst_element_factory_make(factory, nullptr), GstRef::adopt))
            break;
}

void EncoderChoice::probeVideo(GstCaps* videoCaps) {
    GstVideoInfo info;
    if (!videoCaps || !gst_video_info_from_caps(&info, videoCaps))
        return;
    const auto size = std::make_pair(info.width, info.height);
    EncoderProbes& probes = encoderProbes();
    {
        std::lock_guard lock(probes.lock);
        if (!probes.bySize.try_emplace(size).second)
            return; // probed or being probed
    }
    // Each probe may take seconds (a driver that hangs until the timeout), so never here.
    QThreadPool::globalInstance()->start([info, size] {
        const QString found = workingHardwareEncoder(info);
        EncoderProbes& probes = encoderProbes();
        std::lock_guard lock(probes.lock);
        probes.bySize[size] = found;
    });
}

bool EncoderChoice::videoProbed(GstCaps* videoCaps) {
    GstVideoInfo info;
    if (!videoCaps || !gst_video_info_from_caps(&info, videoCaps))
        return false;
    EncoderProbes& probes = encoderProbes();
    std::lock_guard lock(probes.lock);
    const auto found = probes.bySize.find(std::make_pair(info.width, info.height));
    return found != probes.bySize.end() && found->second.has_value();
}

void EncoderChoice::setVideoEncodersForTesting(std::optional<QStringList> factories) {
    EncoderProbes& probes = encoderProbes();
    std::lock_guard lock(probes.lock);
    probes.onlyForTesting = std::move(factories);
}

QString EncoderChoice::video(GstCaps* videoCaps) {
    GstVideoInfo info;
    if (!videoCaps || !gst_video_info_from_caps(&info, videoCaps))
        return {};
    probeVideo(videoCaps);
    std::optional<QStringList> only;
    {
        EncoderProbes& probes = encoderProbes();
        std::lock_guard lock(probes.lock);
        only = probes.onlyForTesting;
        const auto& found = probes.bySize[std::make_pair(info.width, info.height)];
        // Until the probe has answered, a recording takes the software encoder rather than wait.
        if (found && !found->isEmpty() && (!only || only->contains(*found)))
            return *found;
    }
    for (const char* factory : softwareEncoders)
        if ((!only || only->contains(QLatin1String(factory))) && Gst::exists(factory))
            return QString::fromUtf8(factory);
    return {};
}

int EncoderChoice::videoBitrate(int width, int height, double frameRate) {
    // Exponents that meet the three reference points exactly: four times the pixels cost 45/17
    // the bits, twice the frames 25/17.
    static const double sizeExponent = std::log(45.0 / 17.0) / std::log(4.0);
    static const double rateExponent = std::log(25.0 / 17.0) / std::log(2.0);
    const double pixels = double(std::max(width, 1)) * std::max(height, 1) / (1920.0 * 1080.0);
    const double rate = (frameRate > 0 ? frameRate : 30.0) / 30.0;
    const double kbps = 17000.0 * std::pow(pixels, sizeExponent) * std::pow(rate, rateExponent);
    return int(std::clamp(std::round(kbps / 100.0) * 100.0, 500.0, 200000.0));
}

const char* EncoderChoice::audio() {
    for (const char* factory : aacEncoders)
        if (Gst::exists(factory))
            return factory;
    return nullptr;
}

} // namespace av
