#include "capture/CKFPhotoSession.h"

#include "capture/CKUtils.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/WhenReady.h"

#include <QTextStream>
#include <QThreadPool>
#include <QTransform>
#include <QtConcurrent/QtConcurrentRun>

#include <climits>

#include <cmath>
#include <limits>

namespace {

// One photo at a time, in the order they were taken.
QThreadPool& photoPool() {
    static QThreadPool* pool = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(1);
        return made;
    }();
    return *pool;
}

void printLine(const QString& line) {
    QTextStream(stdout) << line << Qt::endl;
}

qint64 wholePixels(double value) {
    if (!std::isfinite(value) || value >= double(std::numeric_limits<qint64>::max()) ||
        value <= double(std::numeric_limits<qint64>::min()))
        qFatal("CKFPhotoSession: resolution %g is no whole number of pixels", value);
    return qint64(value);
}

} // namespace

std::optional<CKFPhotoSession::CameraDetection> CKFPhotoSession::cameraDetection(qint64 rawValue) {
    if (rawValue < 0 || rawValue > 1)
        return std::nullopt;
    return CameraDetection(rawValue);
}

CKFPhotoSession::CKFPhotoSession(CameraPosition initialPosition, CameraDetection initialDetection)
    : photos(new av::CapturePhotoOutput(this)) {
    session()->setSessionPreset(av::CaptureSession::presetHigh);
    session()->addOutput(photos);
    position = initialPosition;
    openCamera();
    detection = initialDetection;
    detectionChanged(CameraDetection::none);
}

CKFPhotoSession::~CKFPhotoSession() {
    removeFaceBoxes();
    // Stopped while this is whole: a photo the stop cuts short reports to it.
    session()->stopRunning();
}

void CKFPhotoSession::setCameraPosition(CameraPosition value) {
    position = value;
    openCamera();
}

void CKFPhotoSession::togglePosition() {
    setCameraPosition(position == CameraPosition::back ? CameraPosition::front
                                                       : CameraPosition::back);
}

void CKFPhotoSession::openCamera() {
    if (position != CameraPosition::front && position != CameraPosition::back)
        qFatal("CKFPhotoSession: camera position %d does not exist", int(position));
    std::unique_ptr<av::CaptureDeviceInput> input;
    try {
        input = captureDeviceInput(DeviceType(int(position)));
    } catch (const std::exception& error) {
        printLine(QString::fromUtf8(error.what()));
        return;
    }
    setCaptureDeviceInput(input.release());
}

void CKFPhotoSession::setCaptureDeviceInput(av::CaptureDeviceInput* input) {
    removeFaceBoxes();
    if (av::CaptureDeviceInput* old = std::exchange(cameraInput, input))
        session()->removeInput(old);
    session()->addInput(cameraInput);
}

av::CaptureMetadataOutput* CKFPhotoSession::metadataOutput() const {
    for (av::CaptureOutput* output : session()->outputs())
        if (auto* metadata = qobject_cast<av::CaptureMetadataOutput*>(output))
            return metadata;
    return nullptr;
}

void CKFPhotoSession::setCameraDetection(CameraDetection value) {
    const CameraDetection previous = std::exchange(detection, value);
    detectionChanged(previous);
}

void CKFPhotoSession::detectionChanged(CameraDetection previous) {
    if (detection == previous)
        return;
    while (av::CaptureMetadataOutput* old = metadataOutput()) {
        session()->removeOutput(old);
        old->deleteLater();
    }
    removeFaceBoxes();
    if (detection != CameraDetection::faces)
        return;
    auto* metadata = new av::CaptureMetadataOutput(this);
    session()->addOutput(metadata);
    metadata->setMetadataObjectsDelegate(this);
    if (metadata->availableMetadataObjectTypes().contains(av::MetadataObject::typeFace))
        metadata->setMetadataObjectTypes({av::MetadataObject::typeFace});
}

void CKFPhotoSession::removeFaceBoxes() {
    for (const QPointer<ui::View>& box : boxes)
        delete box.data();
    boxes.clear();
}

void CKFPhotoSession::didOutputMetadataObjects(av::CaptureMetadataOutput*,
                                               const std::vector<av::MetadataObject>& objects) {
    std::vector<const av::MetadataObject*> faces;
    for (const av::MetadataObject& object : objects)
        if (object.type == av::MetadataObject::typeFace)
            faces.push_back(&object);
    while (boxes.size() < faces.size()) {
        auto* box = new ui::View(overlayView());
        box->setBorderColor(Qt::green);
        box->setBorderWidth(1.0);
        box->setAttribute(Qt::WA_TransparentForMouseEvents);
        if (overlayView())
            box->show();
        boxes.emplace_back(box);
    }
    while (boxes.size() > faces.size()) {
        delete boxes.back().data();
        boxes.pop_back();
    }
    const auto* layer = qobject_cast<av::CaptureVideoPreviewLayer*>(previewLayer());
    for (size_t i = 0; i < faces.size(); ++i) {
        if (!boxes[i])
            continue;
        const std::optional<av::MetadataObject> shown =
            layer ? layer->transformedMetadataObjectForMetadataObject(*faces[i]) : std::nullopt;
        boxes[i]->setGeometry(shown ? shown->bounds.toRect() : QRect());
    }
}

void CKFPhotoSession::setZoom(double value) {
    zoomCamera(cameraInput, value);
}

void CKFPhotoSession::focusAt(const QPointF& point) {
    av::CaptureDevice* camera = cameraInput ? cameraInput->device() : nullptr;
    if (!camera || !camera->isFocusPointOfInterestSupported())
        return;
    configureCamera(
        cameraInput,
        [point](av::CaptureDevice& device) {
            device.setFocusPointOfInterest(point);
            device.setFocusMode(av::CaptureDevice::FocusMode::continuousAutoFocus);
        },
        [point](const av::Error& error) {
            printLine(QStringLiteral("Error while focusing at point (%1, %2): %3")
                          .arg(point.x())
                          .arg(point.y())
                          .arg(QString::fromUtf8(error.what())));
        });
}

void CKFPhotoSession::setResolution(const QSizeF& value) {
    size = value;
    configureCamera(cameraInput, [this](av::CaptureDevice& device) {
        if (size.width() > 0 && size.height() > 0) {
            if (const std::optional<av::CaptureDeviceFormat> format = deviceInputFormat(
                    *cameraInput, wholePixels(size.width()), wholePixels(size.height()), 30)) {
                device.setActiveFormat(*format);
                return;
            }
        }
        session()->setSessionPreset(av::CaptureSession::presetHigh);
        // The preset decides only while no format is chosen on the device.
        device.setActiveFormat(av::CaptureDeviceFormat{});
    });
}

void CKFPhotoSession::capture(CaptureCallback callback, ErrorCallback onError) {
    captureCallback = std::move(callback);
    errorCallback = std::move(onError);
    av::CapturePhotoSettings settings;
    settings.flashMode = av::CapturePhotoSettings::FlashMode(int(flash));
    if (av::CaptureConnection* connection = photos->connectionWithMediaType(av::MediaType::video)) {
        using V = av::CaptureConnection::VideoOrientation;
        if (size.width() > 0 && size.height() > 0) {
            connection->setVideoOrientation(V::portrait);
        } else {
            const int raw = int(foundation::Device::current().orientation());
            connection->setVideoOrientation(raw >= 2 && raw <= 4 ? V(raw) : V::portrait);
        }
    }
    photos->capturePhoto(settings, this);
}

void CKFPhotoSession::didFinishProcessingPhoto(av::CapturePhotoOutput*,
                                               const av::CapturePhoto& photo,
                                               const std::optional<av::Error>& error) {
    deliver(photo.fileDataRepresentation(), photo.resolvedSettings(), error);
}

void CKFPhotoSession::didFinishProcessingPhotoSampleBuffer(
    av::CapturePhotoOutput*, GstSample* photoSampleBuffer, GstSample* previewPhotoSampleBuffer,
    const av::CaptureResolvedPhotoSettings& settings, const std::optional<av::Error>& error) {
    deliver(error ? QByteArray()
                  : av::CapturePhotoOutput::JPEGPhotoDataRepresentation(photoSampleBuffer,
                                                                        previewPhotoSampleBuffer),
            settings, error);
}

void CKFPhotoSession::deliver(const QByteArray& data,
                              const av::CaptureResolvedPhotoSettings& settings,
                              const std::optional<av::Error>& error) {
    // Taken out before either runs, so a second notice reaches nobody and a callback may capture
    // again.
    const CaptureCallback onCaptured = std::exchange(
        captureCallback, [](const ui::Image&, const av::CaptureResolvedPhotoSettings&) {});
    const ErrorCallback onError = std::exchange(errorCallback, [](const std::exception&) {});
    if (error)
        onError(*error);
    else if (data.isEmpty())
        onError(CKFError::error(QStringLiteral("Cannot get photo file data representation")));
    else
        process(data, settings, onCaptured, onError);
}

void CKFPhotoSession::process(const QByteArray& data,
                              const av::CaptureResolvedPhotoSettings& settings,
                              const CaptureCallback& onCaptured, const ErrorCallback& onError) {
    // Read now, as the photo was taken; decoding and scaling a large still takes longer than a
    // frame, so it runs on the photo thread and the callback comes back here.
    std::optional<QSize> target;
    if (size.width() > 0 && size.height() > 0)
        target = QSize(int(std::min<qint64>(wholePixels(size.width()), INT_MAX)),
                       int(std::min<qint64>(wholePixels(size.height()), INT_MAX)));
    const foundation::Device::Orientation held = foundation::Device::current().orientation();
    const bool mirrored = position == CameraPosition::front;
    const auto decoded = QtConcurrent::run(
        &photoPool(), [data, target, held, mirrored]() -> std::optional<ui::Image> {
            const std::optional<ui::Image> image = ui::Image::fromData(data);
            if (!image || !target)
                return image;
            // The crop works in a phone sensor's layout, a quarter turn from how the phone is held
            // upright. Frames here come upright already (a webcam, or a sensor whose mounting the
            // camera stack has turned), so they are laid that way first; otherwise a desktop
            // webcam's portrait crop would show its scene on its side.
            const ui::Image sensorLayout(
                image->displayedImage().transformed(QTransform().rotate(-90)));
            const std::optional<ui::Image> cropped = CKUtils::cropAndScale(
                sensorLayout, target->width(), target->height(), held, mirrored);
            return cropped ? cropped : image;
        });
    foundation::whenReady(decoded, this,
                          [settings, onCaptured, onError](const std::optional<ui::Image>& image) {
                              if (image)
                                  onCaptured(*image, settings);
                              else
                                  onError(CKFError::error(QStringLiteral("Cannot get photo")));
                          });
}
