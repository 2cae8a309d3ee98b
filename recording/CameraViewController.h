#pragma once

#include "capture/CKFSessionDelegate.h"
#include "platform/ui/ViewController.h"

#include <QPointer>

#include <memory>
#include <optional>
#include <vector>

class QTimer;
class CameraButton;
class CKFPreviewView;
class CKFSession;
class CKFVideoSession;

namespace ui {
class Button;
class Control;
class Label;
class Slider;
class View;
} // namespace ui

// The main screen: the live picture with the controls around it, and the zoom ramp that makes
// the clip. A press of the record button starts the movie and a 10 ms timer on the GUI thread
// that walks the zoom linearly between the slider's value and 1.0 for the chosen duration; the
// ramp's end, or a second press, stops the movie and the ramp together, and the finished file
// goes to the clip preview. Every ramp ends after its duration, a flat one from 1.0 too.
class CameraViewController : public ui::ViewController, public CKFSessionDelegate {
    Q_OBJECT

public:
    // One recording's ramp. Single precision on purpose: the end test and the number of ticks
    // follow float rounding.
    struct RampState {
        float current = 1.0f;
        float end = 1.0f;
        float step = 0.0f;
        double elapsed = 0.0;
        float duration = 5.0f;
        // Ticks every 10 ms until the end test stops it; owned by the screen.
        QPointer<QTimer> timer;
    };

    // The formats of the format button, by "videoMode".
    struct VideoFormat {
        int width;
        int height;
        int frameRate;
        const char* title;
    };
    static constexpr VideoFormat videoFormats[] = {
        {1920, 1080, 30, "HD"},
        {1920, 1080, 60, "HD60"},
        {3840, 2160, 30, "4K"},
    };
    static constexpr double rampInterval = 0.01;
    // The crop never gets narrower than this many pixels, so the highest zoom stays watchable.
    static constexpr int narrowestSharpCrop = 480;
    static constexpr double maximumZoom = 10.0;

    explicit CameraViewController(QObject* parent = nullptr);
    ~CameraViewController() override;

    // Outlets: owned by the view, null until the view is loaded.
    std::optional<std::vector<QPointer<QWidget>>> topViews;
    QPointer<CKFPreviewView> previewView;
    QPointer<ui::Button> changeCamButton;
    QPointer<ui::Button> zoomInButton;
    QPointer<ui::Button> durationButton;
    QPointer<ui::Button> flashButton;
    QPointer<ui::Button> hdButton;
    QPointer<ui::Button> gridButton;
    QPointer<ui::Label> cameraInfoLabel;
    QPointer<CameraButton> cameraButton;
    QPointer<ui::View> recordingeCircle;
    QPointer<ui::Label> recordingTimeLabel;
    QPointer<ui::View> recordingTimerView;
    QPointer<ui::Label> zoomInfoLabel;
    QPointer<ui::Slider> zoomSlider;
    // What is wrong with the camera, over the picture; hidden while all is well.
    QPointer<ui::Label> cameraStatusLabel;
    // The slider's zoom, beside it.
    QPointer<ui::Label> zoomValueLabel;
    float zoomFactor = 1.5f;

    // Actions.
    void zoomIn(ui::Control* sender);
    void gridHandler(ui::Control* sender);
    void changeCamHandler(ui::Control* sender);
    void flashHandler(ui::Control* sender);
    void hdHandler(ui::Control* sender);
    void zoomSliderHandler(ui::Control* sender);
    void cameraButtonHandler(ui::Control* sender);
    // Opens the duration picker over this screen.
    void durationHandler(ui::Control* sender);

    Q_INVOKABLE void updateDurationTitle();
    void applySliderZoom();
    void updateZoomModeButton();
    void updateInfoLabels();
    void scheduleSessionSetup();
    void setupSession();

    // The ramp: started by the record press; the tick is public so that tests can drive it
    // without waiting for the timer.
    void startZoomRamp();
    void zoomRampTick(const std::shared_ptr<RampState>& state);
    void recordingFinished(const QUrl& url);
    // Brings the controls back and says on the picture what failed.
    void recordingFailed(const QString& description);
    // The ramp started by the latest press, or null.
    const std::shared_ptr<RampState>& lastRamp() const { return ramp; }

    // The session the screen works with: the preview's, when it is a video session.
    CKFVideoSession* videoSession() const;

    void didChangeValue(CKFSession* session, const QVariant& value, const QString& key) override;
    bool prefersStatusBarHidden() const override { return true; }

signals:
    // The clip is complete on disk; sent before the preview screen is presented.
    void clipFinished(const QUrl& url);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void loadView() override;
    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillTransition(QSize size) override;

private:
    // Over the picture, until the next message; empty hides it.
    void showCameraStatus(const QString& message);
    // The same, hidden after a while unless another message took its place.
    void showCameraStatus(const QString& message, int seconds);
    // Runs the ramp's timer from now on.
    void beginTicking(const std::shared_ptr<RampState>& state);
    // Stops the ramp, if it still runs.
    void endZoomRamp();
    // After every take, finished or failed; the preview goes back to the slider's zoom, so the
    // next take starts without a jump.
    void showIdleControls();
    // Keeps the slider within what the camera's current format can zoom sharply.
    void updateZoomRange(int formatWidth);
    void updateZoomValueLabel();
    void layoutControls();

    std::shared_ptr<RampState> ramp;
    // The failure on the picture; the next press clears it.
    QString failureShown;
    // The dark bands behind the top row and the bottom controls.
    QPointer<QWidget> topScrim;
    QPointer<QWidget> bottomScrim;
};
