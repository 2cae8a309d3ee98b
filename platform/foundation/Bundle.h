#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

namespace foundation {

// The application's own resources: its name and version, the icons compiled into the binary
// and the data files (tutorial clips) installed next to it.
class Bundle {
public:
    static Bundle& main();

    // "CFBundleShortVersionString" (the project version) and "CFBundleName".
    QVariantMap infoDictionary() const;
    // An invalid QVariant for a key the dictionary does not have.
    QVariant objectForInfoDictionaryKey(const QString& key) const;

    // ":/images/<name>.svg", else ".png"; a null icon when neither exists.
    QIcon image(const QString& name) const;
    // image(name) drawn at size; a null pixmap when there is no such image.
    QPixmap pixmap(const QString& name, const QSize& size) const;

    // The first existing file name.type in resourceFolders(); empty when there is none. An empty
    // type looks for name alone.
    QString pathForResource(const QString& name, const QString& type) const;
    // $TESSARO_DATA_DIR, the source tree's data folder, the installed data folder, then the
    // application data folders of the user and the system.
    QStringList resourceFolders() const;

    // Whether this program runs from the build folder (or without an application object): it
    // then reads what the build made, an installed one only what was installed beside it.
    static bool runsFromBuildTree();

private:
    Bundle() = default;
};

} // namespace foundation
