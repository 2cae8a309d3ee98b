#include "app/AppDelegate.h"

#include "onboarding/TutorialViewController.h"

#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Application.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "rating/AppRating.h"
#include "recording/CameraViewController.h"

#include <memory>

ui::Window* AppDelegate::window() const {
    return mainWindow;
}

void AppDelegate::setWindow(ui::Window* window) {
    mainWindow = window;
}

bool AppDelegate::didFinishLaunchingWithOptions(ui::Application*,
                                                const QVariantMap& launchOptions) {
    runLaunchSequence(launchOptions.value(QStringLiteral("tutorial")).toBool());
    return true;
}

quint64 AppDelegate::supportedInterfaceOrientationsFor(ui::Application*, ui::Window*) {
    return lock;
}

AppDelegate* AppDelegate::shared() {
    auto* app = ui::Application::shared();
    return app ? dynamic_cast<AppDelegate*>(app->delegate()) : nullptr;
}

void AppDelegate::runLaunchSequence(bool showTutorial) {
    // The plain assignment, not the checked setter: the launch value wins over the default.
    AppRating::daysUntilPrompt = 3;

    const bool tutorialShowed = !showTutorial && foundation::Preferences::standard().boolForKey(
                                                     foundation::PreferenceSchema::tutorialShowed);
    const ui::Storyboard storyboard(QStringLiteral("Main"));
    // A build without the tutorial's scene starts on the recording screen rather than on an
    // empty window.
    const bool tutorial = !tutorialShowed && storyboard.contains<TutorialViewController>();
    std::unique_ptr<ui::ViewController> controller(
        tutorial
            ? static_cast<ui::ViewController*>(storyboard.instantiate<TutorialViewController>())
            : storyboard.instantiate<CameraViewController>());
    if (!controller || !mainWindow)
        return;
    mainWindow->setRootViewController(controller.release());
}
