#pragma once

#include <QString>
#include <QStringList>

#include <gst/gst.h>
#include <gst/video/video.h>

#include <optional>

namespace av {

// Which encoders a recording gets, and their settings. Any thread.
class EncoderChoice {
public:
    // The H.264 encoder a recording of this format gets: a hardware encoder that has shown it
    // can encode this size, otherwise x264enc (also while the size is still being probed: it
    // never waits). Empty when there is none.
    static QString video(GstCaps* videoCaps);
    // Tries the hardware encoders on this size on a worker thread, once per size for the
    // process; returns at once.
    static void probeVideo(GstCaps* videoCaps);
    // True once the probe of this size has answered.
    static bool videoProbed(GstCaps* videoCaps);
    // Tests see a machine whose only H.264 encoders are these (an empty list: none at all);
    // nullopt goes back to what is installed.
    static void setVideoEncodersForTesting(std::optional<QStringList> factories);
    // The first AAC encoder installed; null when there is none.
    static const char* audio();
    // Loads the plugins a recording with this encoder needs, so the first press of record does
    // not wait for them (a fifth of a second on a small machine).
    static void loadPlugins(const QString& videoEncoder);

    // Real-time settings: a key frame every second, no B-frames (they would hold frames back and
    // cost a core), and the bit rate of the format.
    static void configureVideo(GstElement* encoder, const QString& factory,
                               const GstVideoInfo& info);
    // Target bit rate in kbit/s: 17 Mbit/s at 1080p30, 25 at 1080p60, 45 at 2160p30, and a
    // power law between and beyond them.
    static int videoBitrate(int width, int height, double frameRate);
};

} // namespace av
