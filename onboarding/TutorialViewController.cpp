#include "onboarding/TutorialViewController.h"

#include "onboarding/ALButton.h"
#include "platform/av/Player.h"
#include "platform/av/PlayerItem.h"
#include "platform/av/PlayerLayer.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Application.h"
#include "platform/ui/ApplicationDelegate.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"
#include "platform/ui/PageControl.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"

#include <QEvent>
#include <QFontMetrics>
#include <QShortcut>
#include <QTextStream>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int margin = 24;
constexpr int columnWidth = 440;
constexpr int buttonHeight = 52;
constexpr int buttonWidth = 280;
constexpr int dotsHeight = 28;
constexpr int imageSide = 56;
// The last page is this page, not the last of however many there are.
constexpr double lastPage = 3.0;

ui::ApplicationDelegate*& delegateForTesting() {
    static ui::ApplicationDelegate* delegate = nullptr;
    return delegate;
}

QStringList captions() {
    return {
        //% "This is a dolly zoom: the person keeps the same size while the street behind "
        //% "them stretches away. Tessaro makes one for you. All you do is walk."
        foundation::Strings::localizedString("tutorial_text_1"),
        //% "With the zoom-in button (the magnifier with +), walk away from your subject while "
        //% "you record. Tessaro zooms in as you go, and the background closes in behind it."
        foundation::Strings::localizedString("tutorial_text_2"),
        //% "With the zoom-out button (the magnifier with −), set the start zoom, then walk "
        //% "toward your subject. Tessaro zooms out as you go, and the background opens up."
        foundation::Strings::localizedString("tutorial_text_3"),
        //% "Keep your subject in the middle, choose how long the zoom lasts and walk at an even "
        //% "pace. The recording stops by itself when the zoom is done."
        foundation::Strings::localizedString("tutorial_text_4"),
    };
}

// Filled on a portrait screen, as the clips are shot for one; whole, with bars, in a landscape
// window, where filling would keep only the subject's chest.
av::PlayerLayer::VideoGravity gravityFor(QSize page) {
    return page.height() >= page.width() ? av::PlayerLayer::VideoGravity::resizeAspectFill
                                         : av::PlayerLayer::VideoGravity::resizeAspect;
}

template <class Outlet> Outlet* required(const QPointer<Outlet>& outlet, const char* name) {
    if (!outlet)
        qFatal("TutorialViewController: the outlet %s is missing", name);
    return outlet.data();
}

} // namespace

TutorialViewController::TutorialViewController(QObject* parent)
    : ui::ViewController(parent),
      texts(captions()), videos{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                QStringLiteral("4")} {}

TutorialViewController::~TutorialViewController() {
    // No end notice may reach a screen on its way out.
    for (av::Player* player : players())
        QObject::disconnect(player->currentItem(), nullptr, this, nullptr);
}

void TutorialViewController::loadView() {
    auto* root = new QWidget;
    root->setObjectName(QStringLiteral("TutorialView"));
    root->setAutoFillBackground(true);
    QPalette palette = root->palette();
    palette.setColor(QPalette::Window, Qt::black);
    root->setPalette(palette);

    scrollView = new ui::ScrollView(root);
    scrollView->setObjectName(QStringLiteral("scrollView"));
    scrollView->setPagingEnabled(true);

    // Caption, icon and dots let drags through to the pager, as the platform's labels do.
    zoomInOutImageView = new ui::ImageView(root);
    zoomInOutImageView->setObjectName(QStringLiteral("zoomInOutImageView"));
    zoomInOutImageView->setContentMode(ui::ImageView::ContentMode::scaleAspectFit);
    zoomInOutImageView->setAttribute(Qt::WA_TransparentForMouseEvents);
    zoomInOutImageView->hide();

    infoLabel = new ui::Label(root);
    infoLabel->setObjectName(QStringLiteral("infoLabel"));
    infoLabel->setTextColor(Qt::white);
    infoLabel->setAlignment(Qt::AlignCenter);
    infoLabel->setNumberOfLines(0);
    infoLabel->setWordWrap(true);
    infoLabel->setMargin(14);
    QFont font = infoLabel->font();
    font.setPixelSize(17);
    infoLabel->setFont(font);
    infoLabel->setStyleSheet(
        QStringLiteral("background: rgba(0, 0, 0, 150); border-radius: 14px;"));
    infoLabel->setAttribute(Qt::WA_TransparentForMouseEvents);

    pageControl = new ui::PageControl(root);
    pageControl->setObjectName(QStringLiteral("pageControl"));

    startButton = new ALButton(root);
    startButton->setObjectName(QStringLiteral("startButton"));
    startButton->setBackgroundColor(QColor(255, 204, 0));
    startButton->setTitleColor(Qt::black);
    // The button's fade is its only feedback; the title does not dim besides.
    startButton->setTitleColor(Qt::black, ui::Control::highlighted);
    QFont buttonFont = startButton->font();
    buttonFont.setPixelSize(18);
    buttonFont.setBold(true);
    startButton->setFont(buttonFont);
    startButton->addTarget(
        this, [this](ui::Control* sender) { start(sender); }, ui::Control::touchUpInside);
    startButton->hide();

    // Esc skips the tutorial as its last page's button does, which is also the way out when
    // a missing clip keeps the pager from reaching that page.
    auto* skip = new QShortcut(QKeySequence(Qt::Key_Escape), root);
    skip->setContext(Qt::WidgetWithChildrenShortcut);
    connect(skip, &QShortcut::activated, this, [this] { start(nullptr); });

    setView(root);
    root->installEventFilter(this);
}

void TutorialViewController::viewDidLoad() {
    ui::ViewController::viewDidLoad();
    if (texts.isEmpty())
        qFatal("TutorialViewController: there are no pages to show");
    required(infoLabel, "infoLabel")->setText(texts.first());
    //% "Start"
    required(startButton, "startButton")
        ->setTitle(foundation::Strings::localizedString("tutorial_ready"));
    layoutControls();
}

void TutorialViewController::viewWillAppear(bool animated) {
    ui::ViewController::viewWillAppear(animated);
    lockInterfaceOrientation(ui::portraitMask);
}

void TutorialViewController::viewWillDisappear(bool animated) {
    ui::ViewController::viewWillDisappear(animated);
    lockInterfaceOrientation(ui::allOrientationsMask);
}

void TutorialViewController::viewDidAppear(bool animated) {
    ui::ViewController::viewDidAppear(animated);
    // The keys page from the start.
    required(scrollView, "scrollView")->setFocus();
    if (firstRun)
        return;
    firstRun = true;
    buildPages();
}

void TutorialViewController::buildPages() {
    ui::ScrollView* pager = required(scrollView, "scrollView");
    ALButton* button = required(startButton, "startButton");
    button->setCornerRadius(button->height() / 2.0);
    required(pageControl, "pageControl")->setNumberOfPages(int(texts.size()));
    if (videos.size() != texts.size())
        qFatal("TutorialViewController: %lld captions but %lld clips", qlonglong(texts.size()),
               qlonglong(videos.size()));

    for (qsizetype i = 0; i < texts.size(); ++i) {
        const QSize size = pager->size();
        frame = QRectF(size.width() * double(i), 0, size.width(), size.height());
        const QString path =
            foundation::Bundle::main().pathForResource(videos.at(i), QStringLiteral("mov"));
        if (path.isEmpty()) {
            // The line names one file whichever is missing; scripts look for it as it is.
            QTextStream(stdout) << "\"video.m4v not found\"" << Qt::endl;
            return;
        }
        auto* page = new VideoContainerView;
        page->setObjectName(QStringLiteral("page%1").arg(i + 1));
        page->setGeometry(frame.toRect());

        // The page owns its player, which goes with the page.
        auto* player = new av::Player(QUrl::fromLocalFile(path), page);
        player->setMuted(true);
        auto* layer = av::PlayerLayer::playerLayerWithPlayer(player);
        layer->setVideoGravity(gravityFor(size));
        page->addSublayer(layer);
        page->setPlayerLayer(layer);
        layer->setFrame(page->rect());
        player->play();
        player->setActionAtItemEnd(av::Player::ActionAtItemEnd::none);
        connect(player->currentItem(), &av::PlayerItem::didPlayToEndTime, this,
                &TutorialViewController::playerItemDidReachEnd);
        pager->addSubview(page);
    }
    // One point high: the pager never moves up or down.
    pager->setContentSize(QSizeF(pager->width() * double(texts.size()), 1.0));
    pager->setDelegate(this);
}

void TutorialViewController::playerItemDidReachEnd(QObject* object) {
    if (auto* item = qobject_cast<av::PlayerItem*>(object))
        item->seekToTime(0);
}

QList<av::Player*> TutorialViewController::players() const {
    QList<av::Player*> result;
    if (!scrollView)
        return result;
    for (QObject* page : scrollView->contentView()->children())
        if (auto* player = page->findChild<av::Player*>(QString(), Qt::FindDirectChildrenOnly))
            result.append(player);
    return result;
}

void TutorialViewController::scrollViewDidEndDecelerating(ui::ScrollView* pager) {
    const double page = pager->contentOffset().x() / double(pager->width());
    if (!std::isfinite(page) || page < 0 || page > double(std::numeric_limits<int>::max()))
        qFatal("TutorialViewController: the pager rests on no page (%f)", page);
    const int index = int(page);
    required(pageControl, "pageControl")->setCurrentPage(index);
    required(startButton, "startButton")->setVisible(page == lastPage);

    ui::ImageView* image = required(zoomInOutImageView, "zoomInOutImageView");
    image->hide();
    if (page == 1.0) {
        image->setImage(foundation::Bundle::main().image(QStringLiteral("ZoomIn")));
        image->show();
    } else if (page == 2.0) {
        image->setImage(foundation::Bundle::main().image(QStringLiteral("ZoomOut")));
        image->show();
    }
    if (index >= texts.size())
        qFatal("TutorialViewController: page %d has no caption", index);
    required(infoLabel, "infoLabel")->setText(texts.at(index));
}

void TutorialViewController::start(ui::Control*) {
    foundation::Preferences::standard().setBool(foundation::PreferenceSchema::tutorialShowed, true);
    ui::ViewController* camera =
        ui::Storyboard(QStringLiteral("Main")).instantiate(QStringLiteral("CameraViewController"));
    ui::Window* window = ui::Window::keyWindow();
    if (!camera || !window) {
        delete camera;
        return;
    }
    // This screen and its players go with the old root.
    window->setRootViewController(camera);
}

void TutorialViewController::lockInterfaceOrientation(quint64 mask) {
    ui::ApplicationDelegate* delegate = delegateForTesting();
    if (!delegate) {
        if (ui::Application* application = ui::Application::shared())
            delegate = application->delegate();
    }
    if (delegate)
        delegate->setOrientationLock(mask);
}

void TutorialViewController::setApplicationDelegateForTesting(ui::ApplicationDelegate* delegate) {
    delegateForTesting() = delegate;
}

bool TutorialViewController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isViewLoaded() && watched == view()) {
        layoutPages();
        layoutControls();
    }
    return ui::ViewController::eventFilter(watched, event);
}

void TutorialViewController::layoutPages() {
    ui::ScrollView* pager = scrollView;
    if (!pager)
        return;
    const double oldWidth = pager->width();
    const double page = oldWidth > 0 ? std::round(pager->contentOffset().x() / oldWidth) : 0;
    pager->setGeometry(view()->rect());
    const QObjectList pages = pager->contentView()->children();
    if (pages.isEmpty() || !pager->delegate() || pager->width() <= 0)
        return;
    int i = 0;
    for (QObject* child : pages) {
        auto* pageView = qobject_cast<VideoContainerView*>(child);
        if (!pageView)
            continue;
        pageView->setGeometry(pager->width() * i++, 0, pager->width(), pager->height());
        if (pageView->playerLayer())
            pageView->playerLayer()->setVideoGravity(gravityFor(pager->size()));
    }
    pager->setContentSize(QSizeF(pager->width() * double(texts.size()), 1.0));
    pager->setContentOffset(QPointF(page * pager->width(), 0));
    scrollViewDidEndDecelerating(pager);
}

void TutorialViewController::layoutControls() {
    QWidget* root = view();
    if (!infoLabel || !startButton || !pageControl || !zoomInOutImageView)
        return;
    const int width = root->width();
    const int height = root->height();
    const int column = std::min(width - 2 * margin, columnWidth);
    const int left = (width - column) / 2;

    pageControl->setGeometry(0, height - margin - dotsHeight, width, dotsHeight);
    const int buttonTop = pageControl->y() - 12 - buttonHeight;
    const int button = std::min(column, buttonWidth);
    startButton->setGeometry((width - button) / 2, buttonTop, button, buttonHeight);
    startButton->setCornerRadius(buttonHeight / 2.0);

    // As tall as the longest caption, so the caption box does not jump between pages.
    const QFontMetrics metrics(infoLabel->font());
    const int inset = infoLabel->margin();
    int labelHeight = 0;
    for (const QString& text : texts)
        labelHeight =
            std::max(labelHeight, metrics.boundingRect(QRect(0, 0, column - 2 * inset, 10000),
                                                       Qt::TextWordWrap | Qt::AlignCenter, text)
                                          .height() +
                                      2 * inset);
    const int labelTop = buttonTop - 20 - labelHeight;
    infoLabel->setGeometry(left, labelTop, column, labelHeight);
    zoomInOutImageView->setGeometry((width - imageSide) / 2, labelTop - 16 - imageSide, imageSide,
                                    imageSide);
    for (QWidget* overlay :
         {static_cast<QWidget*>(zoomInOutImageView), static_cast<QWidget*>(infoLabel),
          static_cast<QWidget*>(startButton), static_cast<QWidget*>(pageControl)})
        overlay->raise();
}
