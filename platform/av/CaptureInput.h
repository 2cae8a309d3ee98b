#pragma once

#include <QObject>

namespace av {

// Something that feeds a capture session.
class CaptureInput : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;
};

} // namespace av
