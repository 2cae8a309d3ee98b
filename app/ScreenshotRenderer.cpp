#include "app/ScreenshotRenderer.h"

#include "app/EventLoopWait.h"
#include "platform/foundation/PreferenceSchema.h"

#include "capture/CKFGridView.h"
#include "capture/CKFPhotoSession.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "onboarding/ALButton.h"
#include "onboarding/TutorialViewController.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/av/VirtualCameraSource.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/ActivityViewController.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/MailComposeViewController.h"
#include "platform/ui/ScrollView.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"
#include "playback/VideoPreviewViewController.h"
#include "rating/AppRating.h"
#include "rating/RateAppMailViewController.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPixmap>
#include <QTemporaryDir>
#include <QTextStream>
#include <QWidget>

#include <algorithm>

namespace {

// The size of a phone's screen in portrait, in device-independent pixels.
constexpr QSize phone(390, 844);
constexpr int framesBeforeGrab = 3;
constexpr int secondsForFrames = 10;

ScreenshotRenderer::Scene preview(const QSize& size) {
    auto view = std::make_unique<CKFPreviewView>();
    view->resize(size);
    view->setSession(std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back));
    view->previewLayer()->setVideoGravity(
        av::CaptureVideoPreviewLayer::VideoGravity::resizeAspectFill);
    view->setShowGrid(true);
    const CKFPreviewView* shown = view.get();
    return {std::move(view), [shown] { return shown->framesTaken() >= framesBeforeGrab; }};
}

// The photo session finding the virtual camera's subject: its face box over the live picture.
ScreenshotRenderer::Scene faces(CKFSession::CameraPosition position) {
    auto view = std::make_unique<CKFPreviewView>();
    view->resize(phone);
    auto session =
        std::make_shared<CKFPhotoSession>(position, CKFPhotoSession::CameraDetection::faces);
    view->setSession(session);
    view->previewLayer()->setVideoGravity(
        av::CaptureVideoPreviewLayer::VideoGravity::resizeAspectFill);
    const CKFPreviewView* shown = view.get();
    return {std::move(view), [shown, session] {
                const auto& boxes = session->faceDetectionBoxes();
                return shown->framesTaken() >= framesBeforeGrab && !boxes.empty() &&
                       boxes.front() && !boxes.front()->geometry().isEmpty();
            }};
}

ScreenshotRenderer::Scene grid() {
    auto backdrop = std::make_unique<QWidget>();
    backdrop->setStyleSheet(QStringLiteral("background: #202428;"));
    backdrop->resize(phone);
    new CKFGridView(QRect(QPoint(0, 0), phone), backdrop.get());
    return {std::move(backdrop), {}};
}

// The record button on a dark backdrop, idle or recording once its morph has ended.
ScreenshotRenderer::Scene recordButton(bool recording) {
    auto backdrop = std::make_unique<QWidget>();
    backdrop->setStyleSheet(QStringLiteral("background: #202428;"));
    backdrop->resize(120, 120);
    auto* button = new CameraButton(backdrop.get());
    button->setType(CameraButtonType::video);
    button->move((120 - CameraButton::side) / 2, (120 - CameraButton::side) / 2);
    if (recording)
        button->setSelected(true);
    return {std::move(backdrop), [button] { return !button->isAnimating(); }};
}

// Settings and clips of a screenshot stay in a folder of their own, so the user's are untouched
// and every screenshot starts from the defaults.
void usePrivateFolders() {
    static QTemporaryDir folder;
    qputenv("TESSARO_CONFIG_DIR", QFile::encodeName(folder.filePath(QStringLiteral("config"))));
    qputenv("TESSARO_DOCUMENTS_DIR",
            QFile::encodeName(folder.filePath(QStringLiteral("documents"))));
    foundation::Preferences::resetStandardForTesting();
}

enum class CameraScene {
    idle,
    recording,
    zoomIn,
    picker,
    rateFirst,
    rateLiked,
    rateMail,
    mailComposer
};

// The rating dialogs as the app shows them: the first one as the scheduler does, the others as
// the first one's answers do.
void presentRatingDialog(CameraViewController* screen, CameraScene what) {
    if (what == CameraScene::rateFirst) {
        AppRating::promptRateUs(screen);
        return;
    }
    const QString identifier = what == CameraScene::rateLiked
                                   ? QStringLiteral("RateAppLikedViewController")
                                   : QStringLiteral("RateAppMailViewController");
    ui::ViewController* dialog = ui::Storyboard(QStringLiteral("Main")).instantiate(identifier);
    if (!dialog)
        return;
    screen->present(dialog, false);
    // Shown whether or not this machine has a mail program, which only decides the button.
    if (auto* mail = qobject_cast<RateAppMailViewController*>(dialog);
        mail && what == CameraScene::mailComposer)
        mail->present(mail->makeComposer(), false);
}

// The recording screen in a window of the given size, once the camera shows a picture and the
// animations of the scene have ended.
ScreenshotRenderer::Scene cameraScreen(const QSize& size, CameraScene what) {
    usePrivateFolders();
    if (what == CameraScene::zoomIn)
        foundation::Preferences::standard().setInteger(foundation::PreferenceSchema::zoomMode,
                                                       int(ZoomMode::zoomIn));
    auto window = std::make_unique<ui::Window>();
    auto* screen = new CameraViewController;
    window->setRootViewController(screen);
    window->resize(size);
    screen->view();
    screen->zoomSlider->setValue(2.5f);
    screen->zoomSlider->sendActions(ui::Control::valueChanged);
    auto pressed = std::make_shared<bool>(false);
    auto since = std::make_shared<QElapsedTimer>();
    auto ready = [screen, what, pressed, since] {
        if (!screen->previewView || screen->previewView->framesTaken() < framesBeforeGrab)
            return false;
        if (!*pressed) {
            *pressed = true;
            since->start();
            if (what == CameraScene::recording)
                screen->cameraButton->sendActions(ui::Control::touchDown |
                                                  ui::Control::touchUpInside);
            if (what == CameraScene::picker)
                screen->durationButton->sendActions(ui::Control::touchDown |
                                                    ui::Control::touchUpInside);
            if (what == CameraScene::rateFirst || what == CameraScene::rateLiked ||
                what == CameraScene::rateMail || what == CameraScene::mailComposer)
                presentRatingDialog(screen, what);
        }
        // A second into the ramp, or once the fades and the sheet have settled.
        return since->elapsed() > (what == CameraScene::recording ? 1200 : 600);
    };
    return {std::move(window), ready};
}

// Drops the camera's pictures and says, once, that another program holds the camera: what a
// webcam in use elsewhere answers when the session starts it.
GstPadProbeReturn refuseAsBusy(GstPad* pad, GstPadProbeInfo*, gpointer) {
    if (!g_object_get_data(G_OBJECT(pad), "refused")) {
        g_object_set_data(G_OBJECT(pad), "refused", GINT_TO_POINTER(1));
        const av::GstHandle<GstElement> source(GST_ELEMENT(gst_pad_get_parent(pad)),
                                               av::GstRef::adopt);
        gst_element_message_full(source.get(), GST_MESSAGE_ERROR, GST_RESOURCE_ERROR,
                                 GST_RESOURCE_ERROR_BUSY, g_strdup("Device or resource busy"),
                                 nullptr, __FILE__, "refuseAsBusy", __LINE__);
    }
    return GST_PAD_PROBE_DROP;
}

// Makes the running virtual camera of the session answer as a busy camera does.
void makeCameraBusy(av::CaptureSession* session) {
    GstElement* pipeline = session->pipeline();
    if (!pipeline)
        return;
    GstIterator* sources = gst_bin_iterate_all_by_element_factory_name(
        GST_BIN(pipeline), av::VirtualCameraSource::factoryName);
    GValue item = G_VALUE_INIT;
    while (gst_iterator_next(sources, &item) == GST_ITERATOR_OK) {
        auto* source = GST_ELEMENT(g_value_get_object(&item));
        av::GstHandle<GstPad> pad(gst_element_get_static_pad(source, "src"), av::GstRef::adopt);
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, refuseAsBusy, nullptr, nullptr);
        g_value_reset(&item);
    }
    g_value_unset(&item);
    gst_iterator_free(sources);
}

enum class CameraTrouble { busy, unplugged, resumed };

// The recording screen over a camera in trouble: held by another program at start (and for good,
// or freed at the first retry, which says the camera is back), or unplugged while it runs.
ScreenshotRenderer::Scene cameraTroubleScreen(CameraTrouble what) {
    ScreenshotRenderer::Scene scene = cameraScreen(phone, CameraScene::idle);
    auto* window = static_cast<ui::Window*>(scene.widget.get());
    auto* screen = static_cast<CameraViewController*>(window->rootViewController());
    auto session = std::make_shared<QPointer<av::CaptureSession>>();
    auto shownSince = std::make_shared<QElapsedTimer>();
    auto cameraReady = std::move(scene.ready);
    scene.ready = [=] {
        CKFVideoSession* video = screen->videoSession();
        if (!video)
            return false;
        if (!*session && what != CameraTrouble::unplugged) {
            av::CaptureSession* capture = video->session();
            *session = capture;
            // Every retry finds the camera still held, or only the first start does.
            auto starts = std::make_shared<int>(0);
            const auto start = [capture, starts, what] {
                if (++*starts == 1 || what == CameraTrouble::busy)
                    makeCameraBusy(capture);
            };
            if (capture->pipeline())
                start();
            QObject::connect(capture, &av::CaptureSession::didStartRunning, capture, start);
        }
        const QString status =
            screen->cameraStatusLabel->isVisible() ? screen->cameraStatusLabel->text() : QString();
        bool shown = false;
        switch (what) {
        case CameraTrouble::busy:
            shown = !status.isEmpty() && video->session()->isWaitingForBusyCamera();
            break;
        case CameraTrouble::unplugged:
            if (video->session()->isRunning() && cameraReady())
                video->cameraDevice()->setDisconnected();
            shown = !status.isEmpty() && !video->cameraDevice()->isConnected();
            break;
        case CameraTrouble::resumed:
            shown = status == foundation::Strings::localizedString("cam_status_resumed") &&
                    cameraReady();
            break;
        }
        if (!shown) {
            shownSince->invalidate();
            return false;
        }
        if (!shownSince->isValid())
            shownSince->start();
        // Once the message's fade and the picture's last frames have settled.
        return shownSince->elapsed() > 400;
    };
    return scene;
}

// A short take of the virtual camera's street with a tone, as the recording screen would leave it.
QUrl writeSampleClip() {
    av::Gst::ensureInitialized();
    const QString path = QDir(foundation::FileManager::documentsDirectory())
                             .filePath(QStringLiteral("Tessaro Video.mov"));
    const QByteArray launch =
        "tessaravirtualcam zoom=1.6 num-buffers=20 ! video/x-raw,width=1280,height=720,"
        "framerate=30/1 ! videoconvert ! x264enc speed-preset=ultrafast ! qtmux name=mux ! "
        "filesink location=\"" +
        path.toUtf8() + "\" audiotestsrc num-buffers=20 ! avenc_aac ! mux.";
    return av::Gst::runToEnd(launch, std::chrono::seconds(20)) ? QUrl::fromLocalFile(path) : QUrl();
}

enum class PreviewScene { playing, share, saveError };

// The recording screen hands a finished take to the preview, as after a recording; then the
// share sheet, or a save that fails because the Videos folder cannot be made.
ScreenshotRenderer::Scene previewScreen(PreviewScene what) {
    ScreenshotRenderer::Scene scene = cameraScreen(phone, CameraScene::idle);
    auto* window = static_cast<ui::Window*>(scene.widget.get());
    auto* screen = static_cast<CameraViewController*>(window->rootViewController());
    if (what == PreviewScene::saveError) {
        static QTemporaryDir blocked;
        QFile file(blocked.filePath(QStringLiteral("Videos")));
        file.open(QIODevice::WriteOnly);
        qputenv("TESSARO_VIDEOS_DIR", QFile::encodeName(file.fileName() + "/Tessaro"));
    }
    const QUrl clip = writeSampleClip();
    auto step = std::make_shared<int>(0);
    auto since = std::make_shared<QElapsedTimer>();
    auto cameraReady = std::move(scene.ready);
    scene.ready = [=] {
        if (*step == 0) {
            if (!cameraReady())
                return false;
            screen->recordingFinished(clip);
            *step = 1;
        }
        auto* preview =
            qobject_cast<VideoPreviewViewController*>(screen->presentedViewController());
        if (*step == 1) {
            if (!preview || preview->isBeingPresented() || !preview->playerLayer ||
                preview->playerLayer->framesDisplayed() < framesBeforeGrab)
                return false;
            *step = 2;
            since->start();
            if (what == PreviewScene::share)
                preview->shareButton->sendActions(ui::Control::touchDown |
                                                  ui::Control::touchUpInside);
            if (what == PreviewScene::saveError)
                preview->saveButton->sendActions(ui::Control::touchDown |
                                                 ui::Control::touchUpInside);
        }
        if (what == PreviewScene::saveError)
            return qobject_cast<ui::AlertController*>(screen->presentedViewController()) &&
                   since->elapsed() > 1200;
        return since->elapsed() > (what == PreviewScene::playing ? 300 : 700);
    };
    return scene;
}

// The tutorial as a first start shows it, glided to its page (1 to 4) as a swipe would; page 0
// goes on to press the start button and shows the recording screen that replaces it.
ScreenshotRenderer::Scene tutorialScreen(int page) {
    usePrivateFolders();
    auto window = std::make_unique<ui::Window>();
    auto* tutorial = new TutorialViewController;
    window->setRootViewController(tutorial);
    window->resize(phone);
    window->makeKeyAndVisible();
    ui::Window* shown = window.get();
    auto moved = std::make_shared<bool>(false);
    auto since = std::make_shared<QElapsedTimer>();
    auto ready = [=] {
        auto* camera = qobject_cast<CameraViewController*>(shown->rootViewController());
        if (camera)
            return camera->previewView && camera->previewView->framesTaken() >= framesBeforeGrab;
        const QList<VideoContainerView*> pages =
            tutorial->scrollView->contentView()->findChildren<VideoContainerView*>();
        const int target = page == 0 ? 3 : page - 1;
        if (pages.size() <= target || !pages.at(target)->playerLayer())
            return false;
        if (!*moved) {
            *moved = true;
            tutorial->scrollView->setContentOffset(
                QPointF(target * tutorial->scrollView->width(), 0), true);
            since->start();
            return false;
        }
        if (tutorial->scrollView->isDecelerating() ||
            pages.at(target)->playerLayer()->framesDisplayed() < framesBeforeGrab)
            return false;
        if (page == 0) {
            tutorial->startButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
            return false;
        }
        // A second into the clips, where the ramp shows.
        return since->elapsed() > 1000;
    };
    return {std::move(window), ready};
}

} // namespace

const std::vector<ScreenshotRenderer::Screen>& ScreenshotRenderer::screens() {
    static const std::vector<Screen> registry{
        {QStringLiteral("preview"), [] { return preview(phone); }},
        {QStringLiteral("preview-landscape"), [] { return preview(phone.transposed()); }},
        {QStringLiteral("grid"), grid},
        {QStringLiteral("faces"), [] { return faces(CKFSession::CameraPosition::back); }},
        {QStringLiteral("faces-front"), [] { return faces(CKFSession::CameraPosition::front); }},
        {QStringLiteral("record-button"), [] { return recordButton(false); }},
        {QStringLiteral("record-button-recording"), [] { return recordButton(true); }},
        {QStringLiteral("camera"), [] { return cameraScreen(phone, CameraScene::idle); }},
        {QStringLiteral("camera-recording"),
         [] { return cameraScreen(phone, CameraScene::recording); }},
        {QStringLiteral("camera-zoom-in"), [] { return cameraScreen(phone, CameraScene::zoomIn); }},
        {QStringLiteral("camera-landscape"),
         [] { return cameraScreen(phone.transposed(), CameraScene::idle); }},
        {QStringLiteral("camera-desktop"),
         [] { return cameraScreen(QSize(1280, 720), CameraScene::idle); }},
        // A webcam with 720p only, and a machine with one camera: what the controls offer there.
        {QStringLiteral("camera-720p"),
         [] {
             av::CaptureDeviceDiscoverySession::setVirtualCamerasForTesting(
                 {{av::DevicePosition::back,
                   {{1280, 720, {{1, 30}}, QStringLiteral("video/x-raw")}}}});
             return cameraScreen(phone, CameraScene::idle);
         }},
        {QStringLiteral("camera-one"),
         [] {
             av::CaptureDeviceDiscoverySession::setVirtualCamerasForTesting(
                 {{av::DevicePosition::back, av::VirtualCameraDevice::sceneFormats()}});
             return cameraScreen(phone, CameraScene::idle);
         }},
        {QStringLiteral("camera-busy"), [] { return cameraTroubleScreen(CameraTrouble::busy); }},
        {QStringLiteral("camera-unplugged"),
         [] { return cameraTroubleScreen(CameraTrouble::unplugged); }},
        {QStringLiteral("camera-resumed"),
         [] { return cameraTroubleScreen(CameraTrouble::resumed); }},
        // A desktop window stood upright over a landscape webcam: the whole picture, with bars.
        {QStringLiteral("camera-portrait-window"),
         [] { return cameraScreen(QSize(600, 960), CameraScene::idle); }},
        {QStringLiteral("duration-picker"),
         [] { return cameraScreen(phone, CameraScene::picker); }},
        {QStringLiteral("rate-first"), [] { return cameraScreen(phone, CameraScene::rateFirst); }},
        {QStringLiteral("rate-liked"), [] { return cameraScreen(phone, CameraScene::rateLiked); }},
        {QStringLiteral("rate-mail"), [] { return cameraScreen(phone, CameraScene::rateMail); }},
        {QStringLiteral("mail-composer"),
         [] { return cameraScreen(phone, CameraScene::mailComposer); }},
        {QStringLiteral("clip-preview"), [] { return previewScreen(PreviewScene::playing); }},
        {QStringLiteral("share-sheet"), [] { return previewScreen(PreviewScene::share); }},
        {QStringLiteral("save-error"), [] { return previewScreen(PreviewScene::saveError); }},
        {QStringLiteral("tutorial-1"), [] { return tutorialScreen(1); }},
        {QStringLiteral("tutorial-2"), [] { return tutorialScreen(2); }},
        {QStringLiteral("tutorial-3"), [] { return tutorialScreen(3); }},
        {QStringLiteral("tutorial-4"), [] { return tutorialScreen(4); }},
        {QStringLiteral("tutorial-start"), [] { return tutorialScreen(0); }},
    };
    return registry;
}

QStringList ScreenshotRenderer::names() {
    QStringList result;
    for (const Screen& screen : screens())
        result << screen.name;
    return result;
}

int ScreenshotRenderer::render(const QString& name, const QString& file) {
    QTextStream err(stderr);
    const auto found = std::find_if(screens().begin(), screens().end(),
                                    [&](const Screen& screen) { return screen.name == name; });
    if (found == screens().end()) {
        err << qtTrId("shot_there_no_screen_screens").arg(name, names().join(QStringLiteral(", ")))
            << Qt::endl;
        return 2;
    }
    if (file.isEmpty()) {
        err << qtTrId("shot_which_file_tessaro_screenshot").arg(name) << Qt::endl;
        return 2;
    }

    Scene scene = found->build();
    scene.widget->show();
    if (scene.ready && !waitInEventLoop(scene.ready, secondsForFrames * 1000)) {
        err << qtTrId("shot_screen_had_nothing_show").arg(name).arg(secondsForFrames) << Qt::endl;
        return 1;
    }
    // Pending layouts and repaints first.
    QCoreApplication::processEvents();

    if (!scene.widget->grab().save(file, "PNG")) {
        err << qtTrId("shot_could_not_write").arg(file) << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << QFileInfo(file).absoluteFilePath() << Qt::endl;
    return 0;
}
