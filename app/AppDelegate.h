#pragma once

#include "platform/ui/ApplicationDelegate.h"

#include <QObject>
#include <QPointer>

namespace ui {
class Window;
}

// The program's delegate: owns the orientation lock and picks the first screen at launch.
class AppDelegate : public QObject, public ui::ApplicationDelegate {
    Q_OBJECT
    // Set by name by the tutorial, which does not link this layer.
    Q_PROPERTY(quint64 orientationLock READ orientationLock WRITE setOrientationLock)

public:
    ui::Window* window() const override;
    void setWindow(ui::Window* window) override;

    quint64 orientationLock() const { return lock; }
    // Screens narrow the allowed orientations while they are shown. Where the system rotates
    // the screen (a phone or tablet with an orientation sensor), a lock to portrait alone keeps
    // the window's content upright in portrait; on a desktop it changes nothing.
    void setOrientationLock(quint64 mask);

    bool didFinishLaunchingWithOptions(ui::Application* application,
                                       const QVariantMap& launchOptions) override;
    quint64 supportedInterfaceOrientationsFor(ui::Application* application,
                                              ui::Window* window) override;

    // The running program's delegate, or null when there is none (as in most tests).
    static AppDelegate* shared();

private:
    // Launch option "tutorial": show the tutorial even after it was left once.
    void runLaunchSequence(bool showTutorial);
    void applyOrientationLock();

    QPointer<ui::Window> mainWindow;
    quint64 lock = ui::allOrientationsMask;
};
