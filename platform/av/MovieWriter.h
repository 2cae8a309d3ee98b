#pragma once

#include "platform/av/BusWatch.h"
#include "platform/av/GstHandle.h"

#include <QString>

#include <gst/audio/audio.h>
#include <gst/gst.h>

#include <chrono>
#include <deque>
#include <memory>

namespace av {

// The recording pipeline of one QuickTime movie: the session's frames and sound pushed into
// appsrc → H.264 encoder → h264parse → qtmux → filesink, and appsrc → AAC encoder → qtmux.
// qtmux rewrites its header every second into space reserved at the front of the file, so a
// process killed mid-recording leaves a movie that plays up to the last update.
//
// Built, started, ended and destroyed on the GUI thread; its bus messages reach the handler there.
// The push functions are called from the session's streaming threads, one call at a time.
class MovieWriter {
public:
    // The encoders are EncoderChoice's. Throws av::Error: encoderMissing when there is no H.264
    // encoder, recordingFailed when the pipeline cannot start. audioCaps may be null: the movie
    // then has no sound.
    MovieWriter(const QString& path, GstCaps* videoCaps, GstCaps* audioCaps, int rotationDegrees,
                BusWatch::Handler onMessage);
    ~MovieWriter();
    MovieWriter(const MovieWriter&) = delete;
    MovieWriter& operator=(const MovieWriter&) = delete;

    const QString& encoderName() const { return videoEncoder; }
    // How many frames of this many bytes may wait for the encoder before frames are dropped.
    static quint64 queuedFrames(quint64 frameBytes, double frameRate);

    // The movie starts at the first frame pushed; sound from before it is cut off, sound that
    // arrives before it waits (a second at most). The buffers are borrowed: the writer keeps
    // references, never copies of the pictures. False when the buffer was dropped (the queue was
    // full: the caller never waits) or, for a frame, has no usable time.
    bool pushVideo(GstBuffer* buffer);
    bool pushAudio(GstBuffer* buffer);
    // No push after this; the pipeline finishes the file and posts end-of-stream.
    void endOfStream();

    // GUI thread: waits for end-of-stream or an error, whichever comes first, dropping other
    // messages. Null when neither came in time.
    GstHandle<GstMessage> waitForEnd(std::chrono::milliseconds timeout);

private:
    bool hasOrigin() const { return GST_CLOCK_TIME_IS_VALID(origin); }
    bool push(GstElement* source, GstBuffer* buffer, quint64 maxBytes);
    void pushHeldAudio();
    GstHandle<GstBuffer> clippedAudio(GstBuffer* buffer) const;

    GstHandle<GstElement> pipeline;
    GstElement* videoSource = nullptr;
    GstElement* audioSource = nullptr;
    GstHandle<GstCaps> videoCapsHeld;
    GstHandle<GstCaps> audioCapsHeld;
    GstAudioInfo audioInfo{};
    bool audioInterleaved = false;
    quint64 maxVideoBytes = 0;
    quint64 maxAudioBytes = 0;
    QString videoEncoder;
    std::unique_ptr<BusWatch> busWatch;

    // Used by the pushing threads only (their calls are serialised by the caller).
    GstClockTime origin = GST_CLOCK_TIME_NONE;
    GstSegment segment{};
    std::deque<GstHandle<GstBuffer>> heldAudio;
};

} // namespace av
