#include "platform/foundation/FileManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace foundation {
namespace {

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
    ASSERT_TRUE(writer.open(QIODevice::WriteOnly));
    writer.write(content);
    writer.close();
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

} // namespace
} // namespace foundation
