#pragma once

#include <QString>
#include <QVariant>

class CKFSession;

// Told when a session value changes; the only key sent is "zoom".
class CKFSessionDelegate {
public:
    virtual ~CKFSessionDelegate() = default;
    virtual void didChangeValue(CKFSession* session, const QVariant& value, const QString& key) = 0;
};
