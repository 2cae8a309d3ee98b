#pragma once

#include <QApplication>
#include <QVariantMap>

#include <memory>

class QSocketNotifier;

namespace ui {

class ApplicationDelegate;
class Window;

// The application object. With no display to reach it runs offscreen, so command-line work
// (help, version, the headless demo) still runs on a machine without one.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);
    ~Application() override;

    static Application* shared();

    // True when neither X11 nor Wayland is reachable and no platform was asked for.
    static bool displayAvailable();
    bool isHeadless() const { return headless; }

    ApplicationDelegate* delegate() const { return appDelegate.get(); }

    // Creates the main window with a plain root controller, hands it to the delegate, lets the
    // delegate finish launching, shows the window and runs the event loop. Ctrl-C and SIGTERM
    // end the loop like closing the window does, so every owner gets to clean up.
    int run(std::unique_ptr<ApplicationDelegate> delegate, const QVariantMap& launchOptions = {});

    quint64 supportedInterfaceOrientations(Window* window);
    // From here on Ctrl-C, SIGTERM and SIGHUP close every window and quit; run() does this
    // itself.
    void watchTerminationSignals();

private:
    bool headless;
    std::unique_ptr<ApplicationDelegate> appDelegate;
    QSocketNotifier* signalNotifier = nullptr;
};

} // namespace ui
