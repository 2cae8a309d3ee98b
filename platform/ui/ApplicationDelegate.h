#pragma once

#include <QVariantMap>
#include <QtGlobal>

namespace ui {

class Application;
class Window;

// The interface orientations a window may take, as the platform's mask bits.
enum InterfaceOrientationMask : quint64 {
    portraitMask = 1 << 1,
    portraitUpsideDownMask = 1 << 2,
    landscapeRightMask = 1 << 3,
    landscapeLeftMask = 1 << 4,
    landscapeMask = landscapeLeftMask | landscapeRightMask,
    allButUpsideDownMask = portraitMask | landscapeMask,
    allOrientationsMask = portraitMask | portraitUpsideDownMask | landscapeMask,
};

// What the application asks of the program's delegate: where the main window goes, what to do
// once launched, and which orientations are allowed.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    virtual Window* window() const = 0;
    virtual void setWindow(Window* window) = 0;

    virtual bool didFinishLaunchingWithOptions(Application* application,
                                               const QVariantMap& launchOptions) = 0;
    virtual quint64 supportedInterfaceOrientationsFor(Application* application, Window* window) = 0;
    // Screens narrow the allowed orientations while they are shown; a delegate that keeps no
    // lock ignores it.
    virtual void setOrientationLock(quint64) {}
};

} // namespace ui
