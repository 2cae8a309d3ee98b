#pragma once

#include "platform/av/VirtualCameraLayer.h"

#include <cstdint>
#include <memory>

namespace av {

// What the virtual camera shows: a subject in front of a distant background that repeats sideways
// (a city for the back camera, a room and the user's face for the front), with a clock on the
// background. Immutable once built.
struct VirtualCameraScene {
    // The background's distance behind the subject, in walker distances at zoom 1.
    static constexpr double backgroundDistance = 8.0;
    // The clock on the background, far enough left of the subject that it is never hidden.
    static constexpr double clockLeft = 0.775;
    static constexpr double clockTop = 0.43;
    static constexpr double clockDigitHeight = 0.032;

    int frameHeight;
    VirtualCameraLayer background;
    VirtualCameraLayer subject;

    // The scene for this frame height and camera, built on first use and shared while it is
    // held. Any thread.
    static std::shared_ptr<const VirtualCameraScene> shared(int height, bool front);

    // Seven-segment characters: the painted display and the per-frame clock share the layout.
    // Calls lit(x, y, w, h) for each segment of text, in digit heights from the top left.
    template <typename Function> static void forEachSegment(const char* text, Function&& segment) {
        constexpr double w = 0.55, t = 0.12;
        struct Box {
            double x, y, w, h;
        };
        static constexpr Box segments[7] = {
            {t, 0, w - 2 * t, t},               // a
            {w - t, t * 0.5, t, 0.5 - t * 0.5}, // b
            {w - t, 0.5, t, 0.5 - t * 0.5},     // c
            {t, 1 - t, w - 2 * t, t},           // d
            {0, 0.5, t, 0.5 - t * 0.5},         // e
            {0, t * 0.5, t, 0.5 - t * 0.5},     // f
            {t, 0.5 - t * 0.5, w - 2 * t, t},   // g
        };
        static constexpr uint8_t digits[10] = {0x3f, 0x06, 0x5b, 0x4f, 0x66,
                                               0x6d, 0x7d, 0x07, 0x7f, 0x6f};
        double x = 0;
        for (const char* c = text; *c; ++c) {
            if (*c >= '0' && *c <= '9') {
                for (int s = 0; s < 7; ++s) {
                    if (digits[*c - '0'] & (1 << s))
                        segment(x + segments[s].x, segments[s].y, segments[s].w, segments[s].h);
                }
                x += 0.75;
            } else {
                if (*c == ':')
                    segment(x + 0.06, 0.25, t, t);
                if (*c == ':' || *c == '.')
                    segment(x + 0.06, 1 - t - (*c == ':' ? 0.15 : 0), t, t);
                x += 0.35;
            }
        }
    }
};

} // namespace av
