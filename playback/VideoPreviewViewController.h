#pragma once

#include "platform/av/PlayerLayer.h"
#include "platform/ui/ViewController.h"

#include <QPointer>
#include <QUrl>

#include <memory>

class VideoContainerView;

namespace ui {
class Button;
class Control;
class Label;
} // namespace ui

// The clip just recorded, full screen, looping with its sound, with share, save and close. Save
// copies the clip into the video library and closes the preview at once; a failed copy is
// reported over whatever screen is showing by then. The clip's file is never deleted, moved or
// renamed here.
class VideoPreviewViewController : public ui::ViewController {
    Q_OBJECT

public:
    explicit VideoPreviewViewController(QObject* parent = nullptr);
    ~VideoPreviewViewController() override;

    // The screen that presented the preview; the rating prompt goes there after a save. Any
    // screen: this layer knows none of the others.
    QPointer<ui::ViewController> cameraVC;
    // The clip; empty: nothing plays and share does nothing.
    QUrl videoURL;

    // Outlets: owned by the view, null until it is loaded.
    QPointer<VideoContainerView> videoView;
    QPointer<ui::Button> shareButton;
    QPointer<ui::Button> saveButton;
    QPointer<ui::Button> closeButton;
    // Why the clip does not play, over the picture; hidden while it plays.
    QPointer<ui::Label> statusLabel;

    QPointer<av::PlayerLayer> playerLayer;
    std::unique_ptr<av::Player> player;

    // Actions; the sender is ignored.
    void share(ui::Control* sender);
    void save(ui::Control* sender);
    void close(ui::Control* sender);

    // Loops the clip: the end notice of its own item seeks that item back to the start.
    void playerItemDidReachEnd(QObject* object);

    // The end of a save. The preview has normally gone by then, so it may be null; the alert of
    // a failure then goes over the recording screen.
    static void videoWithVideoPathDidFinishSaving(QPointer<VideoPreviewViewController> preview,
                                                  QPointer<ui::ViewController> cameraVC,
                                                  const QString& path, const QString& error);

    bool prefersStatusBarHidden() const override { return true; }

protected:
    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void preparePlayer();
    void showPlaybackProblem();
    void layoutControls();
};
