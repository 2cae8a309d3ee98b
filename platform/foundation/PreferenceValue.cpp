#include "platform/foundation/PreferenceValue.h"

#include <QDebug>
#include <QJsonObject>
#include <QJsonValue>
#include <QLocale>
#include <array>
#include <cmath>

namespace foundation {

namespace {

constexpr std::array<const char*, 6> typeNames = {"bool",   "integer", "float",
                                                  "double", "string",  "date"};

QString dateText(const QDateTime& date) {
    return date.isValid() ? date.toUTC().toString(Qt::ISODateWithMs) : QString();
}

// JSON has no NaN or infinity; they are written as text.
QJsonValue realToJson(double value) {
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    return value;
}

std::optional<double> realFromJson(const QJsonValue& json) {
    if (json.isDouble())
        return json.toDouble();
    const QString text = json.toString();
    if (text == QLatin1String("nan"))
        return std::nan("");
    if (text == QLatin1String("inf"))
        return HUGE_VAL;
    if (text == QLatin1String("-inf"))
        return -HUGE_VAL;
    return std::nullopt;
}

} // namespace

const char* PreferenceValue::typeName(Type type) {
    return typeNames.at(static_cast<std::size_t>(type));
}

std::optional<PreferenceValue::Type> PreferenceValue::typeFromName(const QString& name) {
    for (std::size_t i = 0; i < typeNames.size(); ++i) {
        if (name == QLatin1String(typeNames[i]))
            return static_cast<Type>(i);
    }
    return std::nullopt;
}

QString PreferenceValue::toString() const {
    const QLocale c = QLocale::c();
    return std::visit(
        [&c](const auto& value) -> QString {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, bool>)
                return value ? QStringLiteral("true") : QStringLiteral("false");
            else if constexpr (std::is_same_v<T, qint64>)
                return QString::number(value);
            else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>)
                return c.toString(value, 'g', QLocale::FloatingPointShortest);
            else if constexpr (std::is_same_v<T, QString>)
                return value;
            else
                return dateText(value);
        },
        storedValue);
}

QJsonObject PreferenceValue::toJson() const {
    const QJsonValue value = std::visit(
        [](const auto& v) -> QJsonValue {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>)
                return realToJson(v); // float to double is exact
            else if constexpr (std::is_same_v<T, QDateTime>)
                return dateText(v);
            else
                return v;
        },
        storedValue);
    return QJsonObject{{QStringLiteral("type"), QLatin1String(typeName())},
                       {QStringLiteral("value"), value}};
}

std::optional<PreferenceValue> PreferenceValue::fromJson(const QJsonValue& json, QString* error) {
    auto fail = [error](const QString& reason) -> std::optional<PreferenceValue> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    if (!json.isObject())
        return fail(QStringLiteral("not an object"));
    const QJsonObject object = json.toObject();
    const QString name = object.value(QLatin1String("type")).toString();
    const std::optional<Type> type = typeFromName(name);
    if (!type)
        return fail(QStringLiteral("unknown type \"%1\"").arg(name));

    const QJsonValue value = object.value(QLatin1String("value"));
    const QString mismatch = QStringLiteral("value does not fit type \"%1\"").arg(name);
    switch (*type) {
    case Type::boolean:
        if (!value.isBool())
            return fail(mismatch);
        return PreferenceValue(value.toBool());
    case Type::integer: {
        // toInteger() answers its default for a fraction or a number out of range, so two
        // different defaults tell a real integer apart.
        const qint64 integer = value.toInteger(0);
        if (!value.isDouble() || integer != value.toInteger(1))
            return fail(mismatch);
        return PreferenceValue(integer);
    }
    case Type::float32: {
        const std::optional<double> real = realFromJson(value);
        if (!real)
            return fail(mismatch);
        return PreferenceValue(static_cast<float>(*real));
    }
    case Type::float64: {
        const std::optional<double> real = realFromJson(value);
        if (!real)
            return fail(mismatch);
        return PreferenceValue(*real);
    }
    case Type::string:
        if (!value.isString())
            return fail(mismatch);
        return PreferenceValue(value.toString());
    case Type::date: {
        if (!value.isString())
            return fail(mismatch);
        const QString text = value.toString();
        if (text.isEmpty())
            return PreferenceValue(QDateTime());
        QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
        if (!date.isValid())
            return fail(mismatch);
        return PreferenceValue(date.toUTC());
    }
    }
    return fail(mismatch);
}

QDebug operator<<(QDebug debug, const PreferenceValue& value) {
    QDebugStateSaver saver(debug);
    debug.nospace() << value.typeName() << '(' << value.toString() << ')';
    return debug;
}

} // namespace foundation
