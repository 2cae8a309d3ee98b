#include "playback/VideoPreviewViewController.h"

#include "platform/av/Player.h"
#include "platform/av/PlayerItem.h"
#include "platform/av/PlayerLayer.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/PhotoLibrary.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/ActivityViewController.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/ViewAnimation.h"
#include "playback/VideoContainerView.h"
#include "rating/AppRating.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(lcPlayback, "tessaro.playback", QtInfoMsg)

constexpr int margin = 16;
constexpr int buttonHeight = 48;
constexpr int closeSide = 44;
constexpr int columnWidth = 440;
// How long a failed save waits at most for a screen to show its alert on.
constexpr int alertAttempts = 20;

ui::Button* pillButton(QWidget* parent, const char* name, const char* image) {
    auto* button = new ui::Button(parent);
    button->setObjectName(QLatin1String(name));
    button->setImage(foundation::Bundle::main().image(QLatin1String(image)));
    button->setImageSize(QSize(22, 22));
    button->setTitleColor(Qt::white);
    button->setBackgroundColor(QColor(0, 0, 0, 140));
    button->setCornerRadius(buttonHeight / 2.0);
    QFont font = button->font();
    font.setPixelSize(17);
    font.setBold(true);
    button->setFont(font);
    return button;
}

// The screen on top of base that is not on its way out.
ui::ViewController* topmost(ui::ViewController* base) {
    ui::ViewController* top = base;
    while (top && top->presentedViewController() &&
           !top->presentedViewController()->isBeingDismissed())
        top = top->presentedViewController();
    return top;
}

// Presents the alert on the first screen that can take it: the preview while it is shown,
// else the top of the recording screen once what leaves it has gone.
void presentAlert(ui::AlertController* alert, QPointer<VideoPreviewViewController> preview,
                  QPointer<ui::ViewController> camera, int attemptsLeft) {
    const bool previewShown = preview && preview->presentingViewController() &&
                              !preview->isBeingDismissed() && !preview->isBeingPresented();
    ui::ViewController* host = topmost(previewShown ? preview.data() : camera.data());
    if (host && !host->presentedViewController() && !host->isBeingDismissed() && host->window()) {
        host->present(alert, true);
        return;
    }
    if (!host || attemptsLeft <= 0) {
        delete alert;
        return;
    }
    QPointer<ui::AlertController> waiting(alert);
    QTimer::singleShot(int(ui::ViewController::transitionDuration * 1000) / 3, host,
                       [waiting, preview, camera, attemptsLeft] {
                           if (waiting)
                               presentAlert(waiting, preview, camera, attemptsLeft - 1);
                       });
}

} // namespace

VideoPreviewViewController::VideoPreviewViewController(QObject* parent)
    : ui::ViewController(parent) {}

VideoPreviewViewController::~VideoPreviewViewController() {
    // No end notice may reach a screen on its way out.
    if (player)
        QObject::disconnect(player->currentItem(), nullptr, this, nullptr);
}

void VideoPreviewViewController::loadView() {
    auto* root = new QWidget;
    root->setObjectName(QStringLiteral("VideoPreviewView"));
    root->setAutoFillBackground(true);
    QPalette palette = root->palette();
    palette.setColor(QPalette::Window, Qt::black);
    root->setPalette(palette);
    root->installEventFilter(this);
    root->setFocusPolicy(Qt::StrongFocus);

    videoView = new VideoContainerView(root);
    videoView->setObjectName(QStringLiteral("videoView"));

    statusLabel = new ui::Label(root);
    statusLabel->setObjectName(QStringLiteral("statusLabel"));
    statusLabel->setTextColor(Qt::white);
    statusLabel->setAlignment(Qt::AlignCenter);
    statusLabel->setNumberOfLines(0);
    statusLabel->setWordWrap(true);
    statusLabel->setMargin(14);
    statusLabel->setStyleSheet(
        QStringLiteral("background: rgba(0, 0, 0, 170); border-radius: 10px;"));
    statusLabel->hide();

    closeButton = pillButton(root, "closeButton", "Close");
    closeButton->setCornerRadius(closeSide / 2.0);
    //% "Close"
    closeButton->setToolTip(foundation::Strings::localizedString("preview_close"));
    closeButton->setAccessibleName(closeButton->toolTip());
    shareButton = pillButton(root, "shareButton", "Share");
    //% "Share"
    shareButton->setTitle(QLatin1Char(' ') + foundation::Strings::localizedString("preview_share"));
    saveButton = pillButton(root, "saveButton", "Save");
    //% "Save"
    saveButton->setTitle(QLatin1Char(' ') + foundation::Strings::localizedString("preview_save"));
    saveButton->setBackgroundColor(QColor(255, 204, 0));
    saveButton->setTitleColor(Qt::black);
    //% "Save a copy in your Videos folder"
    saveButton->setToolTip(foundation::Strings::localizedString("preview_save_hint"));

    shareButton->addTarget(
        this, [this](ui::Control* sender) { share(sender); }, ui::Control::touchUpInside);
    saveButton->addTarget(
        this, [this](ui::Control* sender) { save(sender); }, ui::Control::touchUpInside);
    closeButton->addTarget(
        this, [this](ui::Control* sender) { close(sender); }, ui::Control::touchUpInside);
    QWidget::setTabOrder(saveButton, shareButton);
    QWidget::setTabOrder(shareButton, closeButton);

    setView(root);
    layoutControls();
}

void VideoPreviewViewController::viewDidLoad() {
    ui::ViewController::viewDidLoad();
    preparePlayer();
}

void VideoPreviewViewController::viewDidAppear(bool animated) {
    ui::ViewController::viewDidAppear(animated);
    // So that Esc closes it from the start.
    view()->setFocus();
}

void VideoPreviewViewController::preparePlayer() {
    if (!videoView)
        qFatal("VideoPreviewViewController: the outlet videoView is missing");
    videoView->removeAllSublayers();
    ui::ViewAnimation::removeAllAnimations(videoView);
    if (videoURL.isEmpty())
        return;

    player = std::make_unique<av::Player>(videoURL);
    playerLayer = av::PlayerLayer::playerLayerWithPlayer(player.get());
    playerLayer->setVideoGravity(av::PlayerLayer::VideoGravity::resizeAspectFill);
    videoView->addSublayer(playerLayer);
    playerLayer->setFrame(videoView->rect());
    videoView->setPlayerLayer(playerLayer);
    player->setActionAtItemEnd(av::Player::ActionAtItemEnd::none);
    player->play();
    connect(player->currentItem(), &av::PlayerItem::didPlayToEndTime, this,
            &VideoPreviewViewController::playerItemDidReachEnd);
    connect(player->currentItem(), &av::PlayerItem::statusChanged, this,
            &VideoPreviewViewController::showPlaybackProblem);
}

void VideoPreviewViewController::showPlaybackProblem() {
    if (!player || !statusLabel ||
        player->currentItem()->status() != av::PlayerItem::Status::failed)
        return;
    //% "This clip cannot be played."
    statusLabel->setText(foundation::Strings::localizedString("preview_cannot_play") +
                         QStringLiteral("\n") + player->currentItem()->errorDescription());
    statusLabel->show();
    statusLabel->raise();
    layoutControls();
}

void VideoPreviewViewController::playerItemDidReachEnd(QObject* object) {
    if (auto* item = qobject_cast<av::PlayerItem*>(object))
        item->seekToTime(0);
}

void VideoPreviewViewController::share(ui::Control*) {
    if (videoURL.isEmpty())
        return;
    auto* sheet = new ui::ActivityViewController({videoURL});
    sheet->setExcludedActivityTypes(
        {ui::ActivityType::addToReadingList, ui::ActivityType::assignToContact});
    QPointer<VideoPreviewViewController> self(this);
    sheet->setCompletionWithItemsHandler([self](const QString&, bool completed) {
        if (completed && self)
            AppRating::promptRateUsIfNeeded(self);
    });
    present(sheet, true);
}

void VideoPreviewViewController::save(ui::Control*) {
    if (videoURL.isEmpty())
        qFatal("VideoPreviewViewController::save: there is no clip to save");
    const QString path = videoURL.toLocalFile();
    QPointer<VideoPreviewViewController> self(this);
    QPointer<ui::ViewController> camera = cameraVC;
    foundation::PhotoLibrary::saveVideoAtPath(
        path, [self, camera, path](const QString&, const QString& error) {
            videoWithVideoPathDidFinishSaving(self, camera, path, error);
        });
    if (!cameraVC)
        qFatal("VideoPreviewViewController::save: cameraVC was not set");
    dismiss(true, [camera] {
        if (camera)
            AppRating::promptRateUsIfNeeded(camera);
    });
}

void VideoPreviewViewController::videoWithVideoPathDidFinishSaving(
    QPointer<VideoPreviewViewController> preview, QPointer<ui::ViewController> cameraVC,
    const QString& path, const QString& error) {
    if (error.isEmpty()) {
        // The preview has normally gone already; asked again, it does nothing.
        if (preview)
            preview->dismiss(true);
        return;
    }
    qCWarning(lcPlayback).noquote() << "Saving" << path << "failed:" << error;
    // Fixed texts, not translated.
    auto* alert =
        new ui::AlertController(QStringLiteral("Error"), error, ui::AlertController::Style::alert);
    alert->addAction({QStringLiteral("OK"), ui::AlertAction::Style::cancel, {}});
    presentAlert(alert, preview, cameraVC, alertAttempts);
}

void VideoPreviewViewController::close(ui::Control*) {
    dismiss(true);
}

bool VideoPreviewViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view()) {
        if (event->type() == QEvent::Resize)
            layoutControls();
        if (event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            close(nullptr);
            return true;
        }
    }
    return ui::ViewController::eventFilter(watched, event);
}

void VideoPreviewViewController::layoutControls() {
    QWidget* root = view();
    const int width = root->width();
    const int height = root->height();
    if (videoView)
        videoView->setGeometry(root->rect());
    if (closeButton)
        closeButton->setGeometry(margin, margin, closeSide, closeSide);
    // Share and save side by side at the bottom, within a phone's column on a wide window.
    const int column = std::min(width, columnWidth) - 2 * margin;
    const int left = (width - column) / 2;
    const int half = (column - margin) / 2;
    const int y = height - margin - 16 - buttonHeight;
    if (shareButton)
        shareButton->setGeometry(left, y, half, buttonHeight);
    if (saveButton)
        saveButton->setGeometry(left + column - half, y, half, buttonHeight);
    if (statusLabel && statusLabel->isVisible()) {
        const int labelWidth = column;
        const int labelHeight = statusLabel->heightForWidth(labelWidth);
        statusLabel->setGeometry(left, (height - labelHeight) / 2, labelWidth, labelHeight);
    }
}
