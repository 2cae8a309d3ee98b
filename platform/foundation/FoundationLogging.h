#pragma once

#include <QLoggingCategory>

namespace foundation {

Q_DECLARE_LOGGING_CATEGORY(lcFoundation)

} // namespace foundation
