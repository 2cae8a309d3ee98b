#pragma once

#include <QString>

#include <vector>

namespace av {

struct FrameRateRange {
    double minFrameRate = 0;
    double maxFrameRate = 0;
    bool operator==(const FrameRateRange&) const = default;
};

// One way a device can deliver pictures: a size and the frame-rate ranges it offers for it, in
// the order the device lists them.
struct CaptureDeviceFormat {
    int width = 0;
    int height = 0;
    std::vector<FrameRateRange> videoSupportedFrameRateRanges;
    // The media the source produces for this format ("video/x-raw", "image/jpeg" ...), so the
    // pipeline can ask for exactly it.
    QString mediaType = QStringLiteral("video/x-raw");

    bool isValid() const { return width > 0 && height > 0; }
    bool operator==(const CaptureDeviceFormat&) const = default;
};

// A time of value/timescale seconds, as frame durations are given.
struct FrameDuration {
    qint64 value = 0;
    qint32 timescale = 0;

    bool isValid() const { return value > 0 && timescale > 0; }
    double frameRate() const { return isValid() ? double(timescale) / double(value) : 0.0; }
    bool operator==(const FrameDuration&) const = default;
};

} // namespace av
