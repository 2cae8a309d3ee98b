#pragma once

#include <QString>

namespace foundation {

// User-visible texts by key ("cam_zoom_info"), from the ID-based translations compiled into the
// binary. English is always loaded; the system language, when there is a table for it, on top.
class Strings {
public:
    // Needs the QCoreApplication; calling it again reloads the tables.
    static void install();
    // The text for key, or the key itself when no table has it, so a missing text shows up as
    // its key instead of an empty label.
    static QString localizedString(const char* key);
};

} // namespace foundation
