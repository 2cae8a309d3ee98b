#include "platform/av/Player.h"
#include "platform/av/PlayerItem.h"
#include "platform/av/PlayerLayer.h"
#include "tests/av/TestClip.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>
#include <vector>

namespace av {
namespace {

class PlayerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = new QTemporaryDir;
        clip = folder->filePath(QStringLiteral("clip.mov"));
        ASSERT_TRUE(writeTestClip(clip, 0.5));
    }
    static void TearDownTestSuite() { delete folder; }

    static inline QTemporaryDir* folder = nullptr;
    static inline QString clip;
};

// Plays the clip in a loop as the preview does and counts the pictures the layer shows.
struct Looper {
    explicit Looper(const QString& path) : player(QUrl::fromLocalFile(path)), layer(&player) {
        player.setActionAtItemEnd(Player::ActionAtItemEnd::none);
        layer.setFrame(QRectF(0, 0, 64, 64));
        QObject::connect(&layer, &PlayerLayer::needsDisplay, [this] { layer.contents(); });
        QObject::connect(player.currentItem(), &PlayerItem::didPlayToEndTime,
                         [](PlayerItem* item) { item->seekToTime(0); });
        player.play();
    }
    Player player;
    PlayerLayer layer;
};

// The sound's samples at both sides of every seam, and the loudest one, as the sink gets them.
struct SeamSound {
    std::mutex mutex;
    GstClockTime lastTimestamp = GST_CLOCK_TIME_NONE;
    float lastSample = 0;
    std::vector<std::pair<float, float>> seams;
    float loudest = 0;

    static GstPadProbeReturn probe(GstPad*, GstPadProbeInfo* info, gpointer data) {
        auto* sound = static_cast<SeamSound*>(data);
        GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        GstMapInfo map;
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
            return GST_PAD_PROBE_OK;
        if (map.size < 2 * sizeof(float)) {
            gst_buffer_unmap(buffer, &map);
            return GST_PAD_PROBE_OK;
        }
        // Interleaved F32; the first channel is enough.
        const auto* samples = reinterpret_cast<const float*>(map.data);
        const size_t count = map.size / sizeof(float);
        std::lock_guard lock(sound->mutex);
        if (GST_BUFFER_PTS(buffer) < sound->lastTimestamp &&
            GST_CLOCK_TIME_IS_VALID(sound->lastTimestamp))
            sound->seams.emplace_back(sound->lastSample, samples[0]);
        for (size_t i = 0; i < count; ++i)
            sound->loudest = std::max(sound->loudest, std::abs(samples[i]));
        sound->lastSample = samples[count - 2];
        sound->lastTimestamp = GST_BUFFER_PTS(buffer);
        gst_buffer_unmap(buffer, &map);
        return GST_PAD_PROBE_OK;
    }
};

// The owner seeking back at each end makes a loop that plays on at the clip's speed, each notice
// carrying the item that ended, and whose sound is silent at the seams, so the loop does not click.
// The end is when the last frame shows, not when the file has been read.
TEST_F(PlayerTest, LoopsWhenTheOwnerSeeksBackAtTheEndWithoutAClick) {
    qputenv("TESSARO_AUDIO_SINK", "fakesink");
    QElapsedTimer clock;
    clock.start();
    Looper looper(clip);
    qunsetenv("TESSARO_AUDIO_SINK");
    QSignalSpy ends(looper.player.currentItem(), &PlayerItem::didPlayToEndTime);
    SeamSound sound;
    GstElement* audioSink = nullptr;
    g_object_get(looper.player.pipeline(), "audio-sink", &audioSink, nullptr);
    const GstHandle<GstElement> sink(audioSink, GstRef::adopt);
    ASSERT_TRUE(sink);
    GstHandle<GstPad> pad(gst_element_get_static_pad(sink.get(), "sink"), GstRef::adopt);
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, &SeamSound::probe, &sound, nullptr);
    ASSERT_TRUE(ends.wait(20000));
    EXPECT_GE(clock.elapsed(), 400);
    ASSERT_TRUE(QTest::qWaitFor([&] { return looper.player.passes() >= 4; }, 20000));
    EXPECT_EQ(looper.player.currentItem()->status(), PlayerItem::Status::readyToPlay);
    EXPECT_NEAR(looper.player.currentItem()->duration(), 0.5, 0.05);
    ASSERT_GE(ends.count(), 2);
    EXPECT_EQ(ends.first().first().value<PlayerItem*>(), looper.player.currentItem());
    // Still playing at the speed of the clip: about 15 pictures a pass.
    const quint64 shown = looper.layer.framesDisplayed();
    EXPECT_TRUE(QTest::qWaitFor([&] { return looper.layer.framesDisplayed() > shown + 5; }, 600));
    EXPECT_EQ(looper.player.rate(), 1.0f);

    looper.player.pause();
    std::lock_guard lock(sound.mutex);
    EXPECT_GT(sound.loudest, 0.5f); // the tone plays in between
    ASSERT_GE(sound.seams.size(), 2u);
    for (const auto& [before, after] : sound.seams) {
        EXPECT_LT(std::abs(before), 0.02f);
        EXPECT_LT(std::abs(after), 0.02f);
    }
}

TEST_F(PlayerTest, SoundWithoutADeviceNeverStopsThePicture) {
    // No sound server at all, a server that is not there, and a sink that fails while starting.
    for (const auto& [sink, server] :
         {std::pair("", ""), std::pair("autoaudiosink", "unix:/nonexistent/tessaro"),
          std::pair("pulsesink", "unix:/nonexistent/tessaro")}) {
        SCOPED_TRACE(sink);
        qputenv("TESSARO_AUDIO_SINK", sink);
        if (*server)
            qputenv("PULSE_SERVER", server);
        Looper looper(clip);
        EXPECT_TRUE(QTest::qWaitFor([&] { return looper.player.passes() >= 2; }, 20000));
        EXPECT_NE(looper.player.currentItem()->status(), PlayerItem::Status::failed)
            << qPrintable(looper.player.currentItem()->errorDescription());
        qunsetenv("TESSARO_AUDIO_SINK");
        qunsetenv("PULSE_SERVER");
    }
}

} // namespace
} // namespace av
