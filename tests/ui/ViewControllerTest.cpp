#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

#include "platform/ui/ActivityViewController.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewAnimation.h"
#include "platform/ui/Window.h"
#include "tests/ui/ProbeViewController.h"

namespace ui::test {
namespace {

using Style = ModalPresentationStyle;

// A shown 400 × 300 window whose root "A" writes into the journal, as do the probes it presents.
class ViewControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(400, 300);
        window.setRootViewController(root);
        window.show();
        journal.clear();
    }

    ProbeViewController* probe(const QString& name, Style style = Style::fullScreen) {
        auto* controller = new ProbeViewController(name, &journal);
        controller->setModalPresentationStyle(style);
        return controller;
    }
    std::function<void()> noting(const QString& what) {
        return [this, what] { journal.append(what); };
    }

    QStringList journal;
    Window window;
    QPointer<ProbeViewController> root = new ProbeViewController("A", &journal);
};

// Animated, each half waits for its fade: the presenter stays until the fade in ends and is
// revealed as the fade out starts.
TEST_F(ViewControllerTest, FullScreenPresentationHidesThePresenterAndDismissalRestoresIt) {
    for (const bool animated : {false, true}) {
        SCOPED_TRACE(animated);
        journal.clear();
        QPointer<ProbeViewController> b = probe("B");
        QElapsedTimer clock;
        clock.start();
        root->present(b, animated, noting("presented"));
        if (animated) {
            EXPECT_EQ(journal, QStringList({"B.didLoad", "B.willAppear", "A.willDisappear"}));
            EXPECT_LT(ViewAnimation::alpha(b->view()), 0.5);
            EXPECT_TRUE(root->view()->isVisible());
            ASSERT_TRUE(QTest::qWaitFor([&] { return journal.contains("presented"); }));
            EXPECT_GE(clock.elapsed(), 250);
        }
        EXPECT_EQ(journal, QStringList({"B.didLoad", "B.willAppear", "A.willDisappear",
                                        "B.didAppear", "A.didDisappear", "presented"}));
        EXPECT_EQ(root->presentedViewController(), b);
        EXPECT_EQ(b->presentingViewController(), root);
        EXPECT_EQ(b->parent(), root);
        EXPECT_EQ(b->window(), &window);
        EXPECT_TRUE(root->view()->isHidden());
        EXPECT_TRUE(b->view()->isVisible());
        EXPECT_EQ(b->view()->geometry(), window.rect());
        EXPECT_TRUE(b->view()->autoFillBackground());

        journal.clear();
        clock.restart();
        bool aliveInCompletion = false;
        root->dismiss(animated, [&] {
            journal.append("dismissed");
            aliveInCompletion = !b.isNull() && !b->presentingViewController();
        });
        if (animated) {
            EXPECT_EQ(journal, QStringList({"B.willDisappear", "A.willAppear"}));
            EXPECT_TRUE(root->view()->isVisible());
            ASSERT_TRUE(QTest::qWaitFor([&] { return journal.contains("dismissed"); }));
            EXPECT_GE(clock.elapsed(), 250);
        }
        EXPECT_EQ(journal, QStringList({"B.willDisappear", "A.willAppear", "B.didDisappear",
                                        "A.didAppear", "dismissed"}));
        EXPECT_TRUE(aliveInCompletion);
        EXPECT_FALSE(root->presentedViewController());
        EXPECT_TRUE(root->view()->isVisible());
        EXPECT_TRUE(QTest::qWaitFor([&] { return b.isNull(); }));
    }
}

// Over the current context the presenter stays shown and is told nothing; in the current context
// only the presenter's own area is covered, here a controller's view embedded in the root's.
TEST_F(ViewControllerTest, ContextStylesCoverOnlyThePresentersArea) {
    QPointer<ProbeViewController> b = probe("B", Style::overCurrentContext);
    root->present(b, false, noting("presented"));
    EXPECT_EQ(journal, QStringList({"B.didLoad", "B.willAppear", "B.didAppear", "presented"}));
    EXPECT_TRUE(root->view()->isVisible());
    EXPECT_FALSE(b->view()->autoFillBackground());
    EXPECT_EQ(b->view()->geometry(), root->view()->geometry());
    journal.clear();
    b->dismiss(false, noting("dismissed"));
    EXPECT_EQ(journal, QStringList({"B.willDisappear", "B.didDisappear", "dismissed"}));
    EXPECT_TRUE(root->view()->isVisible());

    auto* embedded = new ProbeViewController("E", &journal);
    embedded->setParent(root);
    embedded->view()->setParent(root->view());
    embedded->view()->setGeometry(50, 40, 100, 80);
    embedded->view()->show();
    journal.clear();
    QPointer<ProbeViewController> f = probe("F", Style::currentContext);
    embedded->present(f, false);
    EXPECT_EQ(f->view()->geometry(), QRect(50, 40, 100, 80));
    EXPECT_TRUE(embedded->view()->isHidden());
    EXPECT_TRUE(root->view()->isVisible());
    EXPECT_EQ(journal, QStringList({"F.didLoad", "F.willAppear", "F.didAppear"}));
}

TEST_F(ViewControllerTest, PresentingOrDismissingOutOfTurnIsRefused) {
    int completions = 0;
    auto count = [&] { ++completions; };
    ProbeViewController outside("O", &journal);
    outside.dismiss(false, count);
    root->dismiss(false, count);
    QPointer<ProbeViewController> d = probe("D");
    outside.present(d, false, count);
    EXPECT_FALSE(outside.presentedViewController());
    EXPECT_FALSE(d->isViewLoaded());

    QPointer<ProbeViewController> b = probe("B");
    root->present(b, false);
    QPointer<ProbeViewController> c = probe("C");
    root->present(c, false, count);
    EXPECT_EQ(root->presentedViewController(), b);
    EXPECT_FALSE(c->presentingViewController());
    EXPECT_FALSE(c->isViewLoaded());
    EXPECT_EQ(c->parent(), root) << "a refused controller is owned, not leaked";

    root->dismiss(true, count);
    b->dismiss(true, count);     // already leaving
    root->dismiss(false, count); // likewise
    EXPECT_TRUE(b->isBeingDismissed());
    ASSERT_TRUE(QTest::qWaitFor([&] { return b.isNull(); }));
    ASSERT_EQ(completions, 1);
    journal.clear();
    root->dismiss(false, count); // presents nothing any more
    QTest::qWait(20);
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(journal.isEmpty()) << journal.join(", ").toStdString();
}

TEST_F(ViewControllerTest, DismissalOrANewRootDuringAnAnimatedPresentationEndsItOnce) {
    QPointer<ProbeViewController> b = probe("B");
    root->present(b, true, noting("presented"));
    root->dismiss(false, noting("dismissed"));
    EXPECT_EQ(journal, QStringList({"B.didLoad", "B.willAppear", "A.willDisappear", "B.didAppear",
                                    "A.didDisappear", "presented", "B.willDisappear",
                                    "A.willAppear", "B.didDisappear", "A.didAppear", "dismissed"}));
    QTest::qWait(400);
    EXPECT_EQ(journal.size(), 11) << "the stopped fade must not complete again";

    QPointer<ProbeViewController> c = probe("C");
    root->present(c, true, noting("never"));
    QPointer<ProbeViewController> oldRoot = root;
    window.setRootViewController(probe("N"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return oldRoot.isNull() && c.isNull(); }));
    QTest::qWait(400);
    EXPECT_FALSE(journal.contains("never"));
}

TEST_F(ViewControllerTest, DismissingTheBottomOfAStackOrReplacingTheRootRemovesAllAbove) {
    QPointer<ProbeViewController> b = probe("B");
    QPointer<ProbeViewController> c = probe("C", Style::overCurrentContext);
    root->present(b, false);
    b->present(c, false);
    journal.clear();

    int completions = 0;
    root->dismiss(false, [&] { ++completions; });
    EXPECT_EQ(journal, QStringList({"C.willDisappear", "B.willDisappear", "A.willAppear",
                                    "C.didDisappear", "B.didDisappear", "A.didAppear"}));
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(root->presentedViewController());
    EXPECT_TRUE(QTest::qWaitFor([&] { return b.isNull() && c.isNull(); }));

    QPointer<ProbeViewController> shown = probe("S");
    root->present(shown, false);
    journal.clear();

    auto* second = probe("N");
    window.setRootViewController(second);
    EXPECT_EQ(journal, QStringList({"S.willDisappear", "N.didLoad", "N.willAppear",
                                    "S.didDisappear", "N.didAppear"}))
        << "A was already hidden under the full-screen S";
    EXPECT_EQ(window.rootViewController(), second);
    EXPECT_EQ(second->parent(), &window);
    EXPECT_EQ(second->view()->geometry(), window.rect());
    EXPECT_TRUE(root->view()->isHidden());
    EXPECT_TRUE(shown->view()->isHidden());
    EXPECT_EQ(window.topViewController(), second);
    EXPECT_TRUE(QTest::qWaitFor([&] { return root.isNull() && shown.isNull(); }));
}

// A resize reaches every controller before its view is laid out.
TEST_F(ViewControllerTest, TheWindowTellsItsControllersOfResizesAndFollowsTheTopOnesStatusBar) {
    QSignalSpy changes(&window, &Window::statusBarHiddenChanged);
    ProbeViewController* dialog = probe("B", Style::overCurrentContext);
    dialog->statusBarHidden = true;
    root->present(dialog, false);
    EXPECT_TRUE(window.prefersStatusBarHidden());
    journal.clear();
    window.resize(500, 350);
    ASSERT_TRUE(QTest::qWaitFor([&] { return journal.size() == 2; }));
    EXPECT_EQ(journal, QStringList({"A.transition 500x350", "B.transition 500x350"}));
    EXPECT_EQ(root->sizeAtTransition, QSize(400, 300));
    EXPECT_EQ(dialog->sizeAtTransition, QSize(400, 300));
    EXPECT_EQ(root->view()->geometry(), QRect(0, 0, 500, 350));
    EXPECT_EQ(dialog->view()->geometry(), QRect(0, 0, 500, 350));

    root->dismiss(false);
    EXPECT_FALSE(window.prefersStatusBarHidden());
    ASSERT_EQ(changes.size(), 2);
    EXPECT_TRUE(changes[0][0].toBool());
    EXPECT_FALSE(changes[1][0].toBool());
    window.setFullScreenWhenStatusBarHidden(true);
    root->statusBarHidden = true;
    root->setNeedsStatusBarAppearanceUpdate();
    EXPECT_TRUE(window.isFullScreen());
    root->statusBarHidden = false;
    root->setNeedsStatusBarAppearanceUpdate();
    EXPECT_FALSE(window.isFullScreen());
}

TEST_F(ViewControllerTest, AnotherWindowLoadsItsRootOnceAndTheLastMadeKeyIsTheKeyWindow) {
    {
        Window other, second;
        auto* controller = new ProbeViewController("V", &journal);
        EXPECT_FALSE(controller->isViewLoaded());
        other.setRootViewController(controller);
        other.show();
        other.hide();
        other.show();
        EXPECT_EQ(journal,
                  QStringList({"V.didLoad", "V.willAppear", "V.didAppear", "V.willDisappear",
                               "V.didDisappear", "V.willAppear", "V.didAppear"}));
        second.makeKeyAndVisible();
        other.makeKeyAndVisible();
        EXPECT_TRUE(second.isVisible() && other.isKeyWindow());
    }
    EXPECT_EQ(Window::keyWindow(), nullptr);
}

// Sheets over the root; what the activities start is replaced with recorders, so no program runs.
class SheetTest : public ViewControllerTest {
protected:
    void SetUp() override {
        ViewControllerTest::SetUp();
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

    ActivityViewController* showSheet(std::optional<std::pair<QString, bool>>& result) {
        auto* sheet = new ActivityViewController({QUrl::fromLocalFile(clip)});
        sheet->setCompletionWithItemsHandler(
            [&result](const QString& t, bool completed) { result.emplace(t, completed); });
        root->present(sheet, false);
        return sheet;
    }

    std::pair<QString, bool> perform(const QString& type) {
        std::optional<std::pair<QString, bool>> result;
        showSheet(result)->performActivity(type);
        EXPECT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }, 5000));
        return result.value_or(std::pair<QString, bool>{});
    }

    QTemporaryDir folder;
    QString clip = folder.filePath(QStringLiteral("Tessaro Video.mov"));
    QStringList calls;
    bool openSucceeds = true;
    bool fileManagerAnswers = true;
    QString saveTarget;
};

TEST_F(SheetTest, EachActivityReachesItsProgramOrTheClipboardAndReportsCompletion) {
    const QString url = QUrl::fromLocalFile(clip).toString();
    const QString open = QStringLiteral("open "), show = QStringLiteral("show ");
    const QString openFolder = open + QUrl::fromLocalFile(folder.path()).toString();
    const struct {
        const QString& type;
        bool openSucceeds, fileManagerAnswers;
        QStringList calls;
        bool completed;
    } cases[] = {
        {ActivityType::openInDefaultApplication, true, true, {open + url}, true},
        {ActivityType::openInDefaultApplication, false, true, {open + url}, false},
        {ActivityType::showInFileManager, true, true, {show + url}, true},
        // Without a file manager service the folder opens instead.
        {ActivityType::showInFileManager, true, false, {show + url, openFolder}, true},
        {ActivityType::mail, true, true, {QStringLiteral("xdg-email --attach ") + clip}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.calls.join(", ").toStdString());
        calls.clear();
        openSucceeds = c.openSucceeds;
        fileManagerAnswers = c.fileManagerAnswers;
        EXPECT_EQ(perform(c.type), std::make_pair(c.type, c.completed));
        EXPECT_EQ(calls, c.calls);
    }

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

TEST_F(SheetTest, ExcludedActivitiesAreNotOfferedAndAClickBesideTheCardCancels) {
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

    // A click beside the card cancels; Esc is VideoPreviewTest's cancelled share.
    std::optional<std::pair<QString, bool>> result;
    QMouseEvent click(QEvent::MouseButtonRelease, QPointF(10, 10), QPointF(10, 10), Qt::LeftButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(showSheet(result)->view(), &click);
    ASSERT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }));
    EXPECT_EQ(*result, std::make_pair(QString(), false));
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(SheetTest, AnAlertActionRunsOnceAfterTheAlertHasGoneAndEscCancels) {
    QStringList chosen;
    const auto showAlert = [&] {
        auto* alert = new AlertController("Error", "Disk full.", AlertController::Style::alert);
        alert->addAction({"Retry", AlertAction::Style::standard, [&] { chosen << "Retry"; }});
        alert->addAction({"OK", AlertAction::Style::cancel, [&] { chosen << "OK"; }});
        root->present(alert, false);
        return alert;
    };
    AlertController* alert = showAlert();
    alert->performAction(0);
    alert->performAction(1);
    EXPECT_TRUE(chosen.isEmpty()) << "not before the alert has gone";
    ASSERT_TRUE(QTest::qWaitFor([&] { return root->presentedViewController() == nullptr; }));
    EXPECT_EQ(chosen, QStringList{"Retry"});

    QTest::keyClick(showAlert()->view(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return chosen.size() == 2; }));
    EXPECT_EQ(chosen.last(), "OK");
}

class SceneController : public ViewController {
    Q_OBJECT
};

// A scene of another class asked for by its type is LaunchTest's.
TEST(StoryboardTest, ScenesBelongToTheirStoryboardAndTheLatestFactoryWins) {
    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new SceneController; });
    const Storyboard storyboard("StoryboardTest");
    EXPECT_TRUE(storyboard.contains("SceneController"));
    EXPECT_FALSE(Storyboard("StoryboardTestOther").contains("SceneController"));
    EXPECT_EQ(Storyboard("StoryboardTestOther").instantiate("SceneController"), nullptr);
    EXPECT_EQ(storyboard.instantiate("Missing"), nullptr);

    std::unique_ptr<ViewController> first(storyboard.instantiate("SceneController"));
    std::unique_ptr<ViewController> second(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(qobject_cast<SceneController*>(first.get()));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->objectName(), "SceneController");

    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new ViewController; });
    std::unique_ptr<ViewController> replaced(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(replaced);
    EXPECT_FALSE(qobject_cast<SceneController*>(replaced.get()));
}

} // namespace
} // namespace ui::test

#include "ViewControllerTest.moc"
