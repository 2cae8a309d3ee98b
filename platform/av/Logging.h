#pragma once

#include <QLoggingCategory>

namespace av {

// The capture framework's log; debug lines only when asked for (QT_LOGGING_RULES).
Q_DECLARE_LOGGING_CATEGORY(lcAv)

} // namespace av
