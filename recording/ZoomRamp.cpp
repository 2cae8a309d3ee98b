#include "recording/ZoomRamp.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>

ZoomRamp::Clock ZoomRamp::steadyClock() {
    return [] {
        static const QElapsedTimer origin = [] {
            QElapsedTimer timer;
            timer.start();
            return timer;
        }();
        return origin.nsecsElapsed();
    };
}

ZoomRamp::ZoomRamp(float slider, float duration, ZoomMode mode)
    : current(mode == ZoomMode::zoomIn ? 1.0f : slider), end(slider),
      step(((slider - 1.0f) / duration) / 100.0f), duration(duration) {
    wholeSeconds(duration);
}

qint64 ZoomRamp::wholeSeconds(float seconds) {
    if (!std::isfinite(seconds) || seconds >= 9.2233720368547758e18f ||
        seconds < -9.2233720368547758e18f)
        qFatal("ZoomRamp: \"zoomDuration\" %g is not a number of seconds", double(seconds));
    return qint64(seconds);
}

std::optional<ZoomRamp::Tick> ZoomRamp::tick(ZoomMode mode) {
    // The tick count ends the ramps whose zoom never passes its end: a flat one from 1.0, or a
    // step too small to move a float.
    const bool over = (mode == ZoomMode::zoomIn ? current > end : current < 1.0f) ||
                      elapsed > double(duration) * 100.0;
    if (over)
        return std::nullopt;
    const Tick shown{current, wholeSeconds(duration) - qint64(std::trunc(elapsed)) / 100};
    current = mode == ZoomMode::zoomIn ? current + step : current - step;
    elapsed = elapsed + 1.0;
    return shown;
}

void ZoomRamp::startClock(Clock source) {
    clock = std::move(source);
    started = clock();
}

qint64 ZoomRamp::ticksDue() const {
    const qint64 onTime = (clock() - started) / tickNanoseconds;
    return std::max<qint64>(1, onTime - qint64(elapsed));
}
