#include "platform/foundation/Bundle.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Strings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace foundation {
namespace {

TEST(BundleTest, InfoAndResourcesComeFromTheProjectAndTheDataFolderMissingOnesAreNull) {
    const Bundle& bundle = Bundle::main();
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleShortVersionString").toString(),
              TESSARO_EXPECTED_VERSION);
    EXPECT_EQ(bundle.infoDictionary().value("CFBundleName").toString(), "Tessaro");
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey("NoSuchKey").isValid());
    EXPECT_TRUE(bundle.image("NoSuchImage").isNull());
    EXPECT_TRUE(bundle.pixmap("NoSuchImage", QSize(16, 16)).isNull());
    EXPECT_TRUE(bundle.image(QString()).isNull());

    // Resources are found in the data folder from the environment.
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
    EXPECT_TRUE(bundle.pathForResource("5", "mov").isEmpty());
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
    Strings::install();
    Strings::install(); // installing twice must not stack or drop tables
    for (const QString& key : productKeys) {
        const QString text = Strings::localizedString(key.toLatin1().constData());
        EXPECT_TRUE(!text.isEmpty() && text != key) << key.toStdString() << " has no text";
    }
    EXPECT_EQ(Strings::localizedString("cam_duration"), "Duration");
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
    const QString clip = folder.filePath(QStringLiteral("clip.mov"));
    const QString link = folder.filePath(QStringLiteral("link.mov"));
    const QString inner = folder.filePath(QStringLiteral("inner"));
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

TEST(DeviceTest, OrientationForTestingIsAnnounced) {
    Device& device = Device::current();
    int announcements = 0;
    QObject context;
    QObject::connect(&device, &Device::orientationDidChange, &context, [&] {
        ++announcements;
        EXPECT_EQ(device.orientation(), Orientation::landscapeRight);
    });
    device.setOrientationForTesting(Orientation::landscapeRight);
    EXPECT_EQ(announcements, 1);
    EXPECT_TRUE(Device::isLandscape(device.orientation()));
    EXPECT_FALSE(Device::isLandscape(Orientation::faceUp));
}

} // namespace
} // namespace foundation
