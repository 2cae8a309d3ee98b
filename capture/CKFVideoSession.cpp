#include "capture/CKFVideoSession.h"

#include "capture/CKFSessionDelegate.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/FileManager.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <limits>

namespace {

void printError(const std::exception& error) {
    QTextStream(stdout) << error.what() << Qt::endl;
}

} // namespace

CKFVideoSession::CKFVideoSession(CameraPosition initialPosition)
    : movieOutput(new av::CaptureMovieFileOutput(this)) {
    session()->setSessionPreset(av::CaptureSession::preset1920x1080);
    session()->addOutput(movieOutput);
    position = initialPosition;
    swapCameraInput();
    try {
        session()->addInput(captureDeviceInput(DeviceType::microphone).release());
    } catch (const std::exception& error) {
        printError(error);
    }
}

CKFVideoSession::~CKFVideoSession() {
    // Finish a recording while the delegate (this) is still whole.
    session()->stopRunning();
}

av::CaptureDevice* CKFVideoSession::cameraDevice() const {
    return cameraInput ? cameraInput->device() : nullptr;
}

void CKFVideoSession::setCameraPosition(CameraPosition value) {
    position = value;
    swapCameraInput();
}

void CKFVideoSession::togglePosition() {
    position = position == CameraPosition::back ? CameraPosition::front : CameraPosition::back;
    swapCameraInput();
}

void CKFVideoSession::swapCameraInput() {
    std::unique_ptr<av::CaptureDeviceInput> input;
    try {
        input = captureDeviceInput(DeviceType(int(position)));
    } catch (const std::exception& error) {
        printError(error);
        reportDeviceProblem(QString::fromUtf8(error.what()));
        return;
    }
    av::CaptureDeviceInput* old = std::exchange(cameraInput, input.release());
    if (old)
        session()->removeInput(old);
    session()->addInput(cameraInput);
}

void CKFVideoSession::configureCamera(const std::function<void(av::CaptureDevice&)>& change) {
    av::CaptureDevice* device = cameraInput ? cameraInput->device() : nullptr;
    if (!device)
        return;
    try {
        device->lockForConfiguration();
    } catch (const av::Error&) {
        return;
    }
    change(*device);
    device->unlockForConfiguration();
}

void CKFVideoSession::setZoom(double value) {
    CKFSession::setZoom(value);
    if (!cameraInput || !cameraInput->device())
        return;
    configureCamera([value](av::CaptureDevice& device) { device.setVideoZoomFactor(value); });
    notifyDelegate(value, QStringLiteral("zoom"));
}

void CKFVideoSession::setFlashMode(FlashMode value) {
    flash = value;
    configureCamera([value](av::CaptureDevice& device) {
        const auto torch = av::CaptureDevice::TorchMode(int(value));
        if (device.isTorchModeSupported(torch))
            device.setTorchMode(torch);
    });
}

void CKFVideoSession::setWidth(qint64 width, qint64 height, qint64 frameRate) {
    if (frameRate > std::numeric_limits<qint32>::max() ||
        frameRate < std::numeric_limits<qint32>::min())
        qFatal("CKFVideoSession::setWidth: frame rate %lld does not fit 32 bits", frameRate);
    if (!cameraInput)
        return;
    const std::optional<av::CaptureDeviceFormat> format =
        deviceInputFormat(*cameraInput, width, height, frameRate);
    if (!format)
        return;
    configureCamera([&](av::CaptureDevice& device) {
        device.setActiveFormat(*format);
        const av::FrameDuration oneFrame{1, qint32(frameRate)};
        device.setActiveVideoMinFrameDuration(oneFrame);
        device.setActiveVideoMaxFrameDuration(oneFrame);
    });
}

QUrl CKFVideoSession::defaultFileURL() {
    return QUrl::fromLocalFile(QDir(foundation::FileManager::documentsDirectory())
                                   .filePath(QStringLiteral("Tessaro Video.mov")));
}

bool CKFVideoSession::record(const std::optional<QUrl>& url, RecordCallback onRecorded,
                             ErrorCallback onError) {
    if (isRecording())
        return false;
    recording = true;
    started = false;
    recordCallback = std::move(onRecorded);
    errorCallback = std::move(onError);
    QUrl target;
    if (url) {
        target = *url;
    } else {
        target = defaultFileURL();
        QFile::remove(target.toLocalFile());
    }
    if (av::CaptureConnection* connection =
            movieOutput->connectionWithMediaType(av::MediaType::video)) {
        connection->setVideoOrientation(
            videoOrientation(foundation::Device::current().orientation()));
        if (connection->isVideoStabilizationSupported())
            connection->setPreferredVideoStabilizationMode(
                av::CaptureConnection::VideoStabilizationMode::cinematic);
    }
    movieOutput->startRecordingToOutputFileURL(target, this);
    return true;
}

void CKFVideoSession::stopRecording() {
    if (isRecording())
        movieOutput->stopRecording();
}

void CKFVideoSession::didStartRecording(av::CaptureMovieFileOutput*, const QUrl&) {
    if (!recording)
        return;
    started = true;
    emit recordingStarted();
}

void CKFVideoSession::didFinishRecording(av::CaptureMovieFileOutput*, const QUrl& fileURL,
                                         const std::optional<av::Error>& error) {
    recording = false;
    started = false;
    // Taken out first: a callback may start the next recording.
    RecordCallback onRecorded = std::exchange(recordCallback, [](const QUrl&) {});
    ErrorCallback onError = std::exchange(errorCallback, [](const std::exception&) {});
    if (error)
        onError(*error);
    else
        onRecorded(fileURL);
}
