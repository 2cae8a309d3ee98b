#include <limits>
#include <optional>

#include <QTimeZone>
#include <QWidget>

#include "RatingFixture.h"
#include "platform/foundation/PreferenceSchema.h"

namespace {

using foundation::Preferences;
using foundation::PreferenceSchema;
using rating::test::RatingFixture;

class AppRatingTest : public RatingFixture {
protected:
    QDateTime minutesAgo(qint64 minutes) const { return clock.addSecs(-60 * minutes); }
    QDateTime storedDate(const char* key) const {
        return Preferences::standard().dateForKey(QLatin1String(key));
    }
};

// One consultation. Outside debug mode the thresholds are days; in it, minutes, with the
// version override as the current version.
struct Consultation {
    const char* name;
    std::optional<qint64> firstUsedAgo; // minutes; nullopt: never consulted
    std::optional<qint64> lastRemindAgo;
    bool debug;
    qint64 untilPrompt;
    qint64 remind;
    const char* current; // debug mode only
    const char* rated;   // nullptr: never rated
    bool prompts;
    const char* line; // nullptr: none
};

const Consultation consultations[] = {
    {"FirstEver",
     {},
     {},
     false,
     3,
     10,
     nullptr,
     nullptr,
     false,
     "[AppRating] 🕑 User has just used the app for only 0 minute. AppRating will be prompted in "
     "the next 4320 minutes."},
    {"OneMinuteBeforeTheFirstPrompt", 4319, 4319, false, 3, 10, nullptr, nullptr, false,
     "[AppRating] 🕑 User has just used the app for only 4319 minutes. AppRating will be prompted "
     "in the next 1 minute."},
    // The line reports the minutes since the reminder, not those since the first use.
    {"FirstUseLineCountsFromTheReminder", 100, 7, false, 3, 10, nullptr, nullptr, false,
     "[AppRating] 🕑 User has just used the app for only 7 minutes. AppRating will be prompted in "
     "the next 4313 minutes."},
    {"ClockTurnedBack", -90, -90, false, 3, 10, nullptr, nullptr, false,
     "[AppRating] 🕑 User has just used the app for only -90 minute. AppRating will be prompted "
     "in the next 4410 minutes."},
    // The last word follows 10 days less 4320 minutes, which is negative.
    {"FirstThresholdReachedRemindNot", 4320, 4320, false, 3, 10, nullptr, nullptr, false,
     "[AppRating] 🕙 AppRating was just prompted last 4320 minutes ago. AppRating will be prompted "
     "again in the next 10080 minute."},
    {"RemindPeriodReachedExactly", 14400, 14400, false, 3, 10, nullptr, nullptr, true, nullptr},
    {"ShippedVersionAlreadyRated", 20000, 20000, false, 3, 10, nullptr, TESSARO_VERSION, false,
     "[AppRating] 🙂 User has already rated this version."},
    {"ShorterVersionPrecedesRated", 0, 0, true, 0, 100, "1.0", "1.0.0", true, nullptr},
    {"LowerVersionThanRated", 0, 0, true, 0, 100, "1.2", "1.3", true, nullptr},
    {"HigherVersionThanRatedWaitsForReminder", 0, 0, true, 0, 100, "1.3", "1.2", false,
     "[AppRating] 🕙 AppRating was just prompted last 0 minute ago. AppRating will be prompted "
     "again in the next 100 minutes."},
    {"SameVersionRated", 0, 0, true, 0, 100, "2.0", "2.0", false,
     "[AppRating] 🙂 User has already rated this version."},
    {"EqualNumbersOtherTextWaitForReminder", 0, 0, true, 0, 100, "02.0", "2.0", false,
     "[AppRating] 🕙 AppRating was just prompted last 0 minute ago. AppRating will be prompted "
     "again in the next 100 minutes."},
    {"EqualNumbersOtherTextAfterReminder", 100, 100, true, 0, 100, "02.0", "2.0", true, nullptr},
    {"LettersCountAsZero", 0, 0, true, 0, 100, "1.x", "1.0", false,
     "[AppRating] 🕙 AppRating was just prompted last 0 minute ago. AppRating will be prompted "
     "again in the next 100 minutes."},
    {"NeverRatedWaitsForReminder", 5, 5, true, 0, 100, "1.0", nullptr, false,
     "[AppRating] 🕙 AppRating was just prompted last 5 minutes ago. AppRating will be prompted "
     "again in the next 95 minutes."},
    {"DebugWithZeroMinutes", 0, 0, true, 0, 0, "1.0", nullptr, true, nullptr},
};

TEST_F(AppRatingTest, DecidesInItsOrderAndSaysWhyNot) {
    for (const Consultation& c : consultations) {
        SCOPED_TRACE(c.name);
        Preferences::standard().removeObjectForKey(PreferenceSchema::appRatingFirstUsed);
        Preferences::standard().removeObjectForKey(PreferenceSchema::appRatingLastRemind);
        Preferences::standard().removeObjectForKey(PreferenceSchema::appRatingLastVersionRated);
        AppRating::resetForTesting();
        AppRating::now = [this] { return clock; };
        AppRating::writeLine = [this](const QString& line) { lines.append(line); };
        if (c.firstUsedAgo)
            AppRating::setFirstUsed(minutesAgo(*c.firstUsedAgo));
        if (c.lastRemindAgo)
            AppRating::setLastRemind(minutesAgo(*c.lastRemindAgo));
        if (c.rated)
            AppRating::setLastVersionRated(QString::fromUtf8(c.rated));
        if (c.debug) {
            AppRating::setDebugMode(true);
            AppRating::setMinuteUntilPrompt(c.untilPrompt);
            AppRating::setMinuteRemindPeriod(c.remind);
            AppRating::setAppVersion(QString::fromUtf8(c.current));
        } else {
            AppRating::daysUntilPrompt = c.untilPrompt;
            AppRating::remindPeriod = c.remind;
        }
        lines.clear();

        EXPECT_EQ(AppRating::shouldPromptForRating(), c.prompts);
        EXPECT_EQ(lines, c.line ? QStringList{QString::fromUtf8(c.line)} : QStringList{});
        // A decision is no event: asking again answers the same.
        EXPECT_EQ(AppRating::shouldPromptForRating(), c.prompts);
    }
}

TEST_F(AppRatingTest, FirstConsultationStartsBothClocks) {
    clock = clock.addDays(30);
    EXPECT_FALSE(AppRating::shouldPromptForRating());
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_FALSE(
        Preferences::standard().hasStoredValue(PreferenceSchema::appRatingLastVersionRated))
        << "only the setter records a rated version";
}

TEST_F(AppRatingTest, ADateKeyHoldingSomethingElseStartsOver) {
    Preferences::standard().setString(PreferenceSchema::appRatingFirstUsed, "last Tuesday");
    Preferences::standard().setInteger(PreferenceSchema::appRatingLastRemind, 5);
    Preferences::standard().setInteger(PreferenceSchema::appRatingLastVersionRated, 2);
    AppRating::daysUntilPrompt = 3;

    EXPECT_FALSE(AppRating::shouldPromptForRating());
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_EQ(AppRating::lastVersionRated(), "0.0.0");
}

TEST_F(AppRatingTest, SettersRefuseZeroDaysOnlyAndWarnAboutDebugMode) {
    const QString daysWarning =
        QString::fromUtf8("[AppRating] ‼️ Days until prompt shouldn't be 0.");
    const QString remindWarning =
        QString::fromUtf8("[AppRating] ‼️ Remind period shouldn't be 0.");
    const QString debugWarning = QString::fromUtf8(
        "[AppRating] ‼️ Debug mode is now on. Don't forget to set it back to be 'false' before "
        "uploading to the App Store.");
    struct Row {
        const char* name;
        std::function<void()> set;
        std::function<qint64()> read;
        qint64 expected;
        QStringList written;
    };
    const Row rows[] = {
        {"DaysZero",
         [] { AppRating::setDaysUntilPrompt(0); },
         [] { return AppRating::daysUntilPrompt; },
         10,
         {daysWarning}},
        {"DaysNegative",
         [] { AppRating::setDaysUntilPrompt(-2); },
         [] { return AppRating::daysUntilPrompt; },
         -2,
         {}},
        {"RemindZero",
         [] { AppRating::setRemindPeriod(0); },
         [] { return AppRating::remindPeriod; },
         10,
         {remindWarning}},
        {"RemindOne",
         [] { AppRating::setRemindPeriod(1); },
         [] { return AppRating::remindPeriod; },
         1,
         {}},
        // The stored minutes are what debug mode reads.
        {"MinutesUntilPromptZero",
         [] { AppRating::setMinuteUntilPrompt(0); },
         [] {
             AppRating::setDebugMode(true);
             return AppRating::minuteUntilPrompt();
         },
         0,
         {}},
        {"MinutesRemindZero",
         [] { AppRating::setMinuteRemindPeriod(0); },
         [] {
             AppRating::setDebugMode(true);
             return AppRating::minuteRemindPeriod();
         },
         0,
         {}},
        {"DebugOn",
         [] { AppRating::setDebugMode(true); },
         [] { return qint64(AppRating::debugMode()); },
         1,
         {debugWarning}},
        {"DebugOff",
         [] { AppRating::setDebugMode(false); },
         [] { return qint64(AppRating::debugMode()); },
         0,
         {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        AppRating::resetForTesting();
        AppRating::writeLine = [this](const QString& line) { lines.append(line); };
        lines.clear();
        row.set();
        const QStringList written = lines;
        EXPECT_EQ(row.read(), row.expected);
        EXPECT_EQ(written, row.written);
    }
}

TEST_F(AppRatingTest, OutsideDebugModeTheDaysAndTheShippedVersionCount) {
    AppRating::setMinuteUntilPrompt(1);
    AppRating::setMinuteRemindPeriod(2);
    AppRating::setAppVersion("9.9");
    AppRating::daysUntilPrompt = 3;
    EXPECT_EQ(AppRating::minuteUntilPrompt(), 3 * 24 * 60);
    EXPECT_EQ(AppRating::minuteRemindPeriod(), 10 * 24 * 60);
    EXPECT_EQ(AppRating::currentAppVersion(), TESSARO_VERSION);
    EXPECT_EQ(AppRating::appVersion(), TESSARO_VERSION);
    AppRating::setDebugMode(true);
    EXPECT_EQ(AppRating::appVersion(), "9.9");
}

TEST_F(AppRatingTest, DaysBeyondMinutesStopTheProgram) {
    EXPECT_DEATH(
        {
            AppRating::daysUntilPrompt = std::numeric_limits<qint64>::max() / 1000;
            AppRating::minuteUntilPrompt();
        },
        "daysUntilPrompt .* does not fit");
}

TEST(AppRatingArithmetic, WholeMinutesTruncateTowardZero) {
    const QDateTime from(QDate(2026, 3, 29), QTime(0, 30), Qt::UTC);
    const struct {
        qint64 ms;
        qint64 minutes;
    } rows[] = {{0, 0},      {59999, 0},   {60000, 1},   {90000, 1},
                {-59999, 0}, {-60000, -1}, {-90000, -1}, {7 * 86400000LL, 7 * 1440}};
    for (const auto& row : rows)
        EXPECT_EQ(AppRating::minutesBetween(from, from.addMSecs(row.ms)), row.minutes) << row.ms;
    EXPECT_EQ(AppRating::minutesBetween(QDateTime(), from), 0);
    // Across a daylight-saving change the minutes are the time that passed.
    const QTimeZone berlin("Europe/Berlin");
    if (berlin.isValid()) {
        const QDateTime before(QDate(2026, 3, 29), QTime(1, 0), berlin);
        const QDateTime after(QDate(2026, 3, 29), QTime(4, 0), berlin);
        EXPECT_EQ(AppRating::minutesBetween(before, after), 120);
    }
}

TEST(AppRatingArithmetic, VersionPiecesThatAreNoNumbersCountAsZero) {
    const struct {
        const char* version;
        QList<qint64> components;
    } rows[] = {
        {"1.2.3", {1, 2, 3}},
        {"02.0", {2, 0}},
        {"", {0}},
        {"1..2", {1, 0, 2}},
        {"1.2b", {1, 0}},
        {" 1.2", {0, 2}},
        {"-1.+2", {-1, 2}},
        {"99999999999999999999", {0}},
        {"1.2.3.4.5", {1, 2, 3, 4, 5}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(AppRating::versionComponents(QString::fromUtf8(row.version)), row.components)
            << row.version;
}

TEST_F(AppRatingTest, ADuePromptShowsTheFirstDialogOverTheScreenAndRemembersWhen) {
    AppRating::setFirstUsed(minutesAgo(20000));
    AppRating::setLastRemind(minutesAgo(20000));

    AppRating::promptRateUsIfNeeded(root);

    auto* dialog = qobject_cast<RateAppFirstViewController*>(root->presentedViewController());
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isBeingPresented()) << "shown without animation";
    EXPECT_EQ(dialog->modalPresentationStyle(), ui::ModalPresentationStyle::overCurrentContext);
    EXPECT_TRUE(root->view()->isVisible()) << "the screen that asked stays underneath";
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), minutesAgo(20000));
}

TEST_F(AppRatingTest, APromptNotDueShowsNothingAndRecordsNothing) {
    AppRating::setFirstUsed(minutesAgo(20000));
    AppRating::setLastRemind(minutesAgo(60));

    AppRating::promptRateUsIfNeeded(root);

    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), minutesAgo(60));
}

} // namespace
