#include <functional>

#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "platform/ui/ScrollView.h"

namespace ui::test {
namespace {

constexpr int pageWidth = 300;
constexpr int pages = 4;

// Counts the rests and notes where each came.
struct RestJournal : ScrollViewDelegate {
    QList<double> offsets;
    void scrollViewDidEndDecelerating(ScrollView* view) override {
        offsets.append(view->contentOffset().x());
    }
};

// A shown 300 × 400 pager of four pages, one point high, as the tutorial builds it.
class ScrollViewTest : public ::testing::Test {
public:
    void SetUp() override {
        pager.resize(pageWidth, 400);
        pager.setPagingEnabled(true);
        pager.setContentSize(QSizeF(pageWidth * pages, 1.0));
        pager.setDelegate(&rests);
        pager.show();
    }

    // Waits for the pager to come to rest after an input, and answers the page it rests on.
    double restedPage(int restsBefore) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return rests.offsets.size() > restsBefore; }));
        EXPECT_FALSE(pager.isDecelerating());
        return pager.contentOffset().x() / pageWidth;
    }

    // Moves 10 ms apart by the events' clock, whatever the machine's load.
    void drag(int from, int to, int steps, int pauseBeforeRelease) {
        QTest::mousePress(&pager, Qt::LeftButton, {}, QPoint(from, 200));
        for (int i = 1; i <= steps; ++i)
            QTest::mouseMove(&pager, QPoint(from + (to - from) * i / steps, 200), 10);
        QTest::mouseRelease(&pager, Qt::LeftButton, {}, QPoint(to, 200),
                            std::max(1, pauseBeforeRelease));
    }

    void wheel(QPoint pixels, QPoint angle, Qt::ScrollPhase phase = Qt::NoScrollPhase) {
        QWheelEvent event(QPointF(150, 200), pager.mapToGlobal(QPointF(150, 200)), pixels, angle,
                          Qt::NoButton, Qt::NoModifier, phase, false);
        event.setTimestamp(wheelTime += 10);
        QApplication::sendEvent(&pager, &event);
    }
    quint64 wheelTime = 0;

    ScrollView pager;
    RestJournal rests;
};

TEST_F(ScrollViewTest, EveryKindOfInputRestsOnAWholePage) {
    auto key = [this](Qt::Key key) { return [this, key] { QTest::keyClick(&pager, key); }; };
    const struct {
        const char* input;
        double startPage;
        std::function<void()> act;
        double page;
    } rows[] = {
        {"slow drag past half a page", 0, [&] { drag(250, 80, 10, 150); }, 1},
        {"slow drag under half a page springs back", 1, [&] { drag(200, 120, 10, 150); }, 1},
        {"quick short flick goes on", 1, [&] { drag(200, 120, 2, 0); }, 2},
        {"a flick backwards goes back", 2, [&] { drag(100, 160, 3, 0); }, 1},
        {"a long flick moves one page only", 0, [&] { drag(290, -200, 3, 0); }, 1},
        {"right arrow", 0, key(Qt::Key_Right), 1},
        {"left arrow", 2, key(Qt::Key_Left), 1},
        {"page down", 1, key(Qt::Key_PageDown), 2},
        {"page up", 1, key(Qt::Key_PageUp), 0},
        {"end", 0, key(Qt::Key_End), 3},
        {"home", 3, key(Qt::Key_Home), 0},
        {"wheel notch down", 0, [&] { wheel(QPoint(), QPoint(0, -120)); }, 1},
        {"wheel notch up", 2, [&] { wheel(QPoint(), QPoint(0, 120)); }, 1},
        {"touchpad swipe left with phases", 0,
         [&] {
             wheel({}, {}, Qt::ScrollBegin);
             for (int i = 0; i < 6; ++i)
                 wheel({-30, 0}, {-30, 0}, Qt::ScrollUpdate);
             wheel({}, {}, Qt::ScrollEnd);
         },
         1},
        {"touchpad nudge without phases springs back", 2,
         [&] { wheel(QPoint(20, 0), QPoint(20, 0)); }, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.input);
        pager.setContentOffset(QPointF(row.startPage * pageWidth, 0));
        const int before = int(rests.offsets.size());
        row.act();
        EXPECT_DOUBLE_EQ(restedPage(before), row.page);
        // One notice per scroll, and it comes once the pager rests.
        QTest::qWait(50);
        EXPECT_EQ(rests.offsets.size(), before + 1);
        EXPECT_DOUBLE_EQ(rests.offsets.last(), row.page * pageWidth);
    }
}

TEST_F(ScrollViewTest, KeysAtEitherEndTellNobodyAndNothingMovesVertically) {
    QTest::keyClick(&pager, Qt::Key_Left);
    pager.setContentOffset(QPointF(3 * pageWidth, 0));
    QTest::keyClick(&pager, Qt::Key_Right);
    QTest::qWait(int(ScrollView::pageGlideDuration * 1000) + 100);
    EXPECT_TRUE(rests.offsets.isEmpty());

    // A diagonal drag moves the one-point-high content sideways only.
    QTest::mousePress(&pager, Qt::LeftButton, {}, QPoint(200, 300));
    QTest::mouseMove(&pager, QPoint(150, 100));
    EXPECT_EQ(pager.contentOffset().y(), 0);
    EXPECT_EQ(pager.contentView()->y(), 0);
    QTest::mouseRelease(&pager, Qt::LeftButton, {}, QPoint(150, 100));
}

TEST_F(ScrollViewTest, ATouchScreenSwipePagesAndACancelledOneSpringsBack) {
    QPointingDevice* screen = QTest::createTouchDevice();
    QTest::touchEvent(&pager, screen).press(0, QPoint(250, 200));
    for (int x = 230; x >= 50; x -= 30) {
        QTest::qWait(8);
        QTest::touchEvent(&pager, screen).move(0, QPoint(x, 200));
    }
    QTest::touchEvent(&pager, screen).release(0, QPoint(50, 200));
    EXPECT_DOUBLE_EQ(restedPage(0), 1);

    QTest::touchEvent(&pager, screen).press(0, QPoint(250, 200));
    QTest::touchEvent(&pager, screen).move(0, QPoint(200, 200));
    QTouchEvent cancel(QEvent::TouchCancel, screen);
    QApplication::sendEvent(&pager, &cancel);
    EXPECT_DOUBLE_EQ(restedPage(1), 1);
}

} // namespace
} // namespace ui::test
