#pragma once

#include "platform/av/CaptureDevice.h"

namespace av {

// A still picture (PNG or JPEG) shown as a live back camera, for demos and tests
// (--camera file:PATH).
class FileCameraDevice : public CaptureDevice {
    Q_OBJECT

public:
    explicit FileCameraDevice(QString path, QObject* parent = nullptr);

    const QString& path() const { return filePath; }
    GstElement* createSourceElement() const override;

private:
    QString filePath;
};

} // namespace av
