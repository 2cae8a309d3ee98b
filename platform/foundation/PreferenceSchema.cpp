#include "platform/foundation/PreferenceSchema.h"

#include <array>

namespace foundation {

namespace {

using Type = PreferenceValue::Type;

const std::array<PreferenceSchema::Entry, 7>& table() {
    static const std::array<PreferenceSchema::Entry, 7> entries = {{
        {PreferenceSchema::tutorialShowed, Type::boolean, PreferenceValue(false)},
        // 0: zoom-out ramp, 1: zoom-in ramp.
        {PreferenceSchema::zoomMode, Type::integer, PreferenceValue(0)},
        // Seconds.
        {PreferenceSchema::zoomDuration, Type::float32, PreferenceValue(5.0f)},
        // 0: 1920x1080 at 30, 1: 1920x1080 at 60, 2: 3840x2160 at 30.
        {PreferenceSchema::videoMode, Type::integer, PreferenceValue(0)},
        {PreferenceSchema::appRatingFirstUsed, Type::date, std::nullopt},
        {PreferenceSchema::appRatingLastRemind, Type::date, std::nullopt},
        {PreferenceSchema::appRatingLastVersionRated, Type::string, PreferenceValue("0.0.0")},
    }};
    return entries;
}

} // namespace

std::span<const PreferenceSchema::Entry> PreferenceSchema::entries() {
    return table();
}

const PreferenceSchema::Entry* PreferenceSchema::find(const QString& key) {
    for (const Entry& entry : table()) {
        if (key == QLatin1String(entry.key))
            return &entry;
    }
    return nullptr;
}

std::optional<PreferenceValue> PreferenceSchema::defaultValue(const QString& key) {
    const Entry* entry = find(key);
    return entry ? entry->defaultValue : std::nullopt;
}

} // namespace foundation
