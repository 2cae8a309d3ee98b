#pragma once

#include <QObject>
#include <QtGlobal>

namespace ui {
class ViewController;
}

// Decides when to ask for a review. Everything is class-level and lives for the process;
// the tuning values below are reset at every launch and never persisted.
class AppRating : public QObject {
    Q_OBJECT

public:
    // Days after the first consultation before the first prompt. Assigned directly at launch.
    static inline qint64 daysUntilPrompt = 10;
    // Days after a prompt before the next one.
    static inline qint64 remindPeriod = 10;

    // The checked way to change the thresholds: zero would prompt at once, so it is refused.
    static void setDaysUntilPrompt(qint64 days);
    static void setRemindPeriod(qint64 days);

    // Shows the first rating dialog over controller when a prompt is due, and remembers when.
    static void promptRateUsIfNeeded(ui::ViewController* controller);
};
