#pragma once

#include "platform/foundation/PreferenceValue.h"

#include <QString>
#include <optional>
#include <span>

namespace foundation {

// The one table of the app's preference keys, their types and what an absent key reads as.
class PreferenceSchema {
public:
    struct Entry {
        const char* key;
        PreferenceValue::Type type;
        // nullopt: absence itself means something (a date not yet recorded).
        std::optional<PreferenceValue> defaultValue;
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
};

} // namespace foundation
