#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/MainStoryboard.h"
#include "app/PhotoCommand.h"
#include "app/RecordDemo.h"
#include "app/ScreenshotRenderer.h"

#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Application.h"

#include <QTextStream>

#include <memory>

int main(int argc, char** argv) {
    // Screenshots are drawn offscreen even on a desktop, so they look the same everywhere.
    if (CommandLine::runsOffscreen(argc, argv))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ui::Application application(argc, argv);
    application.setApplicationVersion(foundation::Bundle::main()
                                          .objectForInfoDictionaryKey("CFBundleShortVersionString")
                                          .toString());
    // The window names the desktop file, so the desktop shows its icon and name for it.
    application.setDesktopFileName(
        foundation::Bundle::main().objectForInfoDictionaryKey("CFBundleIdentifier").toString());
    foundation::Strings::install();

    CommandLine commandLine;
    commandLine.process(application);
    const QString camera = commandLine.launchOptions().value(QStringLiteral("camera")).toString();
    MainStoryboard::registerScenes();

    if (commandLine.asksForCameraList()) {
        QTextStream(stdout) << CommandLine::cameraList();
        return 0;
    }

    if (commandLine.asksForRecording()) {
        QString problem;
        const std::optional<RecordDemo::Options> options = commandLine.recordOptions(&problem);
        if (!options) {
            QTextStream(stderr) << problem << Qt::endl;
            return 2;
        }
        av::CaptureDeviceDiscoverySession::setCameraSelection(camera);
        return RecordDemo::run(*options);
    }

    if (commandLine.asksForPhoto()) {
        QString problem;
        const std::optional<PhotoCommand::Options> options = commandLine.photoOptions(&problem);
        if (!options) {
            QTextStream(stderr) << problem << Qt::endl;
            return 2;
        }
        av::CaptureDeviceDiscoverySession::setCameraSelection(camera);
        return PhotoCommand::run(*options);
    }

    if (const std::optional<CommandLine::Screenshot> screenshot = commandLine.screenshot()) {
        av::CaptureDeviceDiscoverySession::setCameraSelection(
            camera.isEmpty() ? QStringLiteral("virtual") : camera);
        return ScreenshotRenderer::render(screenshot->name, screenshot->file);
    }
    av::CaptureDeviceDiscoverySession::setCameraSelection(camera);

    if (application.isHeadless()) {
        QTextStream(stdout) << qtTrId("main_tessaro_needs_display_open") << Qt::endl;
        return 2;
    }
    return application.run(std::make_unique<AppDelegate>(), commandLine.launchOptions());
}
