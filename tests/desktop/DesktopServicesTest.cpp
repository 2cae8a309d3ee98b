#include "platform/desktop/CameraPortal.h"
#include "platform/desktop/SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <optional>
#include <unistd.h>

// The portal's camera interface, answering before its reply as one that remembers a choice may.
class FakeCameraPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Camera")
    Q_PROPERTY(bool IsCameraPresent MEMBER cameraPresent)

public:
    bool cameraPresent = true;
    uint response = 0;
    int asked = 0;

public slots:
    QDBusObjectPath AccessCamera(const QVariantMap& options) {
        ++asked;
        const QString path = "/org/freedesktop/portal/desktop/request/" +
                             message().service().mid(1).replace('.', '_') + '/' +
                             options.value("handle_token").toString();
        connection().send(
            QDBusMessage::createSignal(path, "org.freedesktop.portal.Request", "Response")
            << response << QVariantMap());
        return QDBusObjectPath(path);
    }
};

// logind's inhibitor: the lock is a pipe's write end, released when the read end sees its end.
class FakeLogin : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    int readEnd = -1;
    QString what;
    ~FakeLogin() override { ::close(readEnd); }
    // Never blocks: a held lock reads as "try again", a released one as end-of-file.
    bool released() const {
        char byte;
        return ::read(readEnd, &byte, 1) == 0;
    }

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& kinds, const QString&, const QString&,
                                    const QString&) {
        what = kinds;
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_NONBLOCK), 0);
        readEnd = ends[0];
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(ends[1]);
        return lock;
    }
};

class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QList<uint> held;
    int granted = 0;

public slots:
    uint Inhibit(const QString&, const QString&) {
        held << 7;
        ++granted;
        return 7;
    }
    void UnInhibit(uint cookie) { held.removeOne(cookie); }
};

namespace desktop {
namespace {

// A session bus of the test's own, its connections closed before it ends; skipped without one.
class DesktopServices : public ::testing::Test {
protected:
    void SetUp() override {
        const QString program = QStandardPaths::findExecutable("dbus-daemon");
        if (program.isEmpty())
            GTEST_SKIP() << "dbus-daemon is not installed";
        daemon.start(program, {"--session", "--nofork", "--print-address"});
        ASSERT_TRUE(daemon.waitForReadyRead(5000));
        address = QString::fromUtf8(daemon.readLine().trimmed());
        ASSERT_FALSE(address.isEmpty());
    }
    void TearDown() override {
        for (const QString& name : names)
            QDBusConnection::disconnectFromBus(name);
        daemon.kill();
        daemon.waitForFinished(3000);
    }

    QDBusConnection connect(const QString& name) {
        names << name;
        return QDBusConnection::connectToBus(address, name);
    }
    // Offers the object on the connection under this service name and path.
    static bool offer(QDBusConnection& bus, const QString& service, const QString& path,
                      QObject* object) {
        return bus.registerService(service) &&
               bus.registerObject(path, object,
                                  QDBusConnection::ExportAllSlots |
                                      QDBusConnection::ExportAllProperties);
    }

    QProcess daemon;
    QString address;
    QStringList names;
};

TEST_F(DesktopServices, cameraPortalLetsTheUsersAnswerDecideAndAsksNothingWithoutACamera) {
    FakeCameraPortal fake;
    QDBusConnection desktop = connect("desktop");
    ASSERT_TRUE(
        offer(desktop, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", &fake));
    CameraPortal portal(connect("app"));
    auto ask = [&portal] {
        std::optional<bool> granted;
        portal.accessCamera([&](bool answer) { granted = answer; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return granted.has_value(); }, 5000));
        return granted;
    };

    EXPECT_EQ(ask(), true);
    fake.response = 1; // refused, or the dialog closed
    EXPECT_EQ(ask(), false);
    EXPECT_EQ(fake.asked, 2);
    fake.cameraPresent = false;
    EXPECT_EQ(ask(), true);
    EXPECT_EQ(fake.asked, 2);
    desktop.unregisterService("org.freedesktop.portal.Desktop");
    EXPECT_EQ(ask(), false);
}

TEST_F(DesktopServices, sleepInhibitorHoldsBothLocksWhileItLivesAndLetsGoAfter) {
    FakeLogin login;
    FakeScreenSaver screenSaver;
    QDBusConnection services = connect("services");
    ASSERT_TRUE(offer(services, "org.freedesktop.login1", "/org/freedesktop/login1", &login));
    ASSERT_TRUE(offer(services, "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                      &screenSaver));
    QDBusConnection app = connect("app");
    if (!app.isConnected() ||
        !(app.connectionCapabilities() & QDBusConnection::UnixFileDescriptorPassing))
        GTEST_SKIP() << "the bus cannot pass file descriptors";

    auto inhibitor = std::make_unique<SleepInhibitor>("Recording", app, app);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return inhibitor->holdsSleepLock() && inhibitor->holdsScreenSaverCookie(); }, 5000));
    EXPECT_EQ(login.what, "sleep:idle");
    EXPECT_EQ(screenSaver.held.size(), 1);
    EXPECT_FALSE(login.released());

    inhibitor.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return screenSaver.held.isEmpty(); }, 5000));
    EXPECT_TRUE(login.released());

    // Gone before the answers came: what was granted is still given back.
    inhibitor = std::make_unique<SleepInhibitor>("Recording", app, app);
    inhibitor.reset();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return screenSaver.granted == 2 && screenSaver.held.isEmpty(); }, 5000));
}

} // namespace
} // namespace desktop

#include "DesktopServicesTest.moc"
