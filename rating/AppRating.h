#pragma once

#include <functional>

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QtGlobal>

namespace ui {
class ViewController;
}

// Decides when to ask for a review. Everything is class-level and lives for the process; the
// tuning values below are reset at every launch and never persisted. Only "AppRatingFirstUsed",
// "AppRatingLastRemind" and "AppRatingLastVersionRated" survive in the preferences. Main thread
// only.
class AppRating : public QObject {
    Q_OBJECT

public:
    static constexpr qint64 minutesPerDay = 60 * 24;

    // Days after the first consultation before the first prompt. Assigned directly at launch.
    static inline qint64 daysUntilPrompt = 10;
    // Days after a prompt before the next one.
    static inline qint64 remindPeriod = 10;

    // The checked way to change the thresholds: zero would prompt at once, so it stores 10 and
    // writes a warning line instead.
    static void setDaysUntilPrompt(qint64 days);
    static void setRemindPeriod(qint64 days);

    // In debug mode the stored minute values replace the day values, and the appVersion override
    // replaces the shipped version. Outside it the getters answer the days in minutes.
    static bool debugMode() { return ratingDebugMode; }
    static void setDebugMode(bool on);
    static qint64 minuteUntilPrompt();
    static void setMinuteUntilPrompt(qint64 minutes) { ratingMinuteUntilPrompt = minutes; }
    static qint64 minuteRemindPeriod();
    static void setMinuteRemindPeriod(qint64 minutes) { ratingMinuteRemindPeriod = minutes; }

    // The project version, or "0.0.0" when the bundle has none.
    static QString currentAppVersion();
    static QString appVersion();
    static void setAppVersion(const QString& version);

    // Reading a date that was never stored (or is not a date) records now and answers it, so the
    // first consultation, not the first launch, starts the clock.
    static QDateTime firstUsed();
    static void setFirstUsed(const QDateTime& date);
    static QDateTime lastRemind();
    static void setLastRemind(const QDateTime& date);
    // "0.0.0" until set.
    static QString lastVersionRated();
    static void setLastVersionRated(const QString& version);

    // The decision, with its reason written as one line on standard output when the answer is
    // no. May record the first consultation.
    static bool shouldPromptForRating();
    // Shows the first rating dialog over controller when a prompt is due, and remembers when.
    static void promptRateUsIfNeeded(ui::ViewController* controller);
    // Shows the first rating dialog over controller, unconditionally; records nothing.
    static void promptRateUs(ui::ViewController* controller);

    // Whole minutes from one date to another, truncated toward zero; 0 if either is invalid.
    static qint64 minutesBetween(const QDateTime& from, const QDateTime& to);
    // "1.2.3" as {1, 2, 3}; a piece that is not a decimal integer counts as 0.
    static QList<qint64> versionComponents(const QString& version);

    // Where time and the log lines come from; tests replace them.
    static std::function<QDateTime()> now;
    static std::function<void(const QString& line)> writeLine;

    // Back to the values of a fresh launch, seams included; the stored keys are left alone.
    static void resetForTesting();

private:
    static QDateTime storedDate(const char* key);

    static inline bool ratingDebugMode = false;
    static inline qint64 ratingMinuteUntilPrompt = 0;
    static inline qint64 ratingMinuteRemindPeriod = 0;
};
