#include "rating/AppRating.h"

void AppRating::setDaysUntilPrompt(qint64 days) {
    if (days != 0)
        daysUntilPrompt = days;
}

void AppRating::setRemindPeriod(qint64 days) {
    if (days != 0)
        remindPeriod = days;
}

void AppRating::promptRateUsIfNeeded(ui::ViewController* controller) {
    // The scheduler's decision and its dialogs come next; until then nothing is due.
    Q_UNUSED(controller);
}
