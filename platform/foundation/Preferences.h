#pragma once

#include "platform/foundation/PreferenceValue.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <optional>

namespace foundation {

// The user's settings: typed values in one JSON file, written atomically at every change.
// Absent keys read as their default from PreferenceSchema. Main thread only.
class Preferences : public QObject {
    Q_OBJECT

public:
    // Reads filePath now; a missing file is an empty store, a damaged one is moved aside, and a
    // value the schema does not allow there is left out with a warning.
    explicit Preferences(QString filePath, QObject* parent = nullptr);
    ~Preferences() override;

    // The process-wide store at standardFilePath(), created on first use.
    static Preferences& standard();
    // $TESSARO_CONFIG_DIR/preferences.json, else tessaro/preferences.json in the user's config
    // folder (XDG_CONFIG_HOME).
    static QString standardFilePath();
    // Drops the standard store; the next standard() reads the environment and the file again.
    static void resetStandardForTesting();

    QString filePath() const { return storeFilePath; }
    // Whether the last change reached the disk.
    bool isSaved() const { return saved; }

    // The stored value, else the schema's default, else nullopt.
    std::optional<PreferenceValue> valueForKey(const QString& key) const;
    bool hasStoredValue(const QString& key) const { return storeValues.contains(key); }

    // Forced reads: an absent key without a default gives false, 0, 0.0, a null string or an
    // invalid date; a value of another type (which only the code can store) stops the program.
    // Float and double reads accept either real type.
    bool boolForKey(const QString& key) const;
    qint64 integerForKey(const QString& key) const;
    float floatForKey(const QString& key) const;
    double doubleForKey(const QString& key) const;
    QString stringForKey(const QString& key) const;
    QDateTime dateForKey(const QString& key) const;

    void setBool(const QString& key, bool value) { setObject(key, value); }
    void setInteger(const QString& key, qint64 value) { setObject(key, value); }
    void setFloat(const QString& key, float value) { setObject(key, value); }
    void setDouble(const QString& key, double value) { setObject(key, value); }
    void setString(const QString& key, const QString& value) { setObject(key, value); }
    void setDate(const QString& key, const QDateTime& value) { setObject(key, value); }
    void setObject(const QString& key, const PreferenceValue& value);
    // The key reads as its default again.
    void removeObjectForKey(const QString& key);

signals:
    void valueChanged(const QString& key);

private:
    void load();
    void moveAside(const QString& reason);
    void save();

    QString storeFilePath;
    QHash<QString, PreferenceValue> storeValues;
    // Stored values mirror the file only when true; a later change retries the write.
    bool saved = true;
};

} // namespace foundation
