#pragma once

#include <QtGlobal>

// The two settings the recording screen stores as integers ("zoomMode", "videoMode"). The
// integers are what the preferences file holds, so they never change.

// Which way the zoom ramps during a take.
enum class ZoomMode : int {
    // From the slider's zoom down to 1.0: the subject keeps its size, the background grows.
    zoomOut = 0,
    // From 1.0 up to the slider's zoom.
    zoomIn = 1,
};

// The format button's rows, in their order.
enum class VideoMode : int {
    hd = 0,   // 1920×1080 at 30
    hd60 = 1, // 1920×1080 at 60
    uhd = 2,  // 3840×2160 at 30
};
inline constexpr int videoModeCount = 3;

// A stored value no mode has (written by hand) reads as the default, like an absent one.
constexpr ZoomMode zoomModeFromStored(qint64 stored) {
    return stored == qint64(ZoomMode::zoomIn) ? ZoomMode::zoomIn : ZoomMode::zoomOut;
}
constexpr VideoMode videoModeFromStored(qint64 stored) {
    return stored >= 0 && stored < videoModeCount ? VideoMode(stored) : VideoMode::hd;
}
