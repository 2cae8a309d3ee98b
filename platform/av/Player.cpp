#include "platform/av/Player.h"

#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/Gst.h"
#include "platform/av/Logging.h"
#include "platform/av/PlayerItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>
#include <QThreadPool>

#include <gst/audio/audio.h>

#include <algorithm>

namespace av {

namespace {

// Long enough to round off the jump at a loop's seam, too short to hear as a dip.
constexpr double fadeSeconds = 0.005;

// Whether a sound server or card is there to open; without one autoaudiosink would try (and
// log about) every sink it knows before settling on silence.
bool soundDeviceLikely() {
    if (qEnvironmentVariableIsSet("PULSE_SERVER"))
        return true;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && (QFileInfo::exists(runtime + QStringLiteral("/pulse/native")) ||
                               QFileInfo::exists(runtime + QStringLiteral("/pipewire-0"))))
        return true;
    return !QDir(QStringLiteral("/dev/snd")).entryList({QStringLiteral("pcmC*p")}).isEmpty();
}

// Scales the first and the last few milliseconds of a pass's sound (interleaved F32) to and
// from zero. Buffers carry the file's own times, which start again at zero on every pass.
GstPadProbeReturn fade(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
    const gint64 end = (*static_cast<std::shared_ptr<std::atomic<gint64>>*>(data))->load();
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    const GstClockTime start = GST_BUFFER_PTS(buffer);
    const auto fadeLength = GstClockTime(fadeSeconds * GST_SECOND);
    GstAudioInfo format;
    const GstHandle<GstCaps> caps(gst_pad_get_current_caps(pad), GstRef::adopt);
    const bool known = caps && gst_audio_info_from_caps(&format, caps.get());
    if (!known || !GST_CLOCK_TIME_IS_VALID(start) || format.finfo->format != GST_AUDIO_FORMAT_F32LE)
        return GST_PAD_PROBE_OK;
    const gsize frames = gst_buffer_get_size(buffer) / gsize(format.bpf);
    const GstClockTime last = start + gst_util_uint64_scale(frames, GST_SECOND, format.rate);
    const bool fadesIn = start < fadeLength;
    const bool fadesOut = end > 0 && last + fadeLength > GstClockTime(end);
    if (!fadesIn && !fadesOut)
        return GST_PAD_PROBE_OK;
    buffer = gst_buffer_make_writable(buffer);
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READWRITE))
        return GST_PAD_PROBE_OK;
    auto* samples = reinterpret_cast<float*>(map.data);
    for (gsize i = 0; i < frames; ++i) {
        const double t = double(start) / GST_SECOND + double(i) / format.rate;
        double gain = 1.0;
        if (fadesIn)
            gain = std::min(gain, t / fadeSeconds);
        if (fadesOut)
            gain = std::min(gain, (double(end) / GST_SECOND - t) / fadeSeconds);
        gain = std::clamp(gain, 0.0, 1.0);
        for (int c = 0; c < format.channels; ++c)
            samples[i * gsize(format.channels) + gsize(c)] *= float(gain);
    }
    gst_buffer_unmap(buffer, &map);
    return GST_PAD_PROBE_OK;
}

GstHandle<GstElement> parseBin(const char* description) {
    g_autoptr(GError) error = nullptr;
    GstHandle<GstElement> bin(gst_parse_bin_from_description(description, TRUE, &error),
                              GstRef::adopt);
    if (error)
        qCWarning(lcAv) << "Cannot build" << description << ":" << error->message;
    return bin;
}

} // namespace

Player::Player(const QUrl& url, QObject* parent)
    : QObject(parent), item(new PlayerItem(url, this)),
      fadeEnd(std::make_shared<std::atomic<gint64>>(0)), link(std::make_shared<Link>()) {
    Gst::ensureInitialized();
    link->owner = this;
    item->player = this;
    build(false);
}

Player::~Player() {
    {
        QMutexLocker lock(&link->mutex);
        link->owner = nullptr;
        link->outputs.clear();
    }
    busWatch.reset();
    // Stopping joins the streaming threads, which can take longer than a frame; the global pool
    // is drained before the application object goes.
    if (playbin)
        QThreadPool::globalInstance()->start(
            [pipeline = std::move(playbin)]() mutable { Gst::stop(pipeline); });
}

void Player::build(bool fakeAudio) {
    playbin = GstHandle<GstElement>(gst_element_factory_make("playbin", nullptr), GstRef::adopt);
    GstHandle<GstElement> video =
        parseBin("videoflip video-direction=auto ! videoconvert ! "
                 "appsink name=frames caps=video/x-raw,format=I420 sync=true "
                 "enable-last-sample=false");
    GstHandle<GstElement> audio = parseBin(
        "audioconvert ! capsfilter name=fade caps=audio/x-raw,format=F32LE,layout=interleaved");
    if (!playbin || !video || !audio) {
        fail(qtTrId("player_clip_cannot_played_gstreamer"));
        return;
    }
    GstHandle<GstElement> frames(gst_bin_get_by_name(GST_BIN(video.get()), "frames"),
                                 GstRef::adopt);
    // A pass's end as shown: the end-of-segment event follows the last frame into the sink.
    GstHandle<GstPad> shown(gst_element_get_static_pad(frames.get(), "sink"), GstRef::adopt);
    gst_pad_add_probe(
        shown.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
        [](GstPad*, GstPadProbeInfo* info, gpointer data) {
            if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_SEGMENT_DONE)
                return GST_PAD_PROBE_OK;
            Link* shared = static_cast<std::shared_ptr<Link>*>(data)->get();
            QMutexLocker lock(&shared->mutex);
            if (shared->owner)
                QMetaObject::invokeMethod(shared->owner, &Player::handleEnd, Qt::QueuedConnection);
            return GST_PAD_PROBE_OK;
        },
        new std::shared_ptr<Link>(link), &Player::releaseLink);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = &Player::newSample;
    callbacks.new_preroll = &Player::newPreroll;
    gst_app_sink_set_callbacks(GST_APP_SINK(frames.get()), &callbacks,
                               new std::shared_ptr<Link>(link), &Player::releaseLink);

    GstHandle<GstElement> fader(gst_bin_get_by_name(GST_BIN(audio.get()), "fade"), GstRef::adopt);
    GstHandle<GstPad> faded(gst_element_get_static_pad(fader.get(), "src"), GstRef::adopt);
    gst_pad_add_probe(faded.get(), GST_PAD_PROBE_TYPE_BUFFER, fade,
                      new std::shared_ptr<std::atomic<gint64>>(fadeEnd), [](gpointer data) {
                          delete static_cast<std::shared_ptr<std::atomic<gint64>>*>(data);
                      });

    QByteArray sinkName = qgetenv("TESSARO_AUDIO_SINK");
    if (fakeAudio)
        sinkName = "fakesink";
    else if (sinkName.isEmpty())
        sinkName = soundDeviceLikely() ? "autoaudiosink" : "fakesink";
    audioSink = gst_element_factory_make(sinkName.constData(), "sound");
    if (!audioSink) {
        qCWarning(lcAv) << "There is no sound sink" << sinkName << "; the clip plays silently";
        audioSink = gst_element_factory_make("fakesink", "sound");
        sinkName = "fakesink";
    }
    silent = sinkName == "fakesink";
    if (silent)
        g_object_set(audioSink, "sync", TRUE, nullptr);

    constexpr guint videoAndSound = 0x1 | 0x2 | 0x10; // video, audio, soft volume
    g_object_set(playbin.get(), "uri",
                 item->url().toString(QUrl::FullyEncoded).toUtf8().constData(), "video-sink",
                 video.get(), "audio-sink", audioSink, "audio-filter", audio.get(), "flags",
                 videoAndSound, "mute", gboolean(muted), nullptr);

    busWatch = std::make_unique<BusWatch>(gst_element_get_bus(playbin.get()),
                                          [this](GstMessage* message) { handleMessage(message); });
    // Failures arrive as bus messages too.
    gst_element_set_state(playbin.get(), GST_STATE_PAUSED);
}

void Player::teardown() {
    busWatch.reset();
    Gst::stop(playbin);
    audioSink = nullptr;
    segmented = false;
    atEnd = false;
    prepared = false;
    prepareOnPlay = false;
}

void Player::handleMessage(GstMessage* message) {
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE:
        if (!segmented)
            handleReady();
        break;
    case GST_MESSAGE_SEGMENT_DONE:
        // The file is read to its end while the sinks still have the pass's tail to show. Set
        // up the next pass now, so it is queued behind the last frame when the owner asks.
        if (endAction == ActionAtItemEnd::none) {
            // A paused sink holds the streaming thread, and a seek without flush waits for it:
            // asked now, the seek would never return. It waits for the next play().
            if (wantsPlaying)
                prepareNextPass();
            else
                prepareOnPlay = true;
        }
        break;
    case GST_MESSAGE_EOS:
        // Only a source that ignores segments ends this way; the next seek must flush.
        eosReached = true;
        handleEnd();
        break;
    case GST_MESSAGE_ERROR: {
        const QString text = Gst::errorOf(message).message;
        if (!silent && comesFromAudioSink(message)) {
            qCWarning(lcAv).noquote()
                << "The sound device failed (" << text << "); the clip plays silently";
            teardown();
            build(true);
            applyState();
            return;
        }
        fail(qtTrId("player_clip_cannot_played").arg(item->url().fileName(), text));
        break;
    }
    default:
        break;
    }
}

bool Player::comesFromAudioSink(GstMessage* message) const {
    GstObject* source = GST_MESSAGE_SRC(message);
    return audioSink && source &&
           (source == GST_OBJECT(audioSink) ||
            gst_object_has_as_ancestor(source, GST_OBJECT(audioSink)));
}

void Player::handleReady() {
    segmented = true;
    gint64 length = 0;
    if (gst_element_query_duration(playbin.get(), GST_FORMAT_TIME, &length) && length > 0) {
        item->length = double(length) / GST_SECOND;
        fadeEnd->store(length);
    }
    // Segment seeks from here on: a pass ends with a notice instead of end-of-stream.
    gst_element_seek(
        playbin.get(), 1.0, GST_FORMAT_TIME,
        GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_SEGMENT | GST_SEEK_FLAG_ACCURATE),
        GST_SEEK_TYPE_SET, gint64(startAt * GST_SECOND), GST_SEEK_TYPE_NONE, -1);
    passCount = 1;
    item->setStatus(PlayerItem::Status::readyToPlay);
    applyState();
}

void Player::handleEnd() {
    atEnd = true;
    if (endAction != ActionAtItemEnd::none) {
        wantsPlaying = false;
        applyState();
    }
    emit item->didPlayToEndTime(item);
    if (atEnd && prepared) {
        // Nobody seeks back: the pass set up in advance must not be seen.
        prepared = false;
        link->stalled = true;
        if (playbin)
            gst_element_set_state(playbin.get(), GST_STATE_PAUSED);
    }
}

void Player::fail(const QString& description) {
    qCWarning(lcAv).noquote() << description;
    if (playbin)
        gst_element_set_state(playbin.get(), GST_STATE_NULL);
    item->setStatus(PlayerItem::Status::failed, description);
}

void Player::applyState() {
    if (playbin && segmented && item->status() != PlayerItem::Status::failed)
        gst_element_set_state(playbin.get(), wantsPlaying ? GST_STATE_PLAYING : GST_STATE_PAUSED);
}

void Player::play() {
    wantsPlaying = true;
    applyState();
    if (prepareOnPlay && playbin)
        prepareNextPass();
}

void Player::prepareNextPass() {
    prepareOnPlay = false;
    prepared = true;
    gst_element_seek(playbin.get(), 1.0, GST_FORMAT_TIME,
                     GstSeekFlags(GST_SEEK_FLAG_SEGMENT | GST_SEEK_FLAG_ACCURATE),
                     GST_SEEK_TYPE_SET, 0, GST_SEEK_TYPE_NONE, -1);
}

void Player::pause() {
    wantsPlaying = false;
    applyState();
}

void Player::setMuted(bool value) {
    muted = value;
    if (playbin)
        g_object_set(playbin.get(), "mute", gboolean(value), nullptr);
}

void Player::seekItem(double seconds) {
    seconds = std::max(0.0, seconds);
    if (!playbin || !segmented) {
        startAt = seconds;
        return;
    }
    if (atEnd && prepared && seconds == 0.0) {
        // Already queued behind the last frame.
        prepared = false;
        atEnd = false;
        ++passCount;
        return;
    }
    if (atEnd)
        ++passCount;
    atEnd = false;
    prepared = false;
    prepareOnPlay = false;
    eosReached = false;
    link->stalled = false;
    gst_element_seek(
        playbin.get(), 1.0, GST_FORMAT_TIME,
        GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_SEGMENT | GST_SEEK_FLAG_ACCURATE),
        GST_SEEK_TYPE_SET, gint64(seconds * GST_SECOND), GST_SEEK_TYPE_NONE, -1);
    applyState();
}

double Player::itemPosition() const {
    gint64 position = 0;
    if (!playbin || !gst_element_query_position(playbin.get(), GST_FORMAT_TIME, &position))
        return 0.0;
    return double(position) / GST_SECOND;
}

void Player::addVideoOutput(CapturePreviewOutput* output) {
    QMutexLocker lock(&link->mutex);
    if (!link->outputs.contains(output))
        link->outputs.append(output);
}

void Player::removeVideoOutput(CapturePreviewOutput* output) {
    QMutexLocker lock(&link->mutex);
    link->outputs.removeAll(output);
}

void Player::releaseLink(gpointer link) {
    delete static_cast<std::shared_ptr<Link>*>(link);
}

void Player::deliver(Link* link, GstSample* sample) {
    if (link->stalled.load())
        return;
    QMutexLocker lock(&link->mutex);
    for (CapturePreviewOutput* output : std::as_const(link->outputs))
        output->handleSample(MediaType::video, sample);
}

GstFlowReturn Player::newSample(GstAppSink* sink, gpointer link) {
    GstHandle<GstSample> sample(gst_app_sink_pull_sample(sink), GstRef::adopt);
    if (!sample)
        return GST_FLOW_EOS;
    deliver(static_cast<std::shared_ptr<Link>*>(link)->get(), sample.get());
    return GST_FLOW_OK;
}

// The first picture shows while the player still prerolls.
GstFlowReturn Player::newPreroll(GstAppSink* sink, gpointer link) {
    GstHandle<GstSample> sample(gst_app_sink_pull_preroll(sink), GstRef::adopt);
    if (sample)
        deliver(static_cast<std::shared_ptr<Link>*>(link)->get(), sample.get());
    return GST_FLOW_OK;
}

} // namespace av
