#include "platform/av/Error.h"

namespace av {

Error::Error(Code code, const QString& text)
    : std::runtime_error(text.toStdString()), errorCode(code), description(text) {}

} // namespace av
