#include <QDir>
#include <QFile>
#include <QPlainTextEdit>

#include "RatingFixture.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/MailComposeViewController.h"

namespace {

// The dialogs over a root screen, with the review link caught and xdg-utils replaced by small
// scripts in a folder that is the whole PATH.
class RateAppDialogsTest : public rating::test::RatingFixture {
protected:
    void SetUp() override {
        RatingFixture::SetUp();
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
        RatingFixture::TearDown();
    }

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
    // A press and release on the button with that title.
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

    const QByteArray savedPath = qgetenv("PATH");
    const std::function<bool(const QUrl&)> savedOpener = RateAppLikedViewController::openURL;
    QStringList opened;
};

TEST_F(RateAppDialogsTest, EitherAnswerReplacesTheFirstCardOverTheSameScreen) {
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
        root->dismiss(false);
    }
}

TEST_F(RateAppDialogsTest, OnlyRatingOpensTheSoftwareCentreOnceTheCardHasGoneAndRecordsNothing) {
    tap(show<RateAppMailViewController>(), "Not now");
    EXPECT_TRUE(allClosed());
    AppRating::promptRateUs(root);
    QTest::keyClick(root->presentedViewController()->view(), Qt::Key_Escape);
    EXPECT_TRUE(allClosed());
    tap(show<RateAppLikedViewController>(), "Not now");
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
        EXPECT_EQ(composer->toRecipients(), QStringList{"support@tessaro.org"});
        EXPECT_EQ(composer->subject(), "Tessaro CAM");
        EXPECT_EQ(composer->messageBody(), "");

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
