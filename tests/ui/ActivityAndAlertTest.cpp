#include "platform/ui/ActivityViewController.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Window.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include "tests/ui/ProbeViewController.h"

namespace ui {
namespace {

// Sheets over a shown phone-sized window; what the activities start is replaced with recorders,
// so no program runs.
class SheetTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(390, 844);
        window.show();
        QFile file(clip);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("clip bytes") > 0);
        ActivityViewController::Services& s = ActivityViewController::services();
        s.openUrl = [this](const QUrl& url) {
            calls << QStringLiteral("open ") + url.toString();
            return openSucceeds;
        };
        s.startDetached = [this](const QString& program, const QStringList& arguments) {
            calls << program + QLatin1Char(' ') + arguments.join(QLatin1Char(' '));
            return true;
        };
        s.showItems = [this](const QList<QUrl>& files, std::function<void(bool)> done) {
            calls << QStringLiteral("show ") + files.first().toString();
            done(fileManagerAnswers);
        };
        s.saveFileName = [this](QWidget*, const QString&) { return saveTarget; };
    }
    void TearDown() override { ActivityViewController::resetServices(); }

    // A new screen as the window's root.
    test::ProbeViewController* newScreen() {
        auto* screen = new test::ProbeViewController(QStringLiteral("screen"), &journal);
        window.setRootViewController(screen);
        return screen;
    }
    // A sheet for the clip over a new screen; its completion lands in result.
    ActivityViewController* showSheet(std::optional<std::pair<QString, bool>>& result) {
        test::ProbeViewController* screen = newScreen();
        auto* sheet = new ActivityViewController({QUrl::fromLocalFile(clip)});
        sheet->setCompletionWithItemsHandler(
            [&result](const QString& t, bool completed) { result.emplace(t, completed); });
        screen->present(sheet, false);
        return sheet;
    }

    // Performs one activity and waits for its completion.
    std::pair<QString, bool> perform(const QString& type) {
        std::optional<std::pair<QString, bool>> result;
        showSheet(result)->performActivity(type);
        EXPECT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }, 5000));
        return result.value_or(std::pair<QString, bool>{});
    }

    QTemporaryDir folder;
    QString clip = folder.filePath(QStringLiteral("Tessaro Video.mov"));
    QStringList calls;
    QStringList journal;
    bool openSucceeds = true;
    bool fileManagerAnswers = true;
    QString saveTarget;
    Window window;
};

TEST_F(SheetTest, EachActivityReachesItsProgramOrTheClipboardAndReportsCompletion) {
    const QString url = QUrl::fromLocalFile(clip).toString();
    const QString open = QStringLiteral("open "), show = QStringLiteral("show ");
    const QString openFolder = open + QUrl::fromLocalFile(folder.path()).toString();
    struct Case {
        const QString& type;
        bool openSucceeds, fileManagerAnswers;
        QStringList calls;
        bool completed;
    };
    const Case cases[] = {
        {ActivityType::openInDefaultApplication, true, true, {open + url}, true},
        {ActivityType::openInDefaultApplication, false, true, {open + url}, false},
        {ActivityType::showInFileManager, true, true, {show + url}, true},
        // Without a file manager service the folder opens instead.
        {ActivityType::showInFileManager, true, false, {show + url, openFolder}, true},
        {ActivityType::mail, true, true, {QStringLiteral("xdg-email --attach ") + clip}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.calls.join(", ").toStdString());
        calls.clear();
        openSucceeds = c.openSucceeds;
        fileManagerAnswers = c.fileManagerAnswers;
        EXPECT_EQ(perform(c.type), std::make_pair(c.type, c.completed));
        EXPECT_EQ(calls, c.calls);
    }

    // Copy puts the file on the clipboard for file managers.
    EXPECT_TRUE(perform(ActivityType::copyToPasteboard).second);
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(clip)});
    EXPECT_EQ(data->data(QStringLiteral("x-special/gnome-copied-files")),
              "copy\n" + QUrl::fromLocalFile(clip).toEncoded());
}

TEST_F(SheetTest, SaveAsCopiesWhereTheUserChoseOrNothingOnCancel) {
    const QString kept = folder.filePath(QStringLiteral("kept.mov"));
    // The clip itself as the target, or a cancelled dialog: nothing is written.
    for (const auto& [target, completed] :
         {std::pair{kept, true}, {clip, false}, {QString(), false}}) {
        saveTarget = target;
        EXPECT_EQ(perform(ActivityType::saveToFile).second, completed) << target.toStdString();
    }
    for (const QString& path : {kept, clip}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        EXPECT_EQ(file.readAll(), "clip bytes") << path.toStdString();
    }
}

TEST_F(SheetTest, ExcludedActivitiesAreNotOfferedNorPerformed) {
    ActivityViewController sheet({QUrl::fromLocalFile(clip)});
    EXPECT_FALSE(sheet.availableActivityTypes().contains(ActivityType::addToReadingList));
    EXPECT_FALSE(sheet.availableActivityTypes().contains(ActivityType::assignToContact));
    sheet.setExcludedActivityTypes({ActivityType::mail});
    EXPECT_FALSE(sheet.availableActivityTypes().contains(ActivityType::mail));
    EXPECT_EQ(sheet.view()->findChild<QWidget*>(ActivityType::mail), nullptr);
    bool called = false;
    sheet.setCompletionWithItemsHandler([&](const QString&, bool) { called = true; });
    sheet.performActivity(ActivityType::mail);
    EXPECT_FALSE(called);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(SheetTest, EscAndAClickBesideTheCardCancel) {
    for (bool byKey : {true, false}) {
        std::optional<std::pair<QString, bool>> result;
        ActivityViewController* sheet = showSheet(result);
        if (byKey) {
            QTest::keyClick(sheet->view(), Qt::Key_Escape);
        } else {
            QMouseEvent click(QEvent::MouseButtonRelease, QPointF(10, 10), QPointF(10, 10),
                              Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(sheet->view(), &click);
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }));
        EXPECT_EQ(*result, std::make_pair(QString(), false));
        EXPECT_TRUE(calls.isEmpty());
    }
}

// An action closes the alert, then runs once even when chosen twice; Esc chooses the cancel action.
TEST_F(SheetTest, AnAlertActionRunsOnceAfterTheAlertHasGoneAndEscCancels) {
    test::ProbeViewController* screen = newScreen();
    QStringList chosen;
    const auto showAlert = [&] {
        auto* alert = new AlertController("Error", "Disk full.", AlertController::Style::alert);
        alert->addAction({"Retry", AlertAction::Style::standard, [&] { chosen << "Retry"; }});
        alert->addAction({"OK", AlertAction::Style::cancel, [&] { chosen << "OK"; }});
        screen->present(alert, false);
        return alert;
    };
    AlertController* alert = showAlert();
    alert->performAction(0);
    alert->performAction(1);
    EXPECT_TRUE(chosen.isEmpty()) << "not before the alert has gone";
    ASSERT_TRUE(QTest::qWaitFor([&] { return screen->presentedViewController() == nullptr; }));
    EXPECT_EQ(chosen, QStringList{"Retry"});

    QTest::keyClick(showAlert()->view(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return chosen.size() == 2; }));
    EXPECT_EQ(chosen.last(), "OK");
}

} // namespace
} // namespace ui
