#include "app/CommandLine.h"

#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/FileCameraDevice.h"
#include "recording/CameraViewController.h"

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

CommandLine::CommandLine()
    : cameraOption(QStringList{QStringLiteral("camera")}, qtTrId("cli_record_camera_name_device"),
                   QStringLiteral("NAME")),
      listCamerasOption(QStringList{QStringLiteral("list-cameras")},
                        qtTrId("cli_print_every_camera_microphone")),
      screenshotOption(QStringList{QStringLiteral("screenshot")},
                       qtTrId("cli_draw_screen_name_without"), QStringLiteral("NAME")),
      tutorialOption(QStringList{QStringLiteral("tutorial")},
                     qtTrId("cli_start_tutorial_explains_dolly")),
      durationOption(QStringList{QStringLiteral("duration")}, qtTrId("cli_record_ramp_s_length"),
                     QStringLiteral("S")),
      zoomOption(QStringList{QStringLiteral("zoom")}, qtTrId("cli_record_slider_s_zoom"),
                 QStringLiteral("Z")),
      zoomInOption(QStringList{QStringLiteral("zoom-in")}, qtTrId("cli_record_ramp_up_zoom")),
      formatOption(QStringList{QStringLiteral("format")}, qtTrId("cli_record_hd_hd_k"),
                   QStringLiteral("FORMAT")),
      outputOption(QStringList{QStringLiteral("output")}, qtTrId("cli_record_clip_s_file"),
                   QStringLiteral("FILE")),
      resolutionOption(QStringList{QStringLiteral("resolution")}, qtTrId("cli_photo_resolution"),
                       QStringLiteral("WxH")),
      facesOption(QStringList{QStringLiteral("faces")}, qtTrId("cli_photo_faces")) {
    parser.setApplicationDescription(qtTrId("cli_tessaro_dolly_zoom_video"));
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
    parser.addOption(resolutionOption);
    parser.addOption(facesOption);
    parser.addPositionalArgument(QStringLiteral("record"), qtTrId("cli_record_one_clip_without"),
                                 QStringLiteral("[record]"));
    parser.addPositionalArgument(QStringLiteral("photo"), qtTrId("cli_photo_one_still_without"),
                                 QStringLiteral("[photo]"));
    parser.addPositionalArgument(QStringLiteral("file"), qtTrId("cli_screenshot_png_file_write"),
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
           commandLine.asksForPhoto() || commandLine.asksForCameraList();
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

bool CommandLine::asksForPhoto() const {
    const QStringList positional = parser.positionalArguments();
    return !positional.isEmpty() && positional.first() == QLatin1String("photo");
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
    line += qtTrId("cli_fps").arg(rates.join(QStringLiteral(", ")));
    if (format.mediaType == QLatin1String("image/jpeg"))
        line += QStringLiteral(" (MJPEG)");
    else if (format.mediaType != QLatin1String("video/x-raw"))
        line += QStringLiteral(" (%1)").arg(format.mediaType);
    return line;
}

QString positionText(av::DevicePosition position) {
    switch (position) {
    case av::DevicePosition::front:
        return qtTrId("cli_front");
    case av::DevicePosition::back:
        return qtTrId("cli_back");
    default:
        return qtTrId("cli_position_unknown");
    }
}

} // namespace

QString CommandLine::cameraList() {
    QStringList lines;
    lines << qtTrId("cli_cameras_choose_one_camera");
    const auto cameras = av::CaptureDeviceDiscoverySession::allDevices(av::MediaType::video);
    for (const av::CaptureDevice* camera : cameras) {
        const QString choice = camera->isVirtual() ? QStringLiteral("virtual") : camera->uniqueID();
        lines << QStringLiteral("  %1 — %2 — --camera %3")
                     .arg(camera->localizedName(), positionText(camera->position()), choice);
        for (const av::CaptureDeviceFormat& format : camera->formats())
            lines << formatLine(format);
    }
    lines << qtTrId("cli_microphones");
    const auto microphones = av::CaptureDeviceDiscoverySession::allDevices(av::MediaType::audio);
    for (const av::CaptureDevice* microphone : microphones)
        lines << QStringLiteral("  ") + microphone->localizedName() +
                     (microphone->isVirtual() ? qtTrId("cli_only_virtual_camera") : QString());
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

double CommandLine::highestZoom(VideoMode videoMode) {
    // The screen's own limit for the format, so a run is refused before the camera starts.
    const double height = CameraViewController::videoFormat(videoMode).height;
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
            return fail(
                qtTrId("cli_duration_takes_whole_number").arg(parser.value(durationOption)));
        options.duration = int(*seconds);
    }
    options.zoomIn = parser.isSet(zoomInOption);
    if (parser.isSet(formatOption)) {
        const QString format = parser.value(formatOption).toLower();
        const QStringList formats{QStringLiteral("hd"), QStringLiteral("hd60"),
                                  QStringLiteral("4k")};
        if (!formats.contains(format))
            return fail(qtTrId("cli_format_takes_hd_hd").arg(parser.value(formatOption)));
        options.videoMode = VideoMode(formats.indexOf(format));
    }
    if (parser.isSet(zoomOption)) {
        const double highest = highestZoom(options.videoMode);
        const std::optional<double> zoom = parseNumber(parser.value(zoomOption));
        if (!zoom || *zoom < 1.0 || *zoom > highest)
            return fail(qtTrId("cli_zoom_takes_zoom_flat")
                            .arg(highest)
                            .arg(QString::fromLatin1(
                                CameraViewController::videoFormat(options.videoMode).title))
                            .arg(parser.value(zoomOption)));
        options.zoom = *zoom;
    }
    options.camera = parser.value(cameraOption);
    if (const QString unusable = cameraProblem(); !unusable.isEmpty())
        return fail(unusable);
    options.output = parser.value(outputOption);
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1)
        return fail(qtTrId("cli_record_takes_options_only").arg(positional.at(1)));
    return options;
}

QString CommandLine::cameraProblem() const {
    const QString camera = parser.value(cameraOption);
    // A script must be able to tell: the window falls back to another camera, a command does not.
    if (!camera.isEmpty() && camera != QLatin1String("virtual") &&
        !camera.startsWith(QLatin1String("file:")) &&
        !av::CaptureDeviceDiscoverySession::systemCamera(camera))
        return qtTrId("cli_there_no_camera").arg(camera, cameraList().trimmed());
    if (camera.startsWith(QLatin1String("file:")))
        if (const std::optional<av::Error> unusable =
                av::FileCameraDevice::problemWith(camera.mid(5)))
            return unusable->localizedDescription();
    return {};
}

std::optional<QSize> CommandLine::parseSize(const QString& text, int largest) {
    static const QRegularExpression pattern(QStringLiteral("^\\s*(\\d+)\\s*[xX×]\\s*(\\d+)\\s*$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    bool wideOk = false, highOk = false;
    const int width = match.captured(1).toInt(&wideOk);
    const int height = match.captured(2).toInt(&highOk);
    if (!wideOk || !highOk || width < 1 || height < 1 || width > largest || height > largest)
        return std::nullopt;
    return QSize(width, height);
}

std::optional<PhotoCommand::Options> CommandLine::photoOptions(QString* problem) const {
    PhotoCommand::Options options;
    const auto fail = [problem](const QString& message) {
        if (problem)
            *problem = message;
        return std::nullopt;
    };
    if (parser.isSet(resolutionOption)) {
        const std::optional<QSize> size =
            parseSize(parser.value(resolutionOption), largestPhotoSide);
        if (!size)
            return fail(qtTrId("cli_resolution_takes_wxh")
                            .arg(largestPhotoSide)
                            .arg(parser.value(resolutionOption)));
        options.resolution = *size;
    }
    if (parser.isSet(zoomOption)) {
        const std::optional<double> zoom = parseNumber(parser.value(zoomOption));
        if (!zoom || *zoom < 1.0 || *zoom > PhotoCommand::highestZoom)
            return fail(qtTrId("cli_photo_zoom_takes")
                            .arg(PhotoCommand::highestZoom)
                            .arg(parser.value(zoomOption)));
        options.zoom = *zoom;
    }
    options.faces = parser.isSet(facesOption);
    if (const QString unusable = cameraProblem(); !unusable.isEmpty())
        return fail(unusable);
    options.output = parser.value(outputOption);
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1)
        return fail(qtTrId("cli_photo_takes_options_only").arg(positional.at(1)));
    return options;
}
