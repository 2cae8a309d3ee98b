#include "platform/desktop/CameraPortal.h"

#include "platform/desktop/DesktopLogging.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFileInfo>

namespace desktop {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString cameraInterface = QStringLiteral("org.freedesktop.portal.Camera");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const char* const responseSlot = SLOT(handleResponse(uint, QVariantMap, QDBusMessage));

} // namespace

CameraPortal::CameraPortal(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), connection(bus) {}

bool CameraPortal::isSandboxed() {
    return QFileInfo::exists(QStringLiteral("/.flatpak-info"));
}

void CameraPortal::accessCamera(std::function<void(bool granted)> handler) {
    QDBusMessage get = QDBusMessage::createMethodCall(
        portalService, portalPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << cameraInterface << QStringLiteral("IsCameraPresent");
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, handler = std::move(handler)](QDBusPendingCallWatcher* call) {
                call->deleteLater();
                const QDBusPendingReply<QDBusVariant> reply = *call;
                if (reply.isError()) {
                    qCWarning(lcDesktop).noquote()
                        << "the camera portal cannot be asked:" << reply.error().message();
                    handler(false);
                } else if (!reply.value().variant().toBool()) {
                    handler(true);
                } else {
                    askForAccess(handler);
                }
            });
}

void CameraPortal::askForAccess(std::function<void(bool granted)> handler) {
    // The portal names the request object after our token; listening before asking means the
    // answer cannot slip past.
    const QString token = QStringLiteral("tessaro%1").arg(++requests);
    const QString sender =
        connection.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    const QString expected =
        portalPath + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
    listen(expected, std::move(handler));

    QDBusMessage access = QDBusMessage::createMethodCall(portalService, portalPath, cameraInterface,
                                                         QStringLiteral("AccessCamera"));
    access << QVariantMap{{QStringLiteral("handle_token"), token}};
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(access), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, expected](QDBusPendingCallWatcher* call) {
                call->deleteLater();
                const QDBusPendingReply<QDBusObjectPath> reply = *call;
                if (reply.isError()) {
                    qCWarning(lcDesktop).noquote()
                        << "the camera portal refused to ask:" << reply.error().message();
                    answer(expected, false);
                    return;
                }
                // Older portals ignore the token and name the request themselves.
                const QString path = reply.value().path();
                if (path != expected && waiting.contains(expected)) {
                    connection.disconnect(portalService, expected, requestInterface,
                                          QStringLiteral("Response"), this, responseSlot);
                    listen(path, waiting.take(expected));
                }
            });
}

void CameraPortal::listen(const QString& requestPath, std::function<void(bool granted)> handler) {
    waiting.insert(requestPath, std::move(handler));
    connection.connect(portalService, requestPath, requestInterface, QStringLiteral("Response"),
                       this, responseSlot);
}

void CameraPortal::answer(const QString& requestPath, bool granted) {
    const std::function<void(bool)> handler = waiting.take(requestPath);
    if (!handler)
        return;
    connection.disconnect(portalService, requestPath, requestInterface, QStringLiteral("Response"),
                          this, responseSlot);
    handler(granted);
}

void CameraPortal::handleResponse(uint response, const QVariantMap&, const QDBusMessage& message) {
    // 0 is granted; 1 the user said no or closed the dialog; 2 anything else.
    answer(message.path(), response == 0);
}

} // namespace desktop
