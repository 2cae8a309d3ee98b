#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QWidget>

#include "RatingFixture.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/MailComposeViewController.h"
#include "platform/ui/View.h"

namespace {

using rating::test::RatingFixture;

// The dialogs over a root screen, with the review link caught and xdg-utils replaced by small
// scripts in a folder that is the whole PATH.
class RateAppDialogsTest : public RatingFixture {
protected:
    void SetUp() override {
        RatingFixture::SetUp();
        savedPath = qgetenv("PATH");
        ASSERT_TRUE(QDir(folder.path()).mkpath("bin"));
        qputenv("PATH", folder.filePath("bin").toUtf8());
        RateAppLikedViewController::openURL = [this](const QUrl& url) {
            opened.append({url, root->presentedViewController() != nullptr});
            return true;
        };
    }
    void TearDown() override {
        RateAppLikedViewController::openURL = savedOpener;
        qputenv("PATH", savedPath);
        RatingFixture::TearDown();
    }

    void installProgram(const QString& name, const QByteArray& body) {
        QFile file(folder.filePath("bin/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + body + "\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    // A mail program is registered for mailto links.
    void installMailHandler() { installProgram("xdg-mime", "echo mail-program.desktop"); }

    template <typename Dialog> Dialog* show() {
        auto* dialog = new Dialog;
        root->present(dialog, false);
        return dialog;
    }
    RateAppFirstViewController* prompt() {
        AppRating::promptRateUs(root);
        return qobject_cast<RateAppFirstViewController*>(root->presentedViewController());
    }
    // A press and release on the dialog's button with that title.
    static void tap(ui::ViewController* dialog, const QString& title) {
        for (ui::Button* button : dialog->view()->findChildren<ui::Button*>()) {
            if (button->currentTitle() == title) {
                button->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
                return;
            }
        }
        ADD_FAILURE() << "no button " << title.toStdString();
    }
    bool settledOn(const char* className) {
        return waitFor([&] {
            ui::ViewController* shown = root->presentedViewController();
            return shown && shown->inherits(className) && !shown->isBeingPresented();
        });
    }
    bool allClosed() {
        return waitFor([&] { return !root->presentedViewController(); });
    }
    // What the detached fake xdg-email wrote, once it has written all of expected.
    QString mailArguments(const QString& expected) {
        const QString path = folder.filePath("mail-arguments");
        auto read = [&] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        };
        waitFor([&] { return read() == expected; });
        return read();
    }

    QByteArray savedPath;
    const std::function<bool(const QUrl&)> savedOpener = RateAppLikedViewController::openURL;
    struct Opened {
        QUrl url;
        bool dialogStillShown;
    };
    QList<Opened> opened;
};

TEST_F(RateAppDialogsTest, EachDialogIsARoundedCardWithItsThreeLines) {
    const struct {
        std::function<ui::ViewController*()> make;
        QStringList lines;
    } rows[] = {
        // The first dialog's second line is its layout's own text, not set on load.
        {[] { return new RateAppFirstViewController; },
         {"Do you enjoy Tessaro?", "We would love to know what you think.", "Tell us in one tap."}},
        {[] { return new RateAppLikedViewController; },
         {"Glad you like it!", "Would you rate Tessaro?", "It takes a moment and helps us a lot."}},
        {[] { return new RateAppMailViewController; },
         {"Sorry to hear that.", "Tell us what we should improve.",
          "Send us a mail; we read every one."}},
    };
    for (const auto& row : rows) {
        auto* dialog = static_cast<RateAppDialogViewController*>(row.make());
        SCOPED_TRACE(dialog->metaObject()->className());
        root->present(dialog, false);
        EXPECT_EQ(dialog->modalPresentationStyle(), ui::ModalPresentationStyle::overCurrentContext);
        EXPECT_EQ(dialog->backgroundView->cornerRadius(), 11);
        EXPECT_EQ(QStringList({dialog->firstLabel->text(), dialog->secondLabel->text(),
                               dialog->thirdLabel->text()}),
                  row.lines);
        EXPECT_TRUE(root->view()->isVisible());
        root->dismiss(false);
    }
}

TEST_F(RateAppDialogsTest, EitherAnswerReplacesTheFirstDialogOverTheSameScreen) {
    const struct {
        const char* answer;
        const char* next;
    } rows[] = {{"Yes, I like it", "RateAppLikedViewController"},
                {"Not really", "RateAppMailViewController"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.next);
        QPointer<RateAppFirstViewController> first = prompt();
        ASSERT_TRUE(first);
        tap(first, row.answer);
        ASSERT_TRUE(settledOn(row.next));
        EXPECT_TRUE(waitFor([&] { return first.isNull(); }));
        ui::ViewController* next = root->presentedViewController();
        EXPECT_EQ(next->modalPresentationStyle(), ui::ModalPresentationStyle::overCurrentContext);
        EXPECT_TRUE(root->view()->isVisible());
        root->dismiss(false);
    }
}

TEST_F(RateAppDialogsTest, RatingClosesTheDialogThenOpensTheSoftwareCentrePage) {
    tap(show<RateAppLikedViewController>(), "Rate Tessaro");
    ASSERT_TRUE(allClosed());
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened[0].url, QUrl("appstream://org.tessaro.Tessaro"));
    EXPECT_FALSE(opened[0].dialogStillShown);
    EXPECT_FALSE(foundation::Preferences::standard().hasStoredValue("AppRatingLastVersionRated"));
    EXPECT_EQ(AppRating::lastVersionRated(), "0.0.0");
}

TEST_F(RateAppDialogsTest, NotNowAndEscCloseWithoutOpeningAnything) {
    tap(show<RateAppLikedViewController>(), "Not now");
    EXPECT_TRUE(allClosed());
    tap(show<RateAppMailViewController>(), "Not now");
    EXPECT_TRUE(allClosed());
    const std::function<ui::ViewController*()> dialogs[] = {
        [this] { return prompt(); },
        [this] { return show<RateAppLikedViewController>(); },
        [this] { return show<RateAppMailViewController>(); },
    };
    for (const auto& showDialog : dialogs) {
        ui::ViewController* dialog = showDialog();
        SCOPED_TRACE(dialog->metaObject()->className());
        QTest::keyClick(dialog->view(), Qt::Key_Escape);
        EXPECT_TRUE(allClosed());
    }
    EXPECT_TRUE(opened.isEmpty());
}

TEST_F(RateAppDialogsTest, WithoutAMailProgramTheFeedbackDialogStaysAndShowsNothing) {
    const struct {
        const char* name;
        QByteArray xdgMime; // empty: not installed
    } rows[] = {{"NoXdgUtils", {}},
                {"NoHandler", "exit 0"},
                {"QueryFails", "echo mail-program.desktop; exit 4"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QFile::remove(folder.filePath("bin/xdg-mime"));
        if (!row.xdgMime.isEmpty())
            installProgram("xdg-mime", row.xdgMime);
        auto* dialog = show<RateAppMailViewController>();
        tap(dialog, "Write to us");
        // The composer waits, unshown, for the answer and goes when it is no.
        EXPECT_TRUE(waitFor(
            [&] { return dialog->findChildren<ui::MailComposeViewController*>().isEmpty(); }));
        EXPECT_EQ(dialog->presentedViewController(), nullptr);
        EXPECT_EQ(root->presentedViewController(), dialog);
        root->dismiss(false);
    }
}

TEST_F(RateAppDialogsTest, LeavingTheComposerAnyWayClosesItAndTheFeedbackDialog) {
    installMailHandler();
    installProgram("xdg-email", "for a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"" +
                                    folder.filePath("mail-arguments").toUtf8() + "\"");
    const struct {
        const char* name;
        std::function<void(ui::MailComposeViewController*)> leave;
    } rows[] = {
        {"Cancel", [](auto* composer) { tap(composer, "Cancel"); }},
        {"Esc", [](auto* composer) { QTest::keyClick(composer->bodyView, Qt::Key_Escape); }},
        {"Send",
         [](auto* composer) {
             composer->bodyView->setPlainText("The zoom judders.");
             tap(composer, "Send");
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QPointer<RateAppMailViewController> dialog = show<RateAppMailViewController>();
        tap(dialog, "Write to us");
        ASSERT_TRUE(waitFor([&] {
            return dialog->presentedViewController() &&
                   !dialog->presentedViewController()->isBeingPresented();
        }));
        auto* composer =
            qobject_cast<ui::MailComposeViewController*>(dialog->presentedViewController());
        ASSERT_NE(composer, nullptr);
        EXPECT_EQ(composer->toRecipients(), QStringList{"support@tessaro.org"});
        EXPECT_EQ(composer->subject(), "Tessaro CAM");
        EXPECT_EQ(composer->messageBody(), "");

        row.leave(composer);
        EXPECT_TRUE(allClosed());
        EXPECT_TRUE(waitFor([&] { return dialog.isNull(); }));
    }
    const QString expected = "--subject\nTessaro CAM\n--body\nThe zoom judders.\n"
                             "support@tessaro.org\n";
    EXPECT_EQ(mailArguments(expected), expected);
}

TEST_F(RateAppDialogsTest, AMailProgramThatCannotStartKeepsTheComposerAndItsText) {
    installMailHandler();
    auto* dialog = show<RateAppMailViewController>();
    tap(dialog, "Write to us");
    ASSERT_TRUE(waitFor([&] { return dialog->presentedViewController() != nullptr; }));
    auto* composer =
        qobject_cast<ui::MailComposeViewController*>(dialog->presentedViewController());
    ASSERT_NE(composer, nullptr);
    composer->bodyView->setPlainText("Please keep this.");

    tap(composer, "Send");

    EXPECT_EQ(dialog->presentedViewController(), composer);
    EXPECT_EQ(composer->messageBody(), "Please keep this.");
    EXPECT_TRUE(composer->hintLabel->text().contains("could not be started"));
}

} // namespace
