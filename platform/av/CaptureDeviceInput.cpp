#include "platform/av/CaptureDeviceInput.h"

#include "platform/av/CaptureDevice.h"
#include "platform/av/Error.h"
#include "platform/av/FileCameraDevice.h"
#include "platform/av/SystemCaptureDevice.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace av {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("av", text);
}

void checkCanOpen(const CaptureDevice* device) {
    const QString& name = device->localizedName();
    if (!device->isConnected())
        throw Error(Error::Code::deviceDisconnected,
                    tr("The camera “%1” is no longer connected.").arg(name));
    if (auto* file = qobject_cast<const FileCameraDevice*>(device)) {
        const QFileInfo info(file->path());
        if (!info.isFile() || !info.isReadable())
            throw Error(Error::Code::deviceNotFound,
                        tr("The picture “%1” cannot be read.").arg(file->path()));
        return;
    }
    auto* system = qobject_cast<const SystemCaptureDevice*>(device);
    if (!system || !system->devicePath().startsWith(QStringLiteral("/dev/video")))
        return;
    const int fd = ::open(system->devicePath().toLocal8Bit().constData(), O_RDWR | O_NONBLOCK);
    if (fd >= 0) {
        ::close(fd);
        return;
    }
    switch (errno) {
    case EACCES:
    case EPERM:
        throw Error(Error::Code::permissionDenied,
                    tr("Tessaro may not use the camera “%1” (%2): permission denied. Allow camera "
                       "access, or add your user to the “video” group.")
                        .arg(name, system->devicePath()));
    case EBUSY:
        throw Error(Error::Code::deviceBusy,
                    tr("The camera “%1” is in use by another program.").arg(name));
    default:
        throw Error(Error::Code::deviceDisconnected,
                    tr("The camera “%1” cannot be opened: %2.")
                        .arg(name, QString::fromLocal8Bit(strerror(errno))));
    }
}

} // namespace

CaptureDeviceInput::CaptureDeviceInput(CaptureDevice* device, QObject* parent)
    : CaptureInput(parent), captureDevice(device) {
    checkCanOpen(device);
}

} // namespace av
