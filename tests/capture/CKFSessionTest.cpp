#include "platform/av/VirtualCameraDevice.h"

#include "CaptureTest.h"

namespace {

using Type = CKFSession::DeviceType;

// A camera whose formats the test writes, listed in the order given.
class ListedCamera : public av::CaptureDevice {
public:
    explicit ListedCamera(std::vector<av::CaptureDeviceFormat> formats)
        : av::CaptureDevice(QStringLiteral("test"), QStringLiteral("Test camera"),
                            av::MediaType::video, av::DevicePosition::back) {
        setFormats(std::move(formats));
    }
    GstElement* createSourceElement() const override { return nullptr; }
};

av::CaptureDeviceFormat format(int width, int height, std::vector<av::FrameRateRange> ranges) {
    return {width, height, std::move(ranges), QStringLiteral("video/x-raw")};
}

// The first format in the camera's order that is large enough and whose whole-number rates
// take in the asked one, or none.
TEST(CKFSessionFormatChoice, firstQualifyingFormatInDeviceOrder) {
    const struct {
        const char* camera;
        std::vector<av::CaptureDeviceFormat> formats;
        std::vector<std::pair<qint64, int>> chosenWidthAtRate; // 0: none
    } rows[] = {
        {"4K listed before 1080p",
         {format(1280, 720, {{1, 60}}), format(3840, 2160, {{1, 60}}),
          format(1920, 1080, {{1, 60}})},
         {{60, 3840}}},
        {"slow", {format(1920, 1080, {{1, 30}})}, {{60, 0}, {30, 1920}}},
        // Ranges are inclusive at both ends.
        {"3 to 60", {format(1920, 1080, {{3, 60}})}, {{3, 1920}, {60, 1920}, {2, 0}, {61, 0}}},
        // 59.94 truncates to 59, so it does not serve 60; a second range of the same format can.
        {"NTSC", {format(1920, 1080, {{2.5, 59.94}})}, {{60, 0}, {2, 1920}}},
        {"two ranges", {format(1920, 1080, {{1, 30}, {60, 60}})}, {{60, 1920}}},
        {"a line short", {format(1920, 1079, {{1, 60}}), format(1919, 1080, {{1, 60}})}, {{30, 0}}},
        {"no formats", {}, {{30, 0}}},
        {"no ranges", {format(3840, 2160, {})}, {{30, 0}}},
    };
    for (const auto& row : rows) {
        ListedCamera camera(row.formats);
        av::CaptureDeviceInput input(&camera);
        for (const auto& [fps, width] : row.chosenWidthAtRate) {
            SCOPED_TRACE(std::string(row.camera) + " at " + std::to_string(fps));
            const auto chosen = CKFSession::deviceInputFormat(input, 1920, 1080, fps);
            EXPECT_EQ(chosen ? chosen->width : 0, width);
        }
    }
}

TEST(CKFSessionFormatChoice, aMissingFormatGetsTheNearestInLinesThenRateAsTheCameraRunsIt) {
    const std::vector webcam{format(640, 480, {{30, 30}}), format(1280, 720, {{5, 30}})};
    const std::vector fourKFirst{format(3840, 2160, {{1, 30}}), format(1280, 720, {{60, 60}})};
    const struct {
        const char* camera;
        std::vector<av::CaptureDeviceFormat> formats;
        qint64 width, height, fps;
        int chosenHeight;
        qint64 chosenFps;
        bool exact;
    } rows[] = {
        {"720p webcam", webcam, 1920, 1080, 60, 720, 30, false},
        {"720p webcam", webcam, 3840, 2160, 30, 720, 30, false},
        {"fast 720p", {format(1280, 720, {{1, 60}})}, 1920, 1080, 60, 720, 60, false},
        {"only fast", {format(1920, 1080, {{50, 60}})}, 1920, 1080, 30, 1080, 50, false},
        // 720p60 is nearer to 1080p60 than 4K is; the 4K format runs HD at 30 exactly.
        {"4K first", fourKFirst, 1920, 1080, 60, 720, 60, false},
        {"4K first", fourKFirst, 1920, 1080, 30, 2160, 30, true},
        // 29.97 frames a second serve a request for 29.
        {"NTSC", {format(1920, 1080, {{29.97, 29.97}})}, 1920, 1080, 30, 1080, 29, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.camera);
        ListedCamera camera(row.formats);
        const auto chosen =
            CKFSession::nearestDeviceInputFormat(camera, row.width, row.height, row.fps);
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->format.height, row.chosenHeight);
        EXPECT_EQ(chosen->frameRate, row.chosenFps);
        EXPECT_EQ(chosen->exact, row.exact);
        // What it names, the format choice itself picks.
        EXPECT_EQ(CKFSession::deviceInputFormat(camera, chosen->format.width, chosen->format.height,
                                                chosen->frameRate),
                  chosen->format);
    }
    ListedCamera none({});
    EXPECT_FALSE(CKFSession::nearestDeviceInputFormat(none, 1920, 1080, 30));
}

class DeviceLookup : public CaptureTest {};

TEST_F(DeviceLookup, virtualDevicesStandInWhenThereIsNoRealOne) {
    auto back = CKFSession::captureDeviceInput(Type::backCamera);
    auto front = CKFSession::captureDeviceInput(Type::frontCamera);
    auto microphone = CKFSession::captureDeviceInput(Type::microphone);
    EXPECT_EQ(back->device()->position(), av::DevicePosition::back);
    EXPECT_EQ(front->device()->position(), av::DevicePosition::front);
    EXPECT_EQ(microphone->device()->mediaType(), av::MediaType::audio);
    // The same device object every time, so its settings stay with it.
    EXPECT_EQ(CKFSession::captureDeviceInput(Type::backCamera)->device(), back->device());
}

TEST_F(DeviceLookup, noDeviceOfTheKindThrowsNotFound) {
    Discovery::setVirtualDevicesEnabled(false);
    for (auto type : {Type::microphone, Type::backCamera}) {
        try {
            CKFSession::captureDeviceInput(type);
            ADD_FAILURE() << "no error for " << int(type);
        } catch (const CKFError& error) {
            EXPECT_EQ(error.kind(), CKFError::Kind::captureDeviceNotFound);
            EXPECT_FALSE(error.localizedDescription().isEmpty());
        }
    }
}

TEST_F(DeviceLookup, aLoneFrontCameraIsTheMainCameraButNotASecondOne) {
    Discovery::setVirtualCamerasForTesting(
        {{av::DevicePosition::front, av::VirtualCameraDevice::sceneFormats()}});
    av::CaptureDevice* back = CKFSession::captureDevice(Type::backCamera);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->position(), av::DevicePosition::front);
    EXPECT_EQ(CKFSession::captureDevice(Type::frontCamera), back);

    Discovery::setVirtualCamerasForTesting(
        {{av::DevicePosition::back, av::VirtualCameraDevice::sceneFormats()}});
    EXPECT_FALSE(CKFSession::captureDevice(Type::frontCamera));
}

TEST_F(DeviceLookup, aChosenCameraThatIsGoneFallsBackAndAMissingFileIsAnError) {
    Discovery::setCameraSelection(QStringLiteral("No Such Camera"));
    EXPECT_TRUE(CKFSession::captureDeviceInput(Type::backCamera)->device()->isVirtual());

    Discovery::setCameraSelection(QStringLiteral("file:/no/such/picture.png"));
    try {
        CKFSession::captureDeviceInput(Type::backCamera);
        ADD_FAILURE() << "a missing picture opened";
    } catch (const av::Error& error) {
        EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("/no/such/picture.png")));
    }
}

TEST(CKFSessionLifecycle, aSessionHoldsItsDelegateWeakly) {
    CKFSession session;
    {
        ZoomNotices notices;
        session.setDelegate(&notices);
    }
    EXPECT_EQ(session.delegate(), nullptr);
}

TEST(CKFSessionLifecycle, destroyingARunningSessionStopsIt) {
    Discovery::setSystemDevicesEnabled(false);
    auto session = std::make_unique<CKFSession>();
    session->session()->addInput(CKFSession::captureDeviceInput(Type::backCamera).release());
    session->start();
    ASSERT_TRUE(session->session()->isRunning());
    const av::GstHandle<GstElement> pipeline(session->session()->pipeline(), av::GstRef::add);
    session.reset();
    GstState state = GST_STATE_VOID_PENDING;
    gst_element_get_state(pipeline.get(), &state, nullptr, 0);
    EXPECT_EQ(state, GST_STATE_NULL);
}

} // namespace
