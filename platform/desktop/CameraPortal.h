#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QVariantMap>

#include <functional>

class QDBusMessage;

namespace desktop {

// The desktop portal's camera access, which decides for a sandboxed (Flatpak) app: the first
// request shows the desktop's own dialog, and the portal keeps the user's answer for the app.
// GUI thread; answers arrive there, through the event loop.
class CameraPortal : public QObject {
    Q_OBJECT

public:
    explicit CameraPortal(const QDBusConnection& bus, QObject* parent = nullptr);

    static bool isSandboxed();

    // Asks for access. granted is false when the user refused or closed the dialog, and when the
    // portal cannot be reached. No camera at all is granted: the virtual camera needs no access.
    void accessCamera(std::function<void(bool granted)> handler);

private slots:
    void handleResponse(uint response, const QVariantMap& results, const QDBusMessage& message);

private:
    void askForAccess(std::function<void(bool granted)> handler);
    void listen(const QString& requestPath, std::function<void(bool granted)> handler);
    void answer(const QString& requestPath, bool granted);

    QDBusConnection connection;
    QHash<QString, std::function<void(bool granted)>> waiting; // by request object path
    quint64 requests = 0;
};

} // namespace desktop
