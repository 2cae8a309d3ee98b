#pragma once

#include "recording/RecordingModes.h"

#include <functional>
#include <optional>

// One take's zoom ramp: every 10 ms the zoom moves by a fixed step from its start towards its
// end, and the ramp is over once the zoom has passed the end or the duration is up. Single
// precision on purpose: the end test and the number of ticks follow float rounding.
class ZoomRamp {
public:
    // Nanoseconds on a steady clock from any origin; a test passes its own to step the ramp.
    using Clock = std::function<qint64()>;
    static Clock steadyClock();
    static constexpr qint64 tickNanoseconds = 10'000'000;

    // The zoom and the whole seconds left that one tick shows.
    struct Tick {
        float zoom;
        qint64 secondsLeft;
    };

    // From the slider's zoom for duration seconds; a zoom-in ramp starts at 1.0.
    ZoomRamp(float slider, float duration, ZoomMode mode);

    // One tick in the mode read now (a change mid-ramp turns it around); nullopt once the ramp
    // is over, and then nothing moves.
    std::optional<Tick> tick(ZoomMode mode);

    // Starts counting time; ticksDue() is then at least one per call, and also every tick a late
    // timer missed, so the ramp keeps to the clock and ends on time instead of stretching.
    void startClock(Clock clock);
    qint64 ticksDue() const;

    // The whole seconds of a duration; a value no integer holds is a programming error (the
    // stored duration is range-checked when read).
    static qint64 wholeSeconds(float seconds);

    float current = 1.0f;
    float end = 1.0f;
    float step = 0.0f;
    // Ticks run so far.
    double elapsed = 0.0;
    float duration = 5.0f;

private:
    Clock clock;
    qint64 started = 0;
};
