#include "platform/foundation/Strings.h"

#include <gtest/gtest.h>

namespace foundation {
namespace {

// Every key the screens look up.
constexpr const char* productKeys[] = {
    "cam_zoom_info",
    "cam_zoom_in",
    "cam_zoom_out",
    "cam_duration",
    "cam_sec",
    "tutorial_text_1",
    "tutorial_text_2",
    "tutorial_text_3",
    "tutorial_text_4",
    "tutorial_ready",
    "RateAppFirstFirstLabel",
    "RateAppFirstSecondLabel",
    "RateAppFirstThirdLabel",
    "RateAppLikedFirstLabel",
    "RateAppLikedSecondLabel",
    "RateAppLikedThirdLabel",
    "RateAppMailFirstLabel",
    "RateAppMailSecondLabel",
    "RateAppMailThirdLabel",
};

TEST(StringsTest, EveryProductKeyHasAnEnglishText) {
    Strings::install();
    Strings::install(); // installing twice must not stack or drop tables
    for (const char* key : productKeys) {
        const QString text = Strings::localizedString(key);
        EXPECT_FALSE(text.isEmpty()) << key;
        EXPECT_NE(text, QString::fromLatin1(key)) << key << " has no text";
    }
    EXPECT_EQ(Strings::localizedString("cam_duration"), "Duration");
    EXPECT_EQ(Strings::localizedString("tutorial_ready"), "Start");
}

TEST(StringsTest, MissingKeyShowsTheKey) {
    Strings::install();
    EXPECT_EQ(Strings::localizedString("cam_no_such_text"), "cam_no_such_text");
    EXPECT_EQ(Strings::localizedString("RateAppUnknownLabel"), "RateAppUnknownLabel");
}

} // namespace
} // namespace foundation
