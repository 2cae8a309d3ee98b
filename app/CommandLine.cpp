#include "app/CommandLine.h"

#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/FileCameraDevice.h"
#include "recording/CameraViewController.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <cmath>

CommandLine::CommandLine()
    : cameraOption(QStringList{QStringLiteral("camera")},
                   QCoreApplication::translate(
                       "CommandLine", "Record with the camera NAME (a device name or path, "
                                      "or \"virtual\")."),
                   QStringLiteral("NAME")),
      listCamerasOption(QStringList{QStringLiteral("list-cameras")},
                        QCoreApplication::translate(
                            "CommandLine", "Print every camera and microphone with its formats "
                                           "and position, and leave.")),
      screenshotOption(QStringList{QStringLiteral("screenshot")},
                       QCoreApplication::translate(
                           "CommandLine", "Draw the screen NAME without a display, write it to "
                                          "FILE.png and leave. The virtual camera is used unless "
                                          "--camera says otherwise."),
                       QStringLiteral("NAME")),
      tutorialOption(QStringList{QStringLiteral("tutorial")},
                     QCoreApplication::translate("CommandLine",
                                                 "Start on the tutorial that explains the dolly "
                                                 "zoom, even after it was left once.")),
      durationOption(QStringList{QStringLiteral("duration")},
                     QCoreApplication::translate("CommandLine",
                                                 "record: the ramp's length, 1 to 15 whole seconds "
                                                 "(default 5)."),
                     QStringLiteral("S")),
      zoomOption(
          QStringList{QStringLiteral("zoom")},
          QCoreApplication::translate(
              "CommandLine", "record: the slider's zoom, 1 (a flat ramp) or more (default 3)."),
          QStringLiteral("Z")),
      zoomInOption(QStringList{QStringLiteral("zoom-in")},
                   QCoreApplication::translate("CommandLine",
                                               "record: ramp from 1.0 up to the zoom, for "
                                               "walking away (default: down to 1.0).")),
      formatOption(
          QStringList{QStringLiteral("format")},
          QCoreApplication::translate("CommandLine", "record: hd (1920×1080 at 30), hd60 or 4k."),
          QStringLiteral("FORMAT")),
      outputOption(QStringList{QStringLiteral("output")},
                   QCoreApplication::translate("CommandLine",
                                               "record: the clip's file (default: a new "
                                               "\"Tessaro Demo\" file in the documents "
                                               "folder). An existing file is never replaced."),
                   QStringLiteral("FILE")) {
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press "
                       "record and walk."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(cameraOption);
    parser.addOption(listCamerasOption);
    parser.addOption(screenshotOption);
    parser.addOption(tutorialOption);
    parser.addOption(durationOption);
    parser.addOption(zoomOption);
    parser.addOption(zoomInOption);
    parser.addOption(formatOption);
    parser.addOption(outputOption);
    parser.addPositionalArgument(
        QStringLiteral("record"),
        QCoreApplication::translate("CommandLine",
                                    "Record one clip without a display, with the options "
                                    "marked record:, and print where it is."),
        QStringLiteral("[record]"));
    parser.addPositionalArgument(
        QStringLiteral("file"),
        QCoreApplication::translate("CommandLine", "With --screenshot: the PNG file to write."),
        QStringLiteral("[FILE.png]"));
}

void CommandLine::process(const QCoreApplication& application) {
    parser.process(application);
}

bool CommandLine::runsOffscreen(int argc, char** argv) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    // Errors and --help are left for process(), once the application exists.
    CommandLine commandLine;
    commandLine.parser.parse(arguments);
    return commandLine.screenshot() || commandLine.asksForRecording() ||
           commandLine.asksForCameraList();
}

QVariantMap CommandLine::launchOptions() const {
    QVariantMap options;
    if (parser.isSet(cameraOption))
        options.insert(QStringLiteral("camera"), parser.value(cameraOption));
    if (parser.isSet(tutorialOption))
        options.insert(QStringLiteral("tutorial"), true);
    return options;
}

std::optional<CommandLine::Screenshot> CommandLine::screenshot() const {
    if (!parser.isSet(screenshotOption))
        return std::nullopt;
    const QStringList positional = parser.positionalArguments();
    return Screenshot{parser.value(screenshotOption),
                      positional.isEmpty() ? QString() : positional.first()};
}

bool CommandLine::asksForRecording() const {
    const QStringList positional = parser.positionalArguments();
    return !positional.isEmpty() && positional.first() == QLatin1String("record");
}

bool CommandLine::asksForCameraList() const {
    return parser.isSet(listCamerasOption);
}

namespace {

QString rateText(double rate) {
    return QString::number(rate, 'g', 4);
}

QString formatLine(const av::CaptureDeviceFormat& format) {
    QStringList rates;
    for (const av::FrameRateRange& range : format.videoSupportedFrameRateRanges)
        rates << (range.minFrameRate == range.maxFrameRate
                      ? rateText(range.maxFrameRate)
                      : rateText(range.minFrameRate) + QChar(0x2013) +
                            rateText(range.maxFrameRate));
    QString line =
        QStringLiteral("    %1×%2").arg(format.width).arg(format.height).leftJustified(16);
    line +=
        QCoreApplication::translate("CommandLine", "%1 fps").arg(rates.join(QStringLiteral(", ")));
    if (format.mediaType == QLatin1String("image/jpeg"))
        line += QStringLiteral(" (MJPEG)");
    else if (format.mediaType != QLatin1String("video/x-raw"))
        line += QStringLiteral(" (%1)").arg(format.mediaType);
    return line;
}

QString positionText(av::DevicePosition position) {
    switch (position) {
    case av::DevicePosition::front:
        return QCoreApplication::translate("CommandLine", "front");
    case av::DevicePosition::back:
        return QCoreApplication::translate("CommandLine", "back");
    default:
        return QCoreApplication::translate("CommandLine", "position unknown");
    }
}

} // namespace

QString CommandLine::cameraList() {
    QStringList lines;
    lines << QCoreApplication::translate("CommandLine", "Cameras (choose one with --camera NAME):");
    const auto cameras = av::CaptureDeviceDiscoverySession::allDevices(av::MediaType::video);
    for (const av::CaptureDevice* camera : cameras) {
        const QString choice = camera->isVirtual() ? QStringLiteral("virtual") : camera->uniqueID();
        lines << QStringLiteral("  %1 — %2 — --camera %3")
                     .arg(camera->localizedName(), positionText(camera->position()), choice);
        for (const av::CaptureDeviceFormat& format : camera->formats())
            lines << formatLine(format);
    }
    lines << QCoreApplication::translate("CommandLine", "Microphones:");
    const auto microphones = av::CaptureDeviceDiscoverySession::allDevices(av::MediaType::audio);
    for (const av::CaptureDevice* microphone : microphones)
        lines << QStringLiteral("  ") + microphone->localizedName() +
                     (microphone->isVirtual()
                          ? QCoreApplication::translate("CommandLine",
                                                        " (only with the virtual camera)")
                          : QString());
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

std::optional<double> CommandLine::parseNumber(const QString& text) {
    QString plain = text.trimmed();
    if (plain.count(QLatin1Char(',')) == 1 && !plain.contains(QLatin1Char('.')))
        plain.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double value = QLocale::c().toDouble(plain, &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

double CommandLine::highestZoom(int videoMode) {
    // The screen's own limit for the format, so a run is refused before the camera starts.
    const double height = CameraViewController::videoFormats[videoMode].height;
    return std::clamp(height / CameraViewController::fewestSharpLines, 1.0,
                      CameraViewController::maximumZoom);
}

std::optional<RecordDemo::Options> CommandLine::recordOptions(QString* problem) const {
    RecordDemo::Options options;
    const auto fail = [problem](const QString& message) {
        if (problem)
            *problem = message;
        return std::nullopt;
    };
    if (parser.isSet(durationOption)) {
        const std::optional<double> seconds = parseNumber(parser.value(durationOption));
        if (!seconds || *seconds < 1 || *seconds > 15 || *seconds != std::trunc(*seconds))
            return fail(QCoreApplication::translate(
                            "CommandLine",
                            "--duration takes a whole number of seconds from 1 to 15, not "
                            "\"%1\".")
                            .arg(parser.value(durationOption)));
        options.duration = int(*seconds);
    }
    options.zoomIn = parser.isSet(zoomInOption);
    if (parser.isSet(formatOption)) {
        const QString format = parser.value(formatOption).toLower();
        const QStringList formats{QStringLiteral("hd"), QStringLiteral("hd60"),
                                  QStringLiteral("4k")};
        if (!formats.contains(format))
            return fail(QCoreApplication::translate("CommandLine",
                                                    "--format takes hd, hd60 or 4k, not \"%1\".")
                            .arg(parser.value(formatOption)));
        options.videoMode = int(formats.indexOf(format));
    }
    if (parser.isSet(zoomOption)) {
        const double highest = highestZoom(options.videoMode);
        const std::optional<double> zoom = parseNumber(parser.value(zoomOption));
        if (!zoom || *zoom < 1.0 || *zoom > highest)
            return fail(QCoreApplication::translate(
                            "CommandLine",
                            "--zoom takes a zoom from 1 (a flat ramp) to %1 at %2, such as 2.5, "
                            "not \"%3\".")
                            .arg(highest)
                            .arg(QString::fromLatin1(
                                CameraViewController::videoFormats[options.videoMode].title))
                            .arg(parser.value(zoomOption)));
        options.zoom = *zoom;
    }
    const QString camera = parser.value(cameraOption);
    options.camera = camera;
    // A script must be able to tell: the window falls back to another camera, a record does not.
    if (!camera.isEmpty() && camera != QLatin1String("virtual") &&
        !camera.startsWith(QLatin1String("file:")) &&
        !av::CaptureDeviceDiscoverySession::systemCamera(camera))
        return fail(QCoreApplication::translate("CommandLine", "There is no camera “%1”.\n%2")
                        .arg(camera, cameraList().trimmed()));
    if (camera.startsWith(QLatin1String("file:")))
        if (const std::optional<av::Error> unusable =
                av::FileCameraDevice::problemWith(camera.mid(5)))
            return fail(unusable->localizedDescription());
    options.output = parser.value(outputOption);
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1)
        return fail(
            QCoreApplication::translate("CommandLine", "record takes options only, not \"%1\".")
                .arg(positional.at(1)));
    return options;
}
