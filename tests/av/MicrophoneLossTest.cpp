#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/av/VirtualMicrophoneDevice.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace av;

struct Finish : CaptureMovieFileOutput::RecordingDelegate {
    void didStartRecording(CaptureMovieFileOutput*, const QUrl&) override { ++starts; }
    void didFinishRecording(CaptureMovieFileOutput*, const QUrl&,
                            const std::optional<Error>&) override {
        ++finishes;
    }
    int starts = 0;
    int finishes = 0;
};

// A headset unplugged mid-take: the take so far is finished into a playable file, the user is
// told, and the camera goes on without sound instead of the whole session stopping.
TEST(MicrophoneLoss, theTakeSoFarIsKeptAndThePictureGoesOnWithoutSound) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    VirtualCameraDevice camera(DevicePosition::back);
    VirtualMicrophoneDevice microphone;
    CaptureSession session;
    session.setSessionPreset(CaptureSession::preset1280x720);
    session.addInput(new CaptureDeviceInput(&camera));
    session.addInput(new CaptureDeviceInput(&microphone));
    CapturePreviewOutput preview;
    CaptureMovieFileOutput movie;
    session.addOutput(&preview);
    session.addOutput(&movie);
    QString said;
    int errors = 0;
    QObject::connect(&session, &CaptureSession::microphoneLost,
                     [&](const QString& description) { said = description; });
    QObject::connect(&session, &CaptureSession::runtimeError, [&](const Error&) { ++errors; });
    session.startRunning();
    ASSERT_TRUE(session.isRunning());

    const QString file = folder.filePath(QStringLiteral("take.mov"));
    Finish delegate;
    ASSERT_TRUE(movie.startRecordingToOutputFileURL(QUrl::fromLocalFile(file), &delegate));
    ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.starts == 1; }, 15000));
    QTest::qWait(500);
    microphone.setDisconnected();

    ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.finishes == 1; }, 15000));
    EXPECT_TRUE(said.contains(microphone.localizedName())) << said.toStdString();
    EXPECT_EQ(errors, 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.isRunning(); }, 15000));
    const quint64 frames = preview.framesReceived();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.framesReceived() > frames + 5; }, 15000));
    for (CaptureInput* input : session.inputs())
        EXPECT_NE(qobject_cast<CaptureDeviceInput*>(input)->device(), &microphone);

    const QString probe = QStandardPaths::findExecutable(QStringLiteral("gst-discoverer-1.0"));
    if (!probe.isEmpty()) {
        QProcess discoverer;
        discoverer.start(probe, {QUrl::fromLocalFile(file).toString()});
        ASSERT_TRUE(discoverer.waitForFinished(30000));
        EXPECT_TRUE(discoverer.readAllStandardOutput().contains("video")) << "the clip plays";
    }
    session.stopRunning();
}

} // namespace
