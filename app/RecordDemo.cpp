#include "app/RecordDemo.h"

#include "app/EventLoopWait.h"
#include "platform/foundation/PreferenceSchema.h"

#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/AssetImageGenerator.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/FileCameraDevice.h"
#include "platform/av/PictureZoom.h"
#include "platform/av/ZoomFilter.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Application.h"
#include "platform/ui/Button.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

constexpr int secondsForCamera = 15;
// Beyond the ramp: the encoder's tail and the file's completion.
constexpr int secondsForFinish = 30;
constexpr int sheetFrames = 5;
constexpr int sheetFrameWidth = 384;

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& err() {
    static QTextStream stream(stderr);
    return stream;
}

// The zoom each frame left the zoom stage with, by the frame's session timestamp.
class ZoomLog {
public:
    struct Entry {
        GstClockTime pts;
        double zoom;
    };

    void attach(GstElement* zoomStage) {
        stage = GstHandle(zoomStage, av::GstRef::add);
        av::ZoomFilter::setFrameObserver(zoomStage, [this](GstClockTime pts, double zoom) {
            std::lock_guard lock(mutex);
            entries.push_back({pts, zoom});
        });
    }
    void detach() {
        if (stage)
            av::ZoomFilter::setFrameObserver(stage.get(), {});
        stage.reset();
    }
    ~ZoomLog() { detach(); }

    // The frames from first to last, in time order.
    std::vector<Entry> between(GstClockTime first, GstClockTime last) const {
        std::lock_guard lock(mutex);
        std::vector<Entry> result;
        for (const Entry& entry : entries)
            if (entry.pts >= first && entry.pts <= last)
                result.push_back(entry);
        std::sort(result.begin(), result.end(),
                  [](const Entry& a, const Entry& b) { return a.pts < b.pts; });
        return result;
    }

private:
    template <class T> using GstHandle = av::GstHandle<T>;
    GstHandle<GstElement> stage;
    mutable std::mutex mutex; // guards entries
    std::vector<Entry> entries;
};

// Runs the event loop until done() answers true, the window is closed (Ctrl-C, SIGTERM) or the
// time is up. False unless done.
bool waitFor(const std::function<bool()>& done, int seconds, const ui::Window& window) {
    waitInEventLoop([&] { return done() || !window.isVisible(); }, seconds * 1000);
    return done();
}

QString formatZoom(double zoom) {
    return QString::number(zoom, 'f', 3) + QChar(0x00D7);
}

// Five frames in a row, each with its time and the zoom it carries.
bool writeContactSheet(const QString& clip, const QString& sheet, double length,
                       const std::vector<ZoomLog::Entry>& zooms) {
    const av::AssetImageGenerator generator(QUrl::fromLocalFile(clip));
    std::vector<QImage> frames;
    std::vector<QString> captions;
    for (int i = 0; i < sheetFrames; ++i) {
        const double at = length * double(i) / double(sheetFrames - 1);
        QImage frame = generator.imageAt(at, sheetFrameWidth);
        if (frame.isNull())
            return false;
        frames.push_back(frame);
        QString caption = QString::number(at, 'f', 2) + QStringLiteral(" s");
        if (!zooms.empty()) {
            const size_t index = std::min(
                zooms.size() - 1, size_t(double(zooms.size() - 1) * double(i) / (sheetFrames - 1)));
            caption += QStringLiteral("   ") + formatZoom(zooms[index].zoom);
        }
        captions.push_back(caption);
    }
    const int gap = 8;
    const int captionHeight = 28;
    int height = 0;
    for (const QImage& frame : frames)
        height = std::max(height, frame.height());
    QImage sheetImage(gap + sheetFrames * (sheetFrameWidth + gap),
                      gap + height + captionHeight + gap / 2, QImage::Format_RGB32);
    sheetImage.fill(QColor(24, 26, 30));
    QPainter painter(&sheetImage);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(15);
    painter.setFont(font);
    painter.setPen(Qt::white);
    for (int i = 0; i < sheetFrames; ++i) {
        const int x = gap + i * (sheetFrameWidth + gap);
        painter.drawImage(QPoint(x, gap + (height - frames[i].height()) / 2), frames[i]);
        painter.drawText(QRect(x, gap + height, sheetFrameWidth, captionHeight), Qt::AlignCenter,
                         captions[i]);
    }
    painter.end();
    return sheetImage.save(sheet, "PNG");
}

// What the camera shows before the zoom stage, when the run can know it: a still picture or the
// virtual scene.
std::optional<av::PictureZoom::Reference> unzoomedPicture(const QString& camera, QSize size) {
    if (camera == QLatin1String("virtual"))
        return av::PictureZoom::virtualScene();
    const QString path = camera.startsWith(QLatin1String("file:")) ? camera.mid(5) : QString();
    if (path.isEmpty() || !av::FileCameraDevice(path).isStillPicture())
        return std::nullopt;
    const QImage picture(path);
    if (picture.isNull())
        return std::nullopt;
    return av::PictureZoom::still(picture, size);
}

QString formatMilliseconds(GstClockTime time) {
    return QString::number(double(time) / GST_MSECOND, 'f', 0) + QStringLiteral(" ms");
}

// Creates the file empty, so no other run can take the name; false when it exists or cannot be
// written.
bool claim(const QString& path, QString* problem) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return true;
    if (problem)
        *problem = QFileInfo::exists(path)
                       ? qtTrId("rec_exists_already_choose_another").arg(path)
                       : qtTrId("rec_cannot_written").arg(path, file.errorString());
    return false;
}

// Connects to the camera's failures once the screen has made its session.
class CameraWatch {
public:
    explicit CameraWatch(CameraViewController* screen) : screen(screen) {}
    bool failed() {
        if (!connected && screen->videoSession()) {
            connected = true;
            QObject::connect(screen->videoSession()->session(), &av::CaptureSession::runtimeError,
                             [this](const av::Error& error) { problem = error; });
        }
        return problem.has_value();
    }
    QString description() const { return problem ? problem->localizedDescription() : QString(); }

private:
    CameraViewController* screen;
    bool connected = false;
    std::optional<av::Error> problem;
};

} // namespace

QString RecordDemo::claimNewFile(const QString& folder, QString* problem) {
    return claimNewFile(folder, QStringLiteral("Tessaro Demo"), QStringLiteral("mov"), problem);
}

QString RecordDemo::claimNewFile(const QString& folder, const QString& name, const QString& suffix,
                                 QString* problem) {
    const QDir dir(folder);
    if (!QDir().mkpath(folder)) {
        if (problem)
            *problem = qtTrId("rec_cannot_create_folder").arg(folder);
        return {};
    }
    for (int n = 1; n < 10000; ++n) {
        const QString path =
            dir.filePath(n == 1 ? QStringLiteral("%1.%2").arg(name, suffix)
                                : QStringLiteral("%1 %2.%3").arg(name).arg(n).arg(suffix));
        if (claim(path, problem))
            return path;
        if (!QFileInfo::exists(path))
            return {};
    }
    if (problem)
        *problem = qtTrId("rec_holds_too_many_named").arg(folder, name);
    return {};
}

QString RecordDemo::claimFile(const QString& path, QString* problem) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!QDir().mkpath(QFileInfo(absolute).absolutePath())) {
        if (problem)
            *problem = qtTrId("rec_cannot_create_folder_2").arg(QFileInfo(absolute).absolutePath());
        return {};
    }
    return claim(absolute, problem) ? absolute : QString();
}

QString RecordDemo::contactSheetPath(const QString& clipPath) {
    const QFileInfo info(clipPath);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(" contact sheet.png"));
}

int RecordDemo::run(const Options& options) {
    // Where the clip goes, claimed before anything is recorded.
    QString problem;
    QString output;
    if (options.output.isEmpty()) {
        output = claimNewFile(foundation::FileManager::documentsDirectory(), &problem);
    } else {
        output = claimFile(options.output, &problem);
    }
    if (output.isEmpty()) {
        err() << problem << Qt::endl;
        return 2;
    }
    // Until something is recorded into it, the claimed file goes again on every way out.
    bool keepOutput = false;
    const auto releaseOutput = qScopeGuard([&] {
        if (!keepOutput)
            QFile::remove(output);
    });

    // A private settings and documents folder for the run. The clip is recorded in a folder
    // beside the output, on the same file system, so that it can be renamed onto the output at
    // the start and then grows there: whatever ends the run, the output is a playable movie.
    QTemporaryDir work;
    QTemporaryDir recordingFolder(
        QFileInfo(output).dir().filePath(QStringLiteral(".tessaro-XXXXXX")));
    if (!work.isValid() || !recordingFolder.isValid()) {
        err() << qtTrId("rec_cannot_create_temporary_folder")
                     .arg(work.isValid() ? recordingFolder.errorString() : work.errorString())
              << Qt::endl;
        return 1;
    }
    qputenv("TESSARO_CONFIG_DIR", QFile::encodeName(work.filePath(QStringLiteral("config"))));
    qputenv("TESSARO_DOCUMENTS_DIR", QFile::encodeName(work.filePath(QStringLiteral("documents"))));
    foundation::Preferences::resetStandardForTesting();
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(foundation::PreferenceSchema::zoomDuration, float(options.duration));
    defaults.setInteger(foundation::PreferenceSchema::zoomMode,
                        int(options.zoomIn ? ZoomMode::zoomIn : ZoomMode::zoomOut));
    // The screen runs the stored format from the camera's start, as at every launch.
    defaults.setInteger(foundation::PreferenceSchema::videoMode, int(options.videoMode));

    // The run prints where its clip is; there is nobody to watch it loop.
    ui::Storyboard::unregisterFactory(QStringLiteral("Main"),
                                      QStringLiteral("VideoPreviewViewController"));
    auto* screen = new CameraViewController;
    ui::Window window;
    window.setRootViewController(screen);
    window.resize(390, 844);
    window.makeKeyAndVisible();
    if (auto* application = ui::Application::shared())
        application->watchTerminationSignals();

    const auto frames = [screen] {
        return screen->previewView ? screen->previewView->framesTaken() : quint64(0);
    };
    CameraWatch camera(screen);
    const auto cameraFailed = [&] {
        err() << qtTrId("rec_camera_failed_nothing_recorded").arg(camera.description()) << Qt::endl;
        return 1;
    };
    if (!waitFor([&] { return camera.failed() || (screen->videoSession() && frames() > 2); },
                 secondsForCamera, window)) {
        err() << qtTrId("rec_no_picture_came_camera").arg(secondsForCamera) << Qt::endl;
        return window.isVisible() ? 1 : 130;
    }
    if (camera.failed())
        return cameraFailed();
    CKFVideoSession* session = screen->videoSession();
    // A camera without the format runs its nearest one: HD's stand-in is recorded (the first line
    // says which), a missing HD60 or 4K is refused.
    if (options.videoMode != VideoMode::hd &&
        !screen->formatChoicesOffered().exact[int(options.videoMode)]) {
        QStringList offered;
        for (const CameraViewController::OfferedFormat& format : screen->offeredFormats())
            offered << format.title;
        err() << qtTrId("rec_camera_has_no_records")
                     .arg(QString::fromLatin1(
                              CameraViewController::videoFormat(options.videoMode).title),
                          offered.join(QStringLiteral(", ")))
              << Qt::endl;
        return 2;
    }
    // The pipeline switches format on the next turn of the event loop; wait for its pictures.
    QCoreApplication::processEvents();
    const quint64 beforeSwitch = frames();
    if (!waitFor([&] { return camera.failed() || frames() > beforeSwitch + 5; }, secondsForCamera,
                 window) ||
        camera.failed()) {
        if (camera.failed())
            return cameraFailed();
        err() << qtTrId("rec_camera_stopped_after_format") << Qt::endl;
        return window.isVisible() ? 1 : 130;
    }

    // Nobody sees the offscreen window: drawing the preview would convert every frame on the
    // main thread for nothing. The camera's frames are still taken, so the counts above hold.
    if (screen->previewView)
        screen->previewView->hide();

    ui::Slider* slider = screen->zoomSlider;
    if (options.zoom < 1.0 || options.zoom > double(slider->maximumValue())) {
        err() << qtTrId("rec_zoom_outside_what_format")
                     .arg(options.zoom)
                     .arg(double(slider->maximumValue()))
              << Qt::endl;
        return 2;
    }
    slider->setValue(float(options.zoom));
    slider->sendActions(ui::Control::valueChanged);

    ZoomLog zoomLog;
    if (GstElement* stage = session->cameraDevice()->zoomStage())
        zoomLog.attach(stage);

    QUrl clip;
    QObject::connect(screen, &CameraViewController::clipFinished,
                     [&clip](const QUrl& url) { clip = url; });
    // What the camera really runs, which may stand in for the format asked for.
    const av::CaptureDevice* device = session->cameraDevice();
    const struct {
        QString title;
        int width, height;
        double frameRate;
    } format{screen->hdButton->currentTitle(), device->activeFormat().width,
             device->activeFormat().height, device->activeVideoMinFrameDuration().frameRate()};
    out() << qtTrId("rec_recording_s_ramp_fps")
                 .arg(options.duration)
                 .arg(options.zoomIn ? qtTrId("rec_zoom").arg(formatZoom(options.zoom))
                                     : qtTrId("rec_zoom_out").arg(formatZoom(options.zoom)))
                 .arg(format.title)
                 .arg(format.width)
                 .arg(format.height)
                 .arg(format.frameRate)
                 .arg(device->localizedName())
          << Qt::endl;
    qputenv("TESSARO_DOCUMENTS_DIR", QFile::encodeName(recordingFolder.path()));
    screen->cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
    const av::CaptureMovieFileOutput* movie = session->movieFileOutput();
    const QString recording = movie->outputFileURL().toLocalFile();
    // The movie's file, open in the recorder, takes the claimed name at once.
    const bool intoOutput =
        !recording.isEmpty() && ::rename(QFile::encodeName(recording).constData(),
                                         QFile::encodeName(output).constData()) == 0;
    const QString renameProblem = recording.isEmpty()
                                      ? qtTrId("rec_recording_did_not_start")
                                      : QString::fromLocal8Bit(std::strerror(errno));
    recordingFolder.remove();
    if (!intoOutput) {
        if (screen->previewView)
            screen->previewView->setSession(nullptr);
        err() << qtTrId("rec_recording_could_not_start")
                     .arg(output, movie->lastError() ? movie->lastError()->localizedDescription()
                                                     : renameProblem)
              << Qt::endl;
        return 1;
    }

    const bool finished =
        waitFor([&] { return !movie->isRecording(); }, options.duration + secondsForFinish, window);
    zoomLog.detach();
    if (!finished) {
        const bool interrupted = !window.isVisible();
        // Stopping the session finishes the movie, so whatever was recorded is kept.
        if (screen->previewView)
            screen->previewView->setSession(nullptr);
        keepOutput = movie->framesWritten() > 0;
        if (keepOutput)
            err() << qtTrId("rec_stopped_before_ramp_ended").arg(output) << Qt::endl;
        else
            err() << qtTrId("rec_stopped_before_any_picture") << Qt::endl;
        return interrupted ? 130 : 1;
    }
    keepOutput = movie->framesWritten() > 0;
    if (clip.isEmpty() || movie->lastError()) {
        // The recorder knows the clip by the name it was started with, in a folder now gone.
        const QString reason =
            movie->lastError()
                ? movie->lastError()->localizedDescription().replace(recording, output)
                : qtTrId("rec_recording_did_not_finish");
        if (keepOutput)
            err() << qtTrId("rec_what_recorded").arg(reason, output) << Qt::endl;
        else
            err() << qtTrId("rec_no_clip_written").arg(reason) << Qt::endl;
        return 1;
    }

    const std::vector<ZoomLog::Entry> zooms =
        zoomLog.between(movie->firstFrameTime(), movie->lastFrameTime());
    const double length =
        av::AssetImageGenerator(QUrl::fromLocalFile(output)).duration().value_or(0.0);
    out() << output << Qt::endl;
    out() << qtTrId("rec_length_s").arg(QString::number(length, 'f', 2)) << Qt::endl;
    out() << qtTrId("rec_frames_written_dropped")
                 .arg(movie->framesWritten())
                 .arg(movie->framesDropped())
          << Qt::endl;
    if (GST_CLOCK_TIME_IS_VALID(movie->requestTime()) &&
        GST_CLOCK_TIME_IS_VALID(movie->firstFrameTime()))
        out() << qtTrId("rec_start_first_frame_taken")
                     .arg(formatMilliseconds(movie->firstFrameTime() - movie->requestTime()))
              << Qt::endl;
    out() << qtTrId("rec_size_mb")
                 .arg(QString::number(double(QFileInfo(output).size()) / 1e6, 'f', 1))
          << Qt::endl;
    if (!zooms.empty())
        out() << qtTrId("rec_zoom_first_frame_last")
                     .arg(formatZoom(zooms.front().zoom), formatZoom(zooms.back().zoom))
              << Qt::endl;
    if (const auto reference =
            unzoomedPicture(options.camera, QSize(format.width, format.height))) {
        const av::AssetImageGenerator frames(QUrl::fromLocalFile(output));
        // The movie's time starts at its first frame; a millisecond in is safely inside a frame.
        const double lastAt =
            double(movie->lastFrameTime() - movie->firstFrameTime()) / GST_SECOND + 0.001;
        const double first =
            av::PictureZoom::measure(frames.imageAt(0.001, format.width), *reference, options.zoom);
        const double last = av::PictureZoom::measure(frames.imageAt(lastAt, format.width),
                                                     *reference, options.zoom);
        out() << qtTrId("rec_pixels_first_frame_last").arg(formatZoom(first), formatZoom(last))
              << Qt::endl;
    }
    // Written after the clip is complete: a sheet that fails leaves the clip as it is.
    const QString sheet = contactSheetPath(output);
    if (!QFileInfo::exists(sheet) && writeContactSheet(output, sheet, length, zooms))
        out() << qtTrId("rec_sheet").arg(sheet) << Qt::endl;
    else
        err() << qtTrId("rec_contact_sheet_could_not").arg(sheet) << Qt::endl;
    return 0;
}
