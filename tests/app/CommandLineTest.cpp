#include "app/RecordDemo.h"
#include "tests/MovieInfo.h"

#include <QDate>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QUrl>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <unistd.h>
#include <utility>

namespace {

struct Result {
    int exitCode;
    QString out;
};

// Runs the real program as a user would, without any display.
Result runTessaro(const QStringList& arguments,
                  const QList<std::pair<QString, QString>>& variables = {}) {
    QTemporaryDir config;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    environment.insert(QStringLiteral("TESSARO_CONFIG_DIR"), config.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TESSARO_BINARY), arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())};
}

// Starts `tessaro record` on the virtual camera into clip, for a test that watches it run.
void startRecording(QProcess& process, const QTemporaryDir& folder, const QString& clip,
                    int seconds) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TESSARO_CONFIG_DIR"), folder.path());
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSARO_BINARY),
                  {QStringLiteral("record"), QStringLiteral("--duration"), QString::number(seconds),
                   QStringLiteral("--camera"), QStringLiteral("virtual"),
                   QStringLiteral("--output"), clip});
}

// Each answer works without a display, and says what it is about.
TEST(CommandLine, answersWithoutADisplay) {
    const struct {
        QStringList arguments;
        int exitCode;
        QString says;
    } rows[] = {
        {{QStringLiteral("--help")}, 0, QStringLiteral("--camera")},
        {{QStringLiteral("--version")}, 0, QStringLiteral(TESSARO_VERSION)},
        {{}, 2, QStringLiteral("needs a display")},
        {{QStringLiteral("--no-such-option")}, 1, QStringLiteral("no-such-option")},
    };
    for (const auto& row : rows) {
        const Result result = runTessaro(row.arguments);
        EXPECT_EQ(result.exitCode, row.exitCode) << result.out.toStdString();
        EXPECT_TRUE(result.out.contains(row.says)) << result.out.toStdString();
    }
}

TEST(CommandLine, listCamerasNamesEachCameraWithItsFormatsAndPositionWithoutADisplay) {
    const Result result = runTessaro({QStringLiteral("--list-cameras")});
    EXPECT_EQ(result.exitCode, 0);
    // The virtual cameras are always there to choose.
    for (const char* expected :
         {"Virtual back camera — back — --camera virtual", "Virtual front camera — front",
          "3840×2160", "1–60 fps", "Microphones:", "Virtual microphone"})
        EXPECT_TRUE(result.out.contains(QString::fromUtf8(expected))) << expected << "\n"
                                                                      << result.out.toStdString();
}

// A German desktop gets German texts from the program and its command line, and the command line
// still reads numbers with a decimal point, as scripts write them.
TEST(CommandLine, speaksGermanOnAGermanDesktopAndReadsNumbersAlike) {
    const QList<std::pair<QString, QString>> german = {
        {QStringLiteral("LANGUAGE"), QStringLiteral("de")},
        {QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8")}};
    const Result help = runTessaro({QStringLiteral("--help")}, german);
    EXPECT_TRUE(help.out.contains(QStringLiteral("Mit der Kamera NAME aufnehmen")))
        << help.out.toStdString();
    const Result cameras = runTessaro({QStringLiteral("--list-cameras")}, german);
    EXPECT_TRUE(cameras.out.contains(QString::fromUtf8("Virtuelle Rückkamera — hinten")))
        << cameras.out.toStdString();
    const Result tooFar = runTessaro(
        {QStringLiteral("record"), QStringLiteral("--zoom"), QStringLiteral("99.5")}, german);
    EXPECT_EQ(tooFar.exitCode, 2);
    EXPECT_TRUE(tooFar.out.contains(QStringLiteral("--zoom nimmt"))) << tooFar.out.toStdString();
    // A decimal comma, as a German user types it, reads as the same number.
    const Result comma = runTessaro(
        {QStringLiteral("record"), QStringLiteral("--zoom"), QStringLiteral("99,5")}, german);
    EXPECT_EQ(comma.exitCode, 2);
    EXPECT_TRUE(comma.out.contains(QStringLiteral("--zoom nimmt"))) << comma.out.toStdString();
}

TEST(CommandLine, screenshotsAreDrawnOffscreenFromTheVirtualCamera) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("preview.png"));
    const Result shot =
        runTessaro({QStringLiteral("--screenshot"), QStringLiteral("preview"), file});
    EXPECT_EQ(shot.exitCode, 0) << shot.out.toStdString();
    EXPECT_TRUE(shot.out.contains(file)) << shot.out.toStdString();
    const QImage image(file);
    EXPECT_EQ(image.size(), QSize(390, 844));
    // The camera's picture fills the view: no black bars.
    for (const QPoint point : {QPoint(195, 2), QPoint(195, 841), QPoint(2, 422)})
        EXPECT_NE(image.pixelColor(point), QColor(Qt::black)) << point.x() << "," << point.y();

    const Result unknown =
        runTessaro({QStringLiteral("--screenshot"), QStringLiteral("no-such-screen"), file});
    EXPECT_EQ(unknown.exitCode, 2);
    for (const char* name : {"preview", "preview-landscape", "grid"})
        EXPECT_TRUE(unknown.out.contains(QLatin1String(name))) << unknown.out.toStdString();
}

// The zooms of a "  NAME  3.000× on the first frame, 1.000× on the last" line.
std::optional<std::pair<double, double>> firstAndLastZoom(const QString& out, const char* name) {
    const QRegularExpression line(QStringLiteral("^  %1 +([0-9.]+)× on the first frame, ([0-9.]+)× "
                                                 "on the last$")
                                      .arg(QLatin1String(name)),
                                  QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(out);
    if (!match.hasMatch())
        return std::nullopt;
    return std::make_pair(match.captured(1).toDouble(), match.captured(2).toDouble());
}

TEST(CommandLine, recordMakesAClipOfTheRampsLengthWithASheetBesideIt) {
    QTemporaryDir folder;
    // A missing folder is created; the decimal comma reads like a point.
    const QString clip = folder.filePath(QStringLiteral("new folder/clip.mov"));
    const Result result =
        runTessaro({QStringLiteral("record"), QStringLiteral("--duration"), QStringLiteral("2"),
                    QStringLiteral("--zoom"), QStringLiteral("3,0"), QStringLiteral("--camera"),
                    QStringLiteral("virtual"), QStringLiteral("--output"), clip});
    ASSERT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(clip)) << result.out.toStdString();
    // The ramp's clock starts with the first frame, so that frame shows the start zoom within
    // one 10 ms tick (0.01× here). The movie ends with the first frame taken after the ramp's
    // end; on a loaded machine the encoder may have to let that one go, so the last frame is
    // held to one frame of the ramp (a thirtieth of 2.0 a second). The pixels are read to a few
    // thousandths.
    const double tickOfRamp = 2.0 / 2 / 100 + 0.005;
    const double frameOfRamp = 2.0 / 2 / 30 + 0.005;
    for (const char* line : {"zoom", "pixels"}) {
        SCOPED_TRACE(line);
        const std::optional<std::pair<double, double>> zooms = firstAndLastZoom(result.out, line);
        ASSERT_TRUE(zooms) << result.out.toStdString();
        EXPECT_NEAR(zooms->first, 3.0, tickOfRamp);
        EXPECT_NEAR(zooms->second, 1.0, frameOfRamp);
    }

    const MovieInfo movie = inspectMovie(clip);
    EXPECT_EQ(movie.videoCodec, QStringLiteral("video/x-h264"));
    EXPECT_EQ(movie.audioCodec, QStringLiteral("audio/mpeg"));
    EXPECT_GE(movie.seconds, 2.0);
    EXPECT_LE(movie.seconds, 2.2);
    const QImage sheet(folder.filePath(QStringLiteral("new folder/clip contact sheet.png")));
    EXPECT_GT(sheet.width(), 4 * sheet.height()) << "five frames side by side";

    // The clip is never replaced, and nothing is recorded for bad options.
    const Result again = runTessaro({QStringLiteral("record"), QStringLiteral("--camera"),
                                     QStringLiteral("virtual"), QStringLiteral("--output"), clip});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_TRUE(again.out.contains(QStringLiteral("exists"))) << again.out.toStdString();
    const QString empty = folder.filePath(QStringLiteral("empty.png"));
    QFile(empty).open(QIODevice::WriteOnly);
    const QString refusedClip = folder.filePath(QStringLiteral("refused.mov"));
    const struct {
        QStringList arguments;
        const char* says;
    } bad[] = {
        {{QStringLiteral("--duration"), QStringLiteral("16")}, "--duration"},
        {{QStringLiteral("--duration"), QStringLiteral("2.5")}, "--duration"},
        {{QStringLiteral("--zoom"), QStringLiteral("0.9")}, "--zoom"},
        {{QStringLiteral("--zoom"), QStringLiteral("many")}, "--zoom"},
        {{QStringLiteral("--format"), QStringLiteral("8k")}, "--format"},
        // The highest zoom depends on the format, however the options are ordered.
        {{QStringLiteral("--zoom"), QStringLiteral("10")}, "to 4 at HD"},
        {{QStringLiteral("--zoom"), QStringLiteral("9"), QStringLiteral("--format"),
          QStringLiteral("4k")},
         "to 8 at 4K"},
        {{QStringLiteral("--camera"), QStringLiteral("file:") + empty}, "is empty"},
        // A script can tell, and learns what is there.
        {{QStringLiteral("--camera"), QStringLiteral("No Such Camera")},
         "no camera “No Such Camera”"},
        {{QStringLiteral("--camera"), QStringLiteral("/dev/no-such-video")}, "--camera virtual"},
    };
    for (const auto& row : bad) {
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        const Result refused = runTessaro(QStringList{QStringLiteral("record")} + row.arguments +
                                          QStringList{QStringLiteral("--output"), refusedClip});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_TRUE(refused.out.contains(QString::fromUtf8(row.says))) << refused.out.toStdString();
        EXPECT_FALSE(QFile::exists(refusedClip));
    }
}

// Killed outright or by a closed terminal mid-ramp, the run leaves a playable clip at the
// output and nothing else beside it.
TEST(CommandLine, recordLeavesAPlayableClipWhateverEndsIt) {
    for (const int signal : {SIGKILL, SIGHUP}) {
        SCOPED_TRACE(signal);
        QTemporaryDir folder;
        const QString clip = folder.filePath(QStringLiteral("clip.mov"));
        QProcess process;
        startRecording(process, folder, clip, 10);
        // Pictures are going in once the file outgrows the header space saved at its front.
        QDeadlineTimer deadline(30000);
        while (QFileInfo(clip).size() < 2'000'000 && !deadline.hasExpired() &&
               process.state() != QProcess::NotRunning)
            QThread::msleep(50);
        ASSERT_GE(QFileInfo(clip).size(), 2'000'000) << process.readAll().toStdString();
        // The header is rewritten every second.
        QThread::msleep(1500);
        ::kill(pid_t(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(30000));
        const QString out = QString::fromUtf8(process.readAll());
        if (signal == SIGHUP) {
            EXPECT_EQ(process.exitCode(), 130) << out.toStdString();
            EXPECT_TRUE(out.contains(clip)) << out.toStdString();
        }
        const MovieInfo movie = inspectMovie(clip);
        EXPECT_EQ(movie.videoCodec, QStringLiteral("video/x-h264"));
        EXPECT_GE(movie.seconds, 1.0);
        EXPECT_EQ(
            QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{QStringLiteral("clip.mov")});
    }
}

// A still from the virtual camera, as a user asks for it: decoded back, it is the size asked for
// once its EXIF turn is applied, and the subject's face is among the rectangles printed.
TEST(CommandLine, photoTakesOneStillAtTheAskedSizeWithItsFacesAndKeepsTheRules) {
    QTemporaryDir folder;
    const QString photo = folder.filePath(QStringLiteral("new folder/still.jpg"));
    const QStringList asked{QStringLiteral("photo"),     QStringLiteral("--camera"),
                            QStringLiteral("virtual"),   QStringLiteral("--resolution"),
                            QStringLiteral("1080x1920"), QStringLiteral("--zoom"),
                            QStringLiteral("1,5"),       QStringLiteral("--faces"),
                            QStringLiteral("--output"),  photo};
    const QDate before = QDate::currentDate();
    const Result result = runTessaro(asked);
    const QDate after = QDate::currentDate();
    ASSERT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(photo)) << result.out.toStdString();

    QImageReader reader(photo);
    reader.setAutoTransform(true);
    EXPECT_EQ(reader.transformation(), QImageIOHandler::TransformationRotate90);
    const QImage shown = reader.read();
    EXPECT_EQ(shown.size(), QSize(1080, 1920));
    // Upright, not the scene on its side: the subject's orange jacket fills the bottom middle,
    // beside its zip.
    const QColor jacket = shown.pixelColor(400, 1700);
    EXPECT_TRUE(jacket.red() > 180 && jacket.red() - jacket.blue() > 100)
        << jacket.name().toStdString();
    QFile file(photo);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // The EXIF segment leads, with the day the photo was taken.
    const QByteArray head = file.read(4096);
    EXPECT_TRUE(head.mid(0, 16).contains("Exif"));
    const auto day = [](QDate date) {
        return date.toString(QStringLiteral("yyyy:MM:dd")).toLatin1();
    };
    EXPECT_TRUE(head.contains(day(before)) || head.contains(day(after)));

    // The face at 1.5× zoom stays where the subject stands: the middle of the picture, high up.
    static const QRegularExpression face(
        QStringLiteral("left ([0-9.]+), top ([0-9.]+), width ([0-9.]+), height ([0-9.]+)"));
    const QRegularExpressionMatch found = face.match(result.out);
    ASSERT_TRUE(found.hasMatch()) << result.out.toStdString();
    const QRectF box(found.captured(1).toDouble(), found.captured(2).toDouble(),
                     found.captured(3).toDouble(), found.captured(4).toDouble());
    EXPECT_TRUE(box.contains(QPointF(0.5, 0.3))) << result.out.toStdString();

    // Never replaced; a wrong command line changes nothing and says why.
    const struct {
        QStringList arguments;
        QString says;
    } refused[] = {
        {asked, QStringLiteral("exists already")},
        {{QStringLiteral("photo"), QStringLiteral("--resolution"), QStringLiteral("1080x")},
         QStringLiteral("--resolution takes")},
        {{QStringLiteral("photo"), QStringLiteral("--resolution"), QStringLiteral("0x10")},
         QStringLiteral("--resolution takes")},
        {{QStringLiteral("photo"), QStringLiteral("--zoom"), QStringLiteral("10,5")},
         QStringLiteral("--zoom takes")},
        {{QStringLiteral("photo"), QStringLiteral("now")}, QStringLiteral("options only")},
    };
    for (const auto& row : refused) {
        const Result again = runTessaro(row.arguments);
        EXPECT_EQ(again.exitCode, 2) << again.out.toStdString();
        EXPECT_TRUE(again.out.contains(row.says)) << again.out.toStdString();
    }
    EXPECT_EQ(QImageReader(photo).size(), QSize(1920, 1080));
    EXPECT_EQ(QDir(folder.filePath(QStringLiteral("new folder"))).entryList(QDir::Files),
              QStringList{QStringLiteral("still.jpg")});
}

// Without a face model the photo is still taken, and the user is told why no face is listed.
TEST(CommandLine, photoWithoutAFaceModelSaysSoAndTakesThePhoto) {
    QTemporaryDir folder;
    const QString photo = folder.filePath(QStringLiteral("still.jpg"));
    const Result result =
        runTessaro({QStringLiteral("photo"), QStringLiteral("--camera"), QStringLiteral("virtual"),
                    QStringLiteral("--faces"), QStringLiteral("--output"), photo},
                   {{QStringLiteral("TESSARO_FACE_MODEL_DIR"), folder.path()}});
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(QStringLiteral("no face model"))) << result.out.toStdString();
    EXPECT_FALSE(QImageReader(photo).size().isEmpty());
}

// Each run claims its own name in one step, so two at once never share a clip.
TEST(CommandLine, theDefaultOutputIsANewNameForEachRun) {
    QTemporaryDir folder;
    QString problem;
    const QString first = RecordDemo::claimNewFile(folder.path(), &problem);
    const QString second = RecordDemo::claimNewFile(folder.path(), &problem);
    EXPECT_EQ(QFileInfo(first).fileName(), QStringLiteral("Tessaro Demo.mov"));
    EXPECT_EQ(QFileInfo(second).fileName(), QStringLiteral("Tessaro Demo 2.mov"));
    EXPECT_TRUE(QFile::exists(first) && QFile::exists(second));
    EXPECT_TRUE(RecordDemo::claimNewFile(folder.filePath(QStringLiteral("a/b")), &problem)
                    .endsWith(QStringLiteral("a/b/Tessaro Demo.mov")));
}

} // namespace
