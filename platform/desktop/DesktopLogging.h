#pragma once

#include <QLoggingCategory>

namespace desktop {

// The desktop services' log; debug lines only when asked for (QT_LOGGING_RULES).
Q_DECLARE_LOGGING_CATEGORY(lcDesktop)

} // namespace desktop
