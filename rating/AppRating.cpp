#include "rating/AppRating.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include <QtNumeric>

#include "platform/foundation/Bundle.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "rating/RateAppFirstViewController.h"

namespace {

using foundation::PreferenceSchema;

constexpr qint64 fallbackDays = 10;
const QString neverRated = QStringLiteral("0.0.0");

// Set on first use, from the shipped version.
std::optional<QString> appVersionOverride;

foundation::Preferences& defaults() {
    return foundation::Preferences::standard();
}

QString unit(qint64 value) {
    return value > 1 ? QStringLiteral("minutes") : QStringLiteral("minute");
}

// The thresholds only come from code, so an overflow is a programming error, not user data:
// stop with a message rather than wrap around to a prompt at the wrong time.
qint64 daysInMinutes(qint64 days, const char* what) {
    qint64 minutes = 0;
    if (qMulOverflow(days, AppRating::minutesPerDay, &minutes))
        qFatal("AppRating: %s of %lld days does not fit in minutes", what,
               static_cast<long long>(days));
    return minutes;
}

qint64 difference(qint64 a, qint64 b, const char* what) {
    qint64 result = 0;
    if (qSubOverflow(a, b, &result))
        qFatal("AppRating: %s %lld - %lld overflows", what, static_cast<long long>(a),
               static_cast<long long>(b));
    return result;
}

QDateTime currentDateTime() {
    return QDateTime::currentDateTime();
}

void writeToStandardOutput(const QString& line) {
    const QByteArray text = line.toUtf8() + '\n';
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout);
}

} // namespace

std::function<QDateTime()> AppRating::now = currentDateTime;
std::function<void(const QString& line)> AppRating::writeLine = writeToStandardOutput;

void AppRating::setDaysUntilPrompt(qint64 days) {
    if (days == 0) {
        days = fallbackDays;
        writeLine(QStringLiteral("[AppRating] \u203C\uFE0F Days until prompt shouldn't be 0."));
    }
    daysUntilPrompt = days;
}

void AppRating::setRemindPeriod(qint64 days) {
    if (days == 0) {
        days = fallbackDays;
        writeLine(QStringLiteral("[AppRating] \u203C\uFE0F Remind period shouldn't be 0."));
    }
    remindPeriod = days;
}

void AppRating::setDebugMode(bool on) {
    ratingDebugMode = on;
    if (on)
        writeLine(QStringLiteral("[AppRating] \u203C\uFE0F Debug mode is now on. Don't forget to "
                                 "set it back to be 'false' before uploading to the App Store."));
}

qint64 AppRating::minuteUntilPrompt() {
    return ratingDebugMode ? ratingMinuteUntilPrompt
                           : daysInMinutes(daysUntilPrompt, "daysUntilPrompt");
}

qint64 AppRating::minuteRemindPeriod() {
    return ratingDebugMode ? ratingMinuteRemindPeriod : daysInMinutes(remindPeriod, "remindPeriod");
}

QString AppRating::currentAppVersion() {
    static const QString version = [] {
        const QVariant value = foundation::Bundle::main().objectForInfoDictionaryKey(
            QStringLiteral("CFBundleShortVersionString"));
        return value.typeId() == QMetaType::QString ? value.toString() : neverRated;
    }();
    return version;
}

QString AppRating::appVersion() {
    if (!appVersionOverride)
        appVersionOverride = currentAppVersion();
    return ratingDebugMode ? *appVersionOverride : currentAppVersion();
}

void AppRating::setAppVersion(const QString& version) {
    appVersionOverride = version;
}

QDateTime AppRating::storedDate(const char* key) {
    const std::optional<foundation::PreferenceValue> value =
        defaults().valueForKey(QLatin1String(key));
    if (value && value->holds<QDateTime>() && value->getIf<QDateTime>()->isValid())
        return *value->getIf<QDateTime>();
    // Absent, or something else was written under the key: start counting from now.
    const QDateTime current = now();
    defaults().setDate(QLatin1String(key), current);
    return current;
}

QDateTime AppRating::firstUsed() {
    return storedDate(PreferenceSchema::appRatingFirstUsed);
}

void AppRating::setFirstUsed(const QDateTime& date) {
    defaults().setDate(QLatin1String(PreferenceSchema::appRatingFirstUsed), date);
}

QDateTime AppRating::lastRemind() {
    return storedDate(PreferenceSchema::appRatingLastRemind);
}

void AppRating::setLastRemind(const QDateTime& date) {
    defaults().setDate(QLatin1String(PreferenceSchema::appRatingLastRemind), date);
}

QString AppRating::lastVersionRated() {
    const std::optional<foundation::PreferenceValue> value =
        defaults().valueForKey(QLatin1String(PreferenceSchema::appRatingLastVersionRated));
    // The file is the user's: a value of another type reads as never rated.
    return value && value->holds<QString>() ? *value->getIf<QString>() : neverRated;
}

void AppRating::setLastVersionRated(const QString& version) {
    defaults().setString(QLatin1String(PreferenceSchema::appRatingLastVersionRated), version);
}

qint64 AppRating::minutesBetween(const QDateTime& from, const QDateTime& to) {
    if (!from.isValid() || !to.isValid())
        return 0;
    // Elapsed time, not wall-clock fields: a daylight-saving change neither adds nor loses an
    // hour. Integer division truncates toward zero, negative intervals included.
    return from.msecsTo(to) / 60000;
}

QList<qint64> AppRating::versionComponents(const QString& version) {
    QList<qint64> components;
    for (const QString& piece : version.split(QLatin1Char('.'))) {
        bool ok = false;
        // toLongLong would forgive surrounding spaces; a version piece with them is not a number.
        const qint64 number = piece.trimmed() == piece ? piece.toLongLong(&ok, 10) : 0;
        components.append(ok ? number : 0);
    }
    return components;
}

bool AppRating::shouldPromptForRating() {
    const qint64 usedMinutes = minutesBetween(firstUsed(), now());
    const qint64 sinceRemind = minutesBetween(lastRemind(), now());
    const qint64 untilPrompt = minuteUntilPrompt();

    if (usedMinutes < untilPrompt) {
        // The minutes since the last reminder, not usedMinutes, are what this line has always
        // reported.
        const qint64 left = difference(untilPrompt, sinceRemind, "minutes until the prompt");
        writeLine(
            QStringLiteral("[AppRating] \U0001F551 User has just used the app for only %1 %2. "
                           "AppRating will be prompted in the next %3 %4.")
                .arg(sinceRemind)
                .arg(unit(sinceRemind))
                .arg(left)
                .arg(unit(left)));
        return false;
    }

    const QString current = appVersion();
    const QString rated = lastVersionRated();
    const QList<qint64> currentComponents = versionComponents(current);
    const QList<qint64> ratedComponents = versionComponents(rated);
    // A version older than the rated one (a downgrade, or a rating recorded ahead) asks at once.
    if (std::lexicographical_compare(currentComponents.begin(), currentComponents.end(),
                                     ratedComponents.begin(), ratedComponents.end()))
        return true;
    if (current == rated) {
        writeLine(QStringLiteral("[AppRating] \U0001F642 User has already rated this version."));
        return false;
    }

    const qint64 remindMinutes = minuteRemindPeriod();
    if (sinceRemind >= remindMinutes)
        return true;
    const qint64 left = difference(remindMinutes, sinceRemind, "minutes until the reminder");
    // The unit word follows the raw days less the minutes, in debug mode too; kept as it always
    // was.
    const qint64 unitBasis = difference(remindPeriod, sinceRemind, "days less minutes");
    writeLine(QStringLiteral("[AppRating] \U0001F559 AppRating was just prompted last %1 %2 ago. "
                             "AppRating will be prompted again in the next %3 %4.")
                  .arg(sinceRemind)
                  .arg(unit(sinceRemind))
                  .arg(left)
                  .arg(unit(unitBasis)));
    return false;
}

void AppRating::promptRateUsIfNeeded(ui::ViewController* controller) {
    if (!shouldPromptForRating())
        return;
    promptRateUs(controller);
    setLastRemind(now());
}

void AppRating::promptRateUs(ui::ViewController* controller) {
    if (!controller)
        qFatal("AppRating::promptRateUs: no controller to present the rating dialog from");
    auto* dialog = ui::Storyboard(QStringLiteral("Main")).instantiate<RateAppFirstViewController>();
    if (!dialog)
        qFatal(
            "AppRating::promptRateUs: the storyboard \"Main\" has no RateAppFirstViewController");
    // The screen asking stays visible, dimmed, under the card.
    dialog->setModalPresentationStyle(ui::ModalPresentationStyle::overCurrentContext);
    controller->present(dialog, false);
}

void AppRating::resetForTesting() {
    daysUntilPrompt = fallbackDays;
    remindPeriod = fallbackDays;
    ratingDebugMode = false;
    ratingMinuteUntilPrompt = 0;
    ratingMinuteRemindPeriod = 0;
    appVersionOverride.reset();
    now = currentDateTime;
    writeLine = writeToStandardOutput;
}
