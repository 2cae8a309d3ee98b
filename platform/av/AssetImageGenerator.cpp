#include "platform/av/AssetImageGenerator.h"

#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"

#include <gst/app/gstappsink.h>
#include <gst/pbutils/pbutils.h>
#include <gst/video/video.h>

#include <algorithm>

namespace av {

namespace {

constexpr GstClockTime waitLimit = 10 * GST_SECOND;

// Waits for the pipeline to reach PAUSED with a frame ready; false on error or time-out.
bool preroll(GstElement* pipeline) {
    if (gst_element_set_state(pipeline, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
        return false;
    return gst_element_get_state(pipeline, nullptr, nullptr, waitLimit) == GST_STATE_CHANGE_SUCCESS;
}

QImage imageOf(const GstHandle<GstSample>& sample) {
    GstVideoInfo info;
    GstVideoFrame frame;
    if (!sample || !gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get())) ||
        !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample.get()), GST_MAP_READ))
        return {};
    QImage image = QImage(static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                          GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame),
                          GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), QImage::Format_RGBX8888)
                       .copy();
    gst_video_frame_unmap(&frame);
    return image;
}

} // namespace

AssetImageGenerator::AssetImageGenerator(QUrl url) : asset(std::move(url)) {
    Gst::ensureInitialized();
}

std::optional<double> AssetImageGenerator::duration() const {
    g_autoptr(GError) error = nullptr;
    GstHandle<GstDiscoverer> discoverer(gst_discoverer_new(waitLimit, &error), GstRef::adopt);
    if (!discoverer)
        return std::nullopt;
    g_autoptr(GError) failure = nullptr;
    GstHandle<GstDiscovererInfo> info(
        gst_discoverer_discover_uri(
            discoverer.get(), asset.toString(QUrl::FullyEncoded).toUtf8().constData(), &failure),
        GstRef::adopt);
    if (!info || gst_discoverer_info_get_result(info.get()) != GST_DISCOVERER_OK)
        return std::nullopt;
    return double(gst_discoverer_info_get_duration(info.get())) / double(GST_SECOND);
}

QImage AssetImageGenerator::imageAt(double seconds, int maximumWidth) const {
    g_autoptr(GError) error = nullptr;
    // videoflip follows the rotation tag the movie carries, so the picture comes out upright.
    GstHandle<GstElement> sinkBin(
        gst_parse_bin_from_description(
            "videoflip video-direction=auto ! videoconvert ! videoscale ! "
            "video/x-raw,format=RGBx,pixel-aspect-ratio=1/1 ! appsink name=sink sync=false",
            TRUE, &error),
        GstRef::adopt);
    GstHandle<GstElement> pipeline(gst_element_factory_make("playbin", nullptr), GstRef::adopt);
    if (!sinkBin || !pipeline)
        return {};
    GstHandle<GstElement> sink(gst_bin_get_by_name(GST_BIN(sinkBin.get()), "sink"), GstRef::adopt);
    // Pictures only: flags = video.
    g_object_set(pipeline.get(), "uri", asset.toString(QUrl::FullyEncoded).toUtf8().constData(),
                 "video-sink", sinkBin.get(), "audio-sink",
                 gst_element_factory_make("fakesink", nullptr), "flags", 1, nullptr);
    QImage image;
    if (preroll(pipeline.get())) {
        gint64 length = 0;
        gst_element_query_duration(pipeline.get(), GST_FORMAT_TIME, &length);
        gint64 target = gint64(std::max(0.0, seconds) * double(GST_SECOND));
        if (length > 0)
            target = std::min(target, length);
        // The movie's length is its longest track's: near the end the pictures may have run
        // out already, so step back until there is one.
        for (int attempt = 0; image.isNull() && attempt < 12; ++attempt) {
            gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME,
                                    GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                    std::max<gint64>(0, target - attempt * GST_SECOND / 20));
            if (!preroll(pipeline.get()))
                break;
            image = imageOf(GstHandle<GstSample>(
                gst_app_sink_pull_preroll(GST_APP_SINK(sink.get())), GstRef::adopt));
        }
    }
    Gst::stop(pipeline);
    if (!image.isNull() && image.width() > maximumWidth)
        image = image.scaledToWidth(maximumWidth, Qt::SmoothTransformation);
    return image;
}

} // namespace av
