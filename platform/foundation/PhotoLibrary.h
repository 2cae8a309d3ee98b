#pragma once

#include <QString>

#include <functional>

namespace foundation {

// The user's video library: a "Tessaro" folder in the Videos folder, where saved clips are
// copied. A save never replaces a file: each copy gets a new name, claimed before writing.
class PhotoLibrary {
public:
    // $TESSARO_VIDEOS_DIR when set (tests, demos), else Videos/Tessaro.
    static QString albumDirectory();

    // The path of the copy, or an empty path and what went wrong in the system's words.
    using Completion = std::function<void(const QString& savedPath, const QString& error)>;
    // Copies the clip into the album on a thread of its own; the completion runs on the main
    // thread, also when whoever asked has gone meanwhile.
    static void saveVideoAtPath(const QString& path, Completion completion);

    // The copy itself, blocking.
    static QString copyIntoAlbum(const QString& path, QString* error);
    // Copies source to destination, which must not exist yet; a partial copy is removed.
    static bool copyFile(const QString& source, const QString& destination, QString* error);
};

} // namespace foundation
