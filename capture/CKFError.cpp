#include "capture/CKFError.h"

#include <QCoreApplication>

namespace {

QString describe(CKFError::Kind kind, const QString& message) {
    if (kind == CKFError::Kind::captureDeviceNotFound)
        return qtTrId("error_no_capture_device_requested");
    return message;
}

} // namespace

CKFError::CKFError(Kind kind, const QString& message)
    : std::runtime_error(describe(kind, message).toStdString()), errorKind(kind), text(message) {}

QString CKFError::localizedDescription() const {
    return describe(errorKind, text);
}
