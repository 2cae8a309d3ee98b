#include "onboarding/TutorialViewController.h"

#include "app/AppDelegate.h"
#include "app/MainStoryboard.h"
#include "onboarding/ALButton.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/Player.h"
#include "platform/av/PlayerLayer.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Label.h"
#include "platform/ui/PageControl.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewAnimation.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"
#include "tests/av/TestClip.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr QSize phone(390, 844);

// The same picture, drawn at one size.
QImage picture(const QIcon& icon) {
    return icon.pixmap(QSize(32, 32)).toImage();
}

// A shown phone-sized window with the tutorial as its root, four short clips as its data files
// and the program's delegate as the keeper of the orientation lock.
class TutorialTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        clips = new QTemporaryDir;
        for (const char* name : {"1.mov", "2.mov", "3.mov", "4.mov"})
            ASSERT_TRUE(writeTestClip(clips->filePath(name), 0.4, 90, 160));
    }
    static void TearDownTestSuite() { delete clips; }

    void SetUp() override {
        qputenv("TESSARO_DATA_DIR", QFile::encodeName(clips->path()));
        qputenv("TESSARO_CONFIG_DIR", QFile::encodeName(work.filePath(QStringLiteral("config"))));
        qputenv("TESSARO_DOCUMENTS_DIR", QFile::encodeName(work.filePath(QStringLiteral("docs"))));
        foundation::Preferences::resetStandardForTesting();
        av::CaptureDeviceDiscoverySession::setCameraSelection(QStringLiteral("virtual"));
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        MainStoryboard::registerScenes();
        TutorialViewController::setApplicationDelegateForTesting(&delegate);
        delegate.setWindow(window);
        window->resize(phone);
    }
    void TearDown() override {
        TutorialViewController::setApplicationDelegateForTesting(nullptr);
        delete window;
        av::CaptureDeviceDiscoverySession::setCameraSelection(QString());
        qunsetenv("TESSARO_DATA_DIR");
    }

    void show() {
        window->setRootViewController(tutorial);
        window->makeKeyAndVisible();
        ASSERT_TRUE(QTest::qWaitFor([&] { return tutorial->firstRun; }));
    }
    int pageViews() const { return int(tutorial->scrollView->contentView()->children().size()); }
    // Pages with the arrow keys, as a user at a desktop does, and waits for the pager to rest.
    void pageWithKey(Qt::Key key) {
        QTest::keyClick(tutorial->scrollView, key);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !tutorial->scrollView->isDecelerating(); }));
    }

    static inline QTemporaryDir* clips = nullptr;
    QTemporaryDir work;
    AppDelegate delegate;
    QPointer<ui::Window> window = new ui::Window;
    QPointer<TutorialViewController> tutorial = new TutorialViewController;
};

// The pages are built on the first appearance only: covered and shown again, they stay. The window
// is portrait only while the tutorial is shown; the start button on the last page remembers the
// tutorial and hands the window over (the launch table in AppDelegateTest shows it skipped then).
TEST_F(TutorialTest, FourPagesOfMutedClipsWalkedToTheStartButton) {
    ASSERT_EQ(tutorial->texts.size(), 4);
    for (const QString& text : tutorial->texts)
        EXPECT_FALSE(text.startsWith(QLatin1String("tutorial_"))) << "every caption has a text";
    show();
    EXPECT_EQ(delegate.orientationLock(), ui::portraitMask);
    EXPECT_EQ(tutorial->pageControl->numberOfPages(), 4);
    const QList<av::Player*> players = tutorial->players();
    ASSERT_EQ(players.size(), 4);
    for (av::Player* player : players) {
        EXPECT_TRUE(player->isMuted());
        EXPECT_EQ(player->rate(), 1.0f);
    }
    tutorial->present(new ui::ViewController, false);
    tutorial->dismiss(false);
    EXPECT_EQ(pageViews(), 4);
    EXPECT_EQ(tutorial->players(), players);

    const QImage zoomIn = picture(foundation::Bundle::main().image(QStringLiteral("ZoomIn")));
    const QImage zoomOut = picture(foundation::Bundle::main().image(QStringLiteral("ZoomOut")));
    const struct {
        Qt::Key key;
        int page;
        const QImage* icon;
        bool startButton;
    } rows[] = {{Qt::Key_Home, 0, nullptr, false},   {Qt::Key_Right, 1, &zoomIn, false},
                {Qt::Key_Right, 2, &zoomOut, false}, {Qt::Key_Right, 3, nullptr, true},
                {Qt::Key_Home, 0, nullptr, false},   {Qt::Key_End, 3, nullptr, true},
                {Qt::Key_Left, 2, &zoomOut, false}}; // back from the last page: the button goes
    for (const auto& row : rows) {
        SCOPED_TRACE(row.page);
        pageWithKey(row.key);
        EXPECT_EQ(tutorial->scrollView->contentOffset().x(), row.page * phone.width());
        EXPECT_EQ(tutorial->pageControl->currentPage(), row.page);
        EXPECT_EQ(tutorial->infoLabel->text(), tutorial->texts.at(row.page));
        EXPECT_EQ(tutorial->startButton->isVisible(), row.startButton);
        EXPECT_EQ(tutorial->zoomInOutImageView->isVisible(), row.icon != nullptr);
        if (row.icon) {
            EXPECT_EQ(picture(tutorial->zoomInOutImageView->image()), *row.icon);
        }
    }

    // Resized, the window keeps the page at its whole width.
    const QSize desktop(1280, 720);
    window->resize(desktop);
    ASSERT_TRUE(QTest::qWaitFor([&] { return tutorial->scrollView->width() == desktop.width(); }));
    EXPECT_EQ(tutorial->scrollView->contentOffset(), QPointF(2 * desktop.width(), 0));
    EXPECT_EQ(tutorial->scrollView->contentSize(), QSizeF(4 * desktop.width(), 1.0));
    EXPECT_EQ(tutorial->infoLabel->text(), tutorial->texts.at(2));
    auto* page =
        qobject_cast<VideoContainerView*>(tutorial->scrollView->contentView()->children().at(2));
    ASSERT_TRUE(page && page->playerLayer());
    EXPECT_EQ(page->geometry(), QRect(QPoint(2 * desktop.width(), 0), desktop));
    // A portrait clip is shown whole in a landscape window, not cropped to the subject's chest.
    EXPECT_EQ(page->playerLayer()->videoGravity(), av::PlayerLayer::VideoGravity::resizeAspect);

    pageWithKey(Qt::Key_End);
    ASSERT_TRUE(tutorial->startButton->isVisible());
    QTest::mouseClick(tutorial->startButton, Qt::LeftButton);
    EXPECT_TRUE(foundation::Preferences::standard().boolForKey(QStringLiteral("tutorialShowed")));
    ASSERT_TRUE(window->rootViewController());
    EXPECT_STREQ(window->rootViewController()->metaObject()->className(), "CameraViewController");
    EXPECT_EQ(delegate.orientationLock(), ui::allOrientationsMask);
    EXPECT_TRUE(QTest::qWaitFor([&] { return tutorial.isNull(); })) << "released with its players";
}

TEST_F(TutorialTest, EveryClipLoopsOnItsOwn) {
    show();
    const QList<av::Player*> players = tutorial->players();
    ASSERT_EQ(players.size(), 4);
    // Waits until the players at a and b have gone past those counts of passes.
    const auto past = [&](int a, int b, int passesOfA, int passesOfB) {
        return QTest::qWaitFor(
            [&] { return players[a]->passes() > passesOfA && players[b]->passes() > passesOfB; },
            15000);
    };
    ASSERT_TRUE(past(0, 2, 0, 0) && past(1, 3, 0, 0));
    // Paused clips stop going round while the others go on. A pass that was ending as the pause
    // came may still be counted, so the count is taken once the others have gone round again.
    players[1]->pause();
    players[3]->pause();
    const int start = std::max(players[0]->passes(), players[2]->passes());
    ASSERT_TRUE(past(0, 2, start, start));
    const int paused[] = {players[1]->passes(), players[3]->passes()};
    EXPECT_TRUE(past(0, 2, start + 2, start + 2));
    EXPECT_EQ(players[1]->passes(), paused[0]);
    EXPECT_EQ(players[3]->passes(), paused[1]);
    // Played again, they go round once more: the pass the pause held back was not lost.
    players[1]->play();
    players[3]->play();
    EXPECT_TRUE(past(1, 3, paused[0], paused[1]));
}

// A missing clip stops the pages there and the pager stays put. Esc remembers the tutorial even
// when no window is key (the key window closed), and hands the window over once it is key.
TEST_F(TutorialTest, AMissingClipStopsThePagesAndEscRemembersTheTutorialWithoutAKeyWindow) {
    tutorial->videos[2] = QStringLiteral("absent");
    std::make_unique<ui::Window>()->makeKeyAndVisible();
    ASSERT_EQ(ui::Window::keyWindow(), nullptr);
    testing::internal::CaptureStdout();
    window->setRootViewController(tutorial);
    window->show();
    const bool shown = QTest::qWaitFor([&] { return tutorial->firstRun; });
    const std::string printed = testing::internal::GetCapturedStdout();
    ASSERT_TRUE(shown);
    EXPECT_NE(printed.find("\"video.m4v not found\"\n"), std::string::npos) << printed;
    EXPECT_EQ(pageViews(), 2);
    EXPECT_EQ(tutorial->scrollView->contentSize(), QSizeF());
    EXPECT_EQ(tutorial->scrollView->delegate(), nullptr);

    QTest::keyClick(tutorial->scrollView, Qt::Key_Right);
    QTest::qWait(int(ui::ScrollView::pageGlideDuration * 1000) + 100);
    EXPECT_EQ(tutorial->scrollView->contentOffset(), QPointF());
    EXPECT_EQ(tutorial->infoLabel->text(), tutorial->texts.first());

    QTest::keyClick(tutorial->scrollView, Qt::Key_Escape);
    EXPECT_TRUE(foundation::Preferences::standard().boolForKey(QStringLiteral("tutorialShowed")));
    EXPECT_EQ(window->rootViewController(), tutorial);
    window->makeKeyAndVisible();
    QTest::keyClick(tutorial->scrollView, Qt::Key_Escape);
    EXPECT_STREQ(window->rootViewController()->metaObject()->className(), "CameraViewController");
}

// A 200 × 50 button at (100, 100) in a shown window, its action counted.
class ALButtonTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(600, 400);
        button = new ALButton(&window);
        button->setGeometry(100, 100, 200, 50);
        button->addTarget(
            nullptr, [this](ui::Control*) { ++actions; }, ui::Control::touchUpInside);
        window.show();
    }

    QWidget window;
    ALButton* button = nullptr;
    int actions = 0;
};

TEST_F(ALButtonTest, FadesWhileHeldAndComesBackWhenTheTouchLeavesOrEnds) {
    const QPoint inside(100, 25);
    // Beyond the tracking margin the platform gives a touch before it counts as outside.
    const QPoint outside(100, 25 + ui::Control::defaultTrackingMargin + 60);
    const struct {
        const char* what;
        std::function<void()> act;
        qreal alpha;
    } steps[] = {
        {"down", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        {"drag out", [&] { QTest::mouseMove(button, outside); }, 1.0},
        {"drag in", [&] { QTest::mouseMove(button, inside); }, 0.4},
        {"up inside", [&] { QTest::mouseRelease(button, Qt::LeftButton, {}, inside); }, 1.0},
        {"down again", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        {"up outside", [&] { QTest::mouseRelease(button, Qt::LeftButton, {}, outside); }, 1.0},
        {"down for a cancel", [&] { QTest::mousePress(button, Qt::LeftButton, {}, inside); }, 0.4},
        // An alert taking the pointer cancels the touch, as disabling the button does.
        {"cancelled", [&] { button->setEnabled(false); }, 1.0},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        step.act();
        EXPECT_DOUBLE_EQ(ui::ViewAnimation::alpha(button), step.alpha);
        EXPECT_FALSE(ui::ViewAnimation::isAnimating(button)) << "immediate, never animated";
    }
    EXPECT_EQ(actions, 1) << "only the release inside is a tap";
}

} // namespace
