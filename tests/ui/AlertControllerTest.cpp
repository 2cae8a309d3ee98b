#include "platform/ui/AlertController.h"
#include "platform/ui/Window.h"

#include <QTest>

#include <gtest/gtest.h>

#include "tests/ui/ProbeViewController.h"

namespace ui {
namespace {

class AlertTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.setRootViewController(screen);
        window.resize(390, 844);
        window.show();
    }
    // An alert with a standard and a cancel action over the screen; each handler notes its
    // action's title.
    AlertController* showAlert() {
        auto* alert = new AlertController(QStringLiteral("Error"), QStringLiteral("Disk full."),
                                          AlertController::Style::alert);
        alert->addAction({QStringLiteral("Retry"), AlertAction::Style::standard,
                          [this] { chosen << QStringLiteral("Retry"); }});
        alert->addAction({QStringLiteral("OK"), AlertAction::Style::cancel,
                          [this] { chosen << QStringLiteral("OK"); }});
        screen->present(alert, false);
        return alert;
    }

    QStringList journal;
    QStringList chosen;
    Window window;
    test::ProbeViewController* screen =
        new test::ProbeViewController(QStringLiteral("s"), &journal);
};

TEST_F(AlertTest, AnActionClosesTheAlertThenRunsOnceEvenWhenChosenTwiceAndEscCancels) {
    AlertController* alert = showAlert();
    alert->performAction(0);
    alert->performAction(1);
    EXPECT_TRUE(chosen.isEmpty()); // not before the alert has gone
    ASSERT_TRUE(QTest::qWaitFor([&] { return screen->presentedViewController() == nullptr; }));
    EXPECT_EQ(chosen, QStringList{QStringLiteral("Retry")});

    QTest::keyClick(showAlert()->view(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return chosen.size() == 2; }));
    EXPECT_EQ(chosen.last(), QStringLiteral("OK"));
}

} // namespace
} // namespace ui
