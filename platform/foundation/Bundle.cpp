#include "platform/foundation/Bundle.h"

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

QStringList Bundle::resourceFolders() const {
    QStringList folders;
    const QString fromEnvironment = qEnvironmentVariable("TESSARO_DATA_DIR");
    if (!fromEnvironment.isEmpty())
        folders << fromEnvironment;
    folders << QStringLiteral(TESSARO_SOURCE_DATA_DIR) << QStringLiteral(TESSARO_INSTALL_DATA_DIR)
            << QStandardPaths::standardLocations(QStandardPaths::AppDataLocation);
    return folders;
}

} // namespace foundation
