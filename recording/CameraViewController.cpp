#include "recording/CameraViewController.h"

#include "capture/CKFGridView.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/View.h"
#include "platform/ui/ViewAnimation.h"
#include "playback/VideoPreviewViewController.h"
#include "recording/CameraButton.h"
#include "recording/ChoseDurationViewController.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <QShortcut>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {

const QString zoomModeKey = QString::fromLatin1(foundation::PreferenceSchema::zoomMode);
const QString zoomDurationKey = QString::fromLatin1(foundation::PreferenceSchema::zoomDuration);
const QString videoModeKey = QString::fromLatin1(foundation::PreferenceSchema::videoMode);

constexpr double fadeDuration = 0.15;
constexpr int topRowHeight = 56;
constexpr int topButtonSide = 44;
constexpr int columnWidth = 440;
constexpr int margin = 16;
constexpr int virtualNoticeSeconds = 6;
constexpr int failureNoticeSeconds = 10;
constexpr int resumedNoticeSeconds = 3;
constexpr int resumedCheckMilliseconds = 1000;

foundation::Preferences& defaults() {
    return foundation::Preferences::standard();
}

// Stops a ramp's ticks; the timer goes once its current tick has returned.
void stopTicking(CameraViewController::RampState& state) {
    if (state.timer) {
        state.timer->stop();
        state.timer->deleteLater();
        state.timer = nullptr;
    }
}

template <class T> T* required(const QPointer<T>& outlet, const char* name) {
    if (!outlet)
        qFatal("CameraViewController: the outlet %s is missing", name);
    return outlet.data();
}

ui::Button* topButton(QWidget* parent, const char* name) {
    auto* button = new ui::Button(parent);
    button->setObjectName(QLatin1String(name));
    button->setImageSize(QSize(26, 26));
    button->setTitleColor(Qt::white);
    QFont font = button->font();
    font.setPixelSize(15);
    font.setBold(true);
    button->setFont(font);
    button->resize(topButtonSide, topButtonSide);
    return button;
}

// White text over the picture; the scrims behind keep it legible on a bright scene.
ui::Label* overlayLabel(QWidget* parent, int pixelSize, bool bold) {
    auto* label = new ui::Label(parent);
    label->setTextColor(Qt::white);
    label->setAlignment(Qt::AlignCenter);
    label->setNumberOfLines(2);
    label->setWordWrap(true);
    QFont font = label->font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    label->setFont(font);
    return label;
}

// The dark bands behind the top row and the bottom controls, so they read on a bright scene.
class ScrimView : public QWidget {
public:
    ScrimView(bool top, QWidget* parent) : QWidget(parent), top(top) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QLinearGradient gradient(0, 0, 0, height());
        gradient.setColorAt(top ? 0.0 : 1.0, QColor(0, 0, 0, 150));
        gradient.setColorAt(top ? 1.0 : 0.0, QColor(0, 0, 0, 0));
        painter.fillRect(rect(), gradient);
    }

private:
    bool top;
};

} // namespace

CameraViewController::CameraViewController(QObject* parent) : ui::ViewController(parent) {}

CameraViewController::~CameraViewController() = default;

CKFVideoSession* CameraViewController::videoSession() const {
    if (!previewView)
        return nullptr;
    return qobject_cast<CKFVideoSession*>(previewView->session().get());
}

void CameraViewController::loadView() {
    auto* root = new QWidget;
    root->setObjectName(QStringLiteral("CameraView"));
    root->setAutoFillBackground(true);
    QPalette palette = root->palette();
    palette.setColor(QPalette::Window, Qt::black);
    root->setPalette(palette);
    root->installEventFilter(this);

    previewView = new CKFPreviewView(root);

    topScrim = new ScrimView(true, root);
    bottomScrim = new ScrimView(false, root);

    changeCamButton = topButton(root, "changeCamButton");
    zoomInButton = topButton(root, "zoomInButton");
    durationButton = topButton(root, "durationButton");
    gridButton = topButton(root, "gridButton");
    flashButton = topButton(root, "flashButton");
    hdButton = topButton(root, "hdButton");
    hdButton->setTitle(QString::fromLatin1(videoFormat(VideoMode::hd).title));
    durationButton->setTitle(QStringLiteral("5s"));
    gridButton->setImage(foundation::Bundle::main().image(QStringLiteral("Grid")));
    flashButton->setImage(foundation::Bundle::main().image(QStringLiteral("FlashA")));
    changeCamButton->setImage(foundation::Bundle::main().image(QStringLiteral("SwitchCamera")));

    zoomInfoLabel = overlayLabel(root, 13, false);
    zoomInfoLabel->setObjectName(QStringLiteral("zoomInfoLabel"));
    cameraInfoLabel = overlayLabel(root, 15, true);
    cameraInfoLabel->setObjectName(QStringLiteral("cameraInfoLabel"));

    zoomSlider = new ui::Slider(root);
    zoomSlider->setObjectName(QStringLiteral("zoomSlider"));
    zoomSlider->setMinimumValue(1.0f);
    zoomSlider->setMaximumValue(4.0f);
    zoomSlider->setValue(2.0f);
    zoomSlider->setMinimumTrackTintColor(QColor(255, 204, 0));
    zoomSlider->setMaximumTrackTintColor(QColor(255, 255, 255, 110));

    zoomValueLabel = overlayLabel(root, 13, true);
    zoomValueLabel->setObjectName(QStringLiteral("zoomValueLabel"));
    zoomValueLabel->setTextColor(QColor(255, 204, 0));

    cameraButton = new CameraButton(root);
    cameraButton->setObjectName(QStringLiteral("cameraButton"));

    recordingTimerView = new ui::View(root);
    recordingTimerView->setObjectName(QStringLiteral("recordingTimerView"));
    recordingTimerView->setBackgroundColor(QColor(0, 0, 0, 140));
    recordingTimerView->resize(76, 32);
    recordingeCircle = new ui::View(recordingTimerView);
    recordingeCircle->setObjectName(QStringLiteral("recordingeCircle"));
    recordingeCircle->setBackgroundColor(QColor(255, 59, 48));
    recordingeCircle->setGeometry(14, 11, 10, 10);
    recordingTimeLabel = new ui::Label(recordingTimerView);
    recordingTimeLabel->setObjectName(QStringLiteral("recordingTimeLabel"));
    recordingTimeLabel->setTextColor(Qt::white);
    QFont timeFont = recordingTimeLabel->font();
    timeFont.setPixelSize(17);
    timeFont.setBold(true);
    recordingTimeLabel->setFont(timeFont);
    recordingTimeLabel->setGeometry(30, 0, 40, 32);
    ui::ViewAnimation::setAlpha(recordingTimerView, 0.0);

    cameraStatusLabel = new ui::Label(root);
    cameraStatusLabel->setObjectName(QStringLiteral("cameraStatusLabel"));
    cameraStatusLabel->setTextColor(Qt::white);
    cameraStatusLabel->setAlignment(Qt::AlignCenter);
    cameraStatusLabel->setNumberOfLines(0);
    cameraStatusLabel->setWordWrap(true);
    cameraStatusLabel->setMargin(14);
    cameraStatusLabel->setStyleSheet(
        QStringLiteral("background: rgba(0, 0, 0, 170); border-radius: 10px;"));
    cameraStatusLabel->hide();

    topViews = std::vector<QPointer<QWidget>>{
        QPointer<QWidget>(changeCamButton), QPointer<QWidget>(zoomInButton),
        QPointer<QWidget>(durationButton),  QPointer<QWidget>(gridButton),
        QPointer<QWidget>(flashButton),     QPointer<QWidget>(hdButton),
        QPointer<QWidget>(zoomInfoLabel),   QPointer<QWidget>(cameraInfoLabel)};

    zoomInButton->addTarget(
        this, [this](ui::Control* sender) { zoomIn(sender); }, ui::Control::touchUpInside);
    gridButton->addTarget(
        this, [this](ui::Control* sender) { gridHandler(sender); }, ui::Control::touchUpInside);
    changeCamButton->addTarget(
        this, [this](ui::Control* sender) { changeCamHandler(sender); },
        ui::Control::touchUpInside);
    flashButton->addTarget(
        this, [this](ui::Control* sender) { flashHandler(sender); }, ui::Control::touchUpInside);
    hdButton->addTarget(
        this, [this](ui::Control* sender) { hdHandler(sender); }, ui::Control::touchUpInside);
    durationButton->addTarget(
        this, [this](ui::Control* sender) { durationHandler(sender); }, ui::Control::touchUpInside);
    zoomSlider->addTarget(
        this, [this](ui::Control* sender) { zoomSliderHandler(sender); },
        ui::Control::valueChanged);
    cameraButton->addTarget(
        this, [this](ui::Control* sender) { cameraButtonHandler(sender); },
        ui::Control::touchUpInside);

    // Space records and stops from anywhere on the screen, as the record button's press. A held
    // key is one press: repeats would stop the take and record over it.
    auto* space = new QShortcut(QKeySequence(Qt::Key_Space), root);
    space->setContext(Qt::WidgetWithChildrenShortcut);
    space->setAutoRepeat(false);
    connect(space, &QShortcut::activated, this, [this] {
        if (cameraButton)
            cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
    });

    setView(root);
    layoutControls();
}

bool CameraViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view() && event->type() == QEvent::Resize)
        layoutControls();
    return ui::ViewController::eventFilter(watched, event);
}

CameraViewController::ControlGeometry
CameraViewController::controlGeometry(QSize window, int topButtons, int recordingTimerWidth) {
    const int width = window.width();
    const int height = window.height();
    ControlGeometry geometry;
    geometry.window = window;
    const int column = std::min(width, columnWidth);
    const int left = (width - column) / 2;

    geometry.topScrim = QRect(0, 0, width, topRowHeight + 40);
    geometry.bottomScrim = QRect(0, height - 260, width, 260);

    const int rowWidth = std::min(width, columnWidth + 80) - 2 * margin;
    const int rowLeft = (width - rowWidth) / 2;
    const double gap =
        topButtons > 1 ? double(rowWidth - topButtonSide) / double(topButtons - 1) : 0.0;
    for (int i = 0; i < topButtons; ++i) {
        const int x = topButtons > 1 ? rowLeft + int(std::lround(gap * double(i)))
                                     : (width - topButtonSide) / 2;
        geometry.topRow.emplace_back(x, (topRowHeight - topButtonSide) / 2 + 6, topButtonSide,
                                     topButtonSide);
    }
    geometry.recordingTimer = QPoint((width - recordingTimerWidth) / 2, topRowHeight + 10);

    int y = height - 32 - CameraButton::side;
    geometry.cameraButton =
        QRect((width - CameraButton::side) / 2, y, CameraButton::side, CameraButton::side);
    y -= 20 + 36;
    geometry.zoomSlider = QRect(left + margin + 44, y, column - 2 * margin - 88, 36);
    geometry.zoomValueLabel = QRect(left + margin, y, 44, 36);
    y -= 6 + 40;
    geometry.cameraInfoLabel = QRect(left + margin, y, column - 2 * margin, 40);
    y -= 34;
    geometry.zoomInfoLabel = QRect(left + margin, y, column - 2 * margin, 34);
    geometry.statusWidth = std::min(column - 2 * margin, 340);
    return geometry;
}

QRect CameraViewController::ControlGeometry::status(int textHeight) const {
    return QRect((window.width() - statusWidth) / 2, recordingTimer.y() + 42, statusWidth,
                 std::max(textHeight, 48));
}

void CameraViewController::layoutControls() {
    QWidget* root = view();
    std::vector<QWidget*> row;
    for (const QPointer<ui::Button>& button :
         {changeCamButton, zoomInButton, durationButton, gridButton, flashButton, hdButton})
        if (button && !button->isHidden())
            row.push_back(button);
    const ControlGeometry geometry = controlGeometry(
        root->size(), int(row.size()), recordingTimerView ? recordingTimerView->width() : 0);

    if (previewView)
        previewView->setGeometry(root->rect());
    if (topScrim)
        topScrim->setGeometry(geometry.topScrim);
    if (bottomScrim)
        bottomScrim->setGeometry(geometry.bottomScrim);
    for (size_t i = 0; i < row.size(); ++i)
        row[i]->setGeometry(geometry.topRow[i]);
    // The format's title may be wider than the button's place.
    if (hdButton)
        hdButton->resize(std::max(topButtonSide, hdButton->sizeHint().width()), topButtonSide);
    if (recordingTimerView)
        recordingTimerView->move(geometry.recordingTimer);
    if (cameraButton)
        cameraButton->setGeometry(geometry.cameraButton);
    if (zoomSlider)
        zoomSlider->setGeometry(geometry.zoomSlider);
    if (zoomValueLabel)
        zoomValueLabel->setGeometry(geometry.zoomValueLabel);
    if (cameraInfoLabel)
        cameraInfoLabel->setGeometry(geometry.cameraInfoLabel);
    if (zoomInfoLabel)
        zoomInfoLabel->setGeometry(geometry.zoomInfoLabel);
    if (cameraStatusLabel)
        cameraStatusLabel->setGeometry(
            geometry.status(cameraStatusLabel->heightForWidth(geometry.statusWidth)));
}

void CameraViewController::viewDidLoad() {
    ui::ViewController::viewDidLoad();
    if (foundation::Device::current().isTablet() && changeCamButton) {
        // Removed from the layout: the outlet goes null with it.
        delete changeCamButton.data();
        layoutControls();
    }
    ui::View* circle = required(recordingeCircle, "recordingeCircle");
    circle->setCornerRadius(circle->width() / 2.0);
    required(recordingTimerView, "recordingTimerView")->setCornerRadius(4.0);
    required(previewView, "previewView")->setShowGrid(true);
    applySliderZoom();
    required(zoomSlider, "zoomSlider")
        ->setThumbImage(foundation::Bundle::main().image(QStringLiteral("Thumb")));
    required(cameraButton, "cameraButton")->setType(CameraButtonType::video);
    updateDurationTitle();
    // The duration picker, or anything else, writes the setting; the button follows it.
    connect(&defaults(), &foundation::Preferences::valueChanged, this, [this](const QString& key) {
        if (key == zoomDurationKey)
            updateDurationTitle();
    });
    required(hdButton, "hdButton")
        ->setTitle(QString::fromLatin1(
            videoFormat(videoModeFromStored(defaults().integerForKey(videoModeKey))).title));
    updateZoomModeButton();
    updateZoomValueLabel();

    connect(&foundation::Device::current(), &foundation::Device::orientationDidChange, this,
            &CameraViewController::updateInfoLabels);

    switch (av::CaptureDevice::authorizationStatus(av::MediaType::video)) {
    case av::AuthorizationStatus::authorized:
        scheduleSessionSetup();
        break;
    case av::AuthorizationStatus::notDetermined: {
        QPointer<CameraViewController> screen(this);
        av::CaptureDevice::requestAccess(av::MediaType::video, [screen](bool granted) {
            if (!granted)
                return;
            // May run on any thread: only hand the set-up to the GUI thread.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [screen] {
                    if (screen)
                        screen->scheduleSessionSetup();
                },
                Qt::QueuedConnection);
        });
        break;
    }
    case av::AuthorizationStatus::restricted:
    case av::AuthorizationStatus::denied:
        showCameraStatus(StatusCause::permission,
                         foundation::Strings::localizedString("cam_status_denied"));
        break;
    }
}

void CameraViewController::viewWillAppear(bool animated) {
    ui::ViewController::viewWillAppear(animated);
    applySliderZoom();
}

void CameraViewController::viewDidAppear(bool animated) {
    ui::ViewController::viewDidAppear(animated);
    updateInfoLabels();
}

void CameraViewController::viewWillTransition(QSize) {
    updateInfoLabels();
}

void CameraViewController::scheduleSessionSetup() {
    QMetaObject::invokeMethod(this, &CameraViewController::setupSession, Qt::QueuedConnection);
}

void CameraViewController::setupSession() {
    auto session = std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back);
    session->setDelegate(this);
    session->setFlashMode(CKFSession::FlashMode::automatic);
    // Before the camera starts, so it starts in its format and the slider's range follows it.
    applyStoredFormat(*session);
    CKFPreviewView* preview = required(previewView, "previewView");
    preview->setAutorotate(true);
    preview->setSession(session);
    if (av::CaptureVideoPreviewLayer* layer = preview->previewLayer()) {
        // Full screen on a phone held upright over an upright clip; elsewhere (a desktop window,
        // a landscape clip in a portrait window) the whole recorded picture, with bars.
        layer->setVideoGravity(av::CaptureVideoPreviewLayer::VideoGravity::resizeAspectFill);
        layer->setFillsOnlyPortraitOverPortrait(true);
    }
    applySliderZoom();
    updateZoomModeButton();
    updateChangeCamButton();
    if (preview->gridView())
        preview->gridView()->raise();

    // Every camera state is said on the picture: busy, refused, unplugged; and a stand-in.
    connect(session.get(), &CKFSession::deviceProblem, this, [this](const QString& description) {
        showCameraStatus(StatusCause::cameraProblem, description);
    });
    connect(session->session(), &av::CaptureSession::microphoneLost, this,
            [this](const QString& description) {
                showCameraStatus(StatusCause::cameraProblem, description, failureNoticeSeconds);
            });
    // A camera that was busy or gone and runs again says so once it has kept running a moment
    // (a camera still held may start and fail at its first picture).
    connect(session->session(), &av::CaptureSession::didStartRunning, this, [this] {
        if (statusCause != StatusCause::cameraProblem)
            return;
        QTimer::singleShot(resumedCheckMilliseconds, this, [this] {
            CKFVideoSession* running = videoSession();
            if (!running || !running->session()->isRunning() ||
                statusCause != StatusCause::cameraProblem)
                return;
            showCameraStatus(StatusCause::cameraProblem,
                             foundation::Strings::localizedString("cam_status_resumed"),
                             resumedNoticeSeconds);
        });
    });
    connect(&av::CaptureDeviceDiscoverySession::changes(),
            &av::CaptureDeviceChanges::devicesChanged, this, &CameraViewController::camerasChanged);
    connect(session.get(), &CKFVideoSession::switchFailed, this, [this](const QString& why) {
        showCameraStatus(StatusCause::switchFailed,
                         foundation::Strings::localizedString("cam_status_switch_failed").arg(why),
                         failureNoticeSeconds);
    });
    const av::CaptureDevice* camera = session->cameraDevice();
    if (camera && camera->isVirtual() &&
        av::CaptureDeviceDiscoverySession::cameraSelection() != QLatin1String("virtual") &&
        statusCause == StatusCause::none) {
        showCameraStatus(StatusCause::virtualCamera,
                         foundation::Strings::localizedString("cam_status_virtual"),
                         virtualNoticeSeconds);
    }
}

QString CameraViewController::formatTitle(int height, int frameRate) {
    const QString size = height == 1080   ? QStringLiteral("HD")
                         : height == 2160 ? QStringLiteral("4K")
                                          : QStringLiteral("%1p").arg(height);
    return frameRate == 30 ? size : size + QString::number(frameRate);
}

CameraViewController::FormatChoices
CameraViewController::formatChoices(const av::CaptureDevice& camera) {
    FormatChoices choices;
    for (int mode = 0; mode < videoModeCount; ++mode) {
        const VideoFormat& row = videoFormats[mode];
        const std::optional<CKFSession::FormatChoice> choice =
            CKFSession::nearestDeviceInputFormat(camera, row.width, row.height, row.frameRate);
        if (!choice)
            return {};
        const OfferedFormat offer{VideoMode(mode), choice->format.width, choice->format.height,
                                  int(choice->frameRate),
                                  formatTitle(choice->format.height, int(choice->frameRate))};
        auto same = std::find_if(
            choices.offered.begin(), choices.offered.end(), [&](const OfferedFormat& known) {
                return known.width == offer.width && known.height == offer.height &&
                       known.frameRate == offer.frameRate;
            });
        if (same == choices.offered.end())
            same = choices.offered.insert(choices.offered.end(), offer);
        choices.standIn[mode] = int(same - choices.offered.begin());
        choices.exact[mode] = choice->exact;
    }
    return choices;
}

void CameraViewController::applyStoredFormat(CKFVideoSession& session) {
    clearCameraStatus(StatusCause::formatMissing);
    const av::CaptureDevice* camera = session.cameraDevice();
    formats = camera ? formatChoices(*camera) : FormatChoices{};
    ui::Button* button = required(hdButton, "hdButton");
    button->setEnabled(formats.offered.size() > 1);
    if (formats.offered.empty())
        return;
    // A value no row has (written by hand) reads as the default, like an absent one.
    const VideoMode mode = videoModeFromStored(defaults().integerForKey(videoModeKey));
    useFormat(session, formats.standIn[int(mode)]);
    if (!formats.exact[int(mode)] && defaults().hasStoredValue(videoModeKey))
        showCameraStatus(StatusCause::formatMissing,
                         foundation::Strings::localizedString("cam_status_format_missing")
                             .arg(QString::fromLatin1(videoFormat(mode).title),
                                  formats.offered[formatIndex].title));
}

void CameraViewController::useFormat(CKFVideoSession& session, int index) {
    formatIndex = index;
    const OfferedFormat& format = formats.offered[index];
    required(hdButton, "hdButton")->setTitle(format.title);
    session.setWidth(format.width, format.height, format.frameRate);
    const av::CaptureDevice* camera = session.cameraDevice();
    updateZoomRange(camera && camera->activeFormat().isValid() ? camera->activeFormat().height
                                                               : format.height);
    layoutControls();
}

void CameraViewController::updateChangeCamButton() {
    if (!changeCamButton)
        return;
    CKFVideoSession* session = videoSession();
    const auto other = session && session->cameraPosition() == CKFSession::CameraPosition::back
                           ? CKFSession::DeviceType::frontCamera
                           : CKFSession::DeviceType::backCamera;
    const av::CaptureDevice* otherCamera = session ? CKFSession::captureDevice(other) : nullptr;
    const bool canSwitch = otherCamera && otherCamera != session->cameraDevice();
    if (changeCamButton->isHidden() != canSwitch)
        return;
    changeCamButton->setVisible(canSwitch);
    layoutControls();
}

void CameraViewController::camerasChanged() {
    CKFVideoSession* session = videoSession();
    if (!session)
        return;
    const av::CaptureDevice* before = session->cameraDevice();
    if (statusCause == StatusCause::cameraProblem && before && !before->isConnected() &&
        !session->session()->isRunning()) {
        const av::CaptureDevice* next =
            CKFSession::captureDevice(CKFSession::DeviceType(int(session->cameraPosition())));
        // The virtual stand-in does not replace a real camera that went: that one is waited for.
        if (next && next != before && (!next->isVirtual() || before->isVirtual())) {
            session->setCameraPosition(session->cameraPosition());
            if (session->cameraDevice() != before) {
                // The message stays until the camera runs again and says it is back.
                applyStoredFormat(*session);
                applySliderZoom();
                session->start();
            }
        }
    }
    updateChangeCamButton();
}

void CameraViewController::updateDurationTitle() {
    const qint64 seconds = ZoomRamp::wholeSeconds(defaults().floatForKey(zoomDurationKey));
    required(durationButton, "durationButton")
        ->setTitle(QString::number(seconds) + QLatin1Char('s'));
}

void CameraViewController::applySliderZoom() {
    if (!previewView || !previewView->session())
        return;
    const double zoom =
        zoomMode() == ZoomMode::zoomOut ? double(required(zoomSlider, "zoomSlider")->value()) : 1.0;
    previewView->session()->setZoom(zoom);
}

void CameraViewController::updateZoomModeButton() {
    updateInfoLabels();
    ui::Button* button = required(zoomInButton, "zoomInButton");
    if (zoomMode() == ZoomMode::zoomIn) {
        button->setImage(foundation::Bundle::main().image(QStringLiteral("ZoomIn")));
        button->setContentEdgeInsets(QMargins(0, 0, 14, 0));
    } else {
        button->setImage(foundation::Bundle::main().image(QStringLiteral("ZoomOut")));
        // QMargins run left, top, right, bottom.
        button->setContentEdgeInsets(QMargins(-7, 5, 0, 0));
    }
}

void CameraViewController::updateInfoLabels() {
    QString info = foundation::Strings::localizedString("cam_zoom_info");
    QString camera = foundation::Strings::localizedString(
        zoomMode() == ZoomMode::zoomIn ? "cam_zoom_out" : "cam_zoom_in");
    if (foundation::Device::isLandscape(foundation::Device::current().orientation())) {
        info.clear();
        camera.clear();
    }
    required(zoomInfoLabel, "zoomInfoLabel")->setText(info);
    required(cameraInfoLabel, "cameraInfoLabel")->setText(camera);
}

void CameraViewController::updateZoomValueLabel() {
    if (zoomValueLabel && zoomSlider)
        zoomValueLabel->setText(QLocale().toString(double(zoomSlider->value()), 'f', 1) +
                                QChar(0x00D7));
}

void CameraViewController::zoomIn(ui::Control*) {
    defaults().setInteger(
        zoomModeKey, int(zoomMode() == ZoomMode::zoomOut ? ZoomMode::zoomIn : ZoomMode::zoomOut));
    updateZoomModeButton();
    applySliderZoom();
}

void CameraViewController::gridHandler(ui::Control*) {
    CKFPreviewView* preview = required(previewView, "previewView");
    preview->setShowGrid(!preview->showGrid());
}

void CameraViewController::changeCamHandler(ui::Control*) {
    CKFVideoSession* session = videoSession();
    if (!session)
        return;
    const av::CaptureDevice* before = session->cameraDevice();
    session->setCameraPosition(session->cameraPosition() == CKFSession::CameraPosition::back
                                   ? CKFSession::CameraPosition::front
                                   : CKFSession::CameraPosition::back);
    if (session->cameraDevice() != before) {
        // A new camera: what was wrong with the old one is gone, and its formats differ.
        clearCameraStatus(StatusCause::switchFailed);
        clearCameraStatus(StatusCause::cameraProblem);
        applyStoredFormat(*session);
        applySliderZoom();
    }
    updateChangeCamButton();
}

void CameraViewController::flashHandler(ui::Control*) {
    CKFVideoSession* session = videoSession();
    if (!session)
        return;
    ui::Button* button = required(flashButton, "flashButton");
    switch (session->flashMode()) {
    case CKFSession::FlashMode::off:
        session->setFlashMode(CKFSession::FlashMode::automatic);
        button->setImage(foundation::Bundle::main().image(QStringLiteral("FlashA")));
        break;
    case CKFSession::FlashMode::on:
        session->setFlashMode(CKFSession::FlashMode::off);
        button->setImage(foundation::Bundle::main().image(QStringLiteral("FlashD")));
        break;
    case CKFSession::FlashMode::automatic:
        session->setFlashMode(CKFSession::FlashMode::on);
        button->setImage(foundation::Bundle::main().image(QStringLiteral("Flash")));
        break;
    }
}

void CameraViewController::hdHandler(ui::Control*) {
    CKFVideoSession* session = videoSession();
    if (!session || formats.offered.empty())
        return;
    // The next format this camera has; the stored row is the one it stands for.
    const int next = (formatIndex + 1) % int(formats.offered.size());
    defaults().setInteger(videoModeKey, int(formats.offered[next].videoMode));
    clearCameraStatus(StatusCause::formatMissing);
    useFormat(*session, next);
    if (zoomMode() == ZoomMode::zoomOut)
        session->setZoom(double(required(zoomSlider, "zoomSlider")->value()));
}

void CameraViewController::zoomSliderHandler(ui::Control*) {
    applySliderZoom();
    updateZoomValueLabel();
}

void CameraViewController::durationHandler(ui::Control*) {
    // The picker is a scene of the layout, like every screen.
    if (auto* picker =
            ui::Storyboard(QStringLiteral("Main")).instantiate<ChoseDurationViewController>())
        present(picker, true);
}

void CameraViewController::updateZoomRange(int formatHeight) {
    ui::Slider* slider = required(zoomSlider, "zoomSlider");
    const float highest =
        std::clamp(float(formatHeight) / float(fewestSharpLines), 1.0f, float(maximumZoom));
    slider->setMaximumValue(highest);
    updateZoomValueLabel();
}

void CameraViewController::cameraButtonHandler(ui::Control*) {
    CKFVideoSession* session = videoSession();
    if (!session)
        return;
    clearCameraStatus(StatusCause::recordingFailed);
    if (session->isRecording()) {
        // Before the first frame too; the ramp ends with the take, or it would cut the next one.
        session->stopRecording();
        endZoomRamp();
        return;
    }
    if (topViews)
        for (const QPointer<QWidget>& topView : *topViews)
            if (topView)
                ui::ViewAnimation::animate(fadeDuration,
                                           [&] { ui::ViewAnimation::setAlpha(topView, 0.0); });
    QPointer<CameraViewController> screen(this);
    session->record(
        std::nullopt,
        [screen](const QUrl& url) {
            if (screen)
                screen->recordingFinished(url);
        },
        [screen](const std::exception& error) {
            if (screen)
                screen->recordingFailed(QString::fromUtf8(error.what()));
        });
    startZoomRamp();
}

void CameraViewController::startZoomRamp() {
    if (ramp)
        stopTicking(*ramp);
    const float duration = defaults().floatForKey(zoomDurationKey);
    QWidget* timerView = required(recordingTimerView, "recordingTimerView");
    ui::View* circle = required(recordingeCircle, "recordingeCircle");
    required(recordingTimeLabel, "recordingTimeLabel")
        ->setText(QString::number(ZoomRamp::wholeSeconds(duration)));
    ui::ViewAnimation::setAlpha(circle, 1.0);
    ui::ViewAnimation::removeAllAnimations(circle);
    // Qt cannot paint an opacity effect inside another, so the dot starts blinking once its
    // container has faded in (and the container holds no effect at full alpha).
    QPointer<ui::View> dot(circle);
    ui::ViewAnimation::animate(
        fadeDuration, [&] { ui::ViewAnimation::setAlpha(timerView, 1.0); },
        [dot](bool) {
            if (!dot)
                return;
            ui::ViewAnimation::animate(0.5, 0.0,
                                       ui::ViewAnimation::repeat | ui::ViewAnimation::autoreverse,
                                       [&] { ui::ViewAnimation::setAlpha(dot, 0.0); });
        });

    auto state = std::make_shared<RampState>(required(zoomSlider, "zoomSlider")->value(), duration,
                                             zoomMode());

    auto* timer = new QTimer(this);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(int(rampInterval * 1000));
    state->timer = timer;
    ramp = state;
    if (CKFVideoSession* session = videoSession())
        session->setZoom(double(state->current));
    // The ramp's clock starts with the clip's first frame, so that frame shows the start zoom
    // however long the camera takes to deliver it; without a take waiting for its first frame
    // it starts at once.
    if (CKFVideoSession* session = videoSession();
        session && session->isRecording() && !session->hasRecordingStarted())
        connect(
            session, &CKFVideoSession::recordingStarted, timer,
            [this, state] { beginTicking(state); }, Qt::SingleShotConnection);
    else
        beginTicking(state);
}

void CameraViewController::beginTicking(const std::shared_ptr<RampState>& state) {
    if (!state->timer)
        return;
    // The callback holds the state; the screen owns the timer, so neither outlives the other.
    state->startClock(rampClock);
    connect(state->timer, &QTimer::timeout, this, [this, state] {
        for (qint64 due = state->ticksDue(); state->timer && due > 0; --due)
            zoomRampTick(state);
    });
    state->timer->start();
}

void CameraViewController::zoomRampTick(const std::shared_ptr<RampState>& state) {
    const std::optional<ZoomRamp::Tick> tick = state->tick(zoomMode());
    if (!tick) {
        stopTicking(*state);
        if (CKFVideoSession* session = videoSession(); session && session->isRecording())
            session->stopRecording();
        endZoomRamp();
        return;
    }
    if (CKFVideoSession* session = videoSession())
        session->setZoom(double(tick->zoom));
    required(recordingTimeLabel, "recordingTimeLabel")->setText(QString::number(tick->secondsLeft));
}

ZoomMode CameraViewController::zoomMode() const {
    return zoomModeFromStored(defaults().integerForKey(zoomModeKey));
}

void CameraViewController::endZoomRamp() {
    if (ramp)
        stopTicking(*ramp);
    required(cameraButton, "cameraButton")->setSelected(false);
}

void CameraViewController::showIdleControls() {
    endZoomRamp();
    // Not before: the movie ends with the first frame after the stop, which must still show
    // the ramp's end.
    applySliderZoom();
    if (topViews)
        for (const QPointer<QWidget>& topView : *topViews)
            if (topView)
                ui::ViewAnimation::animate(fadeDuration,
                                           [&] { ui::ViewAnimation::setAlpha(topView, 1.0); });
    QWidget* timerView = required(recordingTimerView, "recordingTimerView");
    // The blinking stops while the dot is hidden (see startZoomRamp).
    QPointer<ui::View> dot(required(recordingeCircle, "recordingeCircle"));
    ui::ViewAnimation::removeAllAnimations(dot);
    ui::ViewAnimation::setAlpha(dot, 1.0);
    ui::ViewAnimation::animate(fadeDuration, [&] { ui::ViewAnimation::setAlpha(timerView, 0.0); });
}

void CameraViewController::recordingFailed(const QString& description) {
    showIdleControls();
    showCameraStatus(StatusCause::recordingFailed,
                     foundation::Strings::localizedString("cam_recording_failed").arg(description),
                     failureNoticeSeconds);
}

void CameraViewController::recordingFinished(const QUrl& url) {
    showIdleControls();
    emit clipFinished(url);

    // Without a preview scene (a recording run from the command line) the clip is only reported.
    const ui::Storyboard storyboard(QStringLiteral("Main"));
    if (!storyboard.contains<VideoPreviewViewController>())
        return;
    if (auto* preview = storyboard.instantiate<VideoPreviewViewController>()) {
        preview->videoURL = url;
        preview->cameraVC = this;
        present(preview, true);
    }
}

void CameraViewController::didChangeValue(CKFSession*, const QVariant&, const QString&) {}

void CameraViewController::showCameraStatus(StatusCause cause, const QString& message,
                                            int seconds) {
    ui::Label* label = required(cameraStatusLabel, "cameraStatusLabel");
    statusCause = cause;
    const quint64 shown = ++statusShown;
    label->setText(message);
    label->setVisible(!message.isEmpty());
    label->raise();
    layoutControls();
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, this, [this, shown, cause] {
            if (statusShown == shown)
                clearCameraStatus(cause);
        });
}

void CameraViewController::clearCameraStatus(StatusCause cause) {
    if (statusCause != cause || !cameraStatusLabel)
        return;
    statusCause = StatusCause::none;
    cameraStatusLabel->clear();
    cameraStatusLabel->hide();
}
