#include "platform/foundation/FoundationLogging.h"

namespace foundation {

// Debug lines only when asked for (QT_LOGGING_RULES="tessaro.foundation.debug=true").
Q_LOGGING_CATEGORY(lcFoundation, "tessaro.foundation", QtInfoMsg)

} // namespace foundation
