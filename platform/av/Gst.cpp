#include "platform/av/Gst.h"

#include "platform/av/VirtualCameraSource.h"
#include "platform/av/ZoomFilter.h"

#include <gst/gst.h>

#include <malloc.h>

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
        gst_init(nullptr, nullptr);
        ZoomFilter::registerElement();
        VirtualCameraSource::registerElement();
    });
}

} // namespace av
