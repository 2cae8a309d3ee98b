#pragma once

// What a recorded movie holds, as GStreamer's discoverer reads it.

#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"

#include <QString>
#include <QUrl>
#include <gst/pbutils/pbutils.h>

struct MovieInfo {
    bool readable = false;
    // The container's caps name ("video/quicktime"), empty for a bare stream.
    QString container;
    // Caps names ("video/x-h264", "audio/mpeg"); empty where the movie has no such stream.
    QString videoCodec, audioCodec;
    // The sound's MPEG version: 4 for AAC, 0 without one.
    int audioMpegVersion = 0;
    int audioStreams = 0;
    int width = 0, height = 0;
    double seconds = 0;
    // The video's image-orientation tag ("rotate-90" ...), empty without one.
    QString orientation;
};

inline MovieInfo inspectMovie(const QString& path) {
    av::Gst::ensureInitialized();
    MovieInfo info;
    const av::GstHandle<GstDiscoverer> discoverer(gst_discoverer_new(10 * GST_SECOND, nullptr),
                                                  av::GstRef::adopt);
    if (!discoverer)
        return info;
    const av::GstHandle<GstDiscovererInfo> held(
        gst_discoverer_discover_uri(discoverer.get(),
                                    QUrl::fromLocalFile(path).toEncoded().constData(), nullptr),
        av::GstRef::adopt);
    GstDiscovererInfo* result = held.get();
    if (!result)
        return info;
    const auto capsName = [](GstDiscovererStreamInfo* stream, int* mpegVersion = nullptr) {
        const av::GstHandle<GstCaps> caps(gst_discoverer_stream_info_get_caps(stream),
                                          av::GstRef::adopt);
        if (!caps)
            return QString();
        const GstStructure* structure = gst_caps_get_structure(caps.get(), 0);
        if (mpegVersion)
            gst_structure_get_int(structure, "mpegversion", mpegVersion);
        return QString::fromUtf8(gst_structure_get_name(structure));
    };
    info.readable = gst_discoverer_info_get_result(result) == GST_DISCOVERER_OK;
    const av::GstHandle<GstDiscovererStreamInfo> top(gst_discoverer_info_get_stream_info(result),
                                                     av::GstRef::adopt);
    if (GST_IS_DISCOVERER_CONTAINER_INFO(top.get()))
        info.container = capsName(top.get());
    info.seconds = double(gst_discoverer_info_get_duration(result)) / GST_SECOND;
    GList* videos = gst_discoverer_info_get_video_streams(result);
    if (videos) {
        auto* video = GST_DISCOVERER_VIDEO_INFO(videos->data);
        info.width = int(gst_discoverer_video_info_get_width(video));
        info.height = int(gst_discoverer_video_info_get_height(video));
        info.videoCodec = capsName(GST_DISCOVERER_STREAM_INFO(video));
        g_autofree gchar* orientation = nullptr;
        const GstTagList* tags =
            gst_discoverer_stream_info_get_tags(GST_DISCOVERER_STREAM_INFO(video));
        if (tags && gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &orientation))
            info.orientation = QString::fromUtf8(orientation);
    }
    GList* audios = gst_discoverer_info_get_audio_streams(result);
    info.audioStreams = int(g_list_length(audios));
    if (audios)
        info.audioCodec =
            capsName(GST_DISCOVERER_STREAM_INFO(audios->data), &info.audioMpegVersion);
    gst_discoverer_stream_info_list_free(videos);
    gst_discoverer_stream_info_list_free(audios);
    return info;
}
