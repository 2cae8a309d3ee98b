#include "app/AppDelegate.h"

#include "platform/foundation/Device.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Application.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "rating/AppRating.h"

#include <QWindow>

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

void AppDelegate::setOrientationLock(quint64 mask) {
    lock = mask;
    applyOrientationLock();
}

void AppDelegate::applyOrientationLock() {
    const foundation::Device& device = foundation::Device::current();
    if (device.formFactor() == foundation::Device::FormFactor::desktop ||
        device.orientation() == foundation::Device::Orientation::unknown || !mainWindow ||
        !mainWindow->windowHandle())
        return;
    // The compositor turns the window's picture to match the content's orientation, so a
    // portrait-only screen stays upright while the device lies on its side.
    mainWindow->windowHandle()->reportContentOrientationChange(
        lock == ui::portraitMask ? Qt::PortraitOrientation : Qt::PrimaryOrientation);
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

    const bool tutorialShowed =
        !showTutorial && foundation::Preferences::standard().boolForKey("tutorialShowed");
    const ui::Storyboard storyboard(QStringLiteral("Main"));
    const char* required = tutorialShowed ? "CameraViewController" : "TutorialViewController";
    // A build without the tutorial's scene starts on the recording screen rather than on an
    // empty window.
    if (!tutorialShowed && !storyboard.contains(QString::fromLatin1(required)))
        required = "CameraViewController";

    std::unique_ptr<ui::ViewController> controller(
        storyboard.instantiate(QString::fromLatin1(required)));
    if (!controller || !controller->inherits(required) || !mainWindow)
        return;
    mainWindow->setRootViewController(controller.release());
}
