#include "platform/av/EncoderChoice.h"
#include "platform/av/GstHandle.h"
#include "platform/av/MovieRotation.h"

#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

TEST(EncoderChoiceTest, bitRateMeetsTheReferenceFormatsAndGrowsWithThePicture) {
    const struct {
        int width;
        int height;
        double fps;
        int kbps;
    } references[] = {{1920, 1080, 30, 17000}, {1920, 1080, 60, 25000}, {3840, 2160, 30, 45000}};
    for (const auto& row : references)
        EXPECT_EQ(av::EncoderChoice::videoBitrate(row.width, row.height, row.fps), row.kbps)
            << row.width << "x" << row.height << "@" << row.fps;
    const int hd = av::EncoderChoice::videoBitrate(1280, 720, 30);
    EXPECT_GT(hd, av::EncoderChoice::videoBitrate(640, 360, 30));
    EXPECT_LT(hd, 17000);
    EXPECT_GT(av::EncoderChoice::videoBitrate(3840, 2160, 60), 45000);
    EXPECT_EQ(av::EncoderChoice::videoBitrate(1920, 1080, 0), 17000);
}

TEST(EncoderChoiceTest, aRecordingNeverWaitsForTheHardwareProbe) {
    gst_init(nullptr, nullptr);
    // A size no other test uses, so this process has not probed it yet.
    av::GstHandle<GstCaps> caps(gst_caps_from_string("video/x-raw,format=I420,width=344,height=196,"
                                                     "framerate=30/1"),
                                av::GstRef::adopt);
    EXPECT_FALSE(av::EncoderChoice::videoProbed(caps.get()));
    // The first recording of a size starts with the software encoder while the probe runs.
    const QString first = av::EncoderChoice::video(caps.get());
    EXPECT_TRUE(first == "x264enc" || first == "openh264enc") << first.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return av::EncoderChoice::videoProbed(caps.get()); }, 15000));
    EXPECT_FALSE(av::EncoderChoice::video(caps.get()).isEmpty());

    av::GstHandle<GstCaps> unusable(gst_caps_from_string("video/x-raw"), av::GstRef::adopt);
    EXPECT_TRUE(av::EncoderChoice::video(unusable.get()).isEmpty());
    EXPECT_TRUE(av::EncoderChoice::video(nullptr).isEmpty());
    EXPECT_FALSE(av::EncoderChoice::videoProbed(unusable.get()));
}

void putBigEndian(std::vector<guint8>& out, guint32 value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(guint8(value >> shift));
}

guint32 bigEndianAt(const std::vector<guint8>& data, size_t at) {
    return guint32(data[at]) << 24 | guint32(data[at + 1]) << 16 | guint32(data[at + 2]) << 8 |
           guint32(data[at + 3]);
}

// An atom: its size, its type, then its body.
std::vector<guint8> atom(const char (&type)[5], const std::vector<guint8>& body) {
    std::vector<guint8> out;
    putBigEndian(out, guint32(8 + body.size()));
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

// A movie header as qtmux writes it: a video track, then a sound track (no picture size), each
// with a version-0 track header whose matrix holds `fill`.
std::vector<guint8> movieHeader(guint32 width, guint32 height, guint32 fill) {
    const auto track = [&](guint32 trackWidth, guint32 trackHeight) {
        std::vector<guint8> tkhd(40); // version, flags, times, ids, layer, volume: all 0
        for (guint32 value :
             {fill, fill, fill, fill, fill, fill, fill, fill, fill, trackWidth, trackHeight})
            putBigEndian(tkhd, value);
        return atom("trak", atom("tkhd", tkhd));
    };
    std::vector<guint8> tracks = track(width, height);
    const std::vector<guint8> sound = track(0, 0);
    tracks.insert(tracks.end(), sound.begin(), sound.end());
    return atom("moov", tracks);
}

constexpr size_t videoMatrixAt = 8 + 8 + 48;
constexpr size_t soundMatrixAt = videoMatrixAt + 92 + 8;

TEST(MovieRotationTest, turnsTheVideoTrackAndLeavesTheSoundTrack) {
    constexpr gint32 one = 1 << 16, w = 640 << 16, h = 360 << 16, last = 1 << 30;
    const struct {
        int degrees;
        std::array<gint32, 9> matrix;
    } rows[] = {
        {0, {one, 0, 0, 0, one, 0, 0, 0, last}},
        {90, {0, one, 0, -one, 0, 0, h, 0, last}},
        {180, {-one, 0, 0, 0, -one, 0, w, h, last}},
        {270, {0, -one, 0, one, 0, 0, 0, w, last}},
    };
    constexpr guint32 untouched = 0x07070707;
    for (const auto& row : rows) {
        std::vector<guint8> header = movieHeader(w, h, untouched);
        av::MovieRotation::setVideoTrackMatrix(header.data(), header.size(), row.degrees);
        for (size_t i = 0; i < 9; ++i) {
            EXPECT_EQ(gint32(bigEndianAt(header, videoMatrixAt + 4 * i)), row.matrix[i])
                << row.degrees << " degrees, entry " << i;
            EXPECT_EQ(bigEndianAt(header, soundMatrixAt + 4 * i), untouched);
        }
    }
    // A header cut short inside its track header, and a buffer that is no header, stay as sent.
    for (const auto& [size, type] : {std::pair(size_t(40), "moov"), std::pair(size_t(100), "moov"),
                                     std::pair(size_t(0), "mdat")}) {
        std::vector<guint8> header = movieHeader(w, h, untouched);
        std::copy_n(type, 4, header.begin() + 4);
        const std::vector<guint8> sent = header;
        av::MovieRotation::setVideoTrackMatrix(header.data(), size ? size : header.size(), 90);
        EXPECT_EQ(header, sent) << size << type;
    }
}

} // namespace
