#include "platform/ui/ActivityViewController.h"
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

// Replaces what the activities start with recorders, so no program runs.
class ActivityTest : public ::testing::Test {
protected:
    void SetUp() override {
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

    // A sheet for the clip over a shown screen; its completion lands in result.
    ActivityViewController* showSheet(std::optional<std::pair<QString, bool>>& result) {
        auto* screen = new test::ProbeViewController(QStringLiteral("screen"), &journal);
        window.setRootViewController(screen);
        window.resize(390, 844);
        window.show();
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

TEST_F(ActivityTest, EachActivityReachesItsProgramOrTheClipboardAndReportsCompletion) {
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

TEST_F(ActivityTest, SaveAsCopiesWhereTheUserChoseOrNothingOnCancel) {
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

TEST_F(ActivityTest, ExcludedActivitiesAreNotOfferedNorPerformed) {
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

TEST_F(ActivityTest, EscAndAClickBesideTheCardCancel) {
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

} // namespace
} // namespace ui
