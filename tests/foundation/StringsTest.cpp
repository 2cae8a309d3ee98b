#include "platform/foundation/Strings.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace foundation {
namespace {

// Every key the screens look up.
const QStringList productKeys =
    QStringLiteral("cam_zoom_info cam_zoom_in cam_zoom_out cam_duration cam_sec tutorial_text_1 "
                   "tutorial_text_2 tutorial_text_3 tutorial_text_4 tutorial_ready "
                   "RateAppFirstFirstLabel RateAppFirstSecondLabel RateAppFirstThirdLabel "
                   "RateAppLikedFirstLabel RateAppLikedSecondLabel RateAppLikedThirdLabel "
                   "RateAppMailFirstLabel RateAppMailSecondLabel RateAppMailThirdLabel")
        .split(QLatin1Char(' '));

TEST(StringsTest, EveryProductKeyHasAnEnglishTextAndAMissingOneShowsTheKey) {
    Strings::install();
    Strings::install(); // installing twice must not stack or drop tables
    for (const QString& key : productKeys) {
        const QString text = Strings::localizedString(key.toLatin1().constData());
        EXPECT_FALSE(text.isEmpty()) << key.toStdString();
        EXPECT_NE(text, key) << key.toStdString() << " has no text";
    }
    EXPECT_EQ(Strings::localizedString("cam_duration"), "Duration");
    EXPECT_EQ(Strings::localizedString("tutorial_ready"), "Start");
    // A missing key shows the key.
    EXPECT_EQ(Strings::localizedString("cam_no_such_text"), "cam_no_such_text");
    EXPECT_EQ(Strings::localizedString("RateAppUnknownLabel"), "RateAppUnknownLabel");
}

} // namespace
} // namespace foundation
