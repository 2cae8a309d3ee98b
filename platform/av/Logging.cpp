#include "platform/av/Logging.h"

namespace av {

Q_LOGGING_CATEGORY(lcAv, "tessaro.av", QtInfoMsg)

} // namespace av
