#pragma once

#include "platform/av/CaptureDevice.h"

namespace av {

// Stands in for a microphone where there is none: a quiet ambient hiss, so clips have sound.
class VirtualMicrophoneDevice : public CaptureDevice {
    Q_OBJECT

public:
    explicit VirtualMicrophoneDevice(QObject* parent = nullptr);

    GstElement* createSourceElement() const override;
};

} // namespace av
