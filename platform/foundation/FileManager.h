#pragma once

#include <QString>

namespace foundation {

// The user's folders the app writes to.
class FileManager {
public:
    // The documents folder ($TESSARO_DOCUMENTS_DIR when set, for tests and demos), created when
    // missing.
    static QString documentsDirectory();
    // Removes a file's name at once, as QFile::remove does (a link, not what it points to; never
    // a folder); the space the file held is given back on a worker thread, so removing a large
    // clip does not hold up the GUI thread. False when there was nothing to remove.
    static bool removeItem(const QString& path);
};

} // namespace foundation
