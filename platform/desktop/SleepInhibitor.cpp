#include "platform/desktop/SleepInhibitor.h"

#include "platform/desktop/DesktopLogging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace desktop {

namespace {

const QString screenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");

void releaseScreenSaver(QDBusConnection bus, uint cookie) {
    bus.asyncCall(QDBusMessage::createMethodCall(screenSaverService, screenSaverPath,
                                                 screenSaverService, QStringLiteral("UnInhibit"))
                  << cookie);
}

} // namespace

SleepInhibitor::SleepInhibitor(const QString& reason, QObject* parent)
    : SleepInhibitor(reason, QDBusConnection::systemBus(), QDBusConnection::sessionBus(), parent) {}

SleepInhibitor::SleepInhibitor(const QString& reason, QDBusConnection system,
                               QDBusConnection session, QObject* parent)
    : QObject(parent), sessionBus(session) {
    const QString application = QStringLiteral("Tessaro");
    if (system.isConnected()) {
        QDBusMessage inhibit = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
        inhibit << QStringLiteral("sleep:idle") << application << reason << QStringLiteral("block");
        auto* watcher = new QDBusPendingCallWatcher(system.asyncCall(inhibit), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this,
                [this](QDBusPendingCallWatcher* call) {
                    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *call;
                    if (reply.isValid())
                        sleepLock = reply.value();
                    else
                        qCDebug(lcDesktop) << "no sleep lock:" << reply.error().message();
                    call->deleteLater();
                });
    }
    if (session.isConnected()) {
        QDBusMessage inhibit = QDBusMessage::createMethodCall(
            screenSaverService, screenSaverPath, screenSaverService, QStringLiteral("Inhibit"));
        inhibit << application << reason;
        // Not parented: the answer may come after this object is gone and must still be undone.
        auto* watcher = new QDBusPendingCallWatcher(session.asyncCall(inhibit));
        connect(watcher, &QDBusPendingCallWatcher::finished,
                [this, alive = alive, session](QDBusPendingCallWatcher* call) {
                    const QDBusPendingReply<uint> reply = *call;
                    call->deleteLater();
                    if (!reply.isValid()) {
                        qCDebug(lcDesktop)
                            << "no screen saver inhibition:" << reply.error().message();
                        return;
                    }
                    if (*alive)
                        screenSaverCookie = reply.value();
                    else
                        releaseScreenSaver(session, reply.value());
                });
    }
}

SleepInhibitor::~SleepInhibitor() {
    *alive = false;
    if (screenSaverCookie)
        releaseScreenSaver(sessionBus, *screenSaverCookie);
    // The sleep lock goes with its file descriptor.
}

} // namespace desktop
