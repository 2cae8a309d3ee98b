#include "platform/av/Gst.h"

#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QUrl>
#include <gst/pbutils/pbutils.h>
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

// The stream types of a movie ("video/x-h264", "audio/mpeg" ...) and its pictures' length.
struct Movie {
    QStringList streams;
    double videoSeconds = 0;
};

Movie inspectMovie(const QString& path) {
    Movie movie;
    av::Gst::ensureInitialized();
    GError* error = nullptr;
    GstDiscoverer* discoverer = gst_discoverer_new(10 * GST_SECOND, &error);
    g_clear_error(&error);
    GstDiscovererInfo* info = gst_discoverer_discover_uri(
        discoverer, QUrl::fromLocalFile(path).toEncoded().constData(), &error);
    g_clear_error(&error);
    if (info) {
        GList* streams = gst_discoverer_info_get_stream_list(info);
        for (GList* item = streams; item; item = item->next) {
            auto* stream = GST_DISCOVERER_STREAM_INFO(item->data);
            if (GST_IS_DISCOVERER_CONTAINER_INFO(stream))
                continue;
            GstCaps* caps = gst_discoverer_stream_info_get_caps(stream);
            movie.streams << QString::fromUtf8(
                gst_structure_get_name(gst_caps_get_structure(caps, 0)));
            gst_caps_unref(caps);
        }
        gst_discoverer_stream_info_list_free(streams);
        movie.videoSeconds = double(gst_discoverer_info_get_duration(info)) / GST_SECOND;
        g_object_unref(info);
    }
    g_object_unref(discoverer);
    return movie;
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
    EXPECT_TRUE(result.out.contains(QStringLiteral("3.000× on the first frame")))
        << result.out.toStdString();

    const Movie movie = inspectMovie(clip);
    EXPECT_TRUE(movie.streams.contains(QStringLiteral("video/x-h264")))
        << movie.streams.join(' ').toStdString();
    EXPECT_TRUE(movie.streams.contains(QStringLiteral("audio/mpeg")))
        << movie.streams.join(' ').toStdString();
    EXPECT_GE(movie.videoSeconds, 2.0);
    EXPECT_LE(movie.videoSeconds, 2.2);
    const QImage sheet(folder.filePath(QStringLiteral("new folder/clip contact sheet.png")));
    EXPECT_GT(sheet.width(), 4 * sheet.height()) << "five frames side by side";

    // The clip is never replaced, and nothing is recorded for bad options.
    const Result again = runTessaro({QStringLiteral("record"), QStringLiteral("--camera"),
                                     QStringLiteral("virtual"), QStringLiteral("--output"), clip});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_TRUE(again.out.contains(QStringLiteral("exists"))) << again.out.toStdString();
    for (const QStringList& bad : {QStringList{QStringLiteral("--duration"), QStringLiteral("16")},
                                   QStringList{QStringLiteral("--duration"), QStringLiteral("2.5")},
                                   QStringList{QStringLiteral("--zoom"), QStringLiteral("1")},
                                   QStringList{QStringLiteral("--zoom"), QStringLiteral("many")},
                                   QStringList{QStringLiteral("--format"), QStringLiteral("8k")}}) {
        const Result refused = runTessaro(QStringList{QStringLiteral("record")} + bad);
        EXPECT_EQ(refused.exitCode, 2) << bad.join(' ').toStdString();
        EXPECT_TRUE(refused.out.contains(bad.first())) << refused.out.toStdString();
    }
}

} // namespace
