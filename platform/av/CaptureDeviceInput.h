#pragma once

#include "platform/av/CaptureInput.h"

namespace av {

class CaptureDevice;

// A device as a session input. Making one checks that the device can be opened now and throws
// av::Error saying why when it cannot (gone, busy, permission denied).
class CaptureDeviceInput : public CaptureInput {
    Q_OBJECT

public:
    explicit CaptureDeviceInput(CaptureDevice* device, QObject* parent = nullptr);

    CaptureDevice* device() const { return captureDevice; }

private:
    CaptureDevice* captureDevice;
};

} // namespace av
