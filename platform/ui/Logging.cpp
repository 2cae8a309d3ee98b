#include "platform/ui/Logging.h"

namespace ui {

Q_LOGGING_CATEGORY(lcUi, "tessaro.ui")

} // namespace ui
