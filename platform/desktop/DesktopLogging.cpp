#include "platform/desktop/DesktopLogging.h"

namespace desktop {

Q_LOGGING_CATEGORY(lcDesktop, "tessaro.desktop", QtInfoMsg)

} // namespace desktop
