#include "platform/av/FileCameraDevice.h"

#include "platform/av/Gst.h"
#include "platform/av/VirtualCameraDevice.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

namespace av {

namespace {

// Where the player's frames go. The appsink owns it, so it lives while frames can arrive.
struct Feed {
    GstHandle<GstElement> target; // the appsrc
    GstHandle<GstCaps> caps;
};

GstFlowReturn pushFrame(GstAppSink* sink, gpointer data) {
    auto* feed = static_cast<Feed*>(data);
    const GstHandle<GstSample> sample(gst_app_sink_pull_sample(sink), GstRef::adopt);
    if (!sample)
        return GST_FLOW_EOS;
    GstCaps* caps = gst_sample_get_caps(sample.get());
    if (caps && (!feed->caps || !gst_caps_is_equal(caps, feed->caps.get()))) {
        feed->caps = GstHandle<GstCaps>(caps, GstRef::add);
        gst_app_src_set_caps(GST_APP_SRC(feed->target.get()), caps);
    }
    // A shallow copy: the pixels are shared. The appsrc stamps it with the session's time.
    GstBuffer* frame = gst_buffer_copy(gst_sample_get_buffer(sample.get()));
    GST_BUFFER_PTS(frame) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DTS(frame) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(frame) = GST_CLOCK_TIME_NONE;
    gst_app_src_push_buffer(GST_APP_SRC(feed->target.get()), frame);
    return GST_FLOW_OK;
}

void freeFeed(gpointer data) {
    delete static_cast<Feed*>(data);
}

// Same file again: playbin switches to it without a gap.
void playAgain(GstElement* player, gpointer) {
    g_autofree gchar* uri = nullptr;
    g_object_get(player, "current-uri", &uri, nullptr);
    g_object_set(player, "uri", uri, nullptr);
}

Error unusable(const QString& reason) {
    return Error(Error::Code::sessionNotRunning, reason);
}

// The checks that need no decoding: cheap enough for every start of the camera.
std::optional<Error> headerProblem(const QString& path, bool picture) {
    const QFileInfo info(path);
    const QString name = info.fileName();
    if (!info.exists())
        return unusable(qtTrId("camfile_camera_file_does_not").arg(path));
    if (!info.isFile() || !info.isReadable())
        return unusable(qtTrId("camfile_camera_file_cannot_read").arg(path));
    if (info.size() == 0)
        return unusable(qtTrId("camfile_camera_file_empty").arg(name));
    if (!picture)
        return std::nullopt;
    QImageReader reader(path);
    if (!reader.canRead())
        return unusable(qtTrId("camfile_camera_file_not_picture").arg(name));
    const QSize size = reader.size();
    if (size.width() > FileCameraDevice::largestPictureSide ||
        size.height() > FileCameraDevice::largestPictureSide)
        return unusable(qtTrId("camfile_picture_pixels_tessaro_takes")
                            .arg(name)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(FileCameraDevice::largestPictureSide));
    return std::nullopt;
}

// Decodes the first picture, as the camera would; a machine too busy to do it within the patience
// is given the benefit of the doubt (the camera then reports what it finds).
std::optional<Error> videoProblem(const QString& path, std::chrono::milliseconds patience) {
    Gst::ensureInitialized();
    const QString name = QFileInfo(path).fileName();
    if (!Gst::exists("playbin") || !Gst::exists("appsink") || !Gst::exists("fakesink"))
        return std::nullopt;
    GstHandle<GstElement> player(Gst::make("playbin"), GstRef::adopt);
    GstElement* sink = Gst::make("appsink");
    g_object_set(sink, "sync", FALSE, nullptr);
    const QByteArray uri = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
    constexpr guint videoOnly = 1;
    g_object_set(player.get(), "uri", uri.constData(), "video-sink", sink, "audio-sink",
                 Gst::make("fakesink"), "flags", videoOnly, nullptr);
    GstHandle<GstBus> bus(gst_element_get_bus(player.get()), GstRef::adopt);
    gst_element_set_state(player.get(), GST_STATE_PAUSED);
    // Prerolled (a first picture, or the end without one), failed, or no answer in time.
    GstHandle<GstMessage> answer(
        gst_bus_timed_pop_filtered(bus.get(), GstClockTime(patience.count()) * GST_MSECOND,
                                   GstMessageType(GST_MESSAGE_ERROR | GST_MESSAGE_ASYNC_DONE)),
        GstRef::adopt);
    std::optional<Error> problem;
    if (answer && GST_MESSAGE_TYPE(answer.get()) == GST_MESSAGE_ERROR) {
        problem = unusable(qtTrId("camfile_camera_file_not_picture_2")
                               .arg(name, Gst::errorOf(answer.get()).message));
    } else if (answer) {
        GstHandle<GstSample> first(gst_app_sink_try_pull_preroll(GST_APP_SINK(sink), 0),
                                   GstRef::adopt);
        if (!first)
            problem = unusable(qtTrId("camfile_video_holds_no_picture").arg(name));
    }
    Gst::stop(player);
    return problem;
}

} // namespace

FileCameraDevice::FileCameraDevice(QString path, QObject* parent)
    : CaptureDevice(QStringLiteral("file:") + path, QFileInfo(path).fileName(), MediaType::video,
                    DevicePosition::back, parent),
      filePath(std::move(path)) {
    // The file is scaled to whatever the session asks for.
    setFormats(VirtualCameraDevice::sceneFormats());
}

bool FileCameraDevice::isStillPicture() const {
    const QString suffix = QFileInfo(filePath).suffix().toLower();
    return suffix == QStringLiteral("png") || suffix == QStringLiteral("jpg") ||
           suffix == QStringLiteral("jpeg");
}

std::optional<Error> FileCameraDevice::sourceProblem() const {
    return headerProblem(filePath, isStillPicture());
}

std::optional<Error> FileCameraDevice::problemWith(const QString& path,
                                                   std::chrono::milliseconds patience) {
    const FileCameraDevice camera(path);
    if (std::optional<Error> problem = camera.sourceProblem())
        return problem;
    if (!camera.isStillPicture())
        return videoProblem(path, patience);
    QImageReader reader(path);
    if (reader.read().isNull())
        return unusable(qtTrId("camfile_picture_cannot_decoded_may")
                            .arg(QFileInfo(path).fileName(), reader.errorString()));
    return std::nullopt;
}

GstElement* FileCameraDevice::createSourceElement() const {
    return isStillPicture() ? createPictureSource() : createVideoSource();
}

GstElement* FileCameraDevice::createPictureSource() const {
    // Decoders named outright: decodebin's late pads do not link inside a parsed bin here.
    const QByteArray decoder =
        QFileInfo(filePath).suffix().toLower() == QStringLiteral("png") ? "pngdec" : "jpegdec";
    const QByteArray description =
        "filesrc name=file ! " + decoder + " ! videoconvert ! imagefreeze is-live=true";
    g_autoptr(GError) error = nullptr;
    GstElement* bin = gst_parse_bin_from_description(description.constData(), TRUE, &error);
    if (!bin)
        return nullptr;
    GstHandle<GstElement> file(gst_bin_get_by_name(GST_BIN(bin), "file"), GstRef::adopt);
    g_object_set(file.get(), "location", filePath.toUtf8().constData(), nullptr);
    return bin;
}

GstElement* FileCameraDevice::createVideoSource() const {
    // Every element made before the bin, so a missing one leaves nothing behind.
    const GstHandle<GstElement> source(Gst::make("appsrc", "frames"), GstRef::adopt);
    const GstHandle<GstElement> sink(Gst::make("appsink"), GstRef::adopt);
    const GstHandle<GstElement> player(Gst::make("playbin", "player"), GstRef::adopt);
    const GstHandle<GstElement> silence(Gst::make("fakesink"), GstRef::adopt);

    // A live source like a camera: the newest frame wins when the session falls behind. Its
    // caps are the first frame's.
    g_object_set(source.get(), "is-live", TRUE, "do-timestamp", TRUE, "format", GST_FORMAT_TIME,
                 "max-buffers", guint64(2), "leaky-type", GST_APP_LEAKY_TYPE_DOWNSTREAM, nullptr);

    const GstHandle<GstCaps> frames(gst_caps_from_string("video/x-raw, format=I420"),
                                    GstRef::adopt);
    // Paced at the file's own speed; a frame late on a busy machine is left out.
    g_object_set(sink.get(), "caps", frames.get(), "sync", TRUE, "max-buffers", 2, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = pushFrame;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, new Feed{source, {}},
                               freeFeed);

    const QByteArray uri = QUrl::fromLocalFile(QFileInfo(filePath).absoluteFilePath()).toEncoded();
    constexpr guint videoOnly = 1; // GST_PLAY_FLAG_VIDEO: no sound, no subtitles
    // An audio sink of our own, or playbin tries (and opens) the machine's to check the sound.
    g_object_set(player.get(), "uri", uri.constData(), "video-sink", sink.get(), "audio-sink",
                 silence.get(), "flags", videoOnly, nullptr);
    g_signal_connect(player.get(), "about-to-finish", G_CALLBACK(playAgain), nullptr);

    GstElement* bin = gst_bin_new(nullptr);
    g_object_set(bin, "async-handling", TRUE, nullptr);
    gst_bin_add_many(GST_BIN(bin), player.get(), source.get(), nullptr);
    const GstHandle<GstPad> pad(gst_element_get_static_pad(source.get(), "src"), GstRef::adopt);
    gst_element_add_pad(bin, gst_ghost_pad_new("src", pad.get()));
    return bin;
}

} // namespace av
