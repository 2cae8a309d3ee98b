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

} // namespace
