#include "capture/CKFVideoSession.h"

#include "capture/CKFSessionDelegate.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/FileManager.h"

#include <QDir>
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
    swapCameraInput(initialPosition);
    matchMicrophone();
}

CKFVideoSession::~CKFVideoSession() {
    // Finish a recording while the delegate (this) is still whole.
    session()->stopRunning();
}

av::CaptureDevice* CKFVideoSession::cameraDevice() const {
    return cameraInput ? cameraInput->device() : nullptr;
}

void CKFVideoSession::setCameraPosition(CameraPosition value) {
    if (swapCameraInput(value))
        matchMicrophone();
}

void CKFVideoSession::togglePosition() {
    setCameraPosition(position == CameraPosition::back ? CameraPosition::front
                                                       : CameraPosition::back);
}

bool CKFVideoSession::swapCameraInput(CameraPosition wanted) {
    std::unique_ptr<av::CaptureDeviceInput> input;
    try {
        input = captureDeviceInput(DeviceType(int(wanted)));
        // The back camera's stand-in for a lone front camera is no other camera to switch to.
        if (cameraInput && input->device() == cameraInput->device() && wanted != position)
            throw CKFError::captureDeviceNotFound();
    } catch (const std::exception& error) {
        printError(error);
        // Without any camera the session itself has a problem; otherwise only the switch failed.
        if (cameraInput)
            emit switchFailed(QString::fromUtf8(error.what()));
        else
            reportDeviceProblem(QString::fromUtf8(error.what()));
        return false;
    }
    position = wanted;
    if (cameraInput && input->device() == cameraInput->device())
        return true;
    av::CaptureDeviceInput* old = std::exchange(cameraInput, input.release());
    if (old)
        session()->removeInput(old);
    session()->addInput(cameraInput);
    return true;
}

void CKFVideoSession::matchMicrophone() {
    const av::CaptureDevice* camera = cameraDevice();
    const bool standInAllowed = !camera || camera->isVirtual();
    if (microphoneInput) {
        if (standInAllowed || !microphoneInput->device()->isVirtual())
            return;
        session()->removeInput(std::exchange(microphoneInput, nullptr));
        return;
    }
    std::unique_ptr<av::CaptureDeviceInput> input;
    try {
        input = captureDeviceInput(DeviceType::microphone);
    } catch (const std::exception& error) {
        printError(error);
        return;
    }
    if (input->device()->isVirtual() && !standInAllowed)
        return;
    microphoneInput = input.release();
    session()->addInput(microphoneInput);
}

void CKFVideoSession::setZoom(double value) {
    zoomCamera(cameraInput, value);
}

void CKFVideoSession::setFlashMode(FlashMode value) {
    flash = value;
    configureCamera(cameraInput, [value](av::CaptureDevice& device) {
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
    configureCamera(cameraInput, [&](av::CaptureDevice& device) {
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
    // The movie output keeps the previous clip aside until the new one has frames.
    const QUrl target = url ? *url : defaultFileURL();
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
