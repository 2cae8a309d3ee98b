#include "capture/CKFVideoSession.h"

#include <QSignalSpy>
#include <QTest>
#include <functional>

#include "CaptureTest.h"
#include "tests/MovieInfo.h"

namespace {

class VideoSessionTest : public CaptureTest {
protected:
    // Records for about `seconds` from the first frame, then ends the recording by `end` (by a
    // stop without one), and returns the finished file, or an empty string.
    QString recordClip(CKFVideoSession& session, double seconds,
                       const std::function<void()>& end = {}) {
        QString finished;
        bool failed = false;
        session.record(
            std::nullopt, [&](const QUrl& url) { finished = url.toLocalFile(); },
            [&](const std::exception&) { failed = true; });
        if (!QTest::qWaitFor([&] { return session.movieFileOutput()->framesWritten() > 0; }, 10000))
            return {};
        QTest::qWait(int(seconds * 1000));
        end ? end() : session.stopRecording();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !finished.isEmpty() || failed; }, 15000));
        return finished;
    }
};

TEST_F(VideoSessionTest, recordsAPlayableMovieToTheDefaultFileAndReplacesItNextTime) {
    CKFVideoSession session(Position::back);
    session.setWidth(1280, 720, 30); // the first format that fits is 1920×1080
    session.start();
    ASSERT_TRUE(session.session()->isRunning());

    const QString first = recordClip(session, 1.0);
    ASSERT_EQ(first, CKFVideoSession::defaultFileURL().toLocalFile());
    EXPECT_FALSE(session.isRecording());
    const MovieInfo info = inspectMovie(first);
    EXPECT_EQ(info.audioCodec, QStringLiteral("audio/mpeg"));
    EXPECT_EQ(info.width, 1920);
    EXPECT_EQ(info.height, 1080);
    EXPECT_GT(info.seconds, 0.8);

    // The device's orientation is read at each record: landscape left records landscape right.
    orient(Orientation::landscapeLeft);
    const QString second = recordClip(session, 2.0);
    EXPECT_EQ(second, first);
    EXPECT_EQ(QDir(documents.path()).entryList(QDir::Files).size(), 1);
    const MovieInfo secondInfo = inspectMovie(second);
    EXPECT_GT(secondInfo.seconds, info.seconds + 0.5);
    EXPECT_EQ(session.movieFileOutput()
                  ->connectionWithMediaType(av::MediaType::video)
                  ->videoOrientation(),
              av::CaptureConnection::VideoOrientation::landscapeRight);
    EXPECT_EQ(secondInfo.orientation, QStringLiteral("rotate-270"));
}

TEST_F(VideoSessionTest, oneRecordingFromTheRequestUntilItsCallback) {
    CKFVideoSession session(Position::back);
    session.start();
    QStringList first, second;
    const auto record = [&](QStringList& calls) {
        return session.record(
            std::nullopt, [&calls](const QUrl& url) { calls << url.toLocalFile(); },
            [&calls](const std::exception&) { calls << QStringLiteral("failed"); });
    };
    // A paused camera sends no frame: a second request and a stop come before the first.
    GstElement* pipeline = session.session()->pipeline();
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    QTest::qWait(200);
    ASSERT_TRUE(record(first));
    EXPECT_TRUE(session.isRecording());
    EXPECT_FALSE(record(second));
    session.stopRecording();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !session.isRecording(); }, 5000));
    EXPECT_EQ(first, QStringList{QStringLiteral("failed")});
    gst_element_set_state(pipeline, GST_STATE_PLAYING);

    // While it records, a second request leaves its callbacks and its file alone.
    first.clear();
    ASSERT_TRUE(record(first));
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return session.movieFileOutput()->framesWritten() > 0; }, 10000));
    EXPECT_FALSE(record(second));
    session.stopRecording();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !first.isEmpty(); }, 15000));
    EXPECT_TRUE(inspectMovie(first.front()).readable);

    // A stray finish after that reaches nobody: the callbacks were used up.
    session.didFinishRecording(session.movieFileOutput(), CKFVideoSession::defaultFileURL(),
                               std::nullopt);
    EXPECT_EQ(first.size(), 1);
    EXPECT_TRUE(second.isEmpty());
}

// A picture chosen as the camera records as the back camera would, with frames all along (at half
// the rate or better on a busy machine).
TEST_F(VideoSessionTest, aStillPictureRecordsAsTheBackCamera) {
    const QString source = documents.filePath(QStringLiteral("subject.png"));
    ASSERT_TRUE(av::Gst::runToEnd(
        "videotestsrc num-buffers=1 ! video/x-raw,width=320,height=240 ! pngenc ! filesink "
        "location=" +
            source.toUtf8(),
        std::chrono::seconds(20)));
    Discovery::setCameraSelection(QStringLiteral("file:") + source);
    CKFVideoSession session(Position::back);
    Discovery::setCameraSelection({});
    EXPECT_EQ(camera(session)->uniqueID(), QStringLiteral("file:") + source);
    session.setWidth(1280, 720, 30);
    session.start();
    const QString file = recordClip(session, 0.5);
    ASSERT_FALSE(file.isEmpty());
    const MovieInfo info = inspectMovie(file);
    EXPECT_EQ(info.width, 1920);
    EXPECT_GT(session.movieFileOutput()->framesWritten(), 0.5 * 15);
    EXPECT_GT(info.seconds, 0.2);
}

TEST_F(VideoSessionTest, anUnpluggedCameraEndsTheRecordingPlayableAndTellsTheScreen) {
    CKFVideoSession session(Position::back);
    QSignalSpy problems(&session, &CKFSession::deviceProblem);
    session.start();
    const QString finished = recordClip(
        session, 1.0, [&] { Discovery::deviceRemovedForTesting(camera(session)->uniqueID()); });
    ASSERT_TRUE(!problems.isEmpty() || problems.wait(15000));
    EXPECT_FALSE(session.session()->isRunning());
    EXPECT_FALSE(session.isRecording());
    ASSERT_EQ(finished, CKFVideoSession::defaultFileURL().toLocalFile());
    EXPECT_EQ(inspectMovie(finished).videoCodec, QStringLiteral("video/x-h264"));
    EXPECT_GT(inspectMovie(finished).seconds, 0.8);
    ASSERT_EQ(problems.size(), 1);
    const QString problem = problems.front().front().toString();
    EXPECT_TRUE(problem.contains(QStringLiteral("disconnected"))) << problem.toStdString();
}

TEST_F(VideoSessionTest, toggleSwitchesCamerasAndWithoutACameraNothingChanges) {
    CKFVideoSession session(Position::front);
    EXPECT_EQ(camera(session)->position(), av::DevicePosition::front);
    session.togglePosition();
    EXPECT_EQ(session.cameraPosition(), Position::back);
    av::CaptureDevice* back = camera(session);
    EXPECT_EQ(back->position(), av::DevicePosition::back);

    // A failed switch keeps the camera and the position, and says so once, as a failed switch.
    QSignalSpy failed(&session, &CKFVideoSession::switchFailed);
    QSignalSpy problems(&session, &CKFSession::deviceProblem);
    Discovery::setVirtualDevicesEnabled(false);
    session.togglePosition();
    EXPECT_EQ(session.cameraPosition(), Position::back);
    EXPECT_EQ(camera(session), back);
    EXPECT_EQ(failed.size(), 1);
    QTest::qWait(10);
    EXPECT_TRUE(problems.isEmpty());

    // A session without a camera tells the screen, connected after making it as a screen does,
    // and its zoom, torch and format reach nothing.
    CKFVideoSession none(Position::back);
    QSignalSpy noCamera(&none, &CKFSession::deviceProblem);
    ZoomNotices notices;
    none.setDelegate(&notices);
    none.setZoom(2.0);
    none.setFlashMode(Flash::on);
    none.setWidth(1920, 1080, 30);
    EXPECT_EQ(none.zoom(), 2.0);
    EXPECT_TRUE(notices.values.empty());
    EXPECT_EQ(camera(none), nullptr);
    ASSERT_TRUE(!noCamera.isEmpty() || noCamera.wait(1000));
    ASSERT_EQ(noCamera.size(), 1);
    EXPECT_EQ(noCamera.front().front(), CKFError::captureDeviceNotFound().localizedDescription());
}

TEST_F(VideoSessionTest, zoomTorchAndFormatReachTheCameraWhereItCanTakeThem) {
    CKFVideoSession back(Position::back);
    ZoomNotices notices;
    back.setDelegate(&notices);
    back.setZoom(3.0);
    back.setZoom(1.25);
    av::CaptureDevice* device = camera(back);
    EXPECT_EQ(device->videoZoomFactor(), 1.25);
    EXPECT_EQ(notices.values, (std::vector<double>{3.0, 1.25}));

    back.setFlashMode(Flash::on);
    EXPECT_EQ(device->torchMode(), av::CaptureDevice::TorchMode::on);
    back.setFlashMode(Flash::off);
    CKFVideoSession front(Position::front);
    front.setFlashMode(Flash::on);
    EXPECT_EQ(front.flashMode(), Flash::on);
    EXPECT_EQ(camera(front)->torchMode(), av::CaptureDevice::TorchMode::off);

    back.setWidth(3840, 2160, 30);
    EXPECT_EQ(device->activeFormat().width, 3840);
    EXPECT_EQ(device->activeVideoMinFrameDuration(), (av::FrameDuration{1, 30}));
    // No 4K format runs at 60: the request changes nothing.
    back.setWidth(3840, 2160, 60);
    EXPECT_EQ(device->activeVideoMinFrameDuration(), (av::FrameDuration{1, 30}));
    back.setWidth(1920, 1080, 60);
    EXPECT_EQ(device->activeFormat().width, 1920);
    EXPECT_EQ(device->activeVideoMaxFrameDuration(), (av::FrameDuration{1, 60}));
}

} // namespace
