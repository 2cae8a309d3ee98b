#pragma once

#include "platform/foundation/PreferenceValue.h"

#include <QString>
#include <optional>
#include <span>

namespace foundation {

// The one table of the app's preference keys, their types and what an absent key reads as.
class PreferenceSchema {
public:
    // The numbers a key may hold, both ends included.
    struct Range {
        double minimum;
        double maximum;
    };
    struct Entry {
        const char* key;
        PreferenceValue::Type type;
        // nullopt: absence itself means something (a date not yet recorded).
        std::optional<PreferenceValue> defaultValue;
        std::optional<Range> range = std::nullopt;
    };

    static constexpr const char* tutorialShowed = "tutorialShowed";
    static constexpr const char* zoomMode = "zoomMode";
    static constexpr const char* zoomDuration = "zoomDuration";
    static constexpr const char* videoMode = "videoMode";
    static constexpr const char* appRatingFirstUsed = "AppRatingFirstUsed";
    static constexpr const char* appRatingLastRemind = "AppRatingLastRemind";
    static constexpr const char* appRatingLastVersionRated = "AppRatingLastVersionRated";

    static std::span<const Entry> entries();
    // nullptr for a key outside the table.
    static const Entry* find(const QString& key);
    static std::optional<PreferenceValue> defaultValue(const QString& key);
    // Why value cannot stand for key (another type, a number out of its range), or an empty
    // string when it can. Float and double stand for each other; keys outside the table take
    // anything.
    static QString rejection(const QString& key, const PreferenceValue& value);
};

} // namespace foundation
