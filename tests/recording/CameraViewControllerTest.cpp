#include "recording/CameraViewController.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/EncoderChoice.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewAnimation.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/ChoseDurationViewController.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "tests/FakeWebcam.h"

namespace {

using Discovery = av::CaptureDeviceDiscoverySession;
using foundation::Device;
using foundation::Preferences;
using foundation::PreferenceSchema;

QString localized(const char* key) {
    return foundation::Strings::localizedString(key);
}

// The recording screen as the window's root, on the virtual cameras, with settings and clips
// in fresh folders.
class CameraViewControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        qputenv("TESSARO_CONFIG_DIR", folder.filePath(QStringLiteral("config")).toUtf8());
        qputenv("TESSARO_DOCUMENTS_DIR", folder.filePath(QStringLiteral("documents")).toUtf8());
        Preferences::resetStandardForTesting();
        foundation::Strings::install();
        Discovery::setSystemDevicesEnabled(false);
        Device::current().setOrientationForTesting(Device::Orientation::portrait);
    }
    void TearDown() override {
        window.reset();
        Discovery::setVirtualCamerasForTesting({});
        Discovery::setVirtualDevicesEnabled(true);
        Device::current().setFormFactorForTesting(std::nullopt);
        Device::current().setOrientationForTesting(Device::Orientation::unknown);
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        Preferences::resetStandardForTesting();
    }

    Preferences& defaults() { return Preferences::standard(); }

    // Shows the screen; with a session, waits until the camera runs.
    CameraViewController* show(bool waitForSession = true) {
        window = std::make_unique<ui::Window>();
        screen = new CameraViewController;
        window->setRootViewController(screen);
        window->resize(390, 844);
        window->show();
        if (waitForSession) {
            EXPECT_TRUE(QTest::qWaitFor([this] { return screen->videoSession() != nullptr; }));
        }
        return screen;
    }

    av::CaptureDevice* camera() const {
        for (av::CaptureInput* input : screen->videoSession()->session()->inputs()) {
            auto* device = qobject_cast<av::CaptureDeviceInput*>(input);
            if (device && device->device()->mediaType() == av::MediaType::video)
                return device->device();
        }
        return nullptr;
    }

    // The notice over the picture; empty while none is shown.
    QString status() const {
        return screen->cameraStatusLabel->isVisible() ? screen->cameraStatusLabel->text()
                                                      : QString();
    }
    void hdTap() { screen->hdButton->sendActions(ui::Control::touchUpInside); }
    void press() {
        screen->cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
    }

    // The format button's title, the stored mode, the camera's format and rate, and the slider's
    // end, which never goes past what the format keeps sharp.
    void expectFormat(const char* title, int mode, QSize size, int rate) {
        SCOPED_TRACE(title);
        EXPECT_EQ(screen->hdButton->currentTitle(), QLatin1String(title));
        EXPECT_EQ(defaults().integerForKey(PreferenceSchema::videoMode), mode);
        EXPECT_EQ(QSize(camera()->activeFormat().width, camera()->activeFormat().height), size);
        EXPECT_EQ(camera()->activeVideoMinFrameDuration().timescale, rate);
        EXPECT_FLOAT_EQ(screen->zoomSlider->maximumValue(), float(size.height()) / 270.0f);
    }

    static QImage picture(const QIcon& icon) { return icon.pixmap(32, 32).toImage(); }
    static QImage image(const char* name) {
        return picture(foundation::Bundle::main().image(QLatin1String(name)));
    }

    QTemporaryDir folder;
    std::unique_ptr<ui::Window> window;
    QPointer<CameraViewController> screen;
};

// A first start shows the defaults everywhere on the screen; the zoom, flash and format buttons
// cycle through their modes.
TEST_F(CameraViewControllerTest, FirstStartShowsTheDefaultsAndTheButtonsCycle) {
    show();
    EXPECT_EQ(screen->hdButton->currentTitle(), QStringLiteral("HD"));
    EXPECT_EQ(screen->durationButton->currentTitle(), QStringLiteral("5s"));
    EXPECT_EQ(picture(screen->zoomInButton->currentImage()), image("ZoomOut"));
    EXPECT_EQ(screen->cameraInfoLabel->text(), localized("cam_zoom_in"));
    EXPECT_TRUE(screen->previewView->showGrid());
    EXPECT_EQ(screen->cameraButton->type(), CameraButtonType::video);
    EXPECT_EQ(screen->videoSession()->flashMode(), CKFSession::FlashMode::automatic);
    // In the zoom-out mode the preview shows the slider's zoom.
    EXPECT_DOUBLE_EQ(screen->videoSession()->zoom(), double(screen->zoomSlider->value()));
    // Without a real camera, the virtual one says so on the picture.
    EXPECT_EQ(status(), localized("cam_status_virtual"));

    screen->zoomInButton->sendActions(ui::Control::touchUpInside);
    EXPECT_EQ(defaults().integerForKey(PreferenceSchema::zoomMode), 1);
    EXPECT_EQ(picture(screen->zoomInButton->currentImage()), image("ZoomIn"));
    EXPECT_EQ(screen->cameraInfoLabel->text(), localized("cam_zoom_out"));
    EXPECT_DOUBLE_EQ(screen->videoSession()->zoom(), 1.0);

    using Flash = CKFSession::FlashMode;
    const std::pair<Flash, const char*> flashes[] = {
        {Flash::on, "Flash"}, {Flash::off, "FlashD"}, {Flash::automatic, "FlashA"}};
    for (const auto& [mode, icon] : flashes) {
        screen->flashButton->sendActions(ui::Control::touchUpInside);
        EXPECT_EQ(screen->videoSession()->flashMode(), mode);
        EXPECT_EQ(picture(screen->flashButton->currentImage()), image(icon)) << icon;
    }
    hdTap();
    expectFormat("HD60", 1, {1920, 1080}, 60);
    hdTap();
    expectFormat("4K", 2, {3840, 2160}, 30);
    hdTap();
    expectFormat("HD", 0, {1920, 1080}, 30);
}

// Also: the duration button opens the picker, and its choice comes back to the button.
TEST_F(CameraViewControllerTest, TabletsHaveNoCameraSwitchAndLandscapeEmptiesTheLabels) {
    ui::Storyboard::registerFactory(QStringLiteral("Main"),
                                    QStringLiteral("ChoseDurationViewController"),
                                    [] { return new ChoseDurationViewController; });
    Device::current().setFormFactorForTesting(Device::FormFactor::tablet);
    show(false);
    EXPECT_FALSE(screen->changeCamButton);

    Device::current().setOrientationForTesting(Device::Orientation::landscapeRight);
    screen->updateInfoLabels();
    EXPECT_TRUE(screen->zoomInfoLabel->text().isEmpty());
    EXPECT_TRUE(screen->cameraInfoLabel->text().isEmpty());
    // Face up counts as portrait.
    Device::current().setOrientationForTesting(Device::Orientation::faceUp);
    screen->updateInfoLabels();
    EXPECT_FALSE(screen->zoomInfoLabel->text().isEmpty());
    EXPECT_FALSE(screen->cameraInfoLabel->text().isEmpty());

    screen->durationButton->sendActions(ui::Control::touchUpInside);
    auto* picker = qobject_cast<ChoseDurationViewController*>(screen->presentedViewController());
    ASSERT_TRUE(picker);
    defaults().setFloat(PreferenceSchema::zoomDuration, 9.0f);
    picker->dismiss(static_cast<ui::Control*>(nullptr));
    EXPECT_EQ(screen->durationButton->currentTitle(), QStringLiteral("9s"));
}

// A webcam with 720p only: named by what it is, zoomed no further than 720 lines keep sharp.
TEST_F(CameraViewControllerTest, ACameraWithOnly720pOffersItsOwnFormatsAndSizesTheSlider) {
    Discovery::setVirtualCamerasForTesting(
        {{av::DevicePosition::back, {{1280, 720, {{1, 60}}, QStringLiteral("video/x-raw")}}}});
    defaults().setInteger(PreferenceSchema::videoMode, 2);
    show();
    std::vector<QString> titles;
    for (const auto& format : screen->offeredFormats())
        titles.push_back(format.title);
    EXPECT_EQ(titles, (std::vector<QString>{QStringLiteral("720p"), QStringLiteral("720p60")}));
    // The stored 4K falls back with a notice, which goes once another format is chosen.
    expectFormat("720p", 2, {1280, 720}, 30);
    EXPECT_LE(screen->videoSession()->zoom(), double(screen->zoomSlider->maximumValue()));
    EXPECT_TRUE(status().contains(QStringLiteral("4K")) &&
                status().contains(QStringLiteral("720p")))
        << status().toStdString();
    hdTap();
    expectFormat("720p60", 1, {1280, 720}, 60);
    EXPECT_EQ(status(), QString());
    hdTap();
    expectFormat("720p", 0, {1280, 720}, 30);
}

// A failed switch says so until a switch succeeds; one camera of any position is used and offers
// no switch.
TEST_F(CameraViewControllerTest, AFailedSwitchSaysSoAndALoneCameraOffersNone) {
    show();
    EXPECT_FALSE(screen->changeCamButton->isHidden());
    av::CaptureDevice* back = camera();
    Discovery::setVirtualDevicesEnabled(false);
    screen->changeCamButton->sendActions(ui::Control::touchUpInside);
    EXPECT_EQ(camera(), back);
    const QString failed = status();
    EXPECT_FALSE(failed.isEmpty());

    Discovery::setVirtualDevicesEnabled(true);
    screen->changeCamButton->sendActions(ui::Control::touchUpInside);
    EXPECT_EQ(camera()->position(), av::DevicePosition::front);
    EXPECT_EQ(status(), QString()) << failed.toStdString();
    // The new camera runs the stored format too.
    EXPECT_EQ(camera()->activeFormat().height, 1080);

    for (const av::DevicePosition position :
         {av::DevicePosition::back, av::DevicePosition::front}) {
        SCOPED_TRACE(int(position));
        Discovery::setVirtualCamerasForTesting(
            {{position, av::VirtualCameraDevice::sceneFormats()}});
        show();
        ASSERT_TRUE(camera());
        EXPECT_EQ(camera()->position(), position);
        EXPECT_TRUE(screen->changeCamButton->isHidden());
        // Reached anyway (a shortcut), the switch keeps camera and position.
        av::CaptureDevice* before = camera();
        screen->changeCamHandler(screen->changeCamButton);
        EXPECT_EQ(camera(), before);
        EXPECT_EQ(screen->videoSession()->cameraPosition(), CKFSession::CameraPosition::back);
    }
}

TEST_F(CameraViewControllerTest, AnUnpluggedCameraResumesWhenPluggedBackIn) {
    const av::GstHandle<GstDevice> webcam(
        makeFakeWebcam("Fake webcam",
                       "video/x-raw, format=I420, width=640, height=360, framerate=30/1"),
        av::GstRef::adopt);
    const QString id = QStringLiteral("Fake webcam");
    Discovery::deviceAddedForTesting(webcam.get());
    show();
    ASSERT_EQ(camera()->uniqueID(), id);
    EXPECT_TRUE(screen->changeCamButton->isHidden());
    // A real camera gets no virtual microphone: its clips are picture only.
    EXPECT_EQ(screen->videoSession()->session()->inputs().size(), 1u);
    const auto frames = [this] { return screen->previewView->framesTaken(); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames() > 2; }, 10000));

    Discovery::deviceRemovedForTesting(id);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !status().isEmpty(); }));
    // Another change while it is away: the virtual stand-in does not take the real camera's place.
    emit Discovery::changes().devicesChanged();
    EXPECT_EQ(camera()->uniqueID(), id);
    EXPECT_FALSE(camera()->isConnected());

    const quint64 before = frames();
    Discovery::deviceAddedForTesting(webcam.get());
    EXPECT_TRUE(QTest::qWaitFor([&] { return frames() > before + 2; }, 10000));
    EXPECT_TRUE(camera()->isConnected());
    // Said for a moment, then the picture is clear again.
    const QString back = localized("cam_status_resumed");
    EXPECT_TRUE(QTest::qWaitFor([&] { return status() == back; }, 10000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return status().isEmpty(); }, 10000));
    window.reset();
    Discovery::deviceRemovedForTesting(id);
}

// The screen's ramp keeps to its clock: a timer that fires late runs every tick it missed, and
// the ramp's end deselects the button; a new ramp stops the one before.
TEST_F(CameraViewControllerTest, TheRampKeepsToItsClock) {
    defaults().setFloat(PreferenceSchema::zoomDuration, 15.0f);
    show();
    qint64 now = 0;
    screen->rampClock = [&now] { return now; };
    screen->zoomSlider->setValue(3.0f);
    screen->startZoomRamp();
    const std::shared_ptr<CameraViewController::RampState> older = screen->lastRamp();
    screen->startZoomRamp();
    EXPECT_FALSE(older->timer);
    const std::shared_ptr<CameraViewController::RampState> ramp = screen->lastRamp();
    screen->cameraButton->setSelected(true);
    now = 20 * qint64(1'000'000'000);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !ramp->timer; }, 5000));
    EXPECT_GE(ramp->elapsed, 1499.0);
    EXPECT_NEAR(screen->videoSession()->zoom(), 1.0, 0.002);
    EXPECT_FALSE(screen->cameraButton->isSelected());
}

TEST_F(CameraViewControllerTest, EachTakeEndsWithItsRampAndThePreviewGoesBackToTheSlider) {
    defaults().setFloat(PreferenceSchema::zoomDuration, 1.0f);
    defaults().setInteger(PreferenceSchema::zoomMode, 1);
    show();
    CKFVideoSession* session = screen->videoSession();
    screen->zoomSlider->setValue(2.0f);
    QUrl finished;
    QObject::connect(screen, &CameraViewController::clipFinished,
                     [&](const QUrl& url) { finished = url; });

    // Space presses the record button, once however long it is held; the ramp's own end stops
    // the movie, and the zoom-in take's preview goes back to 1.0.
    const auto space = [this](bool down, bool repeat) {
        QTest::simulateEvent(screen->zoomSlider.data(), down, Qt::Key_Space, Qt::NoModifier,
                             QStringLiteral(" "), repeat);
    };
    space(true, false);
    const std::shared_ptr<CameraViewController::RampState> ramp = screen->lastRamp();
    for (int repeat = 0; repeat < 3; ++repeat)
        space(true, true);
    space(false, false);
    EXPECT_EQ(screen->lastRamp(), ramp);
    EXPECT_TRUE(ramp && ramp->timer) << "still the first take";
    EXPECT_TRUE(screen->cameraButton->isSelected());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !finished.isEmpty(); }, 15000));
    EXPECT_EQ(finished, CKFVideoSession::defaultFileURL());
    EXPECT_FALSE(screen->cameraButton->isSelected());
    EXPECT_DOUBLE_EQ(session->zoom(), 1.0);

    // A second press ends a zoom-out take and its ramp at once; once the file is complete the
    // preview is back at the slider's zoom...
    defaults().setInteger(PreferenceSchema::zoomMode, 0);
    defaults().setFloat(PreferenceSchema::zoomDuration, 2.0f);
    finished.clear();
    press();
    EXPECT_DOUBLE_EQ(session->zoom(), 2.0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return session->movieFileOutput()->framesWritten() > 3; }));
    const std::shared_ptr<CameraViewController::RampState> early = screen->lastRamp();
    press();
    EXPECT_FALSE(early->timer);
    EXPECT_LT(session->zoom(), 2.0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !finished.isEmpty(); }, 10000));
    EXPECT_DOUBLE_EQ(session->zoom(), 2.0);
    // ...so that the next take, pressed at once, lasts its own two seconds (within a tick).
    finished.clear();
    QElapsedTimer take;
    take.start();
    press();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !finished.isEmpty(); }, 15000));
    EXPECT_GE(take.elapsed(), 2000 - 10);
}

// A take that fails says what failed, leaves the previous clip as it was and brings the controls
// back; once the fault is mended, the next press clears the message and records.
TEST_F(CameraViewControllerTest, AFailedTakeSaysWhyAndTheNextPressRecords) {
    const QDir documents(folder.filePath(QStringLiteral("documents")));
    const auto files = [&] {
        QStringList sized;
        for (const QFileInfo& file : documents.entryInfoList(QDir::Files | QDir::Hidden))
            sized << file.fileName() + QLatin1Char(' ') + QString::number(file.size());
        return sized;
    };
    const QStringList before = files();
    show();
    CKFVideoSession* session = screen->videoSession();
    ASSERT_TRUE(QTest::qWaitFor([&] { return screen->previewView->framesTaken() > 2; }, 10000));
    // A paused camera sends no frame: the second press stops the take before its first one.
    GstElement* pipeline = session->session()->pipeline();
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    QTest::qWait(200);
    press();
    press();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !session->isRecording(); }, 10000));
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const QString failed = localized("cam_recording_failed").arg(QString());
    EXPECT_TRUE(status().startsWith(failed)) << status().toStdString();

    // No H.264 encoder on the machine.
    av::EncoderChoice::setVideoEncodersForTesting(QStringList{});
    press();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !session->isRecording(); }, 10000));
    av::EncoderChoice::setVideoEncodersForTesting(std::nullopt);
    EXPECT_FALSE(screen->lastRamp()->timer);
    EXPECT_TRUE(status().startsWith(failed) &&
                status().contains(qtTrId("writer_tessaro_cannot_record_no")))
        << status().toStdString();
    // The controls hidden for the take are back, shown and taking clicks.
    EXPECT_TRUE(QTest::qWaitFor([this] {
        return std::all_of(screen->topViews->begin(), screen->topViews->end(), [](auto& view) {
            return !view || (ui::ViewAnimation::alpha(view) == 1.0 &&
                             !view->testAttribute(Qt::WA_TransparentForMouseEvents));
        });
    }));
    EXPECT_EQ(files(), before);

    press();
    EXPECT_EQ(status(), QString());
    EXPECT_TRUE(QTest::qWaitFor([&] { return session->hasRecordingStarted(); }, 10000));
    press();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !session->isRecording(); }, 10000));
}

TEST_F(CameraViewControllerTest, WithoutPermissionThereIsNoSessionButControlsRespond) {
    av::CaptureDevice::setAuthorizationStatusForTesting(av::AuthorizationStatus::denied);
    show(false);
    QTest::qWait(50);
    EXPECT_FALSE(screen->videoSession());
    EXPECT_EQ(status(), localized("cam_status_denied"));
    screen->cameraButton->sendActions(ui::Control::touchUpInside);
    hdTap();
    screen->zoomInButton->sendActions(ui::Control::touchUpInside);
    EXPECT_FALSE(screen->lastRamp());
    EXPECT_EQ(defaults().integerForKey(PreferenceSchema::zoomMode), 1);
    av::CaptureDevice::setAuthorizationStatusForTesting(std::nullopt);
}

} // namespace
