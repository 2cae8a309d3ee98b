#include "platform/av/CaptureSession.h"

#include "platform/av/Logging.h"

#include "platform/av/BusWatch.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureOutput.h"
#include "platform/av/Gst.h"
#include "platform/av/ZoomFilter.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QPointer>
#include <QSize>
#include <QTimer>

#include <gst/app/gstappsink.h>

#include <algorithm>
#include <cmath>

namespace av {

namespace {

GstFlowReturn deliver(GstAppSink* sink, gpointer data) {
    CaptureSession::Fanout& fanout = **static_cast<std::shared_ptr<CaptureSession::Fanout>*>(data);
    const GstHandle<GstSample> sample(gst_app_sink_pull_sample(sink), GstRef::adopt);
    if (!sample)
        return GST_FLOW_EOS;
    // Held while delivering, so an output taken off the list is never handed a sample after.
    QMutexLocker lock(&fanout.mutex);
    for (CaptureOutput* output : fanout.outputs)
        output->handleSample(fanout.type, sample.get());
    return GST_FLOW_OK;
}

void freeFanout(gpointer data) {
    delete static_cast<std::shared_ptr<CaptureSession::Fanout>*>(data);
}

QSize presetSize(const QString& preset) {
    const QStringList parts = preset.split(QLatin1Char('x'));
    return parts.size() == 2 ? QSize(parts[0].toInt(), parts[1].toInt()) : QSize(1920, 1080);
}

int fpsFraction(double rate, int* denominator) {
    // Whole rates stay whole; others (29.97) keep three decimals.
    if (std::abs(rate - std::round(rate)) < 1e-6) {
        *denominator = 1;
        return int(std::round(rate));
    }
    *denominator = 1000;
    return int(std::round(rate * 1000));
}

} // namespace

CaptureSession::CaptureSession(QObject* parent) : QObject(parent) {
    Gst::ensureInitialized();
    busyRetry.setSingleShot(true);
    busyRetry.setInterval(busyRetryInterval);
    connect(&busyRetry, &QTimer::timeout, this, [this] {
        if (!running)
            startRunning();
    });
}

CaptureSession::~CaptureSession() {
    stopRunning();
}

bool CaptureSession::canAddInput(CaptureInput* input) const {
    return input &&
           std::find(sessionInputs.begin(), sessionInputs.end(), input) == sessionInputs.end();
}

void CaptureSession::addInput(CaptureInput* input) {
    if (!canAddInput(input))
        return;
    input->setParent(this);
    sessionInputs.push_back(input);
    if (auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input)) {
        CaptureDevice* device = deviceInput->device();
        connect(device, &CaptureDevice::activeFormatChanged, this,
                &CaptureSession::scheduleRebuild);
        connect(device, &CaptureDevice::wasDisconnected, this,
                [this, device] { deviceWasDisconnected(device); });
    }
    if (running)
        scheduleRebuild();
}

void CaptureSession::removeInput(CaptureInput* input) {
    auto found = std::find(sessionInputs.begin(), sessionInputs.end(), input);
    if (found == sessionInputs.end())
        return;
    sessionInputs.erase(found);
    if (auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input))
        disconnect(deviceInput->device(), nullptr, this, nullptr);
    if (running)
        scheduleRebuild();
    input->deleteLater();
}

bool CaptureSession::canAddOutput(CaptureOutput* output) const {
    return output && !output->owner;
}

void CaptureSession::addOutput(CaptureOutput* output) {
    if (!canAddOutput(output))
        return;
    output->owner = this;
    sessionOutputs.push_back(output);
    if (running)
        scheduleRebuild();
}

void CaptureSession::removeOutput(CaptureOutput* output) {
    auto found = std::find(sessionOutputs.begin(), sessionOutputs.end(), output);
    if (found == sessionOutputs.end())
        return;
    if (running)
        output->sessionWillStop();
    sessionOutputs.erase(found);
    output->owner = nullptr;
    // The running pipeline hands it nothing more from here on, though it runs until the rebuild.
    for (const std::shared_ptr<Fanout>& fanout : fanouts) {
        QMutexLocker lock(&fanout->mutex);
        std::erase(fanout->outputs, output);
    }
    if (running)
        scheduleRebuild();
}

CaptureDevice* CaptureSession::deviceOf(int mediaType) const {
    for (CaptureInput* input : sessionInputs)
        if (auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input))
            if (int(deviceInput->device()->mediaType()) == mediaType)
                return deviceInput->device();
    return nullptr;
}

CaptureDeviceFormat CaptureSession::formatFor(const CaptureDevice& device, const QString& preset) {
    if (device.activeFormat().isValid())
        return device.activeFormat();
    const QSize wanted = presetSize(preset);
    const auto& formats = device.formats();
    for (const CaptureDeviceFormat& candidate : formats)
        if (candidate.width == wanted.width() && candidate.height == wanted.height())
            return candidate;
    // A camera without the preset's size runs at its largest picture.
    auto largest =
        std::max_element(formats.begin(), formats.end(), [](const auto& a, const auto& b) {
            return qint64(a.width) * a.height < qint64(b.width) * b.height;
        });
    return largest == formats.end() ? CaptureDeviceFormat{} : *largest;
}

double CaptureSession::frameRateFor(const CaptureDevice& device,
                                    const CaptureDeviceFormat& format) {
    const FrameDuration duration = device.activeVideoMinFrameDuration();
    const double asked = duration.isValid() ? duration.frameRate() : 30.0;
    double best = 0;
    for (const FrameRateRange& range : format.videoSupportedFrameRateRanges) {
        if (asked >= range.minFrameRate && asked <= range.maxFrameRate)
            return asked;
        best = std::max(best, std::min(range.maxFrameRate, asked));
    }
    return best > 0 ? best : asked;
}

bool CaptureSession::build(std::optional<Error>* problem) {
    pipe = GstHandle<GstElement>(gst_pipeline_new("capture"), GstRef::adopt);
    GstHandle<GstCaps> videoCaps;
    GstHandle<GstCaps> audioCaps;
    try {
        videoDevice = deviceOf(int(MediaType::video));
        if (videoDevice) {
            videoCaps = buildVideo();
            if (!videoCaps)
                return false;
        }
        if (CaptureDevice* microphone = deviceOf(int(MediaType::audio)))
            audioCaps = buildAudio(microphone);
    } catch (const Error& error) {
        *problem = error;
        return false;
    }

    busWatch =
        std::make_unique<BusWatch>(gst_element_get_bus(pipe.get()),
                                   [this](GstMessage* message) { handleBusMessage(message); });

    // Not waited for: a camera that fails once it streams says so on the bus, and the session
    // stops then with the reason. Only what fails at once (opening the device) is known here.
    const GstStateChangeReturn change = gst_element_set_state(pipe.get(), GST_STATE_PLAYING);
    if (std::optional<Error> error = errorFromBus(); error || change == GST_STATE_CHANGE_FAILURE) {
        *problem = error ? *error
                         : Error(Error::Code::sessionNotRunning,
                                 qtTrId("session_camera_could_not_started"));
        if (error && error->code() == Error::Code::deviceDisconnected && videoDevice)
            videoDevice->setDisconnected();
        return false;
    }
    for (CaptureOutput* output : sessionOutputs)
        output->sessionDidStart(videoCaps.get(), audioCaps.get(), pipe.get());
    return true;
}

GstElement* CaptureSession::addToPipeline(GstElement* element) {
    gst_bin_add(GST_BIN(pipe.get()), element);
    return element;
}

GstHandle<GstCaps> CaptureSession::buildVideo() {
    format = formatFor(*videoDevice, preset);
    frameRate = frameRateFor(*videoDevice, format);
    if (!videoDevice->isConnected())
        throw Error(Error::Code::deviceDisconnected,
                    qtTrId("session_camera_no_longer_connected").arg(videoDevice->localizedName()));
    if (!format.isValid())
        throw Error(Error::Code::sessionNotRunning,
                    qtTrId("session_camera_offers_no_picture").arg(videoDevice->localizedName()));
    if (std::optional<Error> error = videoDevice->sourceProblem())
        throw *error;
    GstElement* source = videoDevice->createSourceElement();
    if (!source)
        throw Error(Error::Code::sessionNotRunning,
                    qtTrId("session_camera_cannot_opened").arg(videoDevice->localizedName()));
    std::vector<GstElement*> chain{addToPipeline(source)};
    int denominator = 1;
    const int numerator = fpsFraction(frameRate, &denominator);
    GstHandle<GstCaps> sourceCaps(
        gst_caps_new_simple(format.mediaType.toUtf8().constData(), "width", G_TYPE_INT,
                            format.width, "height", G_TYPE_INT, format.height, "framerate",
                            GST_TYPE_FRACTION, numerator, denominator, nullptr),
        GstRef::adopt);
    if (videoDevice->isVirtual())
        gst_caps_set_simple(sourceCaps.get(), "format", G_TYPE_STRING, "I420", nullptr);
    // A still picture is scaled to the format; a camera is asked for exactly the format.
    const bool scaled = videoDevice->uniqueID().startsWith(QStringLiteral("file:"));
    GstElement* sourceFilter = chain.emplace_back(addToPipeline(Gst::make("capsfilter")));
    g_object_set(sourceFilter, "caps", scaled ? nullptr : sourceCaps.get(), nullptr);
    if (format.mediaType == QStringLiteral("image/jpeg"))
        chain.push_back(addToPipeline(Gst::make("jpegdec")));
    if (!videoDevice->isVirtual())
        for (const char* factory : {"videoconvert", "videoscale", "videorate"})
            chain.push_back(addToPipeline(Gst::make(factory)));
    GstHandle<GstCaps> videoCaps(
        gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "I420", "width", G_TYPE_INT,
                            format.width, "height", G_TYPE_INT, format.height, "framerate",
                            GST_TYPE_FRACTION, numerator, denominator, "pixel-aspect-ratio",
                            GST_TYPE_FRACTION, 1, 1, nullptr),
        GstRef::adopt);
    GstElement* formatFilter = chain.emplace_back(addToPipeline(Gst::make("capsfilter")));
    g_object_set(formatFilter, "caps", videoCaps.get(), nullptr);
    GstElement* zoom = chain.emplace_back(addToPipeline(ZoomFilter::create("zoom")));
    g_object_set(zoom, "follow-capture-time", TRUE, nullptr);
    chain.push_back(addToPipeline(appSinkFor(MediaType::video)));
    for (size_t i = 1; i < chain.size(); ++i)
        if (!gst_element_link(chain[i - 1], chain[i]))
            throw Error(Error::Code::sessionNotRunning,
                        qtTrId("session_camera_cannot_deliver_pictures")
                            .arg(videoDevice->localizedName())
                            .arg(format.width)
                            .arg(format.height));
    videoDevice->attachPipeline(source, zoom);
    videoSource = source;
    return videoCaps;
}

GstHandle<GstCaps> CaptureSession::buildAudio(CaptureDevice* microphone) {
    GstElement* source = microphone->createSourceElement();
    if (!source)
        return {};
    GstHandle<GstCaps> audioCaps(gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING,
                                                     "S16LE", "rate", G_TYPE_INT, 48000, "channels",
                                                     G_TYPE_INT, 2, "layout", G_TYPE_STRING,
                                                     "interleaved", nullptr),
                                 GstRef::adopt);
    audioSource = addToPipeline(source);
    audioDevice = microphone;
    GstElement* chain[] = {
        source, addToPipeline(Gst::make("audioconvert")), addToPipeline(Gst::make("audioresample")),
        addToPipeline(Gst::make("capsfilter")), addToPipeline(appSinkFor(MediaType::audio))};
    g_object_set(chain[3], "caps", audioCaps.get(), nullptr);
    for (size_t i = 1; i < std::size(chain); ++i)
        gst_element_link(chain[i - 1], chain[i]);
    return audioCaps;
}

std::optional<Error> CaptureSession::errorFromBus() {
    GstHandle<GstBus> bus(gst_element_get_bus(pipe.get()), GstRef::adopt);
    GstHandle<GstMessage> message(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR),
                                  GstRef::adopt);
    if (!message)
        return std::nullopt;
    return errorFrom(message.get());
}

Error CaptureSession::errorFrom(GstMessage* message) const {
    const GstMessageError error = Gst::errorOf(message);
    qCWarning(lcAv) << "capture pipeline error:" << error.message << error.debug;
    GstObject* origin = GST_MESSAGE_SRC(message);
    const bool fromCamera =
        videoSource && (origin == GST_OBJECT(videoSource) ||
                        gst_object_has_as_ancestor(origin, GST_OBJECT(videoSource)));
    const QString name = videoDevice ? videoDevice->localizedName() : QString();
    if (fromCamera && error.domain == GST_RESOURCE_ERROR) {
        switch (error.code) {
        case GST_RESOURCE_ERROR_BUSY:
            return Error(Error::Code::deviceBusy,
                         qtTrId("session_camera_use_another_program").arg(name));
        case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
            return Error(Error::Code::permissionDenied,
                         qtTrId("session_tessaro_may_not_use").arg(name));
        case GST_RESOURCE_ERROR_READ:
        case GST_RESOURCE_ERROR_NOT_FOUND:
            return Error(Error::Code::deviceDisconnected,
                         qtTrId("session_camera_stopped_delivering_pictures").arg(name));
        default:
            break;
        }
    }
    return Error(Error::Code::sessionNotRunning, error.message);
}

GstElement* CaptureSession::appSinkFor(MediaType type) {
    auto fanout = std::make_shared<Fanout>();
    fanout->type = type;
    for (CaptureOutput* output : sessionOutputs)
        if (output->wantsMedia(type))
            fanout->outputs.push_back(output);
    fanouts.push_back(fanout);
    GstElement* sink = Gst::make("appsink");
    // Every output takes a sample without waiting (the preview keeps the latest frame only, the
    // recording has a queue of its own), so one frame here is all there is to hold.
    g_object_set(sink, "sync", FALSE, "max-buffers", 1, "drop", TRUE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = deliver;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks,
                               new std::shared_ptr<Fanout>(std::move(fanout)), freeFanout);
    return sink;
}

void CaptureSession::teardown() {
    for (CaptureOutput* output : sessionOutputs)
        output->sessionWillStop();
    busWatch.reset();
    Gst::stop(pipe);
    for (CaptureInput* input : sessionInputs)
        if (auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input))
            deviceInput->device()->detachPipeline();
    fanouts.clear();
    videoDevice = nullptr;
    videoSource = nullptr;
    audioDevice = nullptr;
    audioSource = nullptr;
}

void CaptureSession::startRunning() {
    if (running)
        return;
    rebuildPending = false;
    std::optional<Error> problem;
    if (!build(&problem)) {
        teardown();
        reportFailure(*problem);
        return;
    }
    running = true;
    busyRetry.stop();
    emit didStartRunning();
}

void CaptureSession::reportFailure(const Error& error) {
    const bool stillBusy = waitingForBusy && error.code() == Error::Code::deviceBusy;
    waitingForBusy = error.code() == Error::Code::deviceBusy;
    if (waitingForBusy)
        busyRetry.start();
    if (stillBusy)
        return;
    qCWarning(lcAv).noquote() << "capture session did not run:" << error.localizedDescription();
    emit runtimeError(error);
}

void CaptureSession::stopRunning() {
    busyRetry.stop();
    waitingForBusy = false;
    if (!running)
        return;
    running = false;
    teardown();
    emit didStopRunning();
}

void CaptureSession::scheduleRebuild() {
    if (rebuildPending)
        return;
    rebuildPending = true;
    QTimer::singleShot(0, this, [this] {
        // A start since the change has already built with it.
        if (!std::exchange(rebuildPending, false) || !running)
            return;
        stopRunning();
        startRunning();
    });
}

void CaptureSession::handleBusMessage(GstMessage* message) {
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ERROR)
        return;
    GstObject* origin = GST_MESSAGE_SRC(message);
    if (audioSource && audioDevice &&
        (origin == GST_OBJECT(audioSource) ||
         gst_object_has_as_ancestor(origin, GST_OBJECT(audioSource)))) {
        qCWarning(lcAv) << "microphone error:" << Gst::errorOf(message).message;
        goOnWithoutMicrophone(audioDevice);
        return;
    }
    const Error error = errorFrom(message);
    fail(error);
    if (error.code() == Error::Code::deviceDisconnected && videoDevice)
        videoDevice->setDisconnected();
}

void CaptureSession::deviceWasDisconnected(CaptureDevice* device) {
    if (!running)
        return;
    if (device->mediaType() == MediaType::audio) {
        goOnWithoutMicrophone(device);
        return;
    }
    fail(Error(Error::Code::deviceDisconnected,
               device->mediaType() == MediaType::video
                   ? qtTrId("session_camera_disconnected").arg(device->localizedName())
                   : qtTrId("session_microphone_disconnected").arg(device->localizedName())));
}

void CaptureSession::fail(const Error& error) {
    if (std::exchange(failing, true))
        return;
    // Stopping finishes any recording, so what was recorded stays a playable file. Not at once:
    // the caller may be the bus watch that stopping deletes, or discovery amid its bookkeeping.
    QTimer::singleShot(0, this, [this, error] {
        failing = false;
        // Still the same wait for a busy camera, if it is one.
        const bool wasWaiting = waitingForBusy;
        stopRunning();
        waitingForBusy = wasWaiting;
        reportFailure(error);
    });
}

void CaptureSession::goOnWithoutMicrophone(CaptureDevice* microphone) {
    const auto found = std::find_if(sessionInputs.begin(), sessionInputs.end(), [&](auto* input) {
        auto* deviceInput = qobject_cast<CaptureDeviceInput*>(input);
        return deviceInput && deviceInput->device() == microphone;
    });
    if (found == sessionInputs.end())
        return;
    const QString name = microphone->localizedName();
    // Not at once: the caller may be the bus watch that the rebuild deletes.
    QTimer::singleShot(0, this, [this, input = QPointer<CaptureInput>(*found), name] {
        if (!input)
            return;
        // The rebuild finishes a running recording first, so the clip so far stays playable.
        removeInput(input);
        emit microphoneLost(qtTrId("session_microphone_gone_tessaro_goes").arg(name));
    });
}

} // namespace av
