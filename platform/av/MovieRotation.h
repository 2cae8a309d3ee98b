#pragma once

#include <gst/gst.h>

namespace av {

// qtmux of GStreamer 1.22 takes no rotation, so the video track's display matrix is written into
// every movie header it sends (the first one, the periodic updates, the final one).
class MovieRotation {
public:
    // Rotates the movie qtmux writes by this many degrees (a multiple of 90) clockwise: the
    // orientation tag, and the track matrix patched into each header. Nothing for 0.
    static void apply(GstElement* mux, int degrees);
    // Writes the display matrix of every video track in a "moov" atom at data; anything else,
    // and atoms that do not fit, are left as they are.
    static void setVideoTrackMatrix(guint8* data, gsize size, int degrees);
};

} // namespace av
