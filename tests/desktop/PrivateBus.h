#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

// A session bus of the test's own: a dbus-daemon that ends with it, and the connections made to
// it, closed first. `installed` is false without dbus-daemon; `address` is empty if it failed.
class PrivateBus {
public:
    PrivateBus() {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        installed = !program.isEmpty();
        if (!installed)
            return;
        daemon.start(program, {QStringLiteral("--session"), QStringLiteral("--nofork"),
                               QStringLiteral("--print-address")});
        if (daemon.waitForReadyRead(5000))
            address = QString::fromUtf8(daemon.readLine().trimmed());
    }
    ~PrivateBus() {
        for (const QString& name : names)
            QDBusConnection::disconnectFromBus(name);
        daemon.kill();
        daemon.waitForFinished(3000);
    }

    QDBusConnection connect(const QString& name) {
        names << name;
        return QDBusConnection::connectToBus(address, name);
    }

    bool installed = false;
    QString address;

private:
    QProcess daemon;
    QStringList names;
};
