#include "capture/CKFPreviewView.h"
#include "capture/CKFGridView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/ui/PinchGestureRecognizer.h"

#include <QNativeGestureEvent>
#include <QPointer>
#include <QTest>
#include <QWheelEvent>

#include <cmath>

#include "CaptureTest.h"

namespace {

using VideoOrientation = av::CaptureConnection::VideoOrientation;

// A session without devices that remembers what the view asked of it.
struct ProbeSession : CKFSession {
    std::vector<double> zooms;
    std::vector<QPointF> focusPoints;
    void setZoom(double value) override {
        CKFSession::setZoom(value);
        zooms.push_back(value);
    }
    void focusAt(const QPointF& point) override { focusPoints.push_back(point); }
};

// A fresh view and a probe session for it; the probe outlives the view.
class PreviewViewTest : public CaptureTest {
protected:
    static void send(QWidget& view, QEvent&& event) { QCoreApplication::sendEvent(&view, &event); }

    // A touchpad pinch: each value is how much the spread grew since the previous report.
    static void touchpad(QWidget& view, std::initializer_list<double> steps, bool finish = true) {
        const QPointF at(10, 10);
        auto gesture = [&](Qt::NativeGestureType type, double value) {
            send(view, QNativeGestureEvent(type, QPointingDevice::primaryPointingDevice(), 2, at,
                                           at, at, value, QPointF()));
        };
        gesture(Qt::BeginNativeGesture, 0);
        for (double step : steps)
            gesture(Qt::ZoomNativeGesture, step);
        if (finish)
            gesture(Qt::EndNativeGesture, 0);
    }
    // A pinch that spreads the fingers by factor in two steps.
    static void pinch(QWidget& view, double factor, bool finish = true) {
        const double half = std::sqrt(factor);
        touchpad(view, {half - 1, half - 1}, finish);
    }
    static void wheel(QWidget& view, int eighths, Qt::KeyboardModifiers modifiers) {
        const QPointF at(10, 10);
        send(view, QWheelEvent(at, at, QPoint(), QPoint(0, eighths), Qt::NoButton, modifiers,
                               Qt::NoScrollPhase, false));
    }

    static std::shared_ptr<CKFVideoSession> backCamera() {
        return std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back);
    }
    static bool waitForFrames(const CKFPreviewView& view, quint64 count) {
        const av::CapturePreviewOutput* output = view.previewLayer()->output();
        return QTest::qWaitFor([&] { return output->framesTaken() >= count; }, 10000);
    }
    // Shows the view at the size, on the probe.
    void showProbed(int width, int height) {
        view.resize(width, height);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        view.setSession(probe);
    }

    std::shared_ptr<ProbeSession> probe = std::make_shared<ProbeSession>();
    CKFPreviewView view;
};

TEST_F(PreviewViewTest, eachPinchContinuesFromTheLastOneWithinOneToTen) {
    view.setSession(probe);
    pinch(view, 2.0);
    EXPECT_DOUBLE_EQ(view.lastScale(), 2.0);

    // The ramp moving the zoom in between does not move where the next pinch starts.
    probe->setZoom(7.0);
    probe->zooms.clear();
    pinch(view, 1.5);
    ASSERT_EQ(probe->zooms.size(), 4u); // began, two steps, ended
    EXPECT_DOUBLE_EQ(probe->zooms.front(), 2.0);
    EXPECT_DOUBLE_EQ(probe->zooms.back(), 3.0);
    EXPECT_DOUBLE_EQ(view.lastScale(), 3.0);

    for (const auto& [factor, expected] : {std::pair{25.0, 10.0}, {0.01, 1.0}, {2.5, 2.5}}) {
        pinch(view, factor);
        EXPECT_DOUBLE_EQ(probe->zooms.back(), expected) << factor;
        EXPECT_DOUBLE_EQ(probe->zoom(), expected) << factor;
        EXPECT_DOUBLE_EQ(view.lastScale(), expected) << factor;
    }

    // Without a session only lastScale follows.
    view.setSession(nullptr);
    pinch(view, 2.0);
    EXPECT_DOUBLE_EQ(view.lastScale(), 5.0);
    EXPECT_DOUBLE_EQ(probe->zoom(), 2.5);
}

TEST_F(PreviewViewTest, aCancelledPinchZoomsButDoesNotMoveLastScale) {
    view.show();
    view.setSession(probe);
    pinch(view, 2.0);
    pinch(view, 3.0, false);
    EXPECT_DOUBLE_EQ(probe->zoom(), 6.0);
    // Going out of sight cancels what is under way.
    view.hide();
    EXPECT_EQ(view.pinchGestureRecognizer()->state(), ui::PinchGestureRecognizer::State::cancelled);
    EXPECT_DOUBLE_EQ(view.lastScale(), 2.0);
    EXPECT_DOUBLE_EQ(probe->zoom(), 6.0);

    // Touchpad begin and end around a turn of the fingers, with no spread, is no pinch.
    probe->zooms.clear();
    touchpad(view, {});
    EXPECT_TRUE(probe->zooms.empty());
}

TEST_F(PreviewViewTest, eachCtrlWheelNotchIsAShortPinch) {
    view.setSession(probe);
    wheel(view, 120, Qt::ControlModifier);
    EXPECT_NEAR(probe->zoom(), std::pow(2.0, 1.0 / 8), 1e-9);
    EXPECT_NEAR(view.lastScale(), probe->zoom(), 1e-12);
    for (int notch = 1; notch < 8; ++notch)
        wheel(view, 120, Qt::ControlModifier);
    EXPECT_NEAR(view.lastScale(), 2.0, 1e-9);

    // Plain scrolling is not zooming; scrolling far back stops at 1.
    const size_t written = probe->zooms.size();
    wheel(view, 120, Qt::NoModifier);
    EXPECT_EQ(probe->zooms.size(), written);
    wheel(view, -120 * 20, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(view.lastScale(), 1.0);

    // A notch inside a touchpad pinch adds to that pinch.
    pinch(view, 2.0, false);
    wheel(view, 120 * 8, Qt::ControlModifier);
    touchpad(view, {});
    EXPECT_NEAR(view.lastScale(), 4.0, 1e-9);
}

TEST_F(PreviewViewTest, twoFingersSpreadOnATouchScreenPinch) {
    // Inside a window, as in the app.
    QWidget window;
    window.resize(500, 500);
    auto* view = new CKFPreviewView(&window);
    view->setGeometry(50, 50, 400, 400);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    view->setSession(probe);
    QPointingDevice* screen = QTest::createTouchDevice();
    QTest::touchEvent(view, screen).press(0, QPoint(150, 200)).press(1, QPoint(250, 200));
    for (int step = 1; step <= 50; ++step)
        QTest::touchEvent(view, screen)
            .move(0, QPoint(150 - step, 200))
            .move(1, QPoint(250 + step, 200));
    QTest::touchEvent(view, screen).release(0, QPoint(100, 200)).release(1, QPoint(300, 200));
    // The recogniser takes the first step of the fingers to notice the pinch.
    EXPECT_NEAR(view->lastScale(), 2.0, 0.05);
    EXPECT_NEAR(probe->zoom(), view->lastScale(), 1e-12);
    EXPECT_TRUE(probe->focusPoints.empty());
}

// The grid over the picture is made once, follows the view and lets clicks through.
TEST_F(PreviewViewTest, aClickOrATouchFocusesWhereItLandsButADragDoesNot) {
    view.setShowGrid(true);
    CKFGridView* grid = view.gridView();
    ASSERT_NE(grid, nullptr);
    showProbed(300, 600);
    // The probe shows no picture, so no thirds; shown as over one, the grid must let clicks by.
    EXPECT_TRUE(QTest::qWaitFor([&] { return grid->isHidden(); }, 1000));
    grid->show();
    view.setShowGrid(true);
    EXPECT_EQ(view.gridView(), grid);
    EXPECT_EQ(view.findChildren<CKFGridView*>().size(), 1);
    EXPECT_EQ(grid->geometry(), QRect(0, 0, 300, 600));
    QCoreApplication::processEvents();

    // Through the window, so the grid on top has to let the click through.
    QTest::mouseClick(view.windowHandle(), Qt::LeftButton, {}, QPoint(75, 150));
    ASSERT_EQ(probe->focusPoints.size(), 1u);
    EXPECT_NEAR(probe->focusPoints[0].x(), 0.25, 1e-9);
    EXPECT_NEAR(probe->focusPoints[0].y(), 0.25, 1e-9);

    const QPointF from(10, 10), to(80, 10);
    send(view, QMouseEvent(QEvent::MouseButtonPress, from, from, from, Qt::LeftButton,
                           Qt::LeftButton, {}));
    send(view, QMouseEvent(QEvent::MouseMove, to, to, to, Qt::NoButton, Qt::LeftButton, {}));
    send(view, QMouseEvent(QEvent::MouseButtonRelease, to, to, to, Qt::LeftButton, {}, {}));
    QTest::mouseClick(&view, Qt::RightButton, {}, QPoint(30, 30));
    EXPECT_EQ(probe->focusPoints.size(), 1u);

    QPointingDevice* screen = QTest::createTouchDevice();
    QTest::touchEvent(&view, screen).press(0, QPoint(150, 300));
    QTest::touchEvent(&view, screen).release(0, QPoint(150, 300));
    QCoreApplication::processEvents();
    ASSERT_EQ(probe->focusPoints.size(), 2u);
    EXPECT_NEAR(probe->focusPoints[1].x(), 0.5, 1e-9);
    EXPECT_NEAR(probe->focusPoints[1].y(), 0.5, 1e-9);

    view.resize(600, 300);
    EXPECT_EQ(grid->geometry(), QRect(0, 0, 600, 300));
    view.setShowGrid(false);
    EXPECT_EQ(view.gridView(), nullptr);
    EXPECT_TRUE(view.findChildren<CKFGridView*>().isEmpty());
    view.setShowGrid(false);
    view.setShowGrid(true);
    EXPECT_EQ(view.findChildren<CKFGridView*>().size(), 1);
    // A camera's first picture brings the thirds.
    grid = view.gridView();
    EXPECT_TRUE(grid->isHidden());
    view.setSession(backCamera());
    EXPECT_TRUE(QTest::qWaitFor([&] { return grid->isVisible(); }, 10000));
}

// A 1920x1080 picture filling a 390x844 view shows its middle 0.26 across, all the way down, and a
// tap names that part of the camera's picture. (Turned pictures: the layer's own tests.)
TEST_F(PreviewViewTest, thePointOfInterestUndoesTheFill) {
    view.resize(390, 844);
    view.show();
    auto session = backCamera();
    view.setSession(session);
    ASSERT_TRUE(session->session()->isRunning());
    view.previewLayer()->setVideoGravity(
        av::CaptureVideoPreviewLayer::VideoGravity::resizeAspectFill);
    view.layoutIfNeeded();
    const double half = 390.0 / 844 * 1080 / 1920 / 2;
    const std::pair<QPointF, QPointF> rows[] = {
        {{0, 0}, {0.5 - half, 0}}, {{390, 844}, {0.5 + half, 1}}, {{195, 422}, {0.5, 0.5}}};
    for (const auto& [at, expected] : rows) {
        const QPointF poi = view.previewLayer()->captureDevicePointOfInterestForPoint(at);
        EXPECT_NEAR(poi.x(), expected.x(), 1e-3) << at.x() << "," << at.y();
        EXPECT_NEAR(poi.y(), expected.y(), 1e-3) << at.x() << "," << at.y();
    }
}

TEST_F(PreviewViewTest, rebindingStopsTheOldSessionAndStartsTheNewOneOnItsOwnLayer) {
    view.resize(320, 180);
    auto first = backCamera();
    view.setSession(first);
    ASSERT_TRUE(first->session()->isRunning());
    QPointer<av::CaptureVideoPreviewLayer> firstLayer = view.previewLayer();
    const av::CapturePreviewOutput* firstOutput = firstLayer->output();
    EXPECT_EQ(first->previewLayer(), firstLayer.data());
    EXPECT_EQ(first->overlayView(), &view);
    ASSERT_TRUE(waitForFrames(view, 2));

    auto second = backCamera();
    view.setSession(second);
    EXPECT_FALSE(first->session()->isRunning());
    EXPECT_TRUE(second->session()->isRunning());
    EXPECT_TRUE(firstLayer.isNull());
    EXPECT_EQ(std::ranges::count(first->session()->outputs(), firstOutput), 0);
    ASSERT_NE(view.previewLayer(), nullptr);
    EXPECT_EQ(view.previewLayer()->session(), second->session());
    EXPECT_EQ(second->previewLayer(), view.previewLayer());
    ASSERT_TRUE(waitForFrames(view, 2));

    // Unbinding stops the session and leaves its layer with the last picture.
    av::CaptureVideoPreviewLayer* secondLayer = view.previewLayer();
    view.setSession(nullptr);
    EXPECT_FALSE(second->session()->isRunning());
    EXPECT_EQ(view.previewLayer(), secondLayer);
    EXPECT_EQ(view.session(), nullptr);
    EXPECT_FALSE(view.grab().toImage().pixelColor(160, 90) == QColor(Qt::black));
}

TEST_F(PreviewViewTest, theViewMayGoWhileItsSessionRunsOn) {
    auto session = backCamera();
    auto view = std::make_unique<CKFPreviewView>();
    view->setSession(session);
    ASSERT_TRUE(waitForFrames(*view, 2));
    QPointer<av::CapturePreviewOutput> output = view->previewLayer()->output();
    view.reset();
    // The output goes with the view at once: the running pipeline hands it nothing more.
    EXPECT_TRUE(output.isNull());
    QTest::qWait(300);
    EXPECT_TRUE(session->session()->isRunning());
}

TEST_F(PreviewViewTest, autorotateOffHoldsPortraitAndOnFollowsTheDevice) {
    showProbed(300, 600);
    av::CaptureConnection* connection = view.previewLayer()->connection();
    ASSERT_NE(connection, nullptr);

    orient(Orientation::landscapeLeft);
    view.resize(600, 300);
    QCoreApplication::processEvents();
    EXPECT_EQ(connection->videoOrientation(), VideoOrientation::portrait);

    // On: at the next layout, and at each turn of the device after it.
    view.setAutorotate(true);
    for (const auto& [device, video] :
         {std::pair{Orientation::landscapeLeft, VideoOrientation::landscapeRight},
          {Orientation::landscapeRight, VideoOrientation::landscapeLeft},
          {Orientation::faceUp, VideoOrientation::portrait},
          {Orientation::portraitUpsideDown, VideoOrientation::portraitUpsideDown}}) {
        orient(device);
        view.layoutIfNeeded();
        EXPECT_EQ(connection->videoOrientation(), video) << int(device);
    }

    // Off puts it back to portrait at once.
    view.setAutorotate(false);
    EXPECT_EQ(connection->videoOrientation(), VideoOrientation::portrait);
}

} // namespace
