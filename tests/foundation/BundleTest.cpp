#include "platform/foundation/Bundle.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace foundation {
namespace {

TEST(BundleTest, InfoDictionaryCarriesNameAndProjectVersionAndMissingEntriesAreNull) {
    const Bundle& bundle = Bundle::main();
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleShortVersionString").toString(),
              TESSARO_EXPECTED_VERSION);
    EXPECT_EQ(bundle.infoDictionary().value("CFBundleName").toString(), "Tessaro");
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey("NoSuchKey").isValid());
    EXPECT_TRUE(bundle.image("NoSuchImage").isNull());
    EXPECT_TRUE(bundle.pixmap("NoSuchImage", QSize(16, 16)).isNull());
    EXPECT_TRUE(bundle.image(QString()).isNull());
}

TEST(BundleTest, ResourcesAreFoundInTheDataFolderFromTheEnvironment) {
    QTemporaryDir data;
    ASSERT_TRUE(data.isValid());
    for (const char* name : {"1.mov", "notes"}) {
        QFile file(data.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    // Named apart from the source tree's clips, which are looked up after this folder.
    ASSERT_TRUE(QDir(data.path()).mkdir("folder.mov"));
    qputenv("TESSARO_DATA_DIR", data.path().toUtf8());

    const Bundle& bundle = Bundle::main();
    EXPECT_EQ(bundle.resourceFolders().value(0), data.path());
    EXPECT_EQ(bundle.pathForResource("1", "mov"), data.filePath("1.mov"));
    EXPECT_EQ(bundle.pathForResource("notes", QString()), data.filePath("notes"));
    EXPECT_TRUE(bundle.pathForResource("folder", "mov").isEmpty()) << "a folder is no resource";
    EXPECT_TRUE(bundle.pathForResource("5", "mov").isEmpty());
    EXPECT_TRUE(bundle.pathForResource(QString(), "mov").isEmpty());

    qunsetenv("TESSARO_DATA_DIR");
    EXPECT_NE(bundle.pathForResource("1", "mov"), data.filePath("1.mov"));
}

} // namespace
} // namespace foundation
