#include "platform/av/MovieWriter.h"

#include "platform/av/EncoderChoice.h"
#include "platform/av/Error.h"
#include "platform/av/Gst.h"
#include "platform/av/Logging.h"
#include "platform/av/MovieRotation.h"

#include <QCoreApplication>

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include <algorithm>
#include <cmath>

namespace av {

namespace {

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

double frameRateOf(const GstVideoInfo& info) {
    return info.fps_n > 0 && info.fps_d > 0 ? double(info.fps_n) / info.fps_d : 30.0;
}

GstElement* makeAppSource(const char* name, GstCaps* caps, quint64 maxBytes,
                          quint64 maxBuffers = 0) {
    GstElement* source = Gst::make("appsrc", name);
    // Not live: the muxer then waits for both streams instead of timing out on the clock, and
    // the buffers keep the times they are given.
    g_object_set(source, "caps", caps, "format", GST_FORMAT_TIME, "is-live", FALSE, "block", FALSE,
                 "max-bytes", guint64(maxBytes), "max-buffers", guint64(maxBuffers), "emit-signals",
                 FALSE, "handle-segment-change", TRUE, nullptr);
    return source;
}

} // namespace

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
    videoEncoder = EncoderChoice::video(videoCaps);
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
    GstElement* mux = add(Gst::make("qtmux", "mux"));
    g_object_set(mux, "reserved-max-duration", reservedDuration, "reserved-moov-update-period",
                 headerUpdatePeriod, nullptr);
    GstElement* sink = add(Gst::make("filesink", "sink"));
    g_object_set(sink, "location", path.toLocal8Bit().constData(), "async", FALSE, nullptr);

    std::vector<GstElement*> videoChain{videoSource};
    // Hardware encoders may want another layout of the same picture; x264 takes it as it is.
    if (videoEncoder != QLatin1String("x264enc") && videoEncoder != QLatin1String("openh264enc"))
        videoChain.push_back(add(Gst::make("videoconvert")));
    GstElement* encoder = add(Gst::make(videoEncoder.toUtf8().constData(), "encoder"));
    EncoderChoice::configureVideo(encoder, videoEncoder, videoInfo);
    videoChain.push_back(encoder);
    videoChain.push_back(add(Gst::make("h264parse")));
    videoChain.push_back(mux);
    bool linked = true;
    for (size_t i = 1; i < videoChain.size(); ++i)
        linked = linked && gst_element_link(videoChain[i - 1], videoChain[i]);
    linked = linked && gst_element_link(mux, sink);

    if (audioCaps) {
        const char* aac = EncoderChoice::audio();
        if (!aac) {
            qCWarning(lcAv) << "no AAC encoder is installed; recording without sound";
        } else if (gst_audio_info_from_caps(&audioInfo, audioCaps)) {
            audioInterleaved = audioInfo.layout == GST_AUDIO_LAYOUT_INTERLEAVED;
            maxAudioBytes = quint64(audioInfo.bpf) * audioInfo.rate * 2;
            audioSource = add(makeAppSource("audio", audioCaps, maxAudioBytes));
            GstElement* audioChain[] = {audioSource, add(Gst::make("audioconvert")),
                                        add(Gst::make("audioresample")), add(Gst::make(aac))};
            for (size_t i = 1; i < std::size(audioChain); ++i)
                linked = linked && gst_element_link(audioChain[i - 1], audioChain[i]);
            linked = linked && gst_element_link(audioChain[std::size(audioChain) - 1], mux);
        }
    }
    if (!linked)
        throw Error(Error::Code::recordingFailed, qtTrId("writer_tessaro_cannot_record_camera")
                                                      .arg(videoInfo.width)
                                                      .arg(videoInfo.height));

    MovieRotation::apply(mux, rotationDegrees);

    busWatch =
        std::make_unique<BusWatch>(gst_element_get_bus(pipeline.get()), std::move(onMessage));
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        QString detail;
        GstHandle<GstMessage> message(gst_bus_pop_filtered(busWatch->bus(), GST_MESSAGE_ERROR),
                                      GstRef::adopt);
        if (message)
            detail = Gst::errorOf(message.get()).message;
        busWatch.reset();
        Gst::stop(pipeline);
        throw Error(Error::Code::recordingFailed,
                    qtTrId("writer_recording_could_not_start").arg(path, detail));
    }
}

MovieWriter::~MovieWriter() {
    busWatch.reset();
    Gst::stop(pipeline);
}

bool MovieWriter::push(GstElement* source, GstBuffer* buffer, quint64 maxBytes) {
    auto* appSource = GST_APP_SRC(source);
    if (gst_app_src_get_current_level_bytes(appSource) + gst_buffer_get_size(buffer) > maxBytes)
        return false;
    // The segment starts the movie at the first frame, so the buffers go in untouched.
    GstCaps* caps = source == videoSource ? videoCapsHeld.get() : audioCapsHeld.get();
    const GstHandle<GstSample> sample(gst_sample_new(buffer, caps, &segment, nullptr),
                                      GstRef::adopt);
    return gst_app_src_push_sample(appSource, sample.get()) == GST_FLOW_OK;
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
