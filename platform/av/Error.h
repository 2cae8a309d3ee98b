#pragma once

#include <QString>

#include <stdexcept>

namespace av {

// A failure of the capture framework that a caller can act on: a device that cannot be opened,
// a recording that could not be written.
class Error : public std::runtime_error {
public:
    enum class Code {
        deviceNotFound,
        deviceBusy,
        permissionDenied,
        deviceDisconnected,
        deviceNotLocked,
        encoderMissing,
        fileNotWritable,
        diskFull,
        recordingFailed,
        sessionNotRunning,
    };

    Error(Code code, const QString& description);

    Code code() const { return errorCode; }
    // One sentence for the user: what went wrong and, where it helps, what to do.
    QString localizedDescription() const { return description; }

private:
    Code errorCode;
    QString description;
};

} // namespace av
