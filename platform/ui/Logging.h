#pragma once

#include <QLoggingCategory>

namespace ui {

Q_DECLARE_LOGGING_CATEGORY(lcUi)

} // namespace ui
