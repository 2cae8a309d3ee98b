#pragma once

#include <QString>

#include <stdexcept>

// The capture library's own failures: a message, or no device of the asked kind.
class CKFError : public std::runtime_error {
public:
    enum class Kind { error, captureDeviceNotFound };

    static CKFError error(const QString& message) { return CKFError(Kind::error, message); }
    static CKFError captureDeviceNotFound() {
        return CKFError(Kind::captureDeviceNotFound, QString());
    }

    Kind kind() const { return errorKind; }
    const QString& message() const { return text; }
    QString localizedDescription() const;

private:
    CKFError(Kind kind, const QString& message);

    Kind errorKind;
    QString text;
};
