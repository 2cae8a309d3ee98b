#include "app/CommandLine.h"

#include <QCoreApplication>

CommandLine::CommandLine()
    : cameraOption(QStringList{QStringLiteral("camera")},
                   QCoreApplication::translate(
                       "CommandLine", "Record with the camera NAME (a device name or path, "
                                      "or \"virtual\")."),
                   QStringLiteral("NAME")),
      screenshotOption(QStringList{QStringLiteral("screenshot")},
                       QCoreApplication::translate(
                           "CommandLine", "Draw the screen NAME without a display, write it to "
                                          "FILE.png and leave. The virtual camera is used unless "
                                          "--camera says otherwise."),
                       QStringLiteral("NAME")) {
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press "
                       "record and walk."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(cameraOption);
    parser.addOption(screenshotOption);
    parser.addPositionalArgument(
        QStringLiteral("file"),
        QCoreApplication::translate("CommandLine", "With --screenshot: the PNG file to write."),
        QStringLiteral("[FILE.png]"));
}

void CommandLine::process(const QCoreApplication& application) {
    parser.process(application);
}

QVariantMap CommandLine::launchOptions() const {
    QVariantMap options;
    if (parser.isSet(cameraOption))
        options.insert(QStringLiteral("camera"), parser.value(cameraOption));
    return options;
}

std::optional<CommandLine::Screenshot> CommandLine::screenshot() const {
    if (!parser.isSet(screenshotOption))
        return std::nullopt;
    const QStringList positional = parser.positionalArguments();
    return Screenshot{parser.value(screenshotOption),
                      positional.isEmpty() ? QString() : positional.first()};
}

bool CommandLine::asksForScreenshot(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--")
            return false;
        if (argument == "--screenshot" || argument.startsWith("--screenshot="))
            return true;
    }
    return false;
}
