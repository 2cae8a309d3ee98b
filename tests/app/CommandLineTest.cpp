#include "app/RecordDemo.h"
#include "tests/MovieInfo.h"

#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

using Variables = QList<std::pair<QString, QString>>;

struct Result {
    int exitCode;
    QString out;
};

QStringList words(const char* line) {
    return QString::fromUtf8(line).split(u' ', Qt::SkipEmptyParts);
}

// Starts the real program as a user would, without any display and with settings in config.
void start(QProcess& process, const QStringList& arguments, const QString& config,
           const Variables& variables = {}) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    environment.insert(QStringLiteral("TESSARO_CONFIG_DIR"), config);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSARO_BINARY), arguments);
}

Result runTessaro(const QStringList& arguments, const Variables& variables = {}) {
    QTemporaryDir config;
    QProcess process;
    start(process, arguments, config.path(), variables);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), QString::fromUtf8(process.readAll())};
}

// The main thread's CPU so far, in seconds, from the child's /proc; -1 once it is gone.
double mainThreadCpu(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/task/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return fields.size() < 13 ? -1
                              : double(fields[11].toLongLong() + fields[12].toLongLong()) /
                                    double(sysconf(_SC_CLK_TCK));
}

// A command line refused as a whole: it exits with 2 and says what it refuses.
void expectRefused(const QStringList& arguments, const char* says) {
    SCOPED_TRACE(arguments.join(u' ').toStdString());
    const Result result = runTessaro(arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.out.contains(QString::fromUtf8(says))) << result.out.toStdString();
}

// Each answer works without a display and says what it is about; a German desktop gets German
// texts.
TEST(CommandLine, answersWithoutADisplay) {
    const Variables german = {{QStringLiteral("LANGUAGE"), QStringLiteral("de")},
                              {QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8")}};
    const struct {
        const char* line;
        int exitCode;
        std::vector<const char*> says;
        bool german = false;
    } rows[] = {
        {"--help", 0, {"--camera"}},
        {"--version", 0, {TESSARO_VERSION}},
        {"", 2, {"needs a display"}},
        {"--no-such-option", 1, {"no-such-option"}},
        // The virtual cameras are always there to choose.
        {"--list-cameras",
         0,
         {"Virtual back camera — back — --camera virtual", "Virtual front camera — front",
          "3840×2160", "1–60 fps", "Microphones:", "Virtual microphone"}},
        {"--screenshot no-such-screen unknown.png", 2, {"preview", "preview-landscape", "grid"}},
        {"--help", 0, {"Mit der Kamera NAME aufnehmen"}, true},
        {"--list-cameras", 0, {"Virtuelle Rückkamera — hinten"}, true},
        {"record --zoom 99.5", 2, {"--zoom nimmt"}, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        const Result result = runTessaro(words(row.line), row.german ? german : Variables());
        EXPECT_EQ(result.exitCode, row.exitCode) << result.out.toStdString();
        for (const char* says : row.says)
            EXPECT_TRUE(result.out.contains(QString::fromUtf8(says))) << says << "\n"
                                                                      << result.out.toStdString();
    }
}

TEST(CommandLine, screenshotsAreDrawnOffscreenFromTheVirtualCamera) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("preview.png"));
    const Result shot = runTessaro(words("--screenshot preview") << file);
    EXPECT_EQ(shot.exitCode, 0) << shot.out.toStdString();
    EXPECT_TRUE(shot.out.contains(file)) << shot.out.toStdString();
    const QImage image(file);
    EXPECT_EQ(image.size(), QSize(390, 844));
    // The camera's picture fills the view: no black bars.
    for (const QPoint point : {QPoint(195, 2), QPoint(195, 841), QPoint(2, 422)})
        EXPECT_NE(image.pixelColor(point), QColor(Qt::black)) << point.x() << "," << point.y();
}

TEST(CommandLine, recordMakesAClipOfTheRampsLengthWithASheetBesideIt) {
    QTemporaryDir folder;
    // A missing folder is created; the decimal comma reads like a point.
    const QString clip = folder.filePath(QStringLiteral("new folder/clip.mov"));
    QProcess process;
    start(process, words("record --duration 2 --zoom 3,0 --camera virtual --output") << clip,
          folder.path());
    // While the camera records, the main thread sleeps until the take's end, on any machine.
    QByteArray out;
    double cpuAtPress = -1, cpuAtEnd = -1;
    QElapsedTimer take;
    while (cpuAtEnd < 0 && process.waitForReadyRead(30000)) {
        out += process.readAll();
        if (cpuAtPress < 0 && out.contains("Recording")) {
            cpuAtPress = mainThreadCpu(process.processId());
            take.start();
        }
        if (cpuAtPress >= 0 && out.contains(clip.toUtf8()))
            cpuAtEnd = mainThreadCpu(process.processId());
    }
    ASSERT_TRUE(process.waitForFinished(30000));
    const Result result{process.exitCode(), QString::fromUtf8(out + process.readAll())};
    ASSERT_EQ(result.exitCode, 0) << result.out.toStdString();
    ASSERT_GE(cpuAtEnd, 0) << result.out.toStdString();
    EXPECT_LT(cpuAtEnd - cpuAtPress, double(take.elapsed()) / 2000.0);
    EXPECT_TRUE(result.out.contains(clip)) << result.out.toStdString();
    // The first frame shows the start zoom within one 10 ms tick of the ramp; a loaded machine may
    // lose the last frame, so that one is held to a frame of the ramp. Pixels read to 0.005.
    const double tickOfRamp = 2.0 / 2 / 100 + 0.005;
    const double frameOfRamp = 2.0 / 2 / 30 + 0.005;
    for (const char* name : {"zoom", "pixels"}) {
        const QRegularExpressionMatch zooms =
            QRegularExpression(
                QStringLiteral("^  %1 +([0-9.]+)× on the first frame, ([0-9.]+)× on the last$")
                    .arg(QLatin1String(name)),
                QRegularExpression::MultilineOption)
                .match(result.out);
        ASSERT_TRUE(zooms.hasMatch()) << name << "\n" << result.out.toStdString();
        EXPECT_NEAR(zooms.captured(1).toDouble(), 3.0, tickOfRamp) << name;
        EXPECT_NEAR(zooms.captured(2).toDouble(), 1.0, frameOfRamp) << name;
    }

    const MovieInfo movie = inspectMovie(clip);
    EXPECT_EQ(movie.videoCodec, QStringLiteral("video/x-h264"));
    EXPECT_EQ(movie.audioCodec, QStringLiteral("audio/mpeg"));
    EXPECT_GE(movie.seconds, 2.0);
    EXPECT_LE(movie.seconds, 2.2);
    const QImage sheet(folder.filePath(QStringLiteral("new folder/clip contact sheet.png")));
    EXPECT_GT(sheet.width(), 4 * sheet.height()) << "five frames side by side";

    // The clip is never replaced, and nothing is recorded for bad options.
    expectRefused(words("record --camera virtual --output") << clip, "exists");
    const QString empty = folder.filePath(QStringLiteral("empty.png"));
    QFile(empty).open(QIODevice::WriteOnly);
    const struct {
        QStringList arguments;
        const char* says;
    } refused[] = {
        {words("--duration 16"), "--duration"},
        {words("--duration 2.5"), "--duration"},
        {words("--zoom 0.9"), "--zoom"},
        {words("--zoom many"), "--zoom"},
        {words("--format 8k"), "--format"},
        // The highest zoom depends on the format, however the options are ordered.
        {words("--zoom 10"), "to 4 at HD"},
        {words("--zoom 9 --format 4k"), "to 8 at 4K"},
        {words("--camera") << QStringLiteral("file:") + empty, "is empty"},
        // A script can tell, and learns what is there.
        {words("--camera") << QStringLiteral("No Such Camera"), "no camera “No Such Camera”"},
        {words("--camera /dev/no-such-video"), "--camera virtual"},
    };
    const QString refusedClip = folder.filePath(QStringLiteral("refused.mov"));
    for (const auto& row : refused) {
        expectRefused(words("record") + row.arguments + words("--output") << refusedClip, row.says);
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
        start(process, words("record --duration 10 --camera virtual --output") << clip,
              folder.path());
        // Pictures are going in once the file outgrows the header space saved at its front.
        ASSERT_TRUE(QTest::qWaitFor([&] { return QFileInfo(clip).size() >= 2'000'000; }, 30000))
            << process.readAll().toStdString();
        // The header is rewritten every second.
        QTest::qWait(1500);
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
    const QStringList asked =
        words("photo --camera virtual --resolution 1080x1920 --zoom 1,5 --faces --output") << photo;
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
    const auto day = [](QDate date) { return date.toString(u"yyyy:MM:dd").toLatin1(); };
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
    expectRefused(asked, "exists already");
    for (const char* line : {"photo --resolution 1080x", "photo --resolution 0x10"})
        expectRefused(words(line), "--resolution takes");
    expectRefused(words("photo --zoom 10,5"), "--zoom takes");
    expectRefused(words("photo now"), "options only");
    EXPECT_EQ(QImageReader(photo).size(), QSize(1920, 1080));
    EXPECT_EQ(QDir(folder.filePath(QStringLiteral("new folder"))).entryList(QDir::Files),
              QStringList{QStringLiteral("still.jpg")});
}

// Without a face model the photo is still taken, and the user is told why no face is listed.
TEST(CommandLine, photoWithoutAFaceModelSaysSoAndTakesThePhoto) {
    QTemporaryDir folder;
    const QString photo = folder.filePath(QStringLiteral("still.jpg"));
    const Result result = runTessaro(words("photo --camera virtual --faces --output") << photo,
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
