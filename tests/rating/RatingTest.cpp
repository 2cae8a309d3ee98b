#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>

#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/MailComposeViewController.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "rating/AppRating.h"
#include "rating/RateAppFirstViewController.h"
#include "rating/RateAppLikedViewController.h"
#include "rating/RateAppMailViewController.h"

// Readable failures: the texts, not their UTF-16 units.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

using foundation::Preferences;
using foundation::PreferenceSchema;

// Fresh preferences, a scheduler as after launch with a clock that stands still and its lines
// caught, the three dialogs' scenes with the review link caught, and a phone-sized window whose
// root asks for ratings.
class RatingFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        qputenv("TESSARO_CONFIG_DIR", folder.path().toUtf8());
        foundation::Preferences::resetStandardForTesting();
        resetScheduler();

        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        registerScene<RateAppFirstViewController>();
        registerScene<RateAppLikedViewController>();
        registerScene<RateAppMailViewController>();

        window.resize(390, 844);
        window.setRootViewController(root);
        window.show();

        ASSERT_TRUE(QDir(folder.path()).mkpath("bin"));
        qputenv("PATH", folder.filePath("bin").toUtf8());
        RateAppLikedViewController::openURL = [this](const QUrl& url) {
            opened.append(url.toString() + (root->presentedViewController() ? " shown" : ""));
            return true;
        };
    }
    void TearDown() override {
        RateAppLikedViewController::openURL = savedOpener;
        qputenv("PATH", savedPath);
        AppRating::resetForTesting();
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        foundation::Preferences::resetStandardForTesting();
    }

    template <typename Scene> static void registerScene() {
        ui::Storyboard::registerFactory(QStringLiteral("Main"),
                                        ui::Storyboard::identifierOf(Scene::staticMetaObject),
                                        [] { return new Scene; });
    }
    void resetScheduler() {
        AppRating::resetForTesting();
        AppRating::now = [this] { return clock; };
        AppRating::writeLine = [this](const QString& line) { lines.append(line); };
    }

    QDateTime minutesAgo(qint64 minutes) const { return clock.addSecs(-60 * minutes); }
    QDateTime storedDate(const char* key) const {
        return Preferences::standard().dateForKey(QLatin1String(key));
    }

    // xdg-utils are replaced by small scripts in a folder that is the whole PATH.
    void installProgram(const QString& name, const QByteArray& body) {
        QFile file(folder.filePath("bin/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + body + "\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    template <typename Dialog> Dialog* show() {
        auto* dialog = new Dialog;
        root->present(dialog, false);
        return dialog;
    }
    static void tap(ui::ViewController* controller, const QString& title) {
        for (ui::Button* button : controller->view()->findChildren<ui::Button*>()) {
            if (button->currentTitle() == title)
                return button->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
        }
        ADD_FAILURE() << "no button " << title.toStdString();
    }
    static bool settled(ui::ViewController* presenter) {
        return QTest::qWaitFor([presenter] {
            return presenter->presentedViewController() &&
                   !presenter->presentedViewController()->isBeingPresented();
        });
    }
    bool allClosed() {
        return QTest::qWaitFor([this] { return !root->presentedViewController(); });
    }

    QTemporaryDir folder;
    QDateTime clock = QDateTime(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC);
    QStringList lines;
    ui::Window window;
    ui::ViewController* root = new ui::ViewController;
    const QByteArray savedPath = qgetenv("PATH");
    const std::function<bool(const QUrl&)> savedOpener = RateAppLikedViewController::openURL;
    QStringList opened;
};

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

using AppRatingTest = RatingFixture;
using RateAppDialogsTest = RatingFixture;

// With the shipped version the launch days decide, and the line says why not. In debug mode (a
// version of its own) the stored minutes replace the days and the versions decide before the
// reminder; the remind line's last word still follows the 10 days.
TEST_F(AppRatingTest, TheDatesAndVersionsDecideAndTheLineSaysWhyNot) {
    const struct {
        const char* debugVersion; // nullptr: the shipped version, three days until the prompt
        const char* rated;        // nullptr: never rated
        std::optional<qint64> firstUsedAgo, lastRemindAgo; // minutes
        qint64 remindMinutes;
        bool prompts;
        QString line;
    } rows[] = {
        {nullptr, nullptr, {}, {}, 0, false, firstUseLine("0 minute", "4320 minutes")},
        {nullptr, nullptr, 4319, 4319, 0, false, firstUseLine("4319 minutes", "1 minute")},
        // The line counts from the reminder although the decision counts from the first use.
        {nullptr, nullptr, 100, 7, 0, false, firstUseLine("7 minutes", "4313 minutes")},
        {nullptr, nullptr, -90, -90, 0, false, firstUseLine("-90 minute", "4410 minutes")},
        // The last word follows 10 days less 4320 minutes, which is negative.
        {nullptr, nullptr, 4320, 4320, 0, false, remindLine("4320 minutes", "10080 minute")},
        {nullptr, nullptr, 14400, 14400, 0, true, {}},
        {nullptr, TESSARO_VERSION, 20000, 20000, 0, false, ratedLine},
        {"1.0", "1.0.0", 0, 0, 100, true, {}},
        {"1.2", "1.3", 0, 0, 100, true, {}},
        {"1.3", "1.2", 0, 0, 100, false, remindLine("0 minute", "100 minutes")},
        {"2.0", "2.0", 500, 500, 100, false, ratedLine},
        {"02.0", "2.0", 0, 0, 100, false, remindLine("0 minute", "100 minutes")},
        {"02.0", "2.0", 100, 100, 100, true, {}},
        {"1.x", "1.0", 5, 5, 100, false, remindLine("5 minutes", "95 minutes")},
        {"1.0", nullptr, 99, 99, 100, false, remindLine("99 minutes", "1 minute")},
        {"1.0", nullptr, 0, 0, 0, true, {}},
        {"1.0", nullptr, 3, 3, 4, false, remindLine("3 minutes", "1 minutes")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        for (const char* key :
             {PreferenceSchema::appRatingFirstUsed, PreferenceSchema::appRatingLastRemind,
              PreferenceSchema::appRatingLastVersionRated})
            Preferences::standard().removeObjectForKey(key);
        resetScheduler();
        if (row.debugVersion) {
            AppRating::setDebugMode(true);
            AppRating::setAppVersion(row.debugVersion);
            AppRating::setMinuteRemindPeriod(row.remindMinutes);
        } else {
            AppRating::daysUntilPrompt = 3;
        }
        if (row.firstUsedAgo)
            AppRating::setFirstUsed(minutesAgo(*row.firstUsedAgo));
        if (row.lastRemindAgo)
            AppRating::setLastRemind(minutesAgo(*row.lastRemindAgo));
        if (row.rated)
            AppRating::setLastVersionRated(row.rated);
        lines.clear();
        EXPECT_EQ(AppRating::shouldPromptForRating(), row.prompts);
        EXPECT_EQ(lines, row.line.isEmpty() ? QStringList() : QStringList{row.line});
        // Deciding is no event: asking again answers the same.
        EXPECT_EQ(AppRating::shouldPromptForRating(), row.prompts);
    }
}

TEST_F(AppRatingTest, TheFirstConsultationStartsBothClocksAndADuePromptShowsTheFirstDialog) {
    clock = clock.addDays(30);
    Preferences::standard().setString(PreferenceSchema::appRatingFirstUsed, "last Tuesday");
    Preferences::standard().setInteger(PreferenceSchema::appRatingLastVersionRated, 2);
    EXPECT_FALSE(AppRating::shouldPromptForRating());
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingFirstUsed), clock);
    EXPECT_EQ(storedDate(PreferenceSchema::appRatingLastRemind), clock);
    EXPECT_EQ(AppRating::lastVersionRated(), "0.0.0");

    // A due prompt shows the first dialog at once over the screen and remembers when.
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

TEST_F(AppRatingTest, SettersRefuseZeroDaysOnlyDebugModeWarnsAndTheArithmeticTruncates) {
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

    // Whole minutes truncate toward zero, and junk in a version counts as zero.
    const QDateTime from(QDate(2026, 3, 29), QTime(0, 30), Qt::UTC);
    for (auto [ms, minutes] : {std::pair{59999LL, 0LL}, {60000, 1}, {-59999, 0}, {-90000, -1}})
        EXPECT_EQ(AppRating::minutesBetween(from, from.addMSecs(ms)), minutes) << ms;
    EXPECT_EQ(AppRating::versionComponents("1..2b. 3.-4.99999999999999999999"),
              QList<qint64>({1, 0, 0, 0, -4, 0}));
}

TEST_F(RateAppDialogsTest, EitherAnswerReplacesTheFirstCardAndOnlyRatingOpensTheSoftwareCentre) {
    const std::pair<const char*, const char*> rows[] = {
        {"Yes, I like it", "RateAppLikedViewController"},
        {"Not really", "RateAppMailViewController"}};
    for (const auto& [answer, next] : rows) {
        SCOPED_TRACE(next);
        AppRating::promptRateUs(root);
        QPointer<RateAppFirstViewController> first =
            qobject_cast<RateAppFirstViewController*>(root->presentedViewController());
        ASSERT_TRUE(first);
        // The second line is the layout's own text; loading sets only the other two.
        EXPECT_EQ(QStringList({first->firstLabel->text(), first->secondLabel->text(),
                               first->thirdLabel->text()}),
                  QStringList({"Do you enjoy Tessaro?", "We would love to know what you think.",
                               "Tell us in one tap."}));

        tap(first, answer);
        ASSERT_TRUE(QTest::qWaitFor([&] { return first.isNull() && settled(root); }));
        EXPECT_TRUE(root->presentedViewController()->inherits(next));
        EXPECT_EQ(root->presentedViewController()->modalPresentationStyle(),
                  ui::ModalPresentationStyle::overCurrentContext);
        EXPECT_TRUE(root->view()->isVisible());
        tap(root->presentedViewController(), "Not now");
        EXPECT_TRUE(allClosed());
    }

    // Esc closes the first card too; only rating opens the software centre.
    AppRating::promptRateUs(root);
    QTest::keyClick(root->presentedViewController()->view(), Qt::Key_Escape);
    EXPECT_TRUE(allClosed());
    EXPECT_TRUE(opened.isEmpty());

    tap(show<RateAppLikedViewController>(), "Rate Tessaro");
    ASSERT_TRUE(allClosed());
    // The id's capitals matter to the software centre.
    EXPECT_EQ(opened, QStringList{"appstream:org.tessaro.Tessaro"});
    EXPECT_EQ(AppRating::lastVersionRated(), "0.0.0");
}

TEST_F(RateAppDialogsTest, WithoutAMailProgramTheFeedbackCardStaysAndShowsNothing) {
    const QByteArray xdgMimes[] = {{}, "exit 0", "echo mail.desktop; exit 4"}; // {}: none
    for (const QByteArray& xdgMime : xdgMimes) {
        SCOPED_TRACE(xdgMime.toStdString());
        QFile::remove(folder.filePath("bin/xdg-mime"));
        if (!xdgMime.isEmpty())
            installProgram("xdg-mime", xdgMime);
        auto* dialog = show<RateAppMailViewController>();
        tap(dialog, "Write to us");
        // The composer waits, unshown, for the answer and goes when it is no.
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return dialog->findChildren<ui::MailComposeViewController*>().isEmpty(); }));
        EXPECT_EQ(root->presentedViewController(), dialog);
        root->dismiss(false);
    }
}

TEST_F(RateAppDialogsTest, LeavingTheComposerAnyWayClosesItAndTheFeedbackCard) {
    installProgram("xdg-mime", "echo mail.desktop");
    const QString arguments = folder.filePath("mail-arguments");
    const std::function<void(ui::MailComposeViewController*)> ways[] = {
        [](auto* composer) { tap(composer, "Cancel"); },
        [](auto* composer) { QTest::keyClick(composer->bodyView, Qt::Key_Escape); },
        [&](auto* composer) {
            composer->bodyView->setPlainText("The zoom judders.");
            // A mail program that cannot be started keeps the composer and the text.
            tap(composer, "Send");
            EXPECT_TRUE(composer->hintLabel->text().contains("could not be started"));
            installProgram("xdg-email", "for a in \"$@\"; do echo \"$a\"; done > \"" +
                                            arguments.toUtf8() + "\"");
            tap(composer, "Send");
        },
    };
    for (const auto& leave : ways) {
        QPointer<RateAppMailViewController> dialog = show<RateAppMailViewController>();
        tap(dialog, "Write to us");
        ASSERT_TRUE(settled(dialog));
        auto* composer =
            qobject_cast<ui::MailComposeViewController*>(dialog->presentedViewController());
        ASSERT_NE(composer, nullptr);
        EXPECT_EQ(composer->messageBody(), "") << "the address and subject are in what is sent";

        leave(composer);
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return dialog.isNull() && !root->presentedViewController(); }));
    }
    const QString expected = "--subject\nTessaro CAM\n--body\nThe zoom judders.\n"
                             "support@tessaro.org\n";
    auto written = [&] {
        QFile file(arguments);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    (void)QTest::qWaitFor([&] { return written() == expected; });
    EXPECT_EQ(written(), expected);
}

} // namespace
