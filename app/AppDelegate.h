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

public:
    ui::Window* window() const override;
    void setWindow(ui::Window* window) override;

    quint64 orientationLock() const { return lock; }
    // Nothing on Linux asks for the lock yet: no shell lets a window pin its orientation (see
    // README).
    void setOrientationLock(quint64 mask) override { lock = mask; }

    bool didFinishLaunchingWithOptions(ui::Application* application,
                                       const QVariantMap& launchOptions) override;
    quint64 supportedInterfaceOrientationsFor(ui::Application* application,
                                              ui::Window* window) override;

    // The running program's delegate, or null when there is none (as in most tests).
    static AppDelegate* shared();

private:
    // Launch option "tutorial": show the tutorial even after it was left once.
    void runLaunchSequence(bool showTutorial);

    QPointer<ui::Window> mainWindow;
    quint64 lock = ui::allOrientationsMask;
};
