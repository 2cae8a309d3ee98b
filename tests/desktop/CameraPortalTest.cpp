#include "platform/desktop/CameraPortal.h"

#include "PrivateBus.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

// The desktop portal's camera interface as a desktop provides it; it answers at once, before
// its reply to the request, as a portal that remembers the user's choice may.
class FakeCameraPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Camera")
    Q_PROPERTY(bool IsCameraPresent READ isCameraPresent)

public:
    bool cameraPresent = true;
    uint response = 0;
    int asked = 0;

    bool isCameraPresent() const { return cameraPresent; }

public slots:
    QDBusObjectPath AccessCamera(const QVariantMap& options) {
        ++asked;
        const QString sender =
            message().service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop/request/") + sender +
                             QLatin1Char('/') +
                             options.value(QStringLiteral("handle_token")).toString();
        QDBusMessage answer = QDBusMessage::createSignal(
            path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        answer << response << QVariantMap();
        connection().send(answer);
        return QDBusObjectPath(path);
    }
};

namespace desktop {
namespace {

TEST(CameraPortal, theUsersAnswerDecidesAndWithoutACameraNothingIsAsked) {
    PrivateBus bus;
    if (!bus.installed)
        GTEST_SKIP() << "dbus-daemon is not installed";
    ASSERT_FALSE(bus.address.isEmpty());
    FakeCameraPortal fake;
    QDBusConnection desktop = bus.connect(QStringLiteral("desktop"));
    ASSERT_TRUE(desktop.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    ASSERT_TRUE(desktop.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &fake,
                                       QDBusConnection::ExportAllSlots |
                                           QDBusConnection::ExportAllProperties));
    CameraPortal portal(bus.connect(QStringLiteral("app")));
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
    desktop.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
    EXPECT_EQ(ask(), false);
}

} // namespace
} // namespace desktop

#include "CameraPortalTest.moc"
