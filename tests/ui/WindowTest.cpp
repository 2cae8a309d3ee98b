#include <QPointer>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "platform/ui/Window.h"
#include "tests/ui/ProbeViewController.h"

namespace ui::test {
namespace {

// A shown 400 × 300 window whose root "A" writes into the journal.
class WindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.resize(400, 300);
        window.setRootViewController(root);
        window.show();
    }

    QStringList journal;
    Window window;
    QPointer<ProbeViewController> root = new ProbeViewController("A", &journal);
};

TEST_F(WindowTest, ResizingTellsRootAndPresentedControllersBeforeLayingThemOut) {
    auto* dialog = new ProbeViewController("B", &journal);
    dialog->setModalPresentationStyle(ModalPresentationStyle::overCurrentContext);
    root->present(dialog, false);
    journal.clear();

    window.resize(500, 350);
    ASSERT_TRUE(QTest::qWaitFor([&] { return journal.size() == 2; }));
    EXPECT_EQ(journal, QStringList({"A.transition 500x350", "B.transition 500x350"}));
    EXPECT_EQ(root->sizeAtTransition, QSize(400, 300));
    EXPECT_EQ(dialog->sizeAtTransition, QSize(400, 300));
    EXPECT_EQ(root->view()->geometry(), QRect(0, 0, 500, 350));
    EXPECT_EQ(dialog->view()->geometry(), QRect(0, 0, 500, 350));
}

TEST_F(WindowTest, ReplacingTheRootOfAVisibleWindowSwapsAppearanceAndDeletesTheOldRoot) {
    QPointer<ProbeViewController> shown = new ProbeViewController("S", &journal);
    root->present(shown, false);
    journal.clear();

    auto* second = new ProbeViewController("N", &journal);
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

TEST(KeyWindowTest, KeyWindowIsTheOneLastMadeKey) {
    EXPECT_EQ(Window::keyWindow(), nullptr);
    {
        Window first;
        Window second;
        first.makeKeyAndVisible();
        EXPECT_TRUE(first.isVisible() && first.isKeyWindow());
        second.makeKeyAndVisible();
        EXPECT_EQ(Window::keyWindow(), &second);
        EXPECT_FALSE(first.isKeyWindow());
    }
    EXPECT_EQ(Window::keyWindow(), nullptr);
}

TEST_F(WindowTest, StatusBarPreferenceFollowsTheTopController) {
    QSignalSpy changes(&window, &Window::statusBarHiddenChanged);
    EXPECT_FALSE(window.prefersStatusBarHidden());

    auto* preview = new ProbeViewController("P", &journal);
    preview->statusBarHidden = true;
    root->present(preview, false);
    EXPECT_TRUE(window.prefersStatusBarHidden());
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

} // namespace
} // namespace ui::test
