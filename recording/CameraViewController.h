#pragma once

#include "capture/CKFSessionDelegate.h"
#include "platform/ui/ViewController.h"
#include "recording/RecordingModes.h"
#include "recording/ZoomRamp.h"

#include <QPointer>
#include <QRect>

#include <array>
#include <memory>
#include <optional>
#include <vector>

class QTimer;
class CameraButton;
class CKFPreviewView;
class CKFSession;
class CKFVideoSession;

namespace av {
class CaptureDevice;
}

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
    // One recording's ramp and the timer that ticks it every 10 ms until it is over; the screen
    // owns the timer.
    struct RampState : ZoomRamp {
        using ZoomRamp::ZoomRamp;
        QPointer<QTimer> timer;
    };

    // The formats of the format button, by "videoMode".
    struct VideoFormat {
        int width;
        int height;
        int frameRate;
        const char* title;
    };
    static constexpr VideoFormat videoFormats[videoModeCount] = {
        {1920, 1080, 30, "HD"},
        {1920, 1080, 60, "HD60"},
        {3840, 2160, 30, "4K"},
    };
    static constexpr const VideoFormat& videoFormat(VideoMode mode) {
        return videoFormats[int(mode)];
    }
    // A choice of the format button on the current camera: the row of videoFormats it stands for
    // ("videoMode") and what the camera really runs for it, named by what it is.
    struct OfferedFormat {
        VideoMode videoMode = VideoMode::hd;
        int width = 0;
        int height = 0;
        int frameRate = 0;
        QString title;
    };
    struct FormatChoices {
        // One per format the camera really runs, in the table's order.
        std::vector<OfferedFormat> offered;
        // For each row of videoFormats, the offered format that stands in for it, and whether
        // the camera has the row's own size and rate.
        std::array<int, videoModeCount> standIn{};
        std::array<bool, videoModeCount> exact{};
    };
    static FormatChoices formatChoices(const av::CaptureDevice& camera);
    // "HD", "HD60", "4K", or the lines and a rate other than 30: "720p", "480p15".
    static QString formatTitle(int height, int frameRate);
    static constexpr double rampInterval = 0.01;
    // What the ramps' timers count on; tests step it by hand.
    ZoomRamp::Clock rampClock = ZoomRamp::steadyClock();
    // The crop never holds fewer lines than this (480 pixels wide at 16:9), so the highest zoom
    // stays watchable whatever the camera's shape.
    static constexpr int fewestSharpLines = 270;
    static constexpr double maximumZoom = 10.0;

    // Where the controls go in a window: a phone's column, centred in a wide window, with the
    // top row's shown buttons spread over it and the record button at the bottom.
    struct ControlGeometry {
        QSize window;
        QRect topScrim, bottomScrim;
        std::vector<QRect> topRow;
        QPoint recordingTimer;
        QRect cameraButton, zoomSlider, zoomValueLabel, cameraInfoLabel, zoomInfoLabel;
        int statusWidth = 0;
        // The status message for its text's height: under the recording timer, clear of the
        // subject in the middle of the picture.
        QRect status(int textHeight) const;
    };
    static ControlGeometry controlGeometry(QSize window, int topButtons, int recordingTimerWidth);

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

    void updateDurationTitle();
    void applySliderZoom();
    void updateZoomModeButton();
    void updateInfoLabels();
    void scheduleSessionSetup();
    void setupSession();

    // The ramp: started by the record press, ticked by its timer on rampClock.
    void startZoomRamp();
    void zoomRampTick(const std::shared_ptr<RampState>& state);
    void recordingFinished(const QUrl& url);
    // Brings the controls back and says on the picture what failed.
    void recordingFailed(const QString& description);
    // The ramp started by the latest press, or null.
    const std::shared_ptr<RampState>& lastRamp() const { return ramp; }

    // The session the screen works with: the preview's, when it is a video session.
    CKFVideoSession* videoSession() const;
    // The format button's choices on the current camera; empty without a camera.
    const std::vector<OfferedFormat>& offeredFormats() const { return formats.offered; }
    const FormatChoices& formatChoicesOffered() const { return formats; }

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
    // Why a message is over the picture: each goes when its cause does.
    enum class StatusCause {
        none,
        permission,
        virtualCamera,
        cameraProblem,
        switchFailed,
        formatMissing,
        recordingFailed
    };
    // Over the picture until its cause is cleared, another message takes its place or, with
    // seconds, the time is up.
    void showCameraStatus(StatusCause cause, const QString& message, int seconds = 0);
    void clearCameraStatus(StatusCause cause);
    // Offers the camera's formats and runs the stored one, or its stand-in with a notice.
    void applyStoredFormat(CKFVideoSession& session);
    // Runs the offered format and sizes the slider to what the camera really delivers.
    void useFormat(CKFVideoSession& session, int index);
    // Shown only when another camera is there to switch to.
    void updateChangeCamButton();
    // A camera plugged in or out: the switch follows, and an unplugged camera resumes once it
    // (or another real one) is back.
    void camerasChanged();
    ZoomMode zoomMode() const;
    // Runs the ramp's timer from now on.
    void beginTicking(const std::shared_ptr<RampState>& state);
    // Stops the ramp, if it still runs.
    void endZoomRamp();
    // After every take, finished or failed; the preview goes back to the slider's zoom, so the
    // next take starts without a jump.
    void showIdleControls();
    // Keeps the slider within what the camera's current format can zoom sharply.
    void updateZoomRange(int formatHeight);
    void updateZoomValueLabel();
    void layoutControls();

    std::shared_ptr<RampState> ramp;
    StatusCause statusCause = StatusCause::none;
    // Counts the messages shown, so a message's timer leaves a newer one alone.
    quint64 statusShown = 0;
    FormatChoices formats;
    int formatIndex = 0;
    // The dark bands behind the top row and the bottom controls.
    QPointer<QWidget> topScrim;
    QPointer<QWidget> bottomScrim;
};
