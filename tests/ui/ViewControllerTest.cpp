#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <gtest/gtest.h>
#include <memory>

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

    // A root replaced mid-transition drops the transition safely.
    QPointer<ProbeViewController> c = probe("C");
    root->present(c, true, noting("never"));
    QPointer<ProbeViewController> oldRoot = root;
    window.setRootViewController(probe("N"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return oldRoot.isNull() && c.isNull(); }));
    QTest::qWait(400);
    EXPECT_FALSE(journal.contains("never"));
}

TEST_F(ViewControllerTest, DismissingTheBottomOfAStackRemovesEverythingAboveIt) {
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
}

TEST_F(ViewControllerTest, ReplacingTheRootOfAVisibleWindowSwapsAppearanceAndDeletesTheOldRoot) {
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

// The top controller's status bar preference rules, and a resize reaches every controller before
// its view is laid out.
TEST_F(ViewControllerTest, TheWindowTellsItsControllersOfResizesAndFollowsTheTopOnesStatusBar) {
    QSignalSpy changes(&window, &Window::statusBarHiddenChanged);
    EXPECT_FALSE(window.prefersStatusBarHidden());
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

// Another window loads its root's view once, before the first appearance; the key window is the
// one last made key, and none once it has gone.
TEST_F(ViewControllerTest, AnotherWindowLoadsItsRootOnceAndTheLastMadeKeyIsTheKeyWindow) {
    EXPECT_EQ(Window::keyWindow(), nullptr);
    {
        Window other, second;
        auto* controller = new ProbeViewController("V", &journal);
        EXPECT_FALSE(controller->isViewLoaded());
        EXPECT_EQ(controller->window(), nullptr);
        other.setRootViewController(controller);
        other.show();
        other.hide();
        other.show();
        EXPECT_EQ(journal,
                  QStringList({"V.didLoad", "V.willAppear", "V.didAppear", "V.willDisappear",
                               "V.didDisappear", "V.willAppear", "V.didAppear"}));
        second.makeKeyAndVisible();
        EXPECT_TRUE(second.isVisible() && second.isKeyWindow());
        other.makeKeyAndVisible();
        EXPECT_EQ(Window::keyWindow(), &other);
        EXPECT_FALSE(second.isKeyWindow());
    }
    EXPECT_EQ(Window::keyWindow(), nullptr);
}

class SceneController : public ViewController {
    Q_OBJECT
};

TEST(StoryboardTest, InstantiatesTheLatestFactoryOfItsOwnStoryboard) {
    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new SceneController; });
    const Storyboard storyboard("StoryboardTest");
    const Storyboard other("StoryboardTestOther");

    EXPECT_TRUE(storyboard.contains("SceneController"));
    EXPECT_FALSE(other.contains("SceneController"));
    EXPECT_EQ(other.instantiate("SceneController"), nullptr);
    EXPECT_EQ(storyboard.instantiate("Missing"), nullptr);

    std::unique_ptr<ViewController> first(storyboard.instantiate("SceneController"));
    std::unique_ptr<ViewController> second(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(qobject_cast<SceneController*>(first.get()));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->objectName(), "SceneController");

    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new ViewController; });
    // The later factory wins; asked by type, its controller of another class is no answer.
    std::unique_ptr<ViewController> replaced(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(replaced);
    EXPECT_FALSE(qobject_cast<SceneController*>(replaced.get()));
    EXPECT_EQ(storyboard.instantiate<SceneController>(), nullptr);
    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new SceneController; });
    std::unique_ptr<SceneController> typed(storyboard.instantiate<SceneController>());
    EXPECT_TRUE(typed);
}

} // namespace
} // namespace ui::test

#include "ViewControllerTest.moc"
