#include "platform/av/CaptureDeviceInput.h"

#include "platform/av/CaptureDevice.h"
#include "platform/av/Error.h"
#include "platform/av/FileCameraDevice.h"
#include "platform/av/SystemCaptureDevice.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace av {

namespace {

void checkCanOpen(const CaptureDevice* device) {
    const QString& name = device->localizedName();
    if (!device->isConnected())
        throw Error(Error::Code::deviceDisconnected,
                    qtTrId("input_camera_no_longer_connected").arg(name));
    if (auto* file = qobject_cast<const FileCameraDevice*>(device)) {
        if (const std::optional<Error> problem = file->sourceProblem())
            throw Error(Error::Code::deviceNotFound, problem->localizedDescription());
        return;
    }
    // Only a camera's node is opened here: a microphone's "path" names a sound card, not a file.
    auto* system = qobject_cast<const SystemCaptureDevice*>(device);
    if (!system || system->mediaType() != MediaType::video ||
        !system->devicePath().startsWith(QLatin1Char('/')))
        return;
    const int fd = ::open(QFile::encodeName(system->devicePath()).constData(), O_RDWR | O_NONBLOCK);
    const int problem = errno;
    if (fd >= 0) {
        ::close(fd);
        return;
    }
    switch (problem) {
    case EACCES:
    case EPERM:
        throw Error(Error::Code::permissionDenied,
                    qtTrId("input_tessaro_may_not_use").arg(name, system->devicePath()));
    case EBUSY:
        throw Error(Error::Code::deviceBusy, qtTrId("input_camera_use_another_program").arg(name));
    default:
        throw Error(Error::Code::deviceDisconnected,
                    qtTrId("input_camera_cannot_opened")
                        .arg(name, QString::fromLocal8Bit(strerror(problem))));
    }
}

} // namespace

CaptureDeviceInput::CaptureDeviceInput(CaptureDevice* device, QObject* parent)
    : CaptureInput(parent), captureDevice(device) {
    checkCanOpen(device);
}

} // namespace av
