#pragma once

#include "platform/ui/ScrollView.h"
#include "platform/ui/ViewController.h"

#include <QList>
#include <QPointer>
#include <QRectF>
#include <QStringList>

class ALButton;

namespace av {
class Player;
}

namespace ui {
class ApplicationDelegate;
class Control;
class ImageView;
class Label;
class PageControl;
} // namespace ui

// The first-run tutorial: four pages side by side, each with its own muted, looping clip, a
// caption that follows the page, the page dots, the zoom direction's icon on the two pages that
// show a ramp, and the start button on the last page, which leaves for the recording screen for
// good. While it shows, the interface keeps to portrait.
//
// The pages are built on the first appearance only, and from then on every clip plays at once.
// A clip that cannot be found ends the building there: the pager then cannot move.
class TutorialViewController : public ui::ViewController, public ui::ScrollViewDelegate {
    Q_OBJECT

public:
    explicit TutorialViewController(QObject* parent = nullptr);
    ~TutorialViewController() override;

    // Outlets: owned by the view, null until it is loaded.
    QPointer<ui::ScrollView> scrollView;
    QPointer<ui::PageControl> pageControl;
    QPointer<ui::Label> infoLabel;
    QPointer<ui::ImageView> zoomInOutImageView;
    // Where the page being built goes, in the pager's content.
    QRectF frame;
    // One caption per page; their number is the number of pages.
    QStringList texts;
    // The pages' clips: data files of type "mov", one per caption.
    QStringList videos;
    QPointer<ALButton> startButton;
    // The pages have been built.
    bool firstRun = false;

    void scrollViewDidEndDecelerating(ui::ScrollView* scrollView) override;
    // Action of the start button; the sender is ignored.
    void start(ui::Control* sender);
    // Loops a page's clip: only its own item's end moves it back to the start.
    void playerItemDidReachEnd(QObject* object);

    // The pages' players, first page first; empty until the pages are built.
    QList<av::Player*> players() const;

    bool prefersStatusBarHidden() const override { return true; }

    // Narrows the interface orientations the application's delegate allows, if it keeps them.
    static void lockInterfaceOrientation(quint64 mask);
    // Tests have no application object of ours; the delegate to reach instead, or null.
    static void setApplicationDelegateForTesting(ui::ApplicationDelegate* delegate);

protected:
    void loadView() override;
    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildPages();
    void layoutControls();
    // Keeps the pages one view wide and the pager on its page when the window changes size.
    void layoutPages();
};
