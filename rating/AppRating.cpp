#include "rating/AppRating.h"

void AppRating::setDaysUntilPrompt(qint64 days) {
    if (days != 0)
        daysUntilPrompt = days;
}

void AppRating::setRemindPeriod(qint64 days) {
    if (days != 0)
        remindPeriod = days;
}
