#include "platform/foundation/FileManager.h"

#include <QDir>
#include <QStandardPaths>

namespace foundation {

QString FileManager::documentsDirectory() {
    QString path = qEnvironmentVariable("TESSARO_DOCUMENTS_DIR");
    if (path.isEmpty())
        path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QDir().mkpath(path);
    return path;
}

} // namespace foundation
