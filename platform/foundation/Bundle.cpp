#include "platform/foundation/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace foundation {

Bundle& Bundle::main() {
    static Bundle bundle;
    return bundle;
}

QVariantMap Bundle::infoDictionary() const {
    return {
        {QStringLiteral("CFBundleShortVersionString"), QStringLiteral(TESSARO_VERSION)},
        {QStringLiteral("CFBundleName"), QStringLiteral("Tessaro")},
        {QStringLiteral("CFBundleIdentifier"), QStringLiteral(TESSARO_APP_ID)},
    };
}

QVariant Bundle::objectForInfoDictionaryKey(const QString& key) const {
    return infoDictionary().value(key);
}

QIcon Bundle::image(const QString& name) const {
    if (name.isEmpty())
        return {};
    for (const char* suffix : {".svg", ".png"}) {
        const QString path = QStringLiteral(":/images/") + name + QLatin1String(suffix);
        if (QFileInfo::exists(path))
            return QIcon(path);
    }
    return {};
}

QPixmap Bundle::pixmap(const QString& name, const QSize& size) const {
    const QIcon icon = image(name);
    return icon.isNull() ? QPixmap() : icon.pixmap(size);
}

QString Bundle::pathForResource(const QString& name, const QString& type) const {
    if (name.isEmpty())
        return {};
    const QString fileName = type.isEmpty() ? name : name + QLatin1Char('.') + type;
    for (const QString& folder : resourceFolders()) {
        const QFileInfo file(QDir(folder), fileName);
        if (file.isFile())
            return file.absoluteFilePath();
    }
    return {};
}

bool Bundle::runsFromBuildTree() {
    if (!QCoreApplication::instance())
        return true;
    return QDir::cleanPath(QCoreApplication::applicationDirPath())
        .startsWith(QDir::cleanPath(QStringLiteral(TESSARO_BUILD_DIR)));
}

QStringList Bundle::resourceFolders() const {
    QStringList folders;
    const QString fromEnvironment = qEnvironmentVariable("TESSARO_DATA_DIR");
    if (!fromEnvironment.isEmpty())
        folders << fromEnvironment;
    // A program run from its build folder reads the source tree's data; an installed one reads
    // the data installed beside it, wherever the prefix is, and never the source tree.
    if (runsFromBuildTree())
        folders << QStringLiteral(TESSARO_SOURCE_DATA_DIR);
    else
        folders << QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                                   QStringLiteral(TESSARO_DATA_FROM_BINARY));
    folders << QStringLiteral(TESSARO_INSTALL_DATA_DIR)
            << QStandardPaths::standardLocations(QStandardPaths::AppDataLocation);
    return folders;
}

} // namespace foundation
