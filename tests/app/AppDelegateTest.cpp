#include "app/AppDelegate.h"

#include "onboarding/TutorialViewController.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "rating/AppRating.h"
#include "recording/CameraViewController.h"

#include <QPointer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class LaunchTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(configDir.isValid());
        qputenv("TESSARO_CONFIG_DIR", configDir.path().toUtf8());
        foundation::Preferences::resetStandardForTesting();
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        window = new ui::Window;
        plainRoot = new ui::ViewController;
        window->setRootViewController(plainRoot);
        delegate.setWindow(window);
    }
    void TearDown() override {
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        delete window;
    }

    template <class Controller> void registerScreen(const char* identifier) {
        ui::Storyboard::registerFactory(QStringLiteral("Main"), QString::fromLatin1(identifier),
                                        [] { return new Controller; });
    }
    void registerBothScreens() {
        registerScreen<TutorialViewController>("TutorialViewController");
        registerScreen<CameraViewController>("CameraViewController");
    }
    QString rootClass() const {
        return QString::fromLatin1(window->rootViewController()->metaObject()->className());
    }

    QTemporaryDir configDir;
    AppDelegate delegate;
    QPointer<ui::Window> window;
    ui::ViewController* plainRoot = nullptr;
};

TEST_F(LaunchTest, firstLaunchShowsTheTutorial) {
    registerBothScreens();
    EXPECT_TRUE(delegate.didFinishLaunchingWithOptions(nullptr, {}));
    EXPECT_EQ(rootClass(), "TutorialViewController");
}

TEST_F(LaunchTest, laterLaunchesShowTheRecordingScreen) {
    registerBothScreens();
    foundation::Preferences::standard().setBool("tutorialShowed", true);
    for (int launch = 0; launch < 2; ++launch) {
        AppDelegate next;
        next.setWindow(window);
        next.didFinishLaunchingWithOptions(nullptr, {});
        EXPECT_EQ(rootClass(), "CameraViewController");
    }
}

TEST_F(LaunchTest, askingForTheTutorialShowsItAfterItWasLeft) {
    registerBothScreens();
    foundation::Preferences::standard().setBool("tutorialShowed", true);
    delegate.didFinishLaunchingWithOptions(nullptr, {{QStringLiteral("tutorial"), true}});
    EXPECT_EQ(rootClass(), "TutorialViewController");
    // Asking does not forget that it was left: the next plain launch skips it.
    AppDelegate next;
    next.setWindow(window);
    next.didFinishLaunchingWithOptions(nullptr, {});
    EXPECT_EQ(rootClass(), "CameraViewController");
}

TEST_F(LaunchTest, withoutATutorialSceneTheFirstLaunchShowsTheRecordingScreen) {
    registerScreen<CameraViewController>("CameraViewController");
    delegate.didFinishLaunchingWithOptions(nullptr, {});
    EXPECT_EQ(rootClass(), "CameraViewController");
}

TEST_F(LaunchTest, unregisteredOrMismatchedScreensKeepThePlainRoot) {
    EXPECT_TRUE(delegate.didFinishLaunchingWithOptions(nullptr, {}));
    EXPECT_EQ(window->rootViewController(), plainRoot);

    // A scene whose class is not the one asked for is skipped and not leaked.
    QPointer<ui::ViewController> wrong;
    ui::Storyboard::registerFactory(QStringLiteral("Main"),
                                    QStringLiteral("TutorialViewController"),
                                    [&wrong] { return wrong = new CameraViewController; });
    delegate.didFinishLaunchingWithOptions(nullptr, {});
    EXPECT_EQ(window->rootViewController(), plainRoot);
    EXPECT_TRUE(wrong.isNull());
}

TEST_F(LaunchTest, noWindowSkipsRouting) {
    registerBothScreens();
    AppDelegate windowless;
    EXPECT_TRUE(windowless.didFinishLaunchingWithOptions(nullptr, {}));
    EXPECT_EQ(window->rootViewController(), plainRoot);
}

TEST_F(LaunchTest, launchSetsThePromptDelayEveryTime) {
    AppRating::daysUntilPrompt = 7;
    delegate.didFinishLaunchingWithOptions(nullptr, {});
    EXPECT_EQ(AppRating::daysUntilPrompt, 3);

    // The checked setter turns zero into 10; the launch assigns directly, so 3 wins again.
    AppRating::setDaysUntilPrompt(0);
    EXPECT_EQ(AppRating::daysUntilPrompt, 10);
    delegate.didFinishLaunchingWithOptions(nullptr, {});
    EXPECT_EQ(AppRating::daysUntilPrompt, 3);
}

TEST_F(LaunchTest, launchOptionsNeverChangeTheAnswer) {
    const QVariantMap options{{QStringLiteral("camera"), QStringLiteral("nonsense")},
                              {QStringLiteral("url"), QVariant()},
                              {QString(), 42}};
    EXPECT_TRUE(delegate.didFinishLaunchingWithOptions(nullptr, options));
}

TEST(OrientationLock, answersAllUntilChangedThenExactlyTheLastValue) {
    AppDelegate delegate;
    ui::Window window;
    EXPECT_EQ(delegate.supportedInterfaceOrientationsFor(nullptr, &window), 30u);
    EXPECT_EQ(delegate.supportedInterfaceOrientationsFor(nullptr, nullptr), 30u);
    for (quint64 mask : {quint64(2), quint64(0), quint64(24), quint64(30), ~quint64(0)}) {
        delegate.setOrientationLock(mask);
        EXPECT_EQ(delegate.supportedInterfaceOrientationsFor(nullptr, &window), mask);
    }
}

} // namespace
