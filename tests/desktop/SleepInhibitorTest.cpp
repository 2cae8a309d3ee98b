#include "platform/desktop/SleepInhibitor.h"

#include "PrivateBus.h"

#include <QDBusUnixFileDescriptor>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

// logind's inhibitor: hands out the write end of a pipe, so the test sees the lock released
// when its read end reaches end-of-file.
class FakeLogin : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    int readEnd = -1;
    QString what;
    ~FakeLogin() override {
        if (readEnd >= 0)
            ::close(readEnd);
    }
    // Never blocks: a held lock reads as "try again", a released one as end-of-file.
    bool released() const {
        char byte;
        return readEnd >= 0 && ::read(readEnd, &byte, 1) == 0;
    }

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& kinds, const QString&, const QString&,
                                    const QString&) {
        what = kinds;
        int ends[2];
        if (::pipe(ends) != 0)
            return {};
        readEnd = ends[0];
        ::fcntl(readEnd, F_SETFL, O_NONBLOCK);
        QDBusUnixFileDescriptor lock(ends[1]); // dups the descriptor
        ::close(ends[1]);
        return lock;
    }
};

class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QList<uint> held;

public slots:
    uint Inhibit(const QString&, const QString&) {
        held << 7;
        return 7;
    }
    void UnInhibit(uint cookie) { held.removeOne(cookie); }
};

namespace desktop {
namespace {

TEST(SleepInhibitor, holdsBothLocksWhileItLivesAndLetsGoAfter) {
    PrivateBus bus;
    if (!bus.installed)
        GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_FALSE(bus.address.isEmpty());
    FakeLogin login;
    FakeScreenSaver screenSaver;
    QDBusConnection services = bus.connect(QStringLiteral("services"));
    ASSERT_TRUE(services.registerService(QStringLiteral("org.freedesktop.login1")));
    ASSERT_TRUE(services.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));
    ASSERT_TRUE(services.registerObject(QStringLiteral("/org/freedesktop/login1"), &login,
                                        QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(services.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"),
                                        &screenSaver, QDBusConnection::ExportAllSlots));
    QDBusConnection app = bus.connect(QStringLiteral("app"));
    if (!app.isConnected() ||
        !(app.connectionCapabilities() & QDBusConnection::UnixFileDescriptorPassing))
        GTEST_SKIP() << "the bus cannot pass file descriptors";

    auto inhibitor = std::make_unique<SleepInhibitor>(QStringLiteral("Recording"), app, app);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return inhibitor->holdsSleepLock() && inhibitor->holdsScreenSaverCookie(); }, 5000));
    EXPECT_EQ(login.what, QStringLiteral("sleep:idle"));
    EXPECT_EQ(screenSaver.held.size(), 1);
    EXPECT_FALSE(login.released());

    inhibitor.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return screenSaver.held.isEmpty(); }, 5000));
    EXPECT_TRUE(login.released());

    // Gone before the answers came: what was granted is still given back.
    inhibitor = std::make_unique<SleepInhibitor>(QStringLiteral("Recording"), app, app);
    inhibitor.reset();
    QTest::qWait(200);
    EXPECT_TRUE(screenSaver.held.isEmpty());
}

} // namespace
} // namespace desktop

#include "SleepInhibitorTest.moc"
