#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureMovieFileOutput.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/VirtualCameraDevice.h"
#include "platform/av/VirtualMicrophoneDevice.h"
#include "tests/MovieInfo.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace {

using namespace av;

qsizetype entriesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
}

struct Counts {
    qsizetype threads = entriesIn(QStringLiteral("/proc/self/task"));
    qsizetype descriptors = entriesIn(QStringLiteral("/proc/self/fd"));
};

struct Finish : CaptureMovieFileOutput::RecordingDelegate {
    void didStartRecording(CaptureMovieFileOutput*, const QUrl&) override { ++starts; }
    void didFinishRecording(CaptureMovieFileOutput*, const QUrl&,
                            const std::optional<Error>& finishError) override {
        ++finishes;
        error = finishError;
    }
    int starts = 0;
    int finishes = 0;
    std::optional<Error> error;
};

// A preview output that counts the samples it is handed while it is marked removed.
struct Watched : CapturePreviewOutput {
    void handleSample(MediaType type, GstSample* sample) override {
        if (removed)
            ++late;
        CapturePreviewOutput::handleSample(type, sample);
    }
    std::atomic<bool> removed = false;
    std::atomic<int> late = 0;
};

// A take that kept its pipeline would keep its streaming and encoder threads and the movie's
// open file, so the process's own thread and descriptor counts tell whether one was left behind.
// The first take warms GStreamer's and Qt's thread pools; from then on the counts must hold.
// An output taken off the running session gets no sample once removeOutput has returned, though
// the old pipeline runs on until the session rebuilds: its owner may delete it at once. Then a
// headset unplugged mid-take: the take so far is finished into a playable file, the user is told,
// and the camera goes on without sound instead of the whole session stopping.
TEST(Takes, leaveNothingBehindARemovedOutputGetsNothingAndTakesOutliveTheMicrophone) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    VirtualCameraDevice camera{DevicePosition::back};
    VirtualMicrophoneDevice microphone;
    CaptureSession session;
    Watched preview;
    CaptureMovieFileOutput movie;
    session.setSessionPreset(CaptureSession::preset1280x720);
    session.addInput(new CaptureDeviceInput(&camera));
    session.addInput(new CaptureDeviceInput(&microphone));
    session.addOutput(&preview);
    session.addOutput(&movie);
    session.startRunning();
    ASSERT_TRUE(session.isRunning());
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview.framesReceived() > 5; }, 15000));

    const QString file = folder.filePath(QStringLiteral("take.mov"));
    // Records for this long, or until whatever `during` does ends the take.
    const auto take = [&](int milliseconds, const std::function<void()>& during = {}) {
        Finish delegate;
        ASSERT_TRUE(movie.startRecordingToOutputFileURL(QUrl::fromLocalFile(file), &delegate));
        ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.starts == 1; }, 15000));
        QTest::qWait(milliseconds);
        during ? during() : movie.stopRecording();
        ASSERT_TRUE(QTest::qWaitFor([&] { return delegate.finishes == 1; }, 15000));
        EXPECT_FALSE(delegate.error) << delegate.error->localizedDescription().toStdString();
    };

    take(300);
    // Threads that end with the take need a moment to be gone from /proc, longer on a loaded
    // machine; what a take leaks never goes.
    QTest::qWait(500);
    const Counts warm;
    for (int next = 2; next <= 4; ++next) {
        take(300);
        // One of slack: a pool thread may be between two jobs; one per take shows by the third.
        const auto settled = [&] {
            const Counts now;
            return now.threads <= warm.threads + 1 && now.descriptors <= warm.descriptors + 1;
        };
        (void)QTest::qWaitFor(settled, 5000);
        const Counts now;
        EXPECT_LE(now.threads, warm.threads + 1) << "after take " << next;
        EXPECT_LE(now.descriptors, warm.descriptors + 1) << "after take " << next;
    }

    for (int round = 0; round < 3; ++round) {
        session.removeOutput(&preview);
        preview.removed = true;
        // No turn of the event loop: the old pipeline keeps delivering meanwhile.
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        EXPECT_EQ(preview.late, 0) << "round " << round;
        preview.removed = false;
        session.addOutput(&preview);
        ASSERT_TRUE(QTest::qWaitFor([&] { return session.isRunning(); }, 15000));
        const quint64 before = preview.framesReceived();
        ASSERT_TRUE(QTest::qWaitFor([&] { return preview.framesReceived() > before + 2; }, 15000));
    }

    QString said;
    int errors = 0;
    QObject::connect(&session, &CaptureSession::microphoneLost,
                     [&](const QString& description) { said = description; });
    QObject::connect(&session, &CaptureSession::runtimeError, [&](const Error&) { ++errors; });
    take(500, [&] { microphone.setDisconnected(); });
    EXPECT_TRUE(said.contains(microphone.localizedName())) << said.toStdString();
    EXPECT_EQ(errors, 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.isRunning(); }, 15000));
    const quint64 frames = preview.framesReceived();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.framesReceived() > frames + 5; }, 15000));
    for (CaptureInput* input : session.inputs())
        EXPECT_NE(qobject_cast<CaptureDeviceInput*>(input)->device(), &microphone);
    EXPECT_EQ(inspectMovie(file).videoCodec, QStringLiteral("video/x-h264")) << "the clip plays";
    session.stopRunning();
}

} // namespace
