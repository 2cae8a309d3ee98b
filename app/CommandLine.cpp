#include "app/CommandLine.h"

#include <QCoreApplication>

CommandLine::CommandLine()
    : cameraOption(QStringList{QStringLiteral("camera")},
                   QCoreApplication::translate(
                       "CommandLine", "Record with the camera NAME (a device name or path, "
                                      "or \"virtual\")."),
                   QStringLiteral("NAME")) {
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press "
                       "record and walk."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(cameraOption);
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
