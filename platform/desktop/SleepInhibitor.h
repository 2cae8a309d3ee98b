#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <memory>
#include <optional>

namespace desktop {

// Keeps the machine awake and the screen on while it lives: asks logind not to suspend or go
// idle, and the desktop's screen saver not to start. Both are best effort: a machine without
// them records all the same. The requests go out without waiting; a release before the answers
// arrive still lets go of them once they do.
class SleepInhibitor : public QObject {
    Q_OBJECT

public:
    explicit SleepInhibitor(const QString& reason, QObject* parent = nullptr);
    // Asks logind on system and the screen saver on session.
    SleepInhibitor(const QString& reason, QDBusConnection system, QDBusConnection session,
                   QObject* parent = nullptr);
    ~SleepInhibitor() override;

    // Whether logind and the screen saver have granted the requests so far.
    bool holdsSleepLock() const { return sleepLock.isValid(); }
    bool holdsScreenSaverCookie() const { return screenSaverCookie.has_value(); }

private:
    QDBusConnection sessionBus;
    QDBusUnixFileDescriptor sleepLock;
    std::optional<uint> screenSaverCookie;
    // Shared with the pending answers, so an answer that comes after the inhibitor is gone
    // releases what it was granted.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

} // namespace desktop
