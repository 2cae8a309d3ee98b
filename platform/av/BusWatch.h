#pragma once

#include "platform/av/GstHandle.h"

#include <gst/gst.h>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace av {

// Delivers a pipeline's bus messages on the thread that creates the watch (the GUI thread),
// through that thread's Qt event loop rather than a GLib main context: a socket notifier on the
// bus's poll descriptor, then every queued message popped without waiting.
//
// The handler may destroy the watch (and the pipeline) from inside a delivery; the messages still
// queued then stay on the bus.
class BusWatch {
public:
    using Handler = std::function<void(GstMessage* message)>;

    // Takes over the caller's reference to bus, the one gst_element_get_bus() returns.
    BusWatch(GstBus* bus, Handler handler);
    ~BusWatch();
    BusWatch(const BusWatch&) = delete;
    BusWatch& operator=(const BusWatch&) = delete;

    // For a caller that must wait for a message itself (gst_bus_timed_pop_filtered).
    GstBus* bus() const { return watched.get(); }

private:
    struct Life;

    void dispatchPending();

    GstHandle<GstBus> watched;
    Handler handler;
    QSocketNotifier* notifier;
    std::shared_ptr<Life> life;
};

} // namespace av
