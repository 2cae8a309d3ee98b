#include "app/RecordDemo.h"

#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/AssetImageGenerator.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/ZoomFilter.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Application.h"
#include "platform/ui/Button.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Window.h"
#include "recording/CameraButton.h"
#include "recording/CameraViewController.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

constexpr int secondsForCamera = 15;
// Beyond the ramp: the encoder's tail and the file's completion.
constexpr int secondsForFinish = 30;
constexpr int sheetFrames = 5;
constexpr int sheetFrameWidth = 384;

QString tr(const char* text) {
    return QCoreApplication::translate("RecordDemo", text);
}

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
    QDeadlineTimer deadline(seconds * 1000);
    while (!done()) {
        if (deadline.hasExpired() || !window.isVisible())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
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

// Moves a finished file, across file systems too; never replaces one.
bool moveFile(const QString& from, const QString& to) {
    if (QFile::exists(to))
        return false;
    if (QFile::rename(from, to))
        return true;
    return QFile::copy(from, to) && QFile::remove(from);
}

} // namespace

QString RecordDemo::unusedFileName(const QString& folder) {
    const QDir dir(folder);
    QString path = dir.filePath(QStringLiteral("Tessaro Demo.mov"));
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(QStringLiteral("Tessaro Demo %1.mov").arg(n));
    return path;
}

QString RecordDemo::contactSheetPath(const QString& clipPath) {
    const QFileInfo info(clipPath);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(" contact sheet.png"));
}

int RecordDemo::run(const Options& options) {
    // Where the clip goes, settled before anything is recorded.
    QString output = options.output.isEmpty()
                         ? unusedFileName(foundation::FileManager::documentsDirectory())
                         : QFileInfo(options.output).absoluteFilePath();
    if (QFileInfo::exists(output)) {
        err() << tr("%1 exists already; choose another --output, or remove it first.").arg(output)
              << Qt::endl;
        return 2;
    }
    if (!QDir().mkpath(QFileInfo(output).absolutePath())) {
        err() << tr("Cannot create the folder %1.").arg(QFileInfo(output).absolutePath())
              << Qt::endl;
        return 2;
    }

    // A private settings and documents folder for the run.
    QTemporaryDir work;
    if (!work.isValid()) {
        err() << tr("Cannot create a temporary folder: %1").arg(work.errorString()) << Qt::endl;
        return 1;
    }
    qputenv("TESSARO_CONFIG_DIR", QFile::encodeName(work.filePath(QStringLiteral("config"))));
    qputenv("TESSARO_DOCUMENTS_DIR", QFile::encodeName(work.filePath(QStringLiteral("documents"))));
    foundation::Preferences::resetStandardForTesting();
    foundation::Preferences& defaults = foundation::Preferences::standard();
    defaults.setFloat(QStringLiteral("zoomDuration"), float(options.duration));
    defaults.setInteger(QStringLiteral("zoomMode"), options.zoomIn ? 1 : 0);
    // One press of the format button brings it to the mode asked for, as a user would.
    defaults.setInteger(QStringLiteral("videoMode"), (options.videoMode + 2) % 3);

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
    if (!waitFor([&] { return screen->videoSession() && frames() > 2; }, secondsForCamera,
                 window)) {
        err() << tr("No picture came from the camera within %1 s; nothing was recorded.")
                     .arg(secondsForCamera)
              << Qt::endl;
        return 1;
    }
    CKFVideoSession* session = screen->videoSession();
    screen->hdButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
    // The pipeline switches format on the next turn of the event loop; wait for its pictures.
    QCoreApplication::processEvents();
    const quint64 beforeSwitch = frames();
    if (!waitFor([&] { return frames() > beforeSwitch + 5; }, secondsForCamera, window)) {
        err() << tr("The camera stopped after the format change; nothing was recorded.")
              << Qt::endl;
        return 1;
    }

    ui::Slider* slider = screen->zoomSlider;
    if (options.zoom <= 1.0 || options.zoom > double(slider->maximumValue())) {
        err() << tr("--zoom %1 is outside what this format zooms sharply: above 1.0 (where the "
                    "ramp would never end) and at most %2.")
                     .arg(options.zoom)
                     .arg(double(slider->maximumValue()))
              << Qt::endl;
        return 2;
    }
    slider->setValue(float(options.zoom));
    slider->sendActions(ui::Control::valueChanged);

    ZoomLog zoomLog;
    GstElement* pipeline = session->session()->pipeline();
    if (GstElement* stage = pipeline ? gst_bin_get_by_name(GST_BIN(pipeline), "zoom") : nullptr) {
        zoomLog.attach(stage);
        gst_object_unref(stage);
    }

    QUrl clip;
    QObject::connect(screen, &CameraViewController::clipFinished,
                     [&clip](const QUrl& url) { clip = url; });
    const CameraViewController::VideoFormat& format =
        CameraViewController::videoFormats[options.videoMode];
    out() << tr("Recording a %1 s %2 ramp at %3 (%4×%5, %6 fps) with the %7 camera…")
                 .arg(options.duration)
                 .arg(options.zoomIn ? tr("zoom-in from 1.0× to %1").arg(formatZoom(options.zoom))
                                     : tr("zoom-out from %1 to 1.0×").arg(formatZoom(options.zoom)))
                 .arg(QString::fromLatin1(format.title))
                 .arg(format.width)
                 .arg(format.height)
                 .arg(format.frameRate)
                 .arg(session->cameraPosition() == CKFSession::CameraPosition::back ? tr("back")
                                                                                    : tr("front"))
          << Qt::endl;
    screen->cameraButton->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);

    const bool finished =
        waitFor([&] { return !clip.isEmpty(); }, options.duration + secondsForFinish, window);
    zoomLog.detach();
    const av::CaptureMovieFileOutput* movie = session->movieFileOutput();
    if (!finished) {
        const bool interrupted = !window.isVisible();
        // Stopping the session finishes the movie, so whatever was recorded is kept.
        if (screen->previewView)
            screen->previewView->setSession(nullptr);
        const QString partial = CKFVideoSession::defaultFileURL().toLocalFile();
        if (QFileInfo::exists(partial) && moveFile(partial, output))
            err() << tr("Stopped before the ramp ended; the clip so far is %1").arg(output)
                  << Qt::endl;
        else
            err() << tr("The recording did not finish; no clip was written.") << Qt::endl;
        return interrupted ? 130 : 1;
    }
    if (!moveFile(clip.toLocalFile(), output)) {
        err() << tr("Could not move the clip to %1; it is still at %2.")
                     .arg(output, clip.toLocalFile())
              << Qt::endl;
        return 1;
    }

    const std::vector<ZoomLog::Entry> zooms =
        zoomLog.between(movie->firstFrameTime(), movie->lastFrameTime());
    const double length =
        av::AssetImageGenerator(QUrl::fromLocalFile(output)).duration().value_or(0.0);
    const QString sheet = contactSheetPath(output);
    const bool sheetWritten =
        !QFileInfo::exists(sheet) && writeContactSheet(output, sheet, length, zooms);

    out() << output << Qt::endl;
    out() << tr("  length  %1 s").arg(QString::number(length, 'f', 2)) << Qt::endl;
    out() << tr("  frames  %1 written, %2 dropped")
                 .arg(movie->framesWritten())
                 .arg(movie->framesDropped())
          << Qt::endl;
    out() << tr("  size    %1 MB")
                 .arg(QString::number(double(QFileInfo(output).size()) / 1e6, 'f', 1))
          << Qt::endl;
    if (!zooms.empty())
        out() << tr("  zoom    %1 on the first frame, %2 on the last")
                     .arg(formatZoom(zooms.front().zoom), formatZoom(zooms.back().zoom))
              << Qt::endl;
    if (sheetWritten)
        out() << tr("  sheet   %1").arg(sheet) << Qt::endl;
    else
        err() << tr("The contact sheet could not be written to %1.").arg(sheet) << Qt::endl;
    return 0;
}
