#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/FileCameraDevice.h"
#include "platform/av/Gst.h"
#include "platform/av/SystemCaptureDevice.h"
#include "platform/av/V4l2Controls.h"
#include "tests/av/Frames.h"
#include "tests/av/TestClip.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QRect>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>
#include <vector>

// A device as a device provider reports it: a node, one format, and a live source that fails
// with the given resource error once it streams (0: never).
struct TestDevice {
    GstDevice parent;
    int failure;
};
struct TestDeviceClass {
    GstDeviceClass parent;
};
G_DEFINE_TYPE(TestDevice, test_device, GST_TYPE_DEVICE)

namespace av {
namespace {

GstPadProbeReturn failOnFirstFrame(GstPad* pad, GstPadProbeInfo*, gpointer code) {
    const GstHandle<GstElement> source(GST_ELEMENT(gst_pad_get_parent(pad)), GstRef::adopt);
    gst_element_message_full(source.get(), GST_MESSAGE_ERROR, GST_RESOURCE_ERROR,
                             GPOINTER_TO_INT(code), g_strdup("test failure"), nullptr, __FILE__,
                             "failOnFirstFrame", __LINE__);
    return GST_PAD_PROBE_DROP;
}

GstElement* createTestSource(GstDevice* device, const gchar* name) {
    GstElement* source = gst_element_factory_make("videotestsrc", name);
    g_object_set(source, "is-live", TRUE, nullptr);
    if (const int failure = reinterpret_cast<TestDevice*>(device)->failure) {
        const GstHandle<GstPad> pad(gst_element_get_static_pad(source, "src"), GstRef::adopt);
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, failOnFirstFrame,
                          GINT_TO_POINTER(failure), nullptr);
    }
    return source;
}

GstHandle<GstDevice> testDevice(const QString& node, int failure = 0) {
    Gst::ensureInitialized();
    const GstHandle<GstCaps> caps(
        gst_caps_from_string("video/x-raw, format=I420, width=320, height=240, framerate=30/1"),
        GstRef::adopt);
    g_autoptr(GstStructure) properties = gst_structure_new(
        "properties", "device.path", G_TYPE_STRING, node.toUtf8().constData(), nullptr);
    auto* device = static_cast<TestDevice*>(
        g_object_new(test_device_get_type(), "display-name", "Test camera", "device-class",
                     "Video/Source", "caps", caps.get(), "properties", properties, nullptr));
    device->failure = failure;
    return GstHandle<GstDevice>(GST_DEVICE(device), GstRef::adopt);
}

std::optional<Error::Code> openingFails(CaptureDevice& device) {
    try {
        CaptureDeviceInput input(&device);
    } catch (const Error& error) {
        return error.code();
    }
    return std::nullopt;
}

// Runs a session on this camera until it reports a runtime error, and checks that it stopped
// then. What it reported; nullopt when nothing came in time.
std::optional<Error> sessionFailure(CaptureDevice& camera) {
    CaptureSession session;
    session.addInput(new CaptureDeviceInput(&camera));
    std::optional<Error> reported;
    QObject::connect(&session, &CaptureSession::runtimeError,
                     [&](const Error& error) { reported = error; });
    session.startRunning();
    if (!QTest::qWaitFor([&] { return reported.has_value(); }, 10000))
        return std::nullopt;
    EXPECT_FALSE(session.isRunning());
    return reported;
}

class CameraAccess : public ::testing::Test {
protected:
    void SetUp() override {
        CaptureDeviceDiscoverySession::setSystemDevicesEnabled(false);
        node = folder.filePath(QStringLiteral("video0"));
        QFile file(node);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QTemporaryDir folder;
    QString node;
};

TEST_F(CameraAccess, aNodeThatRefusesThisUserIsDenied) {
    EXPECT_EQ(CaptureDevice::authorizationStatusForNode({}), AuthorizationStatus::authorized);
    EXPECT_EQ(CaptureDevice::authorizationStatusForNode(QStringLiteral("/nonexistent/video9")),
              AuthorizationStatus::authorized);
    EXPECT_EQ(CaptureDevice::authorizationStatusForNode(node), AuthorizationStatus::authorized);
    // No real camera: the virtual one needs nobody's leave.
    EXPECT_EQ(CaptureDevice::authorizationStatus(MediaType::video),
              AuthorizationStatus::authorized);

    QFile::setPermissions(node, {});
    if (geteuid() == 0)
        GTEST_SKIP() << "running as root, whom no device node refuses";
    EXPECT_EQ(CaptureDevice::authorizationStatusForNode(node), AuthorizationStatus::denied);
    const GstHandle<GstDevice> plugged = testDevice(node);
    CaptureDeviceDiscoverySession::deviceAddedForTesting(plugged.get());
    EXPECT_EQ(CaptureDevice::authorizationStatus(MediaType::video), AuthorizationStatus::denied);
    std::optional<bool> granted;
    CaptureDevice::requestAccess(MediaType::video, [&](bool answer) { granted = answer; });
    EXPECT_EQ(granted, false);
    SystemCaptureDevice camera(plugged.get());
    EXPECT_EQ(openingFails(camera), Error::Code::permissionDenied);
    CaptureDeviceDiscoverySession::deviceRemovedForTesting(node);
}

TEST_F(CameraAccess, goneBusyRefusedAndFailedCamerasCannotRunAndSayWhy) {
    SystemCaptureDevice present(testDevice(node).get());
    EXPECT_EQ(openingFails(present), std::nullopt);
    present.setDisconnected();
    EXPECT_EQ(openingFails(present), Error::Code::deviceDisconnected);

    SystemCaptureDevice missing(testDevice(folder.filePath(QStringLiteral("video7"))).get());
    EXPECT_EQ(openingFails(missing), Error::Code::deviceDisconnected);

    const std::pair<GstResourceError, Error::Code> cases[] = {
        {GST_RESOURCE_ERROR_BUSY, Error::Code::deviceBusy},
        {GST_RESOURCE_ERROR_NOT_AUTHORIZED, Error::Code::permissionDenied},
        {GST_RESOURCE_ERROR_READ, Error::Code::deviceDisconnected},
    };
    for (const auto& [failure, expected] : cases) {
        SystemCaptureDevice camera(testDevice(node, failure).get());
        const std::optional<Error> reported = sessionFailure(camera);
        ASSERT_TRUE(reported) << failure;
        EXPECT_EQ(reported->code(), expected) << failure;
        EXPECT_TRUE(reported->localizedDescription().contains(QStringLiteral("Test camera")));
        EXPECT_EQ(camera.isConnected(), expected != Error::Code::deviceDisconnected);
    }
}

// A camera another program holds is tried again until that program lets it go: the user hears of
// it once, and the session starts by itself when the camera is free. Stopping ends the wait.
TEST_F(CameraAccess, aBusyCameraIsTriedAgainUntilItIsFree) {
    const GstHandle<GstDevice> device = testDevice(node, GST_RESOURCE_ERROR_BUSY);
    SystemCaptureDevice camera(device.get());
    CaptureSession session;
    session.addInput(new CaptureDeviceInput(&camera));
    int reports = 0, starts = 0;
    QObject::connect(&session, &CaptureSession::runtimeError, [&](const Error&) { ++reports; });
    QObject::connect(&session, &CaptureSession::didStartRunning, [&] { ++starts; });
    session.startRunning();
    ASSERT_TRUE(QTest::qWaitFor([&] { return reports == 1; }, 10000));
    EXPECT_TRUE(session.isWaitingForBusyCamera());
    // Two more tries while it stays busy: nothing new to say.
    QTest::qWait(2 * CaptureSession::busyRetryInterval + 500);
    EXPECT_EQ(reports, 1);
    EXPECT_FALSE(session.isRunning());

    reinterpret_cast<TestDevice*>(device.get())->failure = 0;
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.isRunning(); }, 10000));
    EXPECT_FALSE(session.isWaitingForBusyCamera());
    EXPECT_GE(starts, 1);

    // Stopped while it waits, the session stays stopped.
    reinterpret_cast<TestDevice*>(device.get())->failure = GST_RESOURCE_ERROR_BUSY;
    session.stopRunning();
    session.startRunning();
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.isWaitingForBusyCamera(); }, 10000));
    session.stopRunning();
    reinterpret_cast<TestDevice*>(device.get())->failure = 0;
    QTest::qWait(CaptureSession::busyRetryInterval + 500);
    EXPECT_FALSE(session.isRunning());
}

std::vector<CaptureDeviceFormat> formatsOf(const char* caps) {
    Gst::ensureInitialized();
    const GstHandle<GstCaps> parsed(gst_caps_from_string(caps), GstRef::adopt);
    return SystemCaptureDevice::formatsFromCaps(parsed.get());
}

// What a typical webcam lists, raw and compressed formats with discrete or ranged rates, comes in
// its own order; grey pictures and sizes given as ranges are no formats.
TEST(SystemCaptureDeviceFormats, keepTheDeviceOrderAndItsRates) {
    const auto formats =
        formatsOf("video/x-raw, format=YUY2, width=640, height=480, framerate={ 30/1, 15/1 }; "
                  "image/jpeg, width=1920, height=1080, framerate=30/1; "
                  "video/x-raw, format=GRAY8, width=640, height=360, framerate=15/1; "
                  "video/x-raw, format=NV12, width=640, height=480, framerate=30/1; "
                  "video/x-raw, format=YUY2, width=[ 1, 4096 ], height=[ 1, 2160 ]; "
                  "video/x-raw, format=YUY2, width=1280, height=720, framerate=[ 1/1, 10/1 ]; "
                  "video/x-raw, format=YUY2, width=720, height=480, framerate=30000/1001");
    ASSERT_EQ(formats.size(), 4u);
    EXPECT_EQ(formats[0].width, 640);
    EXPECT_EQ(formats[0].mediaType, QStringLiteral("video/x-raw"));
    EXPECT_EQ(formats[0].videoSupportedFrameRateRanges,
              (std::vector<FrameRateRange>{{30, 30}, {15, 15}}));
    EXPECT_EQ(formats[1].height, 1080);
    EXPECT_EQ(formats[1].mediaType, QStringLiteral("image/jpeg"));
    EXPECT_EQ(formats[2].videoSupportedFrameRateRanges, (std::vector<FrameRateRange>{{1, 10}}));
    EXPECT_NEAR(formats[3].videoSupportedFrameRateRanges[0].maxFrameRate, 29.97, 0.001);
}

constexpr quint32 roiRect = V4L2_CID_USER_BASE + 0x11e0 + 1;
constexpr quint32 roiAuto = V4L2_CID_USER_BASE + 0x11e0 + 2;
constexpr qint32 roiFocus = 1 << 3;

// A device node as the kernel answers it: the controls it has, and every value written to it.
struct FakeNode {
    std::map<quint32, v4l2_query_ext_ctrl> controls;
    std::set<quint32> ledModes;
    std::map<quint32, qint32> values;
    v4l2_rect smallest{0, 0, 1, 1};
    std::vector<std::pair<quint32, qint32>> writes;
    std::vector<QRect> regions;
    int failure = 0;
    int calls = 0;

    void add(quint32 id, quint32 type, qint64 maximum) {
        v4l2_query_ext_ctrl& control = controls[id] = v4l2_query_ext_ctrl{};
        control.id = id;
        control.type = type;
        control.maximum = maximum;
    }
    void addLed(std::set<quint32> modes) {
        add(V4L2_CID_FLASH_LED_MODE, V4L2_CTRL_TYPE_MENU, V4L2_FLASH_LED_MODE_TORCH);
        ledModes = std::move(modes);
    }
    void addRegion(qint32 follows) {
        add(roiRect, 0x0107, 0);
        add(roiAuto, V4L2_CTRL_TYPE_BITMASK, follows);
        values[roiAuto] = 1;
    }

    int operator()(unsigned long request, void* arg) {
        ++calls;
        errno = failure ? failure : EINVAL;
        // All but the extended requests start with the control's id.
        const quint32 id = *static_cast<quint32*>(arg);
        if (failure ||
            (request != VIDIOC_G_EXT_CTRLS && request != VIDIOC_S_EXT_CTRLS && !controls.count(id)))
            return -1;
        if (request == VIDIOC_QUERY_EXT_CTRL)
            *static_cast<v4l2_query_ext_ctrl*>(arg) = controls[id];
        if (request == VIDIOC_QUERYMENU)
            return ledModes.count(static_cast<v4l2_querymenu*>(arg)->index) ? 0 : -1;
        if (request == VIDIOC_G_CTRL)
            static_cast<v4l2_control*>(arg)->value = values[id];
        if (request == VIDIOC_S_CTRL) {
            writes.push_back({id, static_cast<v4l2_control*>(arg)->value});
            values[id] = writes.back().second;
        }
        if (request == VIDIOC_G_EXT_CTRLS || request == VIDIOC_S_EXT_CTRLS) {
            const auto* list = static_cast<v4l2_ext_controls*>(arg);
            const v4l2_ext_control& control = list->controls[0];
            if (list->count != 1 || !controls.count(roiRect) || control.id != roiRect ||
                control.size != sizeof(v4l2_rect))
                return -1;
            auto* rect = static_cast<v4l2_rect*>(control.ptr);
            if (request == VIDIOC_S_EXT_CTRLS)
                regions.push_back(QRect(rect->left, rect->top, rect->width, rect->height));
            else
                *rect = list->which == 0x0f030000 ? v4l2_rect{0, 0, 1920, 1080} : smallest;
        }
        return 0;
    }
};

using Writes = std::vector<std::pair<quint32, qint32>>;

TEST(V4l2Controls, aFlashLedIsATorchOnlyWhereItsMenuHasOne) {
    FakeNode led;
    led.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_FLASH, V4L2_FLASH_LED_MODE_TORCH});
    led.add(V4L2_CID_FLASH_TORCH_INTENSITY, V4L2_CTRL_TYPE_INTEGER, 7);
    V4l2Controls torch(std::ref(led));
    EXPECT_TRUE(torch.hasTorch());
    EXPECT_TRUE(torch.setTorch(true));
    EXPECT_TRUE(torch.setTorch(false));
    EXPECT_EQ(led.writes, (Writes{{V4L2_CID_FLASH_TORCH_INTENSITY, 7},
                                  {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH},
                                  {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE}}));

    FakeNode flashOnly; // the menu's range covers the torch, but the device skips that item
    flashOnly.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_FLASH});
    V4l2Controls flash(std::ref(flashOnly));
    EXPECT_FALSE(flash.hasTorch());
    EXPECT_FALSE(flash.setTorch(true));
    EXPECT_TRUE(flashOnly.writes.empty());
}

TEST(V4l2Controls, aPointAimsTheFocusRegionWhereTheDeviceHasOne) {
    FakeNode uvc; // continuous autofocus that follows a region of interest
    uvc.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    uvc.addRegion(0xff);
    V4l2Controls camera(std::ref(uvc));
    ASSERT_TRUE(camera.canFocusAtPoint());
    EXPECT_TRUE(camera.focusAt({0.25, 0.5}));
    EXPECT_TRUE(camera.focusAt({1.0, 1.0}));
    EXPECT_EQ(uvc.regions,
              (std::vector<QRect>{{288, 432, 384, 216}, {1920 - 384, 1080 - 216, 384, 216}}));
    // Exposure already followed the region and still does.
    EXPECT_EQ(uvc.writes, (Writes{{roiAuto, 1 | roiFocus},
                                  {V4L2_CID_FOCUS_AUTO, 1},
                                  {roiAuto, 1 | roiFocus},
                                  {V4L2_CID_FOCUS_AUTO, 1}}));

    FakeNode coarse; // one-shot focus over a region no smaller than 640×480
    coarse.add(V4L2_CID_AUTO_FOCUS_START, V4L2_CTRL_TYPE_BUTTON, 0);
    coarse.addRegion(roiFocus);
    coarse.smallest = {0, 0, 640, 480};
    EXPECT_TRUE(V4l2Controls(std::ref(coarse)).focusAt({0.0, 0.5}));
    EXPECT_EQ(coarse.regions, (std::vector<QRect>{{0, 300, 640, 480}}));
    EXPECT_EQ(coarse.writes.back(), (std::pair<quint32, qint32>{V4L2_CID_AUTO_FOCUS_START, 1}));
}

TEST(V4l2Controls, withoutARegionAutofocusChoosesForItself) {
    FakeNode continuous;
    continuous.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    continuous.addRegion(1); // the region steers exposure only
    FakeNode oneShot;
    oneShot.add(V4L2_CID_AUTO_FOCUS_START, V4L2_CTRL_TYPE_BUTTON, 0);
    const std::pair<FakeNode*, quint32> cases[] = {{&continuous, V4L2_CID_FOCUS_AUTO},
                                                   {&oneShot, V4L2_CID_AUTO_FOCUS_START}};
    for (const auto& [node, written] : cases) {
        V4l2Controls camera(std::ref(*node));
        EXPECT_TRUE(camera.hasAutofocus());
        EXPECT_FALSE(camera.canFocusAtPoint());
        EXPECT_TRUE(camera.focusAt({0.2, 0.2}));
        EXPECT_EQ(node->writes, (Writes{{written, 1}}));
        EXPECT_TRUE(node->regions.empty());
    }
}

TEST(V4l2Controls, aNodeWithoutControlsOrGoneOffersNothingAndIsLeftAlone) {
    FakeNode bare;
    V4l2Controls none(std::ref(bare));
    EXPECT_FALSE(none.hasTorch() || none.hasAutofocus());
    EXPECT_FALSE(none.setTorch(true) || none.focusAt({0.5, 0.5}));
    EXPECT_TRUE(bare.writes.empty());

    FakeNode unplugged;
    unplugged.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_TORCH});
    unplugged.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    unplugged.failure = ENODEV;
    EXPECT_FALSE(V4l2Controls(std::ref(unplugged)).hasTorch());
    EXPECT_EQ(unplugged.calls, 1); // a gone device is asked nothing more

    unplugged.failure = 0;
    V4l2Controls camera(std::ref(unplugged));
    ASSERT_TRUE(camera.hasTorch());
    unplugged.failure = ENODEV;
    EXPECT_FALSE(camera.setTorch(true) || camera.focusAt({0.5, 0.5}));
    EXPECT_TRUE(unplugged.writes.empty());

    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    for (const QString& path : {QStringLiteral("/nonexistent/video9"), file.fileName()}) {
        V4l2Controls node(path);
        EXPECT_FALSE(node.hasTorch() || node.hasAutofocus()) << path.toStdString();
        EXPECT_FALSE(node.setTorch(true));
    }
}

// The session's part: the device lights its torch and focuses only while a pipeline runs, and an
// automatic torch stays dark.
TEST(V4l2Controls, aCameraDrivesItsNodeWhileASessionRuns) {
    FakeNode node;
    node.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_TORCH});
    node.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    SystemCaptureDevice::setControlsForTesting(std::ref(node));
    SystemCaptureDevice camera(testDevice(QStringLiteral("/dev/video0")).get());
    EXPECT_TRUE(camera.hasTorch());
    EXPECT_TRUE(camera.isFocusPointOfInterestSupported());

    camera.lockForConfiguration();
    camera.setTorchMode(CaptureDevice::TorchMode::on);
    EXPECT_TRUE(node.writes.empty());
    const GstHandle<GstElement> source(gst_element_factory_make("fakesrc", nullptr), GstRef::adopt);
    camera.attachPipeline(source.get(), nullptr);
    camera.setTorchMode(CaptureDevice::TorchMode::automatic);
    camera.setFocusPointOfInterest({0.3, 0.7});
    camera.detachPipeline();
    camera.unlockForConfiguration();
    SystemCaptureDevice::setControlsForTesting(nullptr);
    EXPECT_EQ(node.writes, (Writes{{V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH},
                                   {V4L2_CID_FOCUS_AUTO, 1},
                                   {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE},
                                   {V4L2_CID_FOCUS_AUTO, 1},
                                   {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE}}));
}

QString writeFile(const QTemporaryDir& folder, const QString& name, const QByteArray& bytes) {
    const QString path = folder.filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    return path;
}

// Each file that cannot be a camera is refused before the camera starts, with its reason;
// those the header gives away cannot even be opened, so they are never decoded.
TEST(FileCameraDevice, aFileThatCannotBeACameraIsRefusedWithItsReason) {
    QTemporaryDir folder;
    QImage picture(640, 360, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QByteArray png, huge;
    QBuffer pngBuffer(&png), hugeBuffer(&huge);
    ASSERT_TRUE(pngBuffer.open(QIODevice::WriteOnly) && picture.save(&pngBuffer, "PNG"));
    ASSERT_TRUE(hugeBuffer.open(QIODevice::WriteOnly) && picture.save(&hugeBuffer, "JPG"));
    // The JPEG's frame header (after its marker: length, precision, height, width) claims more.
    const qsizetype frame = huge.indexOf("\xff\xc0");
    ASSERT_GT(frame, 0);
    qToBigEndian(quint16(30000), huge.data() + frame + 5);
    qToBigEndian(quint16(30000), huge.data() + frame + 7);
    const QString whole = writeFile(folder, QStringLiteral("whole.png"), png);
    // A video cut short is left out: decodebin sometimes swallows the demuxer's error, and the
    // check then gives it the benefit of the doubt.
    const QString clip = folder.filePath(QStringLiteral("clip.mov"));
    ASSERT_TRUE(writeTestClip(clip, 1.0));
    const struct {
        QString path;
        const char* reason;
        bool byHeader;
    } rows[] = {
        {folder.filePath(QStringLiteral("missing.png")), "does not exist", true},
        {writeFile(folder, QStringLiteral("empty.png"), {}), "is empty", true},
        {writeFile(folder, QStringLiteral("empty.mp4"), {}), "is empty", true},
        {writeFile(folder, QStringLiteral("text.png"), "a letter"), "not a picture", true},
        {writeFile(folder, QStringLiteral("huge.jpg"), huge), "30000×30000", true},
        {writeFile(folder, QStringLiteral("cut.png"), png.left(png.size() / 2)), "cut short",
         false},
        {writeFile(folder, QStringLiteral("text.mp4"), "a letter"), "not a picture or a video",
         false},
    };
    EXPECT_FALSE(FileCameraDevice::problemWith(whole));
    EXPECT_FALSE(FileCameraDevice::problemWith(clip, std::chrono::seconds(30)));
    // The 4:3 clip, whose sound the camera leaves out, plays on past its end at the session's size
    // and rate, with black bars at the sides.
    FileCameraDevice looped(clip);
    EXPECT_FALSE(looped.isStillPicture());
    CaptureSession session;
    CapturePreviewOutput preview;
    session.setSessionPreset(CaptureSession::preset1280x720);
    session.addInput(new CaptureDeviceInput(&looped));
    session.addOutput(&preview);
    session.startRunning();
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview.framesReceived() > 50; }, 15000));
    const GstHandle<GstSample> latest = preview.takeLatestFrame();
    session.stopRunning();
    GstVideoInfo info;
    ASSERT_TRUE(latest && gst_video_info_from_caps(&info, gst_sample_get_caps(latest.get())));
    EXPECT_EQ(info.fps_n, 30);
    const Picture shown = pictureOf(latest.get());
    ASSERT_EQ(QSize(shown.width, shown.height), QSize(1280, 720));
    EXPECT_LT(shown.at(0, 20, 360), 24);
    EXPECT_GT(shown.at(0, 640, 100), 28); // every colour bar is lighter
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        // Patient, for a loaded machine.
        const std::optional<Error> problem =
            FileCameraDevice::problemWith(row.path, std::chrono::seconds(30));
        ASSERT_TRUE(problem);
        EXPECT_TRUE(problem->localizedDescription().contains(QString::fromUtf8(row.reason)))
            << problem->localizedDescription().toStdString();
        FileCameraDevice camera(row.path);
        if (!row.byHeader) {
            // Opened all the same, a file that is no video stops the session with an error.
            EXPECT_TRUE(!row.path.endsWith(QStringLiteral(".mp4")) || sessionFailure(camera));
            continue;
        }
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

void test_device_class_init(TestDeviceClass* deviceClass) {
    GST_DEVICE_CLASS(deviceClass)->create_element = av::createTestSource;
}

void test_device_init(TestDevice* device) {
    device->failure = 0;
}
