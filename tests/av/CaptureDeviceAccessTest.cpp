#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/Gst.h"
#include "platform/av/SystemCaptureDevice.h"

#include "tests/av/SessionFailure.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>
#include <unistd.h>

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

TEST_F(CameraAccess, aCameraThatIsGoneCannotBeOpened) {
    SystemCaptureDevice present(testDevice(node).get());
    EXPECT_EQ(openingFails(present), std::nullopt);
    present.setDisconnected();
    EXPECT_EQ(openingFails(present), Error::Code::deviceDisconnected);

    SystemCaptureDevice missing(testDevice(folder.filePath(QStringLiteral("video7"))).get());
    EXPECT_EQ(openingFails(missing), Error::Code::deviceDisconnected);
}

TEST_F(CameraAccess, busyRefusedAndFailedCamerasStopTheSessionSayingWhy) {
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

TEST_F(CameraAccess, aPluggedCameraIsListedUntilUnpluggedAndComesBackAsANewDevice) {
    const GstHandle<GstDevice> plugged = testDevice(node);
    CaptureDeviceDiscoverySession::deviceAddedForTesting(plugged.get());
    const CaptureDeviceDiscoverySession discovery(MediaType::video, DevicePosition::unspecified);
    ASSERT_EQ(discovery.devices().size(), 1u);
    CaptureDevice* camera = discovery.devices().front();
    EXPECT_EQ(camera->uniqueID(), node);
    bool told = false;
    QObject::connect(camera, &CaptureDevice::wasDisconnected, [&] { told = true; });

    CaptureDeviceDiscoverySession::deviceRemovedForTesting(node);
    EXPECT_TRUE(told);
    EXPECT_TRUE(discovery.devices().front()->isVirtual());

    CaptureDeviceDiscoverySession::deviceAddedForTesting(plugged.get());
    CaptureDevice* again = discovery.devices().front();
    EXPECT_EQ(again->uniqueID(), node);
    EXPECT_NE(again, camera);
    EXPECT_TRUE(again->isConnected());
    CaptureDeviceDiscoverySession::deviceRemovedForTesting(node);
}

} // namespace
} // namespace av

void test_device_class_init(TestDeviceClass* deviceClass) {
    GST_DEVICE_CLASS(deviceClass)->create_element = av::createTestSource;
}

void test_device_init(TestDevice* device) {
    device->failure = 0;
}
