#pragma once

#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"

#include <QString>

// Writes a QuickTime clip like a recording (H.264 and AAC, 30 frames a second) of moving colour
// bars and a tone; false when it could not. Tests and benchmarks share it.
inline bool writeTestClip(const QString& path, double seconds, int width = 320, int height = 240) {
    av::Gst::ensureInitialized();
    const int frames = int(seconds * 30 + 0.5);
    const int blocks = int(seconds * 44100 / 1024 + 0.5);
    const QByteArray launch =
        QStringLiteral("videotestsrc num-buffers=%1 pattern=smpte horizontal-speed=4 ! "
                       "video/x-raw,width=%2,height=%3,"
                       "framerate=30/1 ! x264enc speed-preset=ultrafast ! qtmux name=mux ! "
                       "filesink location=\"%4\" audiotestsrc num-buffers=%5 samplesperbuffer=1024 "
                       "! audio/x-raw,rate=44100 ! avenc_aac ! mux.")
            .arg(frames)
            .arg(width)
            .arg(height)
            .arg(path)
            .arg(blocks)
            .toUtf8();
    return av::Gst::runToEnd(launch, std::chrono::seconds(30));
}
