#include "platform/av/FileCameraDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/Gst.h"

#include "tests/av/SessionFailure.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <gst/video/video.h>
#include <gtest/gtest.h>

namespace av {
namespace {

// A one-second 4:3 clip of colour bars, with sound, which the camera leaves out.
QString makeClip(const QTemporaryDir& folder) {
    Gst::ensureInitialized();
    const QString path = folder.filePath(QStringLiteral("clip.mp4"));
    const QByteArray launch =
        "videotestsrc num-buffers=30 pattern=smpte ! video/x-raw,width=320,height=240,"
        "framerate=30/1 ! x264enc ! mp4mux name=mux ! filesink location=" +
        path.toUtf8() + " audiotestsrc num-buffers=47 ! avenc_aac ! mux.";
    EXPECT_TRUE(Gst::runToEnd(launch, std::chrono::seconds(20)));
    return path;
}

int lumaAt(GstSample* sample, int x, int y) {
    GstVideoInfo info;
    gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ);
    const int luma = static_cast<const guint8*>(
        GST_VIDEO_FRAME_PLANE_DATA(&frame, 0))[y * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0) + x];
    gst_video_frame_unmap(&frame);
    return luma;
}

QString writeFile(const QTemporaryDir& folder, const QString& name, const QByteArray& bytes) {
    const QString path = folder.filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    return path;
}

TEST(FileCameraDevice, aVideoLoopsAtTheSessionFormatWithBlackBars) {
    QTemporaryDir folder;
    FileCameraDevice camera(makeClip(folder));
    EXPECT_FALSE(camera.isStillPicture());
    CaptureSession session;
    session.setSessionPreset(CaptureSession::preset1280x720);
    session.addInput(new CaptureDeviceInput(&camera));
    CapturePreviewOutput preview;
    session.addOutput(&preview);
    session.startRunning();
    ASSERT_TRUE(session.isRunning());

    // Well past the clip's end, frames still come: the clip started over.
    QTest::qWait(2500);
    const quint64 early = preview.framesReceived();
    EXPECT_GT(early, 45u);
    QTest::qWait(500);
    EXPECT_GT(preview.framesReceived(), early + 5);
    GstHandle<GstSample> frame = preview.takeLatestFrame();
    session.stopRunning();
    ASSERT_TRUE(frame);

    GstVideoInfo info;
    ASSERT_TRUE(gst_video_info_from_caps(&info, gst_sample_get_caps(frame.get())));
    EXPECT_EQ(info.width, 1280);
    EXPECT_EQ(info.height, 720);
    EXPECT_EQ(info.fps_n, 30);
    // 4:3 in 16:9: black at the sides, the bars (light grey at the left) in the middle.
    EXPECT_LT(lumaAt(frame.get(), 20, 360), 24);
    EXPECT_GT(lumaAt(frame.get(), 170, 100), 120);
}

TEST(FileCameraDevice, aFileThatIsNoVideoStopsTheSessionWithAnError) {
    QTemporaryDir folder;
    FileCameraDevice camera(writeFile(folder, QStringLiteral("broken.mp4"), QByteArray(4096, 'x')));
    EXPECT_TRUE(sessionFailure(camera));
}

// The PNG chunk checksum (CRC-32, bit by bit: a few bytes only).
quint32 crc32(const QByteArray& bytes) {
    quint32 crc = 0xffffffffu;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray pngChunk(const char* type, const QByteArray& data) {
    QByteArray chunk(4, '\0');
    qToBigEndian(quint32(data.size()), chunk.data());
    chunk += QByteArray(type, 4) + data;
    QByteArray crc(4, '\0');
    qToBigEndian(crc32(chunk.mid(4)), crc.data());
    return chunk + crc;
}

// A PNG whose header claims a picture of this size; its pixels are missing.
QByteArray pngHeader(quint32 width, quint32 height) {
    QByteArray header(13, '\0');
    qToBigEndian(width, header.data());
    qToBigEndian(height, header.data() + 4);
    header[8] = 8; // bits per sample
    header[9] = 2; // RGB
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", header) + pngChunk("IDAT", {}) +
           pngChunk("IEND", {});
}

// Each file that cannot be a camera is refused before the camera starts, with its reason;
// those the header gives away cannot even be opened, so they are never decoded.
TEST(FileCameraDevice, aFileThatCannotBeACameraIsRefusedWithItsReason) {
    QTemporaryDir folder;
    QImage picture(640, 360, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    const QString whole = folder.filePath(QStringLiteral("whole.png"));
    ASSERT_TRUE(picture.save(whole));
    QFile wholeFile(whole);
    ASSERT_TRUE(wholeFile.open(QIODevice::ReadOnly));
    const QByteArray png = wholeFile.readAll();
    // A video cut short is left out: decodebin sometimes swallows the demuxer's error, and the
    // check then gives it the benefit of the doubt.
    QFile clip(makeClip(folder));
    const struct {
        QString path;
        const char* reason;
        bool byHeader;
    } rows[] = {
        {folder.filePath(QStringLiteral("missing.png")), "does not exist", true},
        {writeFile(folder, QStringLiteral("empty.png"), {}), "is empty", true},
        {writeFile(folder, QStringLiteral("empty.mp4"), {}), "is empty", true},
        {writeFile(folder, QStringLiteral("text.png"), "a letter"), "not a picture", true},
        {writeFile(folder, QStringLiteral("huge.png"), pngHeader(30000, 30000)), "30000×30000",
         true},
        {writeFile(folder, QStringLiteral("cut.png"), png.left(png.size() / 2)), "cut short",
         false},
        {writeFile(folder, QStringLiteral("text.mp4"), "a letter"), "not a picture or a video",
         false},
    };
    EXPECT_FALSE(FileCameraDevice::problemWith(whole));
    EXPECT_FALSE(FileCameraDevice::problemWith(clip.fileName(), std::chrono::seconds(30)));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        // Patient, for a loaded machine.
        const std::optional<Error> problem =
            FileCameraDevice::problemWith(row.path, std::chrono::seconds(30));
        ASSERT_TRUE(problem);
        EXPECT_TRUE(problem->localizedDescription().contains(QString::fromUtf8(row.reason)))
            << problem->localizedDescription().toStdString();
        if (!row.byHeader)
            continue;
        FileCameraDevice camera(row.path);
        try {
            delete new CaptureDeviceInput(&camera);
            ADD_FAILURE() << "the camera was opened";
        } catch (const Error& refused) {
            EXPECT_EQ(refused.localizedDescription(), problem->localizedDescription());
        }
    }
}

} // namespace
} // namespace av
