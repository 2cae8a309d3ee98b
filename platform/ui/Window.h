#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

namespace ui {

class ViewController;

// A top-level window whose content is its root controller's view, with presented controllers'
// views stacked above it.
class Window : public QWidget {
    Q_OBJECT

public:
    Window();
    ~Window() override;

    ViewController* rootViewController() const { return windowRoot; }
    // Takes ownership. The old root, with whatever it presents, leaves at once and is deleted
    // later; appearance calls are made while the window is visible.
    void setRootViewController(ViewController* controller);

    void makeKeyAndVisible();
    // The window last made key, while it exists.
    static Window* keyWindow();
    bool isKeyWindow() const { return keyWindow() == this; }

    // The presented controller on top, or the root when nothing is presented.
    ViewController* topViewController() const;
    bool prefersStatusBarHidden() const;
    // Asks the top controller again; see setFullScreenWhenStatusBarHidden.
    void setNeedsStatusBarAppearanceUpdate();
    // A phone shell turns this on: the window goes full screen while the top controller prefers
    // the status bar hidden. Off on a desktop, which has no status bar.
    void setFullScreenWhenStatusBarHidden(bool enabled);
    bool fullScreenWhenStatusBarHidden() const { return windowFullScreenWhenStatusBarHidden; }

signals:
    void statusBarHiddenChanged(bool hidden);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    friend class ViewController;

    void addPresented(ViewController* controller);
    void removePresented(ViewController* controller);
    void layoutViews();
    // The root and the presented controllers whose views are shown, bottom first.
    QList<ViewController*> shownControllers() const;
    void applyStatusBarPolicy();

    QPointer<ViewController> windowRoot;
    // Presentation order, so a presenter is laid out before what it presents.
    QList<QPointer<ViewController>> windowPresented;
    bool windowFullScreenWhenStatusBarHidden = false;
    bool statusBarHidden = false;
};

} // namespace ui
