#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Window.h"
#include "recording/ChoseDurationViewController.h"

namespace {

using foundation::Preferences;
constexpr const char* durationKey = foundation::PreferenceSchema::zoomDuration;

// A phone-sized window whose root, a plain controller, presents the sheet; preferences live in a
// fresh folder for each test.
class ChoseDurationViewControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        qputenv("TESSARO_CONFIG_DIR", folder.path().toUtf8());
        Preferences::resetStandardForTesting();
        foundation::Strings::install();
        window.resize(390, 844);
        window.setRootViewController(root);
        window.show();
    }
    void TearDown() override { Preferences::resetStandardForTesting(); }

    ChoseDurationViewController* present() {
        sheet = new ChoseDurationViewController;
        root->present(sheet, false);
        return sheet;
    }
    int shownRow() const { return sheet->pickerView->selectedRowInComponent(0); }
    bool settle() {
        return QTest::qWaitFor([this] { return !sheet->pickerView->isMoving(); });
    }
    bool closed() {
        return QTest::qWaitFor([this] {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return sheet.isNull() && !root->presentedViewController();
        });
    }

    QTemporaryDir folder;
    ui::Window window;
    ui::ViewController* root = new ui::ViewController;
    QPointer<ChoseDurationViewController> sheet;
};

TEST_F(ChoseDurationViewControllerTest, WithoutAStoredDurationTheWheelOpensOnFiveSeconds) {
    present();
    EXPECT_EQ(shownRow(), 4);
    EXPECT_EQ(sheet->durationLabel->text(), "Duration");
    EXPECT_EQ(sheet->doneButton->currentTitle(), "Done");
    EXPECT_FALSE(Preferences::standard().hasStoredValue(durationKey)) << "opening stores nothing";

    ASSERT_EQ(sheet->numberOfRowsInComponent(sheet->pickerView, 0), 15);
    for (int row = 0; row < 15; ++row)
        EXPECT_EQ(sheet->attributedTitleForRow(sheet->pickerView, row, 0).text,
                  QString::number(row + 1) + " sec");
}

TEST_F(ChoseDurationViewControllerTest, StoredDurationsOpenOnTheirWholeSecondOrTheNearestEnd) {
    const struct {
        float stored;
        int row;
    } cases[] = {{15.0f, 14}, {9.9f, 8}, {1.0f, 0}, {40.0f, 14}, {0.5f, 0}, {-3.0f, 0}};
    for (const auto& c : cases) {
        Preferences::standard().setFloat(durationKey, c.stored);
        present();
        EXPECT_EQ(shownRow(), c.row) << c.stored;
        root->dismiss(false);
        ASSERT_TRUE(closed());
    }
}

TEST_F(ChoseDurationViewControllerTest, TurningToNineStoresItAndEitherButtonOrEscCloses) {
    present();
    sheet->pickerView->selectRow(7, 0, false);
    EXPECT_FALSE(Preferences::standard().hasStoredValue(durationKey)) << "only the user's turn";
    QTest::keyClick(sheet->pickerView, Qt::Key_Down);
    ASSERT_TRUE(settle());
    EXPECT_EQ(Preferences::standard().valueForKey(durationKey), foundation::PreferenceValue(9.0f));

    // The presenter is no recording screen: nothing to refresh, and the sheet still goes.
    QTest::mouseClick(sheet->closeButton, Qt::LeftButton);
    ASSERT_TRUE(closed());
    EXPECT_EQ(Preferences::standard().floatForKey(durationKey), 9.0f) << "no cancel";

    // Closed while the wheel still turns, by close, Done or Esc: the row it shows is kept.
    for (int way = 0; way < 3; ++way) {
        present();
        QTest::keyClick(sheet->pickerView, Qt::Key_Down);
        if (way == 2)
            QTest::keyClick(sheet->pickerView, Qt::Key_Escape);
        else
            QTest::mouseClick(way == 0 ? sheet->closeButton.data() : sheet->doneButton.data(),
                              Qt::LeftButton);
        EXPECT_EQ(Preferences::standard().floatForKey(durationKey), 10.0f + way) << way;
        ASSERT_TRUE(closed());
    }
}

} // namespace
