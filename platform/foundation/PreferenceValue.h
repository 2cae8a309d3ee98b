#pragma once

#include <QDateTime>
#include <QString>
#include <concepts>
#include <optional>
#include <type_traits>
#include <variant>

class QDebug;
class QJsonObject;
class QJsonValue;

namespace foundation {

// One typed preference value. The type travels with the value, through the file too, so that a
// reader asking for another type is caught instead of silently converted.
class PreferenceValue {
public:
    // In the order of Variant's alternatives.
    enum class Type { boolean, integer, float32, float64, string, date };
    using Variant = std::variant<bool, qint64, float, double, QString, QDateTime>;

    PreferenceValue(bool value) : storedValue(value) {}
    // Every integer type, so that a plain int literal is not ambiguous between bool and float.
    template <std::integral T>
    requires(!std::same_as<T, bool>) PreferenceValue(T value)
        : storedValue(static_cast<qint64>(value)) {
        static_assert(std::is_signed_v<T> || sizeof(T) < sizeof(qint64),
                      "an unsigned 64-bit value does not fit a preference integer");
    }
    PreferenceValue(float value) : storedValue(value) {}
    PreferenceValue(double value) : storedValue(value) {}
    PreferenceValue(QString value) : storedValue(std::move(value)) {}
    // Without it a string literal would become a bool.
    PreferenceValue(const char* value) : storedValue(QString::fromUtf8(value)) {}
    PreferenceValue(QDateTime value) : storedValue(std::move(value)) {}

    Type type() const { return static_cast<Type>(storedValue.index()); }
    // "bool", "integer", "float", "double", "string" or "date": the names used in the file and in
    // messages.
    const char* typeName() const { return typeName(type()); }
    static const char* typeName(Type type);
    static std::optional<Type> typeFromName(const QString& name);

    template <typename T> bool holds() const { return std::holds_alternative<T>(storedValue); }
    template <typename T> const T* getIf() const { return std::get_if<T>(&storedValue); }
    const Variant& variant() const { return storedValue; }

    // The value as text, for messages and test output.
    QString toString() const;

    // {"type": <typeName>, "value": ...}. Integers keep all 64 bits, floats and doubles their
    // exact value (non-finite ones as "nan", "inf", "-inf"), dates are ISO 8601 UTC with
    // milliseconds. Nothing depends on the locale.
    QJsonObject toJson() const;
    // nullopt with a reason in error when the type is unknown or the value does not fit it.
    static std::optional<PreferenceValue> fromJson(const QJsonValue& json,
                                                   QString* error = nullptr);

    friend bool operator==(const PreferenceValue&, const PreferenceValue&) = default;

private:
    Variant storedValue;
};

QDebug operator<<(QDebug debug, const PreferenceValue& value);

} // namespace foundation
