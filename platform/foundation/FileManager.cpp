#include "platform/foundation/FileManager.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QThreadPool>

#include <fcntl.h>
#include <unistd.h>

namespace foundation {

QString FileManager::documentsDirectory() {
    QString path = qEnvironmentVariable("TESSARO_DOCUMENTS_DIR");
    if (path.isEmpty())
        path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QDir().mkpath(path);
    return path;
}

bool FileManager::removeItem(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    // While it is held open, the unlink only drops the name; the blocks are freed at the last
    // close, which can take milliseconds per hundred megabytes.
    const int held = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    const bool removed = ::unlink(name.constData()) == 0;
    if (held >= 0)
        QThreadPool::globalInstance()->start([held] { ::close(held); });
    return removed;
}

} // namespace foundation
