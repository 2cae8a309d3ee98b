#include "platform/foundation/PreferenceSchema.h"

#include <array>
#include <variant>

namespace foundation {

namespace {

using Type = PreferenceValue::Type;

const std::array<PreferenceSchema::Entry, 7>& table() {
    static const std::array<PreferenceSchema::Entry, 7> entries = {{
        {PreferenceSchema::tutorialShowed, Type::boolean, PreferenceValue(false)},
        // 0: zoom-out ramp, 1: zoom-in ramp.
        {PreferenceSchema::zoomMode, Type::integer, PreferenceValue(0), {{0, 1}}},
        // Seconds, as the duration picker offers them.
        {PreferenceSchema::zoomDuration, Type::float32, PreferenceValue(5.0f), {{1, 15}}},
        // 0: 1920x1080 at 30, 1: 1920x1080 at 60, 2: 3840x2160 at 30.
        {PreferenceSchema::videoMode, Type::integer, PreferenceValue(0), {{0, 2}}},
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

QString PreferenceSchema::rejection(const QString& key, const PreferenceValue& value) {
    const Entry* entry = find(key);
    if (!entry)
        return {};
    const auto real = [](PreferenceValue::Type type) {
        return type == PreferenceValue::Type::float32 || type == PreferenceValue::Type::float64;
    };
    if (value.type() != entry->type && !(real(value.type()) && real(entry->type)))
        return QStringLiteral("a %1 where a %2 belongs")
            .arg(QLatin1String(value.typeName()),
                 QLatin1String(PreferenceValue::typeName(entry->type)));
    if (!entry->range)
        return {};
    const double number = std::visit(
        [](const auto& v) -> double {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_arithmetic_v<T>)
                return double(v);
            else
                return 0.0;
        },
        value.variant());
    // Written so that NaN fails too.
    if (!(number >= entry->range->minimum && number <= entry->range->maximum))
        return QStringLiteral("%1 is outside %2 to %3")
            .arg(value.toString())
            .arg(entry->range->minimum)
            .arg(entry->range->maximum);
    return {};
}

} // namespace foundation
