#include "platform/av/Gst.h"

#include "platform/av/Error.h"
#include "platform/av/GstHandle.h"

#include "platform/av/VirtualCameraSource.h"
#include "platform/av/ZoomFilter.h"

#include <QCoreApplication>

#include <malloc.h>
#include <sys/prctl.h>

#include <mutex>

namespace av {

void Gst::ensureInitialized() {
    static std::once_flag once;
    std::call_once(once, [] {
        // Frames and the encoder's pictures are megabytes each. glibc raises its mmap threshold
        // past a block's size once one is freed, after which such blocks come from the heaps of
        // the threads that made them and stay resident, scattered, after every take (about
        // 100 MB after a few takes at 1080p). A fixed threshold hands them back when freed.
        mallopt(M_MMAP_THRESHOLD, 1 << 20);
        // x264 asks for huge pages for its pictures; a 2 MB page is resident whole, parts x264
        // never touches included: 6 MB more at 1080p, 8 MB at 2160p, to save it about 4 % of its
        // CPU time.
        prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
        gst_init(nullptr, nullptr);
        ZoomFilter::registerElement();
        VirtualCameraSource::registerElement();
    });
}

bool Gst::runToEnd(const QByteArray& launch, std::chrono::milliseconds timeout) {
    ensureInitialized();
    GstHandle<GstElement> pipeline(gst_parse_launch(launch.constData(), nullptr), GstRef::adopt);
    if (!pipeline)
        return false;
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    GstHandle<GstBus> bus(gst_element_get_bus(pipeline.get()), GstRef::adopt);
    GstHandle<GstMessage> end(
        gst_bus_timed_pop_filtered(bus.get(), GstClockTime(timeout.count()) * GST_MSECOND,
                                   GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)),
        GstRef::adopt);
    stop(pipeline);
    return end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS;
}

GstElement* Gst::make(const char* factory, const char* name) {
    GstElement* element = gst_element_factory_make(factory, name);
    if (!element)
        throw Error(
            Error::Code::encoderMissing,
            qtTrId("writer_tessaro_cannot_record_gstreamer").arg(QString::fromUtf8(factory)));
    return element;
}

void Gst::stop(GstHandle<GstElement>& pipeline) {
    if (pipeline)
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    pipeline.reset();
}

bool Gst::exists(const char* factory) {
    return bool(GstHandle<GstElementFactory>(gst_element_factory_find(factory), GstRef::adopt));
}

GstMessageError Gst::errorOf(GstMessage* message) {
    g_autoptr(GError) error = nullptr;
    g_autofree gchar* debug = nullptr;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        gst_message_parse_error(message, &error, &debug);
        break;
    case GST_MESSAGE_WARNING:
        gst_message_parse_warning(message, &error, &debug);
        break;
    case GST_MESSAGE_INFO:
        gst_message_parse_info(message, &error, &debug);
        break;
    default:
        break;
    }
    if (!error)
        return {};
    return {error->domain, error->code, QString::fromUtf8(error->message),
            QString::fromUtf8(debug)};
}

} // namespace av
