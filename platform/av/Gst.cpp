#include "platform/av/Gst.h"

#include "platform/av/VirtualCameraSource.h"
#include "platform/av/ZoomFilter.h"

#include <gst/gst.h>

#include <mutex>

namespace av {

void Gst::ensureInitialized() {
    static std::once_flag once;
    std::call_once(once, [] {
        gst_init(nullptr, nullptr);
        ZoomFilter::registerElement();
        VirtualCameraSource::registerElement();
    });
}

} // namespace av
