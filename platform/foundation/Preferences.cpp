#include "platform/foundation/Preferences.h"

#include "platform/foundation/FoundationLogging.h"
#include "platform/foundation/PreferenceSchema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSaveFile>
#include <QStandardPaths>
#include <memory>

namespace foundation {

namespace {

constexpr int fileFormatVersion = 1;

std::unique_ptr<Preferences>& standardInstance() {
    static std::unique_ptr<Preferences> instance;
    return instance;
}

[[noreturn]] void stopOnWrongType(const QString& key, const PreferenceValue& value,
                                  const char* expected) {
    qFatal("Preferences: key \"%s\" holds a %s, expected %s", qPrintable(key), value.typeName(),
           expected);
}

void requireKey(const QString& key) {
    if (key.isEmpty())
        qFatal("Preferences: empty key");
}

} // namespace

Preferences::Preferences(QString filePath, QObject* parent)
    : QObject(parent), storeFilePath(std::move(filePath)) {
    load();
}

Preferences::~Preferences() = default;

Preferences& Preferences::standard() {
    std::unique_ptr<Preferences>& instance = standardInstance();
    if (!instance)
        instance = std::make_unique<Preferences>(standardFilePath());
    return *instance;
}

QString Preferences::standardFilePath() {
    const QString folder = qEnvironmentVariable("TESSARO_CONFIG_DIR");
    if (!folder.isEmpty())
        return QDir(folder).filePath(QStringLiteral("preferences.json"));
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/tessaro/preferences.json");
}

void Preferences::resetStandardForTesting() {
    standardInstance().reset();
}

std::optional<PreferenceValue> Preferences::valueForKey(const QString& key) const {
    requireKey(key);
    const auto stored = storeValues.constFind(key);
    if (stored != storeValues.cend())
        return *stored;
    return PreferenceSchema::defaultValue(key);
}

bool Preferences::boolForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return false;
    if (const bool* b = value->getIf<bool>())
        return *b;
    stopOnWrongType(key, *value, "bool");
}

qint64 Preferences::integerForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return 0;
    if (const qint64* integer = value->getIf<qint64>())
        return *integer;
    stopOnWrongType(key, *value, "integer");
}

float Preferences::floatForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return 0.0f;
    if (const float* real = value->getIf<float>())
        return *real;
    if (const double* real = value->getIf<double>())
        return static_cast<float>(*real);
    stopOnWrongType(key, *value, "float");
}

double Preferences::doubleForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return 0.0;
    if (const double* real = value->getIf<double>())
        return *real;
    if (const float* real = value->getIf<float>())
        return *real;
    stopOnWrongType(key, *value, "double");
}

QString Preferences::stringForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return {};
    if (const QString* text = value->getIf<QString>())
        return *text;
    stopOnWrongType(key, *value, "string");
}

QDateTime Preferences::dateForKey(const QString& key) const {
    const std::optional<PreferenceValue> value = valueForKey(key);
    if (!value)
        return {};
    if (const QDateTime* date = value->getIf<QDateTime>())
        return *date;
    stopOnWrongType(key, *value, "date");
}

void Preferences::setObject(const QString& key, const PreferenceValue& value) {
    requireKey(key);
    // Dates are kept as the file keeps them, so a value reads the same before and after a reload.
    const QDateTime* date = value.getIf<QDateTime>();
    const PreferenceValue stored = date && date->isValid() ? PreferenceValue(date->toUTC()) : value;

    const auto current = storeValues.constFind(key);
    const bool changed = current == storeValues.cend() || !(*current == stored);
    // An unchanged value is still written when the last write failed.
    if (!changed && saved)
        return;
    storeValues.insert(key, stored);
    save();
    if (changed)
        emit valueChanged(key);
}

void Preferences::removeObjectForKey(const QString& key) {
    requireKey(key);
    const bool changed = storeValues.remove(key);
    if (!changed && saved)
        return;
    save();
    if (changed)
        emit valueChanged(key);
}

void Preferences::load() {
    QFile file(storeFilePath);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcFoundation).noquote()
            << QStringLiteral("Cannot read preferences from %1 (%2); using the defaults")
                   .arg(storeFilePath, file.errorString());
        return;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    file.close();
    if (parseError.error != QJsonParseError::NoError) {
        moveAside(
            QStringLiteral("%1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
        return;
    }
    const QJsonValue values = document.object().value(QLatin1String("values"));
    if (!document.isObject() || !values.isObject()) {
        moveAside(QStringLiteral("no \"values\" object"));
        return;
    }

    const QJsonObject entries = values.toObject();
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        QString error;
        std::optional<PreferenceValue> value = PreferenceValue::fromJson(entry.value(), &error);
        if (!value) {
            qCWarning(lcFoundation).noquote()
                << QStringLiteral("Skipping preference \"%1\" in %2: %3")
                       .arg(entry.key(), storeFilePath, error);
            continue;
        }
        // Read as the default, so that a hand-edited or foreign file cannot stop the app.
        const QString rejection = PreferenceSchema::rejection(entry.key(), *value);
        if (!rejection.isEmpty()) {
            qCWarning(lcFoundation).noquote()
                << QStringLiteral("Ignoring preference \"%1\" in %2: %3; using the default")
                       .arg(entry.key(), storeFilePath, rejection);
            continue;
        }
        if (!entry.key().isEmpty())
            storeValues.insert(entry.key(), *value);
    }
}

void Preferences::moveAside(const QString& reason) {
    // A damaged file may still hold what the user cares about: keep it under a name no other
    // copy has, and never delete it.
    const QString stamp =
        QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("yyyyMMdd-HHmmss"));
    const QString base = storeFilePath + QStringLiteral(".corrupt-") + stamp;
    QString aside = base;
    for (int n = 2; QFileInfo::exists(aside); ++n)
        aside = base + QLatin1Char('-') + QString::number(n);

    if (QFile::rename(storeFilePath, aside))
        qCWarning(lcFoundation).noquote()
            << QStringLiteral(
                   "Preferences file %1 is damaged (%2); moved it to %3, using the defaults")
                   .arg(storeFilePath, reason, aside);
    else
        qCWarning(lcFoundation).noquote()
            << QStringLiteral("Preferences file %1 is damaged (%2) and could not be moved to %3; "
                              "using the defaults")
                   .arg(storeFilePath, reason, aside);
}

void Preferences::save() {
    QJsonObject values;
    for (auto entry = storeValues.cbegin(); entry != storeValues.cend(); ++entry)
        values.insert(entry.key(), entry.value().toJson());
    const QJsonObject root{{QStringLiteral("version"), fileFormatVersion},
                           {QStringLiteral("values"), values}};

    const QString folder = QFileInfo(storeFilePath).absolutePath();
    QSaveFile file(storeFilePath);
    QString error;
    if (!QDir().mkpath(folder))
        error = QStringLiteral("cannot create the folder");
    else if (!file.open(QIODevice::WriteOnly))
        error = file.errorString();
    else if (file.write(QJsonDocument(root).toJson(QJsonDocument::Indented)) < 0 || !file.commit())
        error = file.errorString();

    saved = error.isEmpty();
    if (!saved)
        qCWarning(lcFoundation).noquote()
            << QStringLiteral(
                   "Cannot save preferences to %1 (%2); the change lasts until the app quits")
                   .arg(storeFilePath, error);
}

} // namespace foundation
