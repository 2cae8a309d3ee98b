#include "app/AppDelegate.h"

#include "onboarding/TutorialViewController.h"
#include "platform/foundation/PreferenceSchema.h"
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

    QTemporaryDir configDir;
    AppDelegate delegate;
    QPointer<ui::Window> window;
    ui::ViewController* plainRoot = nullptr;
};

// The first screen follows the tutorial's scene, whether the tutorial was left, and the
// "tutorial" launch option; other options change nothing. Every launch sets the rating prompt's
// delay.
TEST_F(LaunchTest, theFirstScreenFollowsTheTutorialsState) {
    const QVariantMap asked{{QStringLiteral("tutorial"), true}};
    const QVariantMap nonsense{{QStringLiteral("camera"), QStringLiteral("nonsense")},
                               {QStringLiteral("url"), QVariant()},
                               {QString(), 42}};
    const struct {
        const char* name;
        bool tutorialScene;
        bool left;
        QVariantMap options;
        const char* root;
    } rows[] = {
        {"first launch", true, false, {}, "TutorialViewController"},
        {"later launch", true, true, nonsense, "CameraViewController"},
        {"asked for after it was left", true, true, asked, "TutorialViewController"},
        {"no tutorial scene", false, false, {}, "CameraViewController"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        registerScreen<CameraViewController>("CameraViewController");
        if (row.tutorialScene)
            registerScreen<TutorialViewController>("TutorialViewController");
        foundation::Preferences::standard().setBool(foundation::PreferenceSchema::tutorialShowed,
                                                    row.left);
        AppRating::daysUntilPrompt = 7;
        AppDelegate launch;
        launch.setWindow(window);
        EXPECT_TRUE(launch.didFinishLaunchingWithOptions(nullptr, row.options));
        EXPECT_STREQ(window->rootViewController()->metaObject()->className(), row.root);
        EXPECT_EQ(AppRating::daysUntilPrompt, 3);
        // Asking does not forget that it was left: the next plain launch skips it.
        EXPECT_EQ(foundation::Preferences::standard().boolForKey(
                      foundation::PreferenceSchema::tutorialShowed),
                  row.left);
    }
}

TEST_F(LaunchTest, noWindowOrAnUnregisteredOrMismatchedScreenKeepsThePlainRoot) {
    EXPECT_TRUE(delegate.didFinishLaunchingWithOptions(nullptr, {}));
    EXPECT_EQ(window->rootViewController(), plainRoot);
    registerScreen<CameraViewController>("CameraViewController");
    AppDelegate windowless;
    EXPECT_TRUE(windowless.didFinishLaunchingWithOptions(nullptr, {}));
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
