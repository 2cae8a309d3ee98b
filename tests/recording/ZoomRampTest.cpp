#include "recording/ZoomRamp.h"
#include "recording/CameraViewController.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// What a ramp showed, tick by tick, and the tick (1-based) at which it was over, or 0.
struct RampRun {
    std::vector<float> applied;
    std::vector<qint64> secondsLeft;
    int endTick = 0;
};

RampRun run(ZoomRamp& ramp, ZoomMode mode, int maxTicks) {
    RampRun result;
    for (int tick = 1; tick <= maxTicks; ++tick) {
        const std::optional<ZoomRamp::Tick> shown = ramp.tick(mode);
        if (!shown) {
            result.endTick = tick;
            break;
        }
        result.applied.push_back(shown->zoom);
        result.secondsLeft.push_back(shown->secondsLeft);
    }
    return result;
}

struct RampCase {
    const char* name;
    float slider, duration;
    ZoomMode mode;
    size_t values;
    float first, last, lastTolerance;
};

void PrintTo(const RampCase& row, std::ostream* out) {
    *out << row.name;
}

class ZoomRampCases : public ::testing::TestWithParam<RampCase> {};

// The seconds left turn over every hundred ticks, down to 0 for a last tick past the duration.
TEST_P(ZoomRampCases, WalksLinearlyAndEndsAfterItsDuration) {
    const RampCase& row = GetParam();
    ZoomRamp ramp(row.slider, row.duration, row.mode);
    const RampRun result = run(ramp, row.mode, 2000);
    ASSERT_EQ(result.applied.size(), row.values);
    EXPECT_EQ(result.endTick, int(row.values) + 1);
    EXPECT_FLOAT_EQ(result.applied.front(), row.first);
    EXPECT_NEAR(result.applied.back(), row.last, row.lastTolerance);
    // Never past the slider's zoom, nor below 1.0.
    for (const float zoom : result.applied) {
        EXPECT_GE(zoom, 1.0f);
        EXPECT_LE(zoom, std::max(row.slider, 1.0f));
    }
    for (size_t tick = 0; tick < result.secondsLeft.size(); ++tick)
        ASSERT_EQ(result.secondsLeft[tick], qint64(row.duration) - qint64(tick / 100)) << tick;
    EXPECT_FALSE(ramp.tick(row.mode)) << "over stays over";
}

INSTANTIATE_TEST_SUITE_P(
    Ramps, ZoomRampCases,
    ::testing::Values(
        RampCase{"Default", 3.0f, 5.0f, ZoomMode::zoomOut, 501, 3.0f, 1.00003f, 0.00002f},
        // Rounding makes the 1001st value fall below 1: one value fewer.
        RampCase{"TenSeconds", 4.0f, 10.0f, ZoomMode::zoomOut, 1000, 4.0f, 1.003f, 0.0005f},
        RampCase{"ZoomIn", 3.0f, 5.0f, ZoomMode::zoomIn, 501, 1.0f, 2.99997f, 0.00002f},
        RampCase{"OneSecond", 2.0f, 1.0f, ZoomMode::zoomOut, 101, 2.0f, 1.0f, 0.0001f},
        // Flat ramps end on the tick count: from 1.0, and with a step too small
        // to move a float.
        RampCase{"Flat", 1.0f, 5.0f, ZoomMode::zoomOut, 501, 1.0f, 1.0f, 0.0f},
        RampCase{"TinyStep", 1.00002f, 5.0f, ZoomMode::zoomOut, 501, 1.00002f, 1.00002f, 0.0f}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ZoomRampTest, AModeChangedMidRampTurnsItAround) {
    ZoomRamp ramp(3.0f, 1.0f, ZoomMode::zoomOut);
    run(ramp, ZoomMode::zoomOut, 10);
    EXPECT_NEAR(ramp.current, 2.8f, 1e-5f);
    ramp.tick(ZoomMode::zoomIn);
    EXPECT_NEAR(ramp.current, 2.82f, 1e-5f);
    // Going up from below the end: over once it passes the slider's zoom.
    EXPECT_NE(run(ramp, ZoomMode::zoomIn, 20).endTick, 0);
}

TEST(ZoomRampTest, ALateTimerRunsTheTicksItMissed) {
    qint64 now = 1'000'000'000;
    ZoomRamp ramp(3.0f, 5.0f, ZoomMode::zoomOut);
    ramp.startClock([&now] { return now; });
    EXPECT_EQ(ramp.ticksDue(), 1) << "a timer shot always moves the ramp";
    now += 55 * ZoomRamp::tickNanoseconds;
    EXPECT_EQ(ramp.ticksDue(), 55);
    run(ramp, ZoomMode::zoomOut, 55);
    EXPECT_EQ(ramp.ticksDue(), 1);
    now += 3 * ZoomRamp::tickNanoseconds / 2;
    EXPECT_EQ(ramp.ticksDue(), 1);
}

TEST(ZoomRampTest, StoredModesOutsideTheTableReadAsTheDefault) {
    EXPECT_EQ(zoomModeFromStored(1), ZoomMode::zoomIn);
    for (const qint64 odd : {-1, 2, 5})
        EXPECT_EQ(zoomModeFromStored(odd), ZoomMode::zoomOut) << odd;
    EXPECT_EQ(videoModeFromStored(2), VideoMode::uhd);
    for (const qint64 odd : {-1, 3, 99})
        EXPECT_EQ(videoModeFromStored(odd), VideoMode::hd) << odd;
}

// The controls fit every window shape: inside it, in order from top to bottom, none over
// another, and in a phone-wide column centred in a wide window.
TEST(ControlGeometryTest, EveryWindowShapeHoldsTheControls) {
    const struct {
        const char* name;
        QSize window;
    } shapes[] = {{"phone portrait", {390, 844}},
                  {"small phone", {320, 568}},
                  {"phone landscape", {844, 390}},
                  {"desktop", {1280, 800}}};
    for (const auto& shape : shapes) {
        for (const int buttons : {6, 5, 1}) {
            SCOPED_TRACE(std::string(shape.name) + ", " + std::to_string(buttons) + " buttons");
            const auto geometry = CameraViewController::controlGeometry(shape.window, buttons, 76);
            const QRect window(QPoint(0, 0), shape.window);
            ASSERT_EQ(geometry.topRow.size(), size_t(buttons));
            for (size_t i = 0; i < geometry.topRow.size(); ++i) {
                EXPECT_TRUE(window.contains(geometry.topRow[i])) << i;
                if (i > 0) {
                    EXPECT_LE(geometry.topRow[i - 1].right(), geometry.topRow[i].left()) << i;
                }
            }
            const QRect bottom[] = {geometry.zoomInfoLabel, geometry.cameraInfoLabel,
                                    geometry.zoomSlider, geometry.cameraButton};
            EXPECT_GE(geometry.zoomInfoLabel.top(), geometry.topRow.front().bottom());
            for (size_t i = 0; i < std::size(bottom); ++i) {
                EXPECT_TRUE(window.contains(bottom[i])) << i;
                if (i > 0) {
                    EXPECT_LE(bottom[i - 1].bottom(), bottom[i].top()) << i;
                }
            }
            EXPECT_FALSE(geometry.zoomValueLabel.intersects(geometry.zoomSlider));
            EXPECT_NEAR(geometry.zoomSlider.center().x(), window.center().x(), 1);
            EXPECT_NEAR(geometry.cameraButton.center().x(), window.center().x(), 1);
            // The message keeps off the subject in the middle and off the recording timer.
            const QRect status = geometry.status(60);
            EXPECT_TRUE(window.contains(geometry.status(200)));
            EXPECT_LT(status.bottom(), window.center().y());
            EXPECT_GT(status.top(), geometry.recordingTimer.y() + 32);
            EXPECT_TRUE(geometry.bottomScrim.contains(geometry.cameraButton));
        }
    }
}

} // namespace
