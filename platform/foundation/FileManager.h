#pragma once

#include <QString>

namespace foundation {

// The user's folders the app writes to.
class FileManager {
public:
    // The documents folder ($TESSARO_DOCUMENTS_DIR when set, for tests and demos), created when
    // missing.
    static QString documentsDirectory();
};

} // namespace foundation
