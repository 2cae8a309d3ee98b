#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/Gst.h"
#include "platform/av/VideoFrameConverter.h"
#include "tests/av/Frames.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

#include <array>
#include <functional>

namespace av {
namespace {

using Gravity = CaptureVideoPreviewLayer::VideoGravity;
using Orientation = CaptureConnection::VideoOrientation;
using Yuv = std::array<std::uint8_t, 3>;

// An I420 frame whose every 2x2 block has the colour yuv gives for its top-left pixel.
GstHandle<GstSample> frameOf(int width, int height, const char* colorimetry,
                             const std::function<Yuv(int x, int y)>& yuv) {
    Gst::ensureInitialized();
    const QString description = QString::asprintf(
        "video/x-raw,format=I420,width=%d,height=%d,framerate=30/1,colorimetry=%s", width, height,
        colorimetry);
    GstHandle<GstCaps> caps(gst_caps_from_string(description.toUtf8().constData()), GstRef::adopt);
    const GstHandle<GstBuffer> buffer(
        Layout(GST_VIDEO_FORMAT_I420, width, height).frame([&](int component, double x, double y) {
            const int scale = component ? 2 : 1; // a chroma sample covers 2x2 pixels
            return yuv(int(x) * scale & ~1, int(y) * scale & ~1)[size_t(component)];
        }),
        GstRef::adopt);
    return GstHandle<GstSample>(gst_sample_new(buffer.get(), caps.get(), nullptr, nullptr),
                                GstRef::adopt);
}

// A grey frame in BT.601 video range.
GstHandle<GstSample> greyFrame(int width, int height, std::uint8_t luma) {
    return frameOf(width, height, "bt601", [luma](int, int) { return Yuv{luma, 128, 128}; });
}

// Within 6 levels of 255: GStreamer's converter works with 8-bit coefficients. A wrong matrix or
// range is off by tens of levels, so this still tells them apart.
void expectColour(QRgb actual, QColor expected, const std::string& what) {
    const QColor colour = QColor::fromRgb(actual);
    EXPECT_NEAR(colour.red(), expected.red(), 6) << what;
    EXPECT_NEAR(colour.green(), expected.green(), 6) << what;
    EXPECT_NEAR(colour.blue(), expected.blue(), 6) << what;
}

TEST(VideoFrameConverter, coloursFollowTheFramesMatrixAndRange) {
    struct Case {
        const char* colorimetry;
        Yuv yuv;
        QColor rgb;
    };
    const Case cases[] = {
        {"bt601", {81, 90, 240}, Qt::red},
        {"bt601", {145, 54, 34}, Qt::green},
        {"bt601", {41, 240, 110}, Qt::blue},
        {"bt601", {235, 128, 128}, Qt::white},
        {"bt601", {16, 128, 128}, Qt::black},
        {"bt709", {63, 102, 240}, Qt::red},
        {"bt709", {173, 42, 26}, Qt::green},
        {"bt709", {32, 240, 118}, Qt::blue},
        {"jpeg", {76, 85, 255}, Qt::red},
        {"jpeg", {255, 128, 128}, Qt::white},
        {"bt601", {235, 128, 255}, {255, 152, 255}}, // red past the range: clamped, not wrapped
    };
    VideoFrameConverter converter;
    for (const Case& c : cases) {
        const GstHandle<GstSample> frame =
            frameOf(8, 8, c.colorimetry, [&](int, int) { return c.yuv; });
        QImage image;
        ASSERT_TRUE(converter.convert(frame.get(), QSize(4, 4), QRectF(0, 0, 4, 4), 0, &image));
        expectColour(image.pixel(1, 1), c.rgb,
                     std::string(c.colorimetry) + " " + std::to_string(c.yuv[0]));
    }
}

// Quadrants: red top left, green top right, blue bottom left, white bottom right.
const QColor quadrantColours[2][2] = {{Qt::red, Qt::green}, {Qt::blue, Qt::white}};

Yuv quadrantYuv(int x, int y, int width, int height) {
    static const Yuv yuv[2][2] = {{Yuv{81, 90, 240}, Yuv{145, 54, 34}},
                                  {Yuv{41, 240, 110}, Yuv{235, 128, 128}}};
    return yuv[y >= height / 2][x >= width / 2];
}

class Layer : public ::testing::Test {
protected:
    void show(const GstHandle<GstSample>& frame) {
        layer.output()->handleSample(MediaType::video, frame.get());
        QCoreApplication::processEvents();
    }

    CaptureVideoPreviewLayer layer{nullptr};
};

// What the layer draws at a point is the part of the camera's picture that a tap there names,
// for every gravity and turn. Points beside a fitted picture (clamped to its edge) are left to
// the bars' test.
TEST_F(Layer, drawsEachPointWhereThePointOfInterestSaysItIs) {
    show(frameOf(64, 36, "bt601", [](int x, int y) { return quadrantYuv(x, y, 64, 36); }));
    for (const Gravity gravity :
         {Gravity::resize, Gravity::resizeAspect, Gravity::resizeAspectFill})
        for (const Orientation orientation :
             {Orientation::portrait, Orientation::landscapeLeft, Orientation::portraitUpsideDown,
              Orientation::landscapeRight})
            for (const QSizeF size : {QSizeF(120, 50), QSizeF(50, 120)}) {
                layer.setVideoGravity(gravity);
                layer.connection()->setVideoOrientation(orientation);
                layer.setFrame(QRectF(QPointF(30, 40), size));
                const QImage picture = layer.contents();
                ASSERT_EQ(picture.size(), size.toSize());
                int checked = 0;
                for (int y = 0; y < size.height(); y += 3)
                    for (int x = 0; x < size.width(); x += 3) {
                        const QPointF poi =
                            layer.captureDevicePointOfInterestForPoint(QPointF(x + 0.5, y + 0.5));
                        const std::string where = std::to_string(int(gravity)) + "/" +
                                                  std::to_string(int(orientation)) + " at " +
                                                  std::to_string(x) + "," + std::to_string(y);
                        if (poi.x() <= 0 || poi.x() >= 1 || poi.y() <= 0 || poi.y() >= 1 ||
                            std::abs(poi.x() - 0.5) < 0.06 || std::abs(poi.y() - 0.5) < 0.06)
                            continue;
                        expectColour(picture.pixel(x, y),
                                     quadrantColours[poi.y() > 0.5][poi.x() > 0.5], where);
                        ++checked;
                    }
                EXPECT_GT(checked, 100);
            }
}

TEST_F(Layer, fittedPicturesHaveBarsAndFilledOnesNone) {
    show(greyFrame(64, 36, 235));
    layer.setFrame(QRectF(0, 0, 100, 100));
    layer.setVideoGravity(Gravity::resizeAspect);
    QImage picture = layer.contents();
    // 100 x 56.25 in the middle.
    const auto white = [](const QImage& image, int x, int y) {
        return QColor(image.pixel(x, y)).lightness() >= 245;
    };
    EXPECT_EQ(picture.pixelColor(50, 20), QColor(Qt::black));
    EXPECT_TRUE(white(picture, 50, 22));
    EXPECT_TRUE(white(picture, 50, 77));
    EXPECT_EQ(picture.pixelColor(50, 79), QColor(Qt::black));
    layer.setVideoGravity(Gravity::resizeAspectFill);
    picture = layer.contents();
    EXPECT_TRUE(white(picture, 0, 0));
    EXPECT_TRUE(white(picture, 99, 99));

    // On a denser screen the picture has the screen's pixels, drawn at the same size.
    layer.setContentsScale(2);
    picture = layer.contents();
    EXPECT_EQ(picture.size(), QSize(200, 200));
    EXPECT_EQ(picture.deviceIndependentSize(), QSizeF(100, 100));
}

TEST_F(Layer, onlyTheNewestOfTheFramesThatArrivedMeanwhileIsConverted) {
    layer.setFrame(QRectF(0, 0, 16, 16));
    for (std::uint8_t luma : {50, 100, 150, 200})
        layer.output()->handleSample(MediaType::video, greyFrame(16, 16, luma).get());
    QCoreApplication::processEvents();
    const QImage picture = layer.contents();
    EXPECT_EQ(layer.framesDisplayed(), 1u);
    EXPECT_EQ(layer.output()->framesTaken(), 1u);
    EXPECT_NEAR(QColor(picture.pixel(8, 8)).red(), (200 - 16) * 255 / 219, 2);
    // Drawing again without a new frame converts nothing.
    layer.contents();
    EXPECT_EQ(layer.framesDisplayed(), 1u);
}

// A placed layer whose owner paints has each new frame drawn by its worker before the owner hears
// of it, so painting finds the picture ready; one nobody paints draws nothing ahead; a layer that
// goes while its worker draws is simply not told. The worker lets a frame go once drawn, not when
// the GUI thread gets round to the picture: while a recording's frames wait for the encoder, every
// frame held is megabytes.
TEST_F(Layer, drawsNewFramesAheadOnItsWorkerLetsThemGoAndMayGoWhileItDraws) {
    layer.setFrame(QRectF(0, 0, 32, 18));
    show(greyFrame(32, 18, 100));
    QTest::qWait(50);
    EXPECT_EQ(layer.framesConvertedInBackground(), 0u) << "nobody painted: nothing drawn ahead";
    EXPECT_FALSE(layer.contents().isNull());

    const GstHandle<GstSample> frame = greyFrame(32, 18, 120);
    show(frame);
    // The GUI thread stays busy here: the drawn picture cannot reach the layer meanwhile.
    const auto references = [&] { return GST_MINI_OBJECT_REFCOUNT_VALUE(frame.get()); };
    for (int waited = 0; references() > 2 && waited < 10000; waited += 5)
        QThread::msleep(5);
    EXPECT_EQ(references(), 2) << "held by this test and by the layer as its current frame only";
    EXPECT_EQ(layer.framesConvertedInBackground(), 0u);
    ASSERT_TRUE(QTest::qWaitFor([&] { return layer.framesConvertedInBackground() == 1; }, 10000));
    EXPECT_NEAR(QColor(layer.contents().pixel(16, 9)).red(), (120 - 16) * 255 / 219, 2);

    int told = 0;
    QObject::connect(&layer, &CaptureVideoPreviewLayer::needsDisplay, [&] { ++told; });
    for (const std::uint8_t luma : {60, 180}) {
        const int before = told;
        layer.output()->handleSample(MediaType::video, greyFrame(32, 18, luma).get());
        ASSERT_TRUE(QTest::qWaitFor([&] { return told > before; }, 10000));
        EXPECT_NEAR(QColor(layer.contents().pixel(16, 9)).red(), (luma - 16) * 255 / 219, 2);
    }
    EXPECT_EQ(layer.framesConvertedInBackground(), 3u);
    EXPECT_EQ(layer.framesDisplayed(), 4u);

    auto* leaving = new CaptureVideoPreviewLayer(nullptr);
    leaving->setFrame(QRectF(0, 0, 640, 360));
    leaving->contents();
    leaving->output()->handleSample(MediaType::video, greyFrame(640, 360, 90).get());
    QCoreApplication::processEvents();
    delete leaving;
    QTest::qWait(100);
}

} // namespace
} // namespace av
