#include "platform/ui/Application.h"

#include <QScreen>

#include <algorithm>

#include "platform/ui/ApplicationDelegate.h"
#include "platform/ui/Logging.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"

#include <QLabel>
#include <QSocketNotifier>
#include <QVBoxLayout>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace ui {

namespace {

int signalPipe[2] = {-1, -1};
bool startedHeadless = false;

void onTerminationSignal(int signal) {
    const char byte = static_cast<char>(signal);
    [[maybe_unused]] auto written = ::write(signalPipe[0], &byte, 1);
}

// Must run before QApplication's constructor, which picks the platform plugin.
int& chooseDisplay(int& argc) {
    startedHeadless = !Application::displayAvailable();
    if (startedHeadless)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return argc;
}

// What the window shows until a screen becomes its root.
class PlainViewController : public ViewController {
protected:
    void viewDidLoad() override {
        view()->setStyleSheet(QStringLiteral("background: black; color: #bbb;"));
        auto* layout = new QVBoxLayout(view());
        auto* label = new QLabel(QCoreApplication::applicationName(), view());
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
};

} // namespace

Application::Application(int& argc, char** argv)
    : QApplication(chooseDisplay(argc), argv), headless(startedHeadless) {
    setApplicationName(QStringLiteral("Tessaro"));
    setOrganizationName(QStringLiteral("tessaro"));
    setDesktopFileName(QStringLiteral("tessaro"));
}

Application::~Application() {
    // Controllers may hold resources that need the application object while they go away.
    appDelegate.reset();
}

Application* Application::shared() {
    return qobject_cast<Application*>(QCoreApplication::instance());
}

bool Application::displayAvailable() {
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("DISPLAY");
}

int Application::run(std::unique_ptr<ApplicationDelegate> delegate,
                     const QVariantMap& launchOptions) {
    appDelegate = std::move(delegate);
    auto* window = new Window;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(applicationName());
    // A phone's shape, as tall as the screen allows.
    QSize size(420, 860);
    if (const QScreen* screen = primaryScreen()) {
        const QSize room = screen->availableGeometry().size() - QSize(0, 60);
        if (room.height() < size.height() && room.height() > 400)
            size = QSize(std::max(320, room.height() * 420 / 860), room.height());
    }
    window->resize(size);
    window->setRootViewController(new PlainViewController);
    appDelegate->setWindow(window);

    appDelegate->didFinishLaunchingWithOptions(this, launchOptions);
    window->makeKeyAndVisible();
    watchTerminationSignals();
    return exec();
}

quint64 Application::supportedInterfaceOrientations(Window* window) {
    return appDelegate ? appDelegate->supportedInterfaceOrientationsFor(this, window)
                       : allOrientationsMask;
}

void Application::watchTerminationSignals() {
    if (signalPipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    signalNotifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, this);
    connect(signalNotifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        [[maybe_unused]] auto got = ::read(signalPipe[1], &byte, 1);
        qCInfo(lcUi) << "signal" << int(byte) << "received, closing";
        closeAllWindows();
        quit();
    });
    struct sigaction action {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A closed terminal: the same orderly end.
    sigaction(SIGHUP, &action, nullptr);
}

} // namespace ui
