#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Result {
    int exitCode;
    QString out;
};

// Runs the real program as a user would, without any display.
Result runTessaro(const QStringList& arguments) {
    QTemporaryDir config;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("TESSARO_CONFIG_DIR"), config.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TESSARO_BINARY), arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())};
}

TEST(CommandLine, helpAndVersionWorkWithoutADisplay) {
    const Result help = runTessaro({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("--camera"))) << help.out.toStdString();
    EXPECT_TRUE(help.out.contains(QStringLiteral("--version")));

    const Result version = runTessaro({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.contains(QStringLiteral(TESSARO_VERSION))) << version.out.toStdString();
}

TEST(CommandLine, withoutADisplayTheAppSaysItNeedsOne) {
    const Result result = runTessaro({});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.out.contains(QStringLiteral("needs a display"))) << result.out.toStdString();
}

TEST(CommandLine, unknownOptionsAreRefused) {
    const Result result = runTessaro({QStringLiteral("--no-such-option")});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_TRUE(result.out.contains(QStringLiteral("no-such-option")));
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

} // namespace
