#include <optional>

#include <QWidget>

#include "RatingFixture.h"
#include "platform/foundation/PreferenceSchema.h"

namespace {

using foundation::Preferences;
using foundation::PreferenceSchema;
using rating::test::RatingFixture;

QString firstUseLine(const char* used, const char* left) {
    return QString("[AppRating] 🕑 User has just used the app for only %1. AppRating will be "
                   "prompted in the next %2.")
        .arg(used, left);
}
QString remindLine(const char* since, const char* left) {
    return QString("[AppRating] 🕙 AppRating was just prompted last %1 ago. AppRating will be "
                   "prompted again in the next %2.")
        .arg(since, left);
}
const QString ratedLine("[AppRating] 🙂 User has already rated this version.");
constexpr std::nullopt_t never = std::nullopt;

class AppRatingTest : public RatingFixture {
protected:
    QDateTime minutesAgo(qint64 minutes) const { return clock.addSecs(-60 * minutes); }
    QDateTime storedDate(const char* key) const {
        return Preferences::standard().dateForKey(QLatin1String(key));
    }
    void startOver() {
        for (const char* key :
             {PreferenceSchema::appRatingFirstUsed, PreferenceSchema::appRatingLastRemind,
              PreferenceSchema::appRatingLastVersionRated})
            Preferences::standard().removeObjectForKey(key);
        resetScheduler();
    }
    void expectDecision(bool prompts, const QString& line) {
        lines.clear();
        EXPECT_EQ(AppRating::shouldPromptForRating(), prompts);
        EXPECT_EQ(lines, line.isEmpty() ? QStringList() : QStringList{line});
        // Deciding is no event: asking again answers the same.
        EXPECT_EQ(AppRating::shouldPromptForRating(), prompts);
    }
};

TEST_F(AppRatingTest, WithTheLaunchDaysTheDatesDecideAndTheLineSaysWhyNot) {
    const struct {
        const char* name;
        std::optional<qint64> firstUsedAgo, lastRemindAgo; // minutes
        const char* rated;
        bool prompts;
        QString line;
    } rows[] = {
        {"FirstEver", never, never, nullptr, false, firstUseLine("0 minute", "4320 minutes")},
        {"OneMinuteShort", 4319, 4319, nullptr, false, firstUseLine("4319 minutes", "1 minute")},
        // The line counts from the reminder although the test counts from the first use.
        {"LineCountsFromReminder", 100, 7, nullptr, false,
         firstUseLine("7 minutes", "4313 minutes")},
        {"ClockTurnedBack", -90, -90, nullptr, false, firstUseLine("-90 minute", "4410 minutes")},
        // The last word follows 10 days less 4320 minutes, which is negative.
        {"UsedEnoughNotReminded", 4320, 4320, nullptr, false,
         remindLine("4320 minutes", "10080 minute")},
        {"RemindedExactlyLongAgo", 14400, 14400, nullptr, true, {}},
        {"ShippedVersionRated", 20000, 20000, TESSARO_VERSION, false, ratedLine},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        startOver();
        AppRating::daysUntilPrompt = 3;
        if (row.firstUsedAgo)
            AppRating::setFirstUsed(minutesAgo(*row.firstUsedAgo));
        if (row.lastRemindAgo)
            AppRating::setLastRemind(minutesAgo(*row.lastRemindAgo));
        if (row.rated)
            AppRating::setLastVersionRated(row.rated);
        expectDecision(row.prompts, row.line);
    }
}

// In debug mode the stored minutes replace the days and the override the shipped version; the
// remind line's last word still follows the 10 days.
TEST_F(AppRatingTest, InDebugModeTheVersionsDecideBeforeTheReminder) {
    const struct {
        const char* current;
        const char* rated; // nullptr: never rated
        qint64 sinceRemind, remindMinutes;
        bool prompts;
        QString line;
    } rows[] = {
        {"1.0", "1.0.0", 0, 100, true, {}},
        {"1.2", "1.3", 0, 100, true, {}},
        {"1.3", "1.2", 0, 100, false, remindLine("0 minute", "100 minutes")},
        {"2.0", "2.0", 500, 100, false, ratedLine},
        {"02.0", "2.0", 0, 100, false, remindLine("0 minute", "100 minutes")},
        {"02.0", "2.0", 100, 100, true, {}},
        {"1.x", "1.0", 5, 100, false, remindLine("5 minutes", "95 minutes")},
        {"1.0", nullptr, 99, 100, false, remindLine("99 minutes", "1 minute")},
        {"1.0", nullptr, 0, 0, true, {}},
        {"1.0", nullptr, 3, 4, false, remindLine("3 minutes", "1 minutes")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.current) + " rated " + (row.rated ? row.rated : "never"));
        startOver();
        AppRating::setDebugMode(true);
        AppRating::setAppVersion(row.current);
        AppRating::setMinuteRemindPeriod(row.remindMinutes);
        AppRating::setFirstUsed(minutesAgo(row.sinceRemind));
        AppRating::setLastRemind(minutesAgo(row.sinceRemind));
        if (row.rated)
            AppRating::setLastVersionRated(row.rated);
        expectDecision(row.prompts, row.line);
    }
}

TEST_F(AppRatingTest, TheFirstConsultationStartsBothClocksWhateverTheKeysHeld) {
    clock = clock.addDays(30);
    Preferences::standard().setString(PreferenceSchema::appRatingFirstUsed, "last Tuesday");
    Preferences::standard().setInteger(PreferenceSchema::appRatingLastVersionRated, 2);
    EXPECT_FALSE(AppRating::shouldPromptForRating());
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_EQ(AppRating::lastVersionRated(), "0.0.0");
}

TEST_F(AppRatingTest, SettersRefuseZeroDaysOnlyAndDebugModeWarnsWhenSwitchedOn) {
    AppRating::setDaysUntilPrompt(0);
    EXPECT_EQ(AppRating::daysUntilPrompt, 10);
    AppRating::setRemindPeriod(0);
    EXPECT_EQ(AppRating::remindPeriod, 10);
    AppRating::setDaysUntilPrompt(-2);
    EXPECT_EQ(AppRating::daysUntilPrompt, -2);
    EXPECT_EQ(AppRating::minuteUntilPrompt(), -2 * 1440);
    AppRating::setMinuteUntilPrompt(0);
    AppRating::setMinuteRemindPeriod(0);
    AppRating::setAppVersion("9.9");
    EXPECT_EQ(AppRating::appVersion(), TESSARO_VERSION) << "the override waits for debug mode";
    AppRating::setDebugMode(false);
    AppRating::setDebugMode(true);
    EXPECT_EQ(AppRating::minuteUntilPrompt(), 0);
    EXPECT_EQ(AppRating::minuteRemindPeriod(), 0);
    EXPECT_EQ(AppRating::appVersion(), "9.9");
    EXPECT_EQ(lines, QStringList({"[AppRating] ‼️ Days until prompt shouldn't be 0.",
                                  "[AppRating] ‼️ Remind period shouldn't be 0.",
                                  "[AppRating] ‼️ Debug mode is now on. Don't forget to set it "
                                  "back to be 'false' before uploading to the App Store."}));
}

TEST(AppRatingArithmetic, WholeMinutesTruncateTowardZeroAndVersionJunkCountsAsZero) {
    const QDateTime from(QDate(2026, 3, 29), QTime(0, 30), Qt::UTC);
    for (auto [ms, minutes] : {std::pair{59999LL, 0LL}, {60000, 1}, {-59999, 0}, {-90000, -1}})
        EXPECT_EQ(AppRating::minutesBetween(from, from.addMSecs(ms)), minutes) << ms;
    EXPECT_EQ(AppRating::versionComponents("1..2b. 3.-4.99999999999999999999"),
              QList<qint64>({1, 0, 0, 0, -4, 0}));
}

TEST_F(AppRatingTest, ADuePromptShowsTheFirstDialogAtOnceOverTheScreenAndRemembersWhen) {
    AppRating::setFirstUsed(minutesAgo(20000));
    AppRating::setLastRemind(minutesAgo(60));
    AppRating::promptRateUsIfNeeded(root);
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), minutesAgo(60));

    AppRating::setLastRemind(minutesAgo(20000));
    AppRating::promptRateUsIfNeeded(root);
    auto* dialog = qobject_cast<RateAppFirstViewController*>(root->presentedViewController());
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isBeingPresented());
    EXPECT_EQ(dialog->modalPresentationStyle(), ui::ModalPresentationStyle::overCurrentContext);
    EXPECT_TRUE(root->view()->isVisible());
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), minutesAgo(20000));
}

} // namespace
