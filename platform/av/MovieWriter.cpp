#include "platform/av/MovieWriter.h"

#include "platform/av/Logging.h"

#include "platform/av/Error.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

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

// qtmux keeps a header for this long in space reserved at the front of the file (about 1.3 MB for
// ten minutes) and rewrites it this often; a longer clip is still finished properly, only no
// longer crash-safe past that point.
constexpr GstClockTime reservedDuration = 10 * 60 * GST_SECOND;
constexpr GstClockTime headerUpdatePeriod = GST_SECOND;

// Frames that may wait for the encoder: a quarter second rides out the encoder thread losing its
// core for a moment on a loaded two-core machine (another build, the header rewrite each second;
// a 1080p30 take there has up to 7 frames waiting). Larger frames stop at 64 MB, five (0.17 s) at
// 2160p30: the 4K take's memory has no room for more, and a machine that cannot keep up with 4K
// drops as many frames with a longer queue. A machine too slow for the format drops frames here
// instead of holding up the camera or piling up memory.
constexpr double queuedSeconds = 0.25;
constexpr quint64 queuedBytesLimit = quint64(64) << 20;

// Sound that arrives before the first frame is held for at most this long.
constexpr GstClockTime audioHoldLimit = GST_SECOND;

bool elementExists(const char* factory) {
    GstElementFactory* found = gst_element_factory_find(factory);
    if (!found)
        return false;
    gst_object_unref(found);
    return true;
}

GstElement* make(const char* factory, const char* name = nullptr) {
    GstElement* element = gst_element_factory_make(factory, name);
    if (!element)
        throw Error(
            Error::Code::encoderMissing,
            qtTrId("writer_tessaro_cannot_record_gstreamer").arg(QString::fromUtf8(factory)));
    return element;
}

void setIfPresent(GstElement* element, const char* property, const QString& value) {
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), property))
        gst_util_set_object_arg(G_OBJECT(element), property, value.toUtf8().constData());
}

double frameRateOf(const GstVideoInfo& info) {
    return info.fps_n > 0 && info.fps_d > 0 ? double(info.fps_n) / info.fps_d : 30.0;
}

// Real-time settings: a key frame every second, no B-frames (they would hold frames back and
// cost a core), and the bit rate of the format.
void configureVideoEncoder(GstElement* encoder, const QString& factory, const GstVideoInfo& info) {
    const double fps = frameRateOf(info);
    const int kbps = MovieWriter::videoBitrate(info.width, info.height, fps);
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
        GstStructure* controls =
            gst_structure_new("controls", "video_bitrate", G_TYPE_INT, kbps * 1000,
                              "h264_i_frame_period", G_TYPE_INT, keyInterval.toInt(), nullptr);
        g_object_set(encoder, "extra-controls", controls, nullptr);
        gst_structure_free(controls);
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

// A hardware encoder may be listed yet fail on this machine (no device, no driver, a size it
// cannot do): encode a few frames of the format to find out.
bool encoderWorks(const char* factory, const GstVideoInfo& info) {
    GstHandle<GstElement> pipeline(gst_pipeline_new("encoder-probe"), GstRef::adopt);
    GstElement* source = gst_element_factory_make("videotestsrc", nullptr);
    GstElement* filter = gst_element_factory_make("capsfilter", nullptr);
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    GstElement* encoder = gst_element_factory_make(factory, nullptr);
    GstElement* parse = gst_element_factory_make("h264parse", nullptr);
    GstElement* sink = gst_element_factory_make("fakesink", nullptr);
    GstElement* chain[] = {source, filter, convert, encoder, parse, sink};
    bool complete = true;
    for (GstElement* element : chain)
        complete = complete && element;
    if (!complete) {
        for (GstElement* element : chain)
            if (element)
                gst_object_unref(gst_object_ref_sink(element));
        return false;
    }
    g_object_set(source, "num-buffers", 3, nullptr);
    GstCaps* caps = gst_video_info_to_caps(&info);
    g_object_set(filter, "caps", caps, nullptr);
    gst_caps_unref(caps);
    configureVideoEncoder(encoder, QString::fromUtf8(factory), info);
    for (GstElement* element : chain)
        gst_bin_add(GST_BIN(pipeline.get()), element);
    bool works = gst_element_link_many(source, filter, convert, encoder, parse, sink, nullptr);
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
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return works;
}

GstElement* makeAppSource(const char* name, GstCaps* caps, quint64 maxBytes,
                          quint64 maxBuffers = 0) {
    GstElement* source = make("appsrc", name);
    // Not live: the muxer then waits for both streams instead of timing out on the clock, and
    // the buffers keep the times they are given.
    g_object_set(source, "caps", caps, "format", GST_FORMAT_TIME, "is-live", FALSE, "block", FALSE,
                 "max-bytes", guint64(maxBytes), "max-buffers", guint64(maxBuffers), "emit-signals",
                 FALSE, "handle-segment-change", TRUE, nullptr);
    return source;
}

constexpr guint32 fourcc(const char (&name)[5]) {
    return guint32(guint8(name[0])) << 24 | guint32(guint8(name[1])) << 16 |
           guint32(guint8(name[2])) << 8 | guint32(guint8(name[3]));
}

// Byte by byte: atoms sit at any offset, and GStreamer's macros load whole words.
guint32 readBigEndian(const guint8* at) {
    return guint32(at[0]) << 24 | guint32(at[1]) << 16 | guint32(at[2]) << 8 | guint32(at[3]);
}

void writeBigEndian(guint8* at, guint32 value) {
    for (int i = 0; i < 4; ++i)
        at[i] = guint8(value >> (24 - 8 * i));
}

// Calls visit(offset, size) for each atom of this type inside [begin, end).
template <typename Visit>
void forEachAtom(const guint8* data, gsize begin, gsize end, guint32 type, Visit visit) {
    gsize offset = begin;
    while (offset + 8 <= end) {
        const gsize size = readBigEndian(data + offset);
        if (size < 8 || offset + size > end)
            return;
        if (readBigEndian(data + offset + 4) == type)
            visit(offset, size);
        offset += size;
    }
}

// qtmux of GStreamer 1.22 takes no rotation, so the video track's display matrix is written into
// every header it sends (the first one, the periodic updates, the final one).
void setVideoTrackMatrix(guint8* data, gsize size, int degrees) {
    if (size < 8 || readBigEndian(data + 4) != fourcc("moov"))
        return;
    const gsize moovEnd = std::min<gsize>(size, readBigEndian(data));
    forEachAtom(data, 8, moovEnd, fourcc("trak"), [&](gsize trak, gsize trakSize) {
        forEachAtom(data, trak + 8, trak + trakSize, fourcc("tkhd"), [&](gsize tkhd, gsize length) {
            const gsize matrixAt = data[tkhd + 8] == 1 ? 60 : 48;
            if (length < matrixAt + 44)
                return;
            guint8* matrix = data + tkhd + matrixAt;
            const gint32 width = gint32(readBigEndian(matrix + 36));
            const gint32 height = gint32(readBigEndian(matrix + 40));
            if (width == 0 || height == 0)
                return; // the sound track
            constexpr gint32 one = 1 << 16;
            gint32 values[9] = {one, 0, 0, 0, one, 0, 0, 0, 1 << 30};
            switch (degrees) {
            case 90:
                values[0] = 0, values[1] = one, values[3] = -one, values[4] = 0, values[6] = height;
                break;
            case 180:
                values[0] = -one, values[4] = -one, values[6] = width, values[7] = height;
                break;
            case 270:
                values[0] = 0, values[1] = -one, values[3] = one, values[4] = 0, values[7] = width;
                break;
            }
            for (int i = 0; i < 9; ++i)
                writeBigEndian(matrix + 4 * i, guint32(values[i]));
        });
    });
}

GstPadProbeReturn rotateVideoTrack(GstPad*, GstPadProbeInfo* info, gpointer degrees) {
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    guint8 head[8];
    if (gst_buffer_extract(buffer, 0, head, 8) != 8 || readBigEndian(head + 4) != fourcc("moov"))
        return GST_PAD_PROBE_OK;
    buffer = gst_buffer_make_writable(buffer);
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_READWRITE)) {
        setVideoTrackMatrix(map.data, map.size, GPOINTER_TO_INT(degrees));
        gst_buffer_unmap(buffer, &map);
    }
    return GST_PAD_PROBE_OK;
}

} // namespace

void MovieWriter::loadPlugins(const QString& videoEncoder) {
    const QByteArray encoder = videoEncoder.toUtf8();
    for (const char* factory : {encoder.constData(), "appsrc", "audioconvert", "audioresample",
                                "h264parse", "qtmux", "filesink", "videoconvert"})
        if (GstElement* element = gst_element_factory_make(factory, nullptr))
            gst_object_unref(gst_object_ref_sink(element));
    for (const char* factory : aacEncoders)
        if (GstElement* element = gst_element_factory_make(factory, nullptr)) {
            gst_object_unref(gst_object_ref_sink(element));
            break;
        }
}

namespace {

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
        if (!elementExists(factory))
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

void MovieWriter::probeVideoEncoders(GstCaps* videoCaps) {
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

bool MovieWriter::videoEncodersProbed(GstCaps* videoCaps) {
    GstVideoInfo info;
    if (!videoCaps || !gst_video_info_from_caps(&info, videoCaps))
        return false;
    EncoderProbes& probes = encoderProbes();
    std::lock_guard lock(probes.lock);
    const auto found = probes.bySize.find(std::make_pair(info.width, info.height));
    return found != probes.bySize.end() && found->second.has_value();
}

void MovieWriter::setVideoEncodersForTesting(std::optional<QStringList> factories) {
    EncoderProbes& probes = encoderProbes();
    std::lock_guard lock(probes.lock);
    probes.onlyForTesting = std::move(factories);
}

QString MovieWriter::chooseVideoEncoder(GstCaps* videoCaps) {
    GstVideoInfo info;
    if (!videoCaps || !gst_video_info_from_caps(&info, videoCaps))
        return {};
    probeVideoEncoders(videoCaps);
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
        if ((!only || only->contains(QLatin1String(factory))) && elementExists(factory))
            return QString::fromUtf8(factory);
    return {};
}

int MovieWriter::videoBitrate(int width, int height, double frameRate) {
    // Exponents that meet the three reference points exactly: four times the pixels cost 45/17
    // the bits, twice the frames 25/17.
    static const double sizeExponent = std::log(45.0 / 17.0) / std::log(4.0);
    static const double rateExponent = std::log(25.0 / 17.0) / std::log(2.0);
    const double pixels = double(std::max(width, 1)) * std::max(height, 1) / (1920.0 * 1080.0);
    const double rate = (frameRate > 0 ? frameRate : 30.0) / 30.0;
    const double kbps = 17000.0 * std::pow(pixels, sizeExponent) * std::pow(rate, rateExponent);
    return int(std::clamp(std::round(kbps / 100.0) * 100.0, 500.0, 200000.0));
}

quint64 MovieWriter::queuedFrames(quint64 frameBytes, double frameRate) {
    const quint64 forTime = quint64(std::ceil((frameRate > 0 ? frameRate : 30.0) * queuedSeconds));
    return std::max<quint64>(
        2, std::min(forTime, queuedBytesLimit / std::max<quint64>(1, frameBytes)));
}

MovieWriter::MovieWriter(const QString& path, GstCaps* videoCaps, GstCaps* audioCaps,
                         int rotationDegrees, BusWatch::Handler onMessage)
    : videoCapsHeld(videoCaps, GstRef::add), audioCapsHeld(audioCaps, GstRef::add) {
    GstVideoInfo videoInfo;
    if (!videoCaps || !gst_video_info_from_caps(&videoInfo, videoCaps))
        throw Error(Error::Code::recordingFailed, qtTrId("writer_camera_s_picture_format"));
    videoEncoder = chooseVideoEncoder(videoCaps);
    if (videoEncoder.isEmpty())
        throw Error(Error::Code::encoderMissing, qtTrId("writer_tessaro_cannot_record_no"));
    gst_segment_init(&segment, GST_FORMAT_TIME);

    pipeline = GstHandle<GstElement>(gst_pipeline_new("movie"), GstRef::adopt);
    GstBin* bin = GST_BIN(pipeline.get());
    auto add = [bin](GstElement* element) {
        gst_bin_add(bin, element);
        return element;
    };

    const quint64 queuedFrames = MovieWriter::queuedFrames(videoInfo.size, frameRateOf(videoInfo));
    // Every frame is the format's size, so the bytes count whole frames.
    maxVideoBytes = quint64(videoInfo.size) * queuedFrames;
    videoSource = add(makeAppSource("video", videoCaps, maxVideoBytes, queuedFrames));
    GstElement* mux = add(make("qtmux", "mux"));
    g_object_set(mux, "reserved-max-duration", reservedDuration, "reserved-moov-update-period",
                 headerUpdatePeriod, nullptr);
    GstElement* sink = add(make("filesink", "sink"));
    g_object_set(sink, "location", path.toLocal8Bit().constData(), "async", FALSE, nullptr);

    std::vector<GstElement*> videoChain{videoSource};
    // Hardware encoders may want another layout of the same picture; x264 takes it as it is.
    if (videoEncoder != QLatin1String("x264enc") && videoEncoder != QLatin1String("openh264enc"))
        videoChain.push_back(add(make("videoconvert")));
    GstElement* encoder = add(make(videoEncoder.toUtf8().constData(), "encoder"));
    configureVideoEncoder(encoder, videoEncoder, videoInfo);
    videoChain.push_back(encoder);
    videoChain.push_back(add(make("h264parse")));
    videoChain.push_back(mux);
    bool linked = true;
    for (size_t i = 1; i < videoChain.size(); ++i)
        linked = linked && gst_element_link(videoChain[i - 1], videoChain[i]);
    linked = linked && gst_element_link(mux, sink);

    if (audioCaps) {
        const char* aac = nullptr;
        for (const char* factory : aacEncoders)
            if (!aac && elementExists(factory))
                aac = factory;
        if (!aac) {
            qCWarning(lcAv) << "no AAC encoder is installed; recording without sound";
        } else if (gst_audio_info_from_caps(&audioInfo, audioCaps)) {
            audioInterleaved = audioInfo.layout == GST_AUDIO_LAYOUT_INTERLEAVED;
            maxAudioBytes = quint64(audioInfo.bpf) * audioInfo.rate * 2;
            audioSource = add(makeAppSource("audio", audioCaps, maxAudioBytes));
            GstElement* audioChain[] = {audioSource, add(make("audioconvert")),
                                        add(make("audioresample")), add(make(aac))};
            for (size_t i = 1; i < std::size(audioChain); ++i)
                linked = linked && gst_element_link(audioChain[i - 1], audioChain[i]);
            linked = linked && gst_element_link(audioChain[std::size(audioChain) - 1], mux);
        }
    }
    if (!linked)
        throw Error(Error::Code::recordingFailed, qtTrId("writer_tessaro_cannot_record_camera")
                                                      .arg(videoInfo.width)
                                                      .arg(videoInfo.height));

    const int degrees = ((rotationDegrees % 360) + 360) % 360;
    if (degrees != 0) {
        // What a later qtmux writes by itself; the probe writes it for this one.
        const QByteArray orientation = QByteArray("rotate-") + QByteArray::number(degrees);
        gst_tag_setter_add_tags(GST_TAG_SETTER(mux), GST_TAG_MERGE_REPLACE,
                                GST_TAG_IMAGE_ORIENTATION, orientation.constData(), nullptr);
        GstHandle<GstPad> muxOutput(gst_element_get_static_pad(mux, "src"), GstRef::adopt);
        gst_pad_add_probe(muxOutput.get(), GST_PAD_PROBE_TYPE_BUFFER, rotateVideoTrack,
                          GINT_TO_POINTER(degrees), nullptr);
    }

    busWatch =
        std::make_unique<BusWatch>(gst_element_get_bus(pipeline.get()), std::move(onMessage));
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        QString detail;
        GstHandle<GstMessage> message(gst_bus_pop_filtered(busWatch->bus(), GST_MESSAGE_ERROR),
                                      GstRef::adopt);
        if (message) {
            GError* error = nullptr;
            gst_message_parse_error(message.get(), &error, nullptr);
            detail = QString::fromUtf8(error->message);
            g_error_free(error);
        }
        busWatch.reset();
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        throw Error(Error::Code::recordingFailed,
                    qtTrId("writer_recording_could_not_start").arg(path, detail));
    }
}

MovieWriter::~MovieWriter() {
    busWatch.reset();
    if (pipeline)
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
}

bool MovieWriter::push(GstElement* source, GstBuffer* buffer, quint64 maxBytes) {
    auto* appSource = GST_APP_SRC(source);
    if (gst_app_src_get_current_level_bytes(appSource) + gst_buffer_get_size(buffer) > maxBytes)
        return false;
    // The segment starts the movie at the first frame, so the buffers go in untouched.
    GstCaps* caps = source == videoSource ? videoCapsHeld.get() : audioCapsHeld.get();
    GstSample* sample = gst_sample_new(buffer, caps, &segment, nullptr);
    const GstFlowReturn result = gst_app_src_push_sample(appSource, sample);
    gst_sample_unref(sample);
    return result == GST_FLOW_OK;
}

bool MovieWriter::pushVideo(GstBuffer* buffer) {
    const GstClockTime time = GST_BUFFER_PTS(buffer);
    if (!GST_CLOCK_TIME_IS_VALID(time))
        return false;
    const bool first = !hasOrigin();
    if (first) {
        origin = time;
        segment.start = time;
        segment.position = time;
    } else if (time < origin) {
        return false;
    }
    const bool pushed = push(videoSource, buffer, maxVideoBytes);
    if (first)
        pushHeldAudio();
    return pushed;
}

bool MovieWriter::pushAudio(GstBuffer* buffer) {
    if (!audioSource || !GST_CLOCK_TIME_IS_VALID(GST_BUFFER_PTS(buffer)))
        return true;
    if (!hasOrigin()) {
        heldAudio.emplace_back(buffer, GstRef::add);
        while (heldAudio.size() > 1 &&
               GST_BUFFER_PTS(heldAudio.front().get()) + audioHoldLimit < GST_BUFFER_PTS(buffer))
            heldAudio.pop_front();
        return true;
    }
    GstHandle<GstBuffer> clipped = clippedAudio(buffer);
    return !clipped || push(audioSource, clipped.get(), maxAudioBytes);
}

void MovieWriter::pushHeldAudio() {
    std::deque<GstHandle<GstBuffer>> held;
    held.swap(heldAudio);
    for (const GstHandle<GstBuffer>& buffer : held)
        if (GstHandle<GstBuffer> clipped = clippedAudio(buffer.get()))
            push(audioSource, clipped.get(), maxAudioBytes);
}

GstHandle<GstBuffer> MovieWriter::clippedAudio(GstBuffer* buffer) const {
    const GstClockTime start = GST_BUFFER_PTS(buffer);
    if (start >= origin)
        return GstHandle<GstBuffer>(buffer, GstRef::add);
    const gsize frames = gst_buffer_get_size(buffer) / std::max(audioInfo.bpf, 1);
    const guint64 rate = guint64(std::max(audioInfo.rate, 1));
    const GstClockTime end = start + gst_util_uint64_scale(frames, GST_SECOND, rate);
    if (end <= origin || !audioInterleaved)
        return {};
    // The block that spans the first frame keeps its later part: a view of the same memory.
    const gsize skipped =
        std::min<gsize>(frames, gst_util_uint64_scale_ceil(origin - start, rate, GST_SECOND));
    GstBuffer* tail = gst_buffer_copy_region(buffer, GST_BUFFER_COPY_ALL, skipped * audioInfo.bpf,
                                             (frames - skipped) * audioInfo.bpf);
    GST_BUFFER_PTS(tail) = start + gst_util_uint64_scale(skipped, GST_SECOND, rate);
    GST_BUFFER_DTS(tail) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(tail) = end - GST_BUFFER_PTS(tail);
    return GstHandle<GstBuffer>(tail, GstRef::adopt);
}

void MovieWriter::endOfStream() {
    gst_app_src_end_of_stream(GST_APP_SRC(videoSource));
    if (audioSource)
        gst_app_src_end_of_stream(GST_APP_SRC(audioSource));
}

GstHandle<GstMessage> MovieWriter::waitForEnd(std::chrono::milliseconds timeout) {
    return GstHandle<GstMessage>(
        gst_bus_timed_pop_filtered(busWatch->bus(), GstClockTime(timeout.count()) * GST_MSECOND,
                                   GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
        GstRef::adopt);
}

} // namespace av
