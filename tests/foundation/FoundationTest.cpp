#include "platform/foundation/Bundle.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTemporaryDir>
#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace foundation {

// So that failed comparisons print the value instead of its bytes.
void PrintTo(const PreferenceValue& value, std::ostream* out) {
    *out << value.typeName() << '(' << value.toString().toStdString() << ')';
}

namespace {

struct WarningCollector {
    static inline QStringList lines;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtWarningMsg)
                lines << text;
        });
    WarningCollector() { lines.clear(); }
    ~WarningCollector() { qInstallMessageHandler(previous); }
};

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

// Fresh preferences in a folder of their own, read and written under the decimal comma of German
// (in C and in Qt), which neither the file nor the text of a value may follow.
class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(configFolder.isValid());
        qputenv("TESSARO_CONFIG_DIR", configFolder.path().toUtf8());
        Preferences::resetStandardForTesting();
        std::setlocale(LC_ALL, "de_DE.UTF-8"); // may be missing; QLocale still applies
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    }
    void TearDown() override {
        QLocale::setDefault(previousLocale);
        std::setlocale(LC_ALL, previousCLocale.c_str());
        Preferences::resetStandardForTesting();
        qunsetenv("TESSARO_CONFIG_DIR");
    }

    QString filePath() const { return configFolder.filePath(QStringLiteral("preferences.json")); }
    // What a new process would read.
    Preferences& reloaded() {
        Preferences::resetStandardForTesting();
        return Preferences::standard();
    }
    QStringList folderEntries() const {
        return QDir(configFolder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir configFolder;
    const std::string previousCLocale = std::setlocale(LC_ALL, nullptr);
    const QLocale previousLocale;
};

TEST(PreferenceSchemaTest, DefaultsHaveTheDeclaredType) {
    for (const PreferenceSchema::Entry& entry : PreferenceSchema::entries()) {
        if (entry.defaultValue) {
            EXPECT_EQ(entry.defaultValue->type(), entry.type) << entry.key;
        }
        EXPECT_EQ(PreferenceSchema::find(QString::fromLatin1(entry.key)), &entry);
    }
    EXPECT_EQ(PreferenceSchema::find(QStringLiteral("zoommode")), nullptr);
}

// The other keys' defaults are checked by the screens that open with them.
TEST_F(PreferencesTest, AbsentKeysReadTheDocumentedDefaults) {
    Preferences& preferences = Preferences::standard();
    EXPECT_EQ(preferences.filePath(), filePath());
    EXPECT_FALSE(preferences.boolForKey("tutorialShowed"));
    // Outside the table: the type's zero.
    EXPECT_FALSE(preferences.valueForKey("neverWritten"));
    EXPECT_FALSE(preferences.boolForKey("neverWritten"));
    EXPECT_EQ(preferences.integerForKey("neverWritten"), 0);
    EXPECT_EQ(preferences.doubleForKey("neverWritten"), 0.0);
    EXPECT_TRUE(preferences.stringForKey("neverWritten").isNull());

    EXPECT_TRUE(folderEntries().isEmpty()) << "reading must not create the file";
}

TEST_F(PreferencesTest, EveryTypeKeepsItsTypeAndSurvivesAReloadExactly) {
    using T = PreferenceValue::Type;
    const QDateTime moment(QDate(2026, 11, 23), QTime(9, 30, 0, 123), Qt::UTC);
    const std::tuple<const char*, PreferenceValue, T> rows[] = {
        {"largest", std::numeric_limits<qint64>::max(), T::integer},
        {"smallest", std::numeric_limits<qint64>::min(), T::integer},
        {"beyondDoublePrecision", (qint64(1) << 53) + 1, T::integer},
        {"tenth", 0.1f, T::float32},
        {"five", 5.0f, T::float32},
        {"infinite", -std::numeric_limits<float>::infinity(), T::float32},
        {"third", 1.0 / 3.0, T::float64},
        {"ratio", 1234.5678, T::float64},
        {"tiny", std::numeric_limits<double>::denorm_min(), T::float64},
        {"tutorialShowed", true, T::boolean},
        {"unicode", "Zoom \u2194 Stra\u00dfe \U0001F3A5 \"quoted\"\n", T::string},
        {"empty", QString(), T::string},
        {"objectInteger", 7, T::integer},
    };
    Preferences& preferences = Preferences::standard();
    for (const auto& [key, value, type] : rows) {
        EXPECT_EQ(value.type(), type) << key;
        preferences.setObject(key, value);
    }
    preferences.setDouble("notANumber", std::nan(""));
    preferences.setDate("AppRatingFirstUsed", moment.toOffsetFromUtc(-5 * 3600));

    Preferences& again = reloaded();
    for (const auto& [key, value, type] : rows)
        EXPECT_EQ(again.valueForKey(key), value) << key;
    EXPECT_TRUE(std::isnan(again.doubleForKey("notANumber")));
    const QDateTime date = again.dateForKey("AppRatingFirstUsed");
    EXPECT_EQ(date, moment);
    EXPECT_EQ(date.timeSpec(), Qt::UTC);

    // Float and double reads accept either real type; the value keeps its own.
    EXPECT_EQ(again.doubleForKey("tenth"), double(0.1f));
    EXPECT_EQ(again.floatForKey("third"), float(1.0 / 3.0));
    EXPECT_EQ(PreferenceValue(2.5f).toString(), "2.5");

    const QByteArray text = readAll(filePath());
    for (const char* written : {"9223372036854775807", "2026-11-23T09:30:00.123Z", "1234.5678"})
        EXPECT_TRUE(text.contains(written)) << written << " in " << text.constData();
}

using PreferencesDeathTest = PreferencesTest;

TEST_F(PreferencesDeathTest, ReadingAnotherTypeStopsTheProgram) {
    Preferences& preferences = Preferences::standard();
    preferences.setString("zoomMode", "fast");
    preferences.setInteger("zoomDuration", 5);
    preferences.setFloat("tutorialShowed", 1.0f);

    EXPECT_DEATH(preferences.integerForKey("zoomMode"), "\"zoomMode\".*string.*integer");
    EXPECT_DEATH(preferences.floatForKey("zoomDuration"), "\"zoomDuration\".*integer.*float");
    EXPECT_DEATH(preferences.boolForKey("tutorialShowed"), "\"tutorialShowed\".*float.*bool");
    // A default counts as a stored value.
    EXPECT_DEATH(preferences.stringForKey("videoMode"), "\"videoMode\".*integer.*string");
}

TEST_F(PreferencesTest, FileIsCompleteAfterEveryChangeAndRemovingAKeyBringsItsDefaultBack) {
    // The folder does not exist yet.
    const QString nested = configFolder.filePath(QStringLiteral("config/tessaro/preferences.json"));
    Preferences preferences(nested);
    QStringList changed;
    QObject::connect(&preferences, &Preferences::valueChanged,
                     [&](const QString& key) { changed << key; });
    // The file parses and holds exactly these values, and nothing else lies beside it.
    auto expectOnDisk = [&](const QJsonObject& values) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(readAll(nested), &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError);
        EXPECT_EQ(document.object()["values"].toObject(), values);
        EXPECT_EQ(QDir(QFileInfo(nested).path()).entryList(QDir::Files | QDir::Hidden),
                  QStringList{"preferences.json"});
    };
    const QJsonObject one = PreferenceValue(1).toJson(), twelve = PreferenceValue(12.0f).toJson();
    const QJsonObject replaced = PreferenceValue("replaced by another type").toJson();
    preferences.setInteger("zoomMode", 1);
    expectOnDisk({{"zoomMode", one}});
    preferences.setFloat("zoomDuration", 12.0f);
    preferences.setFloat("zoomDuration", 12.0f);
    expectOnDisk({{"zoomMode", one}, {"zoomDuration", twelve}});
    preferences.setString("zoomMode", "replaced by another type");
    expectOnDisk({{"zoomMode", replaced}, {"zoomDuration", twelve}});
    preferences.removeObjectForKey("zoomDuration");
    preferences.removeObjectForKey("zoomDuration");
    expectOnDisk({{"zoomMode", replaced}});
    EXPECT_EQ(preferences.floatForKey("zoomDuration"), 5.0f);
    EXPECT_EQ(changed, QStringList({"zoomMode", "zoomDuration", "zoomMode", "zoomDuration"}))
        << "an unchanged value or an absent key is no change";
    EXPECT_TRUE(preferences.isSaved());
}

TEST_F(PreferencesTest, DamagedFilesAreMovedAsideNeverOverwritten) {
    const QList<QByteArray> damaged = {
        "{\"values\": {\"zoomMode\": ", "", "[1, 2]", "{\"version\": 1}",
        "{\"values\": [\"zoomMode\"]}",
    };
    QStringList asideCopies;
    for (const QByteArray& content : damaged) {
        SCOPED_TRACE(content.constData());
        writeAll(filePath(), content);
        WarningCollector warnings;
        Preferences& preferences = reloaded();
        EXPECT_EQ(preferences.integerForKey("zoomMode"), 0);

        QStringList aside =
            QDir(configFolder.path()).entryList({QStringLiteral("preferences.json.corrupt-*")});
        for (const QString& earlier : asideCopies)
            aside.removeOne(earlier);
        ASSERT_EQ(aside.size(), 1) << "an earlier copy was overwritten";
        const QString newest = aside.first();
        asideCopies << newest;
        EXPECT_EQ(readAll(configFolder.filePath(newest)), content);
        EXPECT_FALSE(QFile::exists(filePath()));

        ASSERT_EQ(warnings.lines.size(), 1) << warnings.lines.join('\n').toStdString();
        EXPECT_TRUE(warnings.lines.first().contains(filePath()));
        EXPECT_TRUE(warnings.lines.first().contains(configFolder.filePath(newest)));

        preferences.setInteger("zoomMode", 1);
        EXPECT_EQ(reloaded().integerForKey("zoomMode"), 1);
    }
}

TEST_F(PreferencesTest, EntriesOfUnknownTypeOrThatTheSchemaForbidsAreSkipped) {
    writeAll(filePath(), R"({"version": 1, "values": {
        "zoomMode": {"type": "string", "value": "x"},
        "videoMode": {"type": "integer", "value": 99},
        "tutorialShowed": {"type": "integer", "value": 1},
        "colour": {"type": "colour", "value": "red"},
        "half": {"type": "integer", "value": 2.5},
        "quoted": {"type": "integer", "value": "5"},
        "when": {"type": "date", "value": "yesterday"},
        "bare": 3,
        "zoomDuration": {"type": "double", "value": 3}
    }})");
    WarningCollector warnings;
    Preferences& preferences = reloaded();

    // A wrong type or a number out of range reads as the default instead of stopping the app.
    EXPECT_EQ(preferences.integerForKey("zoomMode"), 0);
    EXPECT_EQ(preferences.integerForKey("videoMode"), 0);
    EXPECT_FALSE(preferences.boolForKey("tutorialShowed"));
    EXPECT_EQ(preferences.floatForKey("zoomDuration"), 3.0f);
    for (const char* key : {"colour", "half", "quoted", "when", "bare", "zoomMode", "videoMode"})
        EXPECT_FALSE(preferences.hasStoredValue(key)) << key;
    EXPECT_EQ(warnings.lines.size(), 8) << warnings.lines.join('\n').toStdString();
    EXPECT_TRUE(warnings.lines.join('\n').contains("\"colour\""));
    EXPECT_EQ(folderEntries(), QStringList{"preferences.json"});
}

TEST_F(PreferencesTest, UnwritableFolderKeepsTheValueInMemory) {
    // A file standing where the folder should be: unlike a read-only folder, it stops root too.
    const QString folder = configFolder.filePath("config");
    writeAll(folder, "not a folder");
    const QString path = folder + "/preferences.json";
    Preferences preferences(path);
    {
        WarningCollector warnings;
        preferences.setInteger("videoMode", 2);
        EXPECT_EQ(preferences.integerForKey("videoMode"), 2);
        EXPECT_FALSE(preferences.isSaved());
        ASSERT_EQ(warnings.lines.size(), 1);
        EXPECT_TRUE(warnings.lines.first().contains(path));
    }

    QFile::remove(folder);
    // The same value again is written now that the folder takes it.
    preferences.setInteger("videoMode", 2);
    EXPECT_TRUE(preferences.isSaved());
    EXPECT_EQ(Preferences(path).integerForKey("videoMode"), 2);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"preferences.json"});
}

// The version is AppRatingTest's and the command line's; a missing clip is TutorialTest's.
TEST(BundleTest, InfoAndResourcesComeFromTheProjectAndTheDataFolderMissingOnesAreNull) {
    const Bundle& bundle = Bundle::main();
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey("NoSuchKey").isValid());
    EXPECT_TRUE(bundle.image("NoSuchImage").isNull());
    EXPECT_TRUE(bundle.pixmap("NoSuchImage", QSize(16, 16)).isNull());
    EXPECT_TRUE(bundle.image(QString()).isNull());

    QTemporaryDir data;
    ASSERT_TRUE(data.isValid());
    for (const char* name : {"1.mov", "notes"})
        ASSERT_TRUE(QFile(data.filePath(name)).open(QIODevice::WriteOnly));
    // Named apart from the source tree's clips, which are looked up after this folder.
    ASSERT_TRUE(QDir(data.path()).mkdir("folder.mov"));
    qputenv("TESSARO_DATA_DIR", data.path().toUtf8());
    EXPECT_EQ(bundle.resourceFolders().value(0), data.path());
    EXPECT_EQ(bundle.pathForResource("1", "mov"), data.filePath("1.mov"));
    EXPECT_EQ(bundle.pathForResource("notes", QString()), data.filePath("notes"));
    EXPECT_TRUE(bundle.pathForResource("folder", "mov").isEmpty()) << "a folder is no resource";
    EXPECT_TRUE(bundle.pathForResource(QString(), "mov").isEmpty());

    qunsetenv("TESSARO_DATA_DIR");
    EXPECT_NE(bundle.pathForResource("1", "mov"), data.filePath("1.mov"));
}

// Every key the screens look up.
const QStringList productKeys =
    QStringLiteral("cam_zoom_info cam_zoom_in cam_zoom_out cam_duration cam_sec tutorial_text_1 "
                   "tutorial_text_2 tutorial_text_3 tutorial_text_4 tutorial_ready "
                   "RateAppFirstFirstLabel RateAppFirstSecondLabel RateAppFirstThirdLabel "
                   "RateAppLikedFirstLabel RateAppLikedSecondLabel RateAppLikedThirdLabel "
                   "RateAppMailFirstLabel RateAppMailSecondLabel RateAppMailThirdLabel")
        .split(QLatin1Char(' '));

TEST(StringsTest, EveryProductKeyHasAnEnglishTextAndAMissingOneShowsTheKey) {
    for (const QString& key : productKeys) {
        const QString text = Strings::localizedString(key.toLatin1().constData());
        EXPECT_TRUE(!text.isEmpty() && text != key) << key.toStdString() << " has no text";
    }
    EXPECT_EQ(Strings::localizedString("tutorial_ready"), "Start");
    EXPECT_EQ(Strings::localizedString("cam_no_such_text"), "cam_no_such_text");
    EXPECT_EQ(Strings::localizedString("RateAppUnknownLabel"), "RateAppUnknownLabel");
}

// What goes is the name, as with QFile::remove: a link but not what it points to, never a folder.
// A reader of the old clip (a copy into the Videos folder) keeps reading it whole, and the name
// is free for the next clip at once.
TEST(FileManagerTest, RemoveItemRemovesTheNameOnlyAndAReaderKeepsTheFileWhole) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString clip = folder.filePath("clip.mov"), link = folder.filePath("link.mov");
    const QString inner = folder.filePath("inner");
    const QByteArray content(3 << 20, 'c');
    QFile writer(clip);
    ASSERT_TRUE(writer.open(QIODevice::WriteOnly) && writer.write(content) > 0 && writer.flush());
    ASSERT_TRUE(QFile::link(clip, link));
    ASSERT_TRUE(QDir().mkdir(inner));

    EXPECT_TRUE(FileManager::removeItem(link));
    EXPECT_FALSE(QFileInfo(link).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(clip));
    EXPECT_FALSE(FileManager::removeItem(inner));
    EXPECT_TRUE(QFileInfo(inner).isDir());
    EXPECT_FALSE(FileManager::removeItem(folder.filePath(QStringLiteral("missing.mov"))));

    QFile reader(clip);
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly));
    EXPECT_TRUE(FileManager::removeItem(clip));
    EXPECT_FALSE(QFileInfo::exists(clip));
    QFile next(clip);
    EXPECT_TRUE(next.open(QIODevice::NewOnly | QIODevice::WriteOnly));
    EXPECT_EQ(reader.readAll(), content);
}

using FormFactor = Device::FormFactor;
using Orientation = Device::Orientation;

TEST(DeviceTest, FormFactorFromOverrideThenChassis) {
    const struct {
        const char* overrideName;
        std::optional<QByteArray> deviceTree; // nullopt: no such file
        std::optional<QByteArray> dmi;
        FormFactor expected;
    } rows[] = {
        {"", QByteArray("handset\0", 8), std::nullopt, FormFactor::phone},
        {"", QByteArray("tablet\0", 7), std::nullopt, FormFactor::tablet},
        {"", QByteArray("convertible\0", 12), std::nullopt, FormFactor::tablet},
        {"", "handset", "10\n", FormFactor::phone},
        {"", "laptop", "10\n", FormFactor::desktop},
        {"", "desktop\n", std::nullopt, FormFactor::desktop},
        {"", std::nullopt, "30\n", FormFactor::tablet},
        {"", std::nullopt, "31\n", FormFactor::tablet},
        {"", std::nullopt, "32\n", FormFactor::tablet},
        {"", std::nullopt, "3\n", FormFactor::desktop},
        {"", std::nullopt, "10\n", FormFactor::desktop},
        {"", std::nullopt, "300\n", FormFactor::desktop},
        {"", std::nullopt, "tablet\n", FormFactor::desktop},
        {"", "", "", FormFactor::desktop},
        {"", std::nullopt, std::nullopt, FormFactor::desktop},
        {"phone", std::nullopt, "30\n", FormFactor::phone},
        {" Tablet ", "handset", std::nullopt, FormFactor::tablet},
        {"desktop", "handset", "30\n", FormFactor::desktop},
        {"watch", "handset", std::nullopt, FormFactor::phone},
    };
    for (const auto& row : rows) {
        QTemporaryDir folder;
        const QString deviceTree = folder.filePath("chassis-type");
        const QString dmi = folder.filePath("chassis_type");
        for (const auto& [path, content] :
             {std::pair{deviceTree, row.deviceTree}, {dmi, row.dmi}}) {
            QFile file(path);
            ASSERT_TRUE(!content || (file.open(QIODevice::WriteOnly) && file.write(*content) >= 0));
        }
        EXPECT_EQ(Device::detectFormFactor(row.overrideName, deviceTree, dmi), row.expected)
            << "row " << &row - rows;
    }
}

TEST(DeviceTest, SensorReadingsMapToDeviceOrientations) {
    const std::pair<QOrientationReading::Orientation, Orientation> rows[] = {
        {QOrientationReading::TopUp, Orientation::portrait},
        {QOrientationReading::TopDown, Orientation::portraitUpsideDown},
        {QOrientationReading::RightUp, Orientation::landscapeLeft},
        {QOrientationReading::LeftUp, Orientation::landscapeRight},
        {QOrientationReading::FaceUp, Orientation::faceUp},
        {QOrientationReading::FaceDown, Orientation::faceDown},
        {QOrientationReading::Undefined, Orientation::unknown},
    };
    for (const auto& [reading, expected] : rows)
        EXPECT_EQ(Device::orientationFromReading(reading), expected) << reading;
}

} // namespace
} // namespace foundation
