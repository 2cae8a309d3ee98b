#include "platform/av/BusWatch.h"

#include <QSocketNotifier>

namespace av {

// Shared with a delivery in progress, so it can tell that the handler destroyed the watch.
struct BusWatch::Life {
    bool alive = true;
    int dispatching = 0;
};

BusWatch::BusWatch(GstBus* bus, Handler handler)
    : watched(bus, GstRef::adopt), handler(std::move(handler)), life(std::make_shared<Life>()) {
    if (!watched)
        qFatal("av::BusWatch: there is no bus to watch");
    GPollFD pollFd{};
    gst_bus_get_pollfd(watched.get(), &pollFd);
    // The descriptor stays readable while messages are queued, so one notice can cover several.
    notifier = new QSocketNotifier(qintptr(pollFd.fd), QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [this] { dispatchPending(); });
}

BusWatch::~BusWatch() {
    life->alive = false;
    notifier->setEnabled(false);
    QObject::disconnect(notifier, nullptr, nullptr, nullptr);
    // Destroyed by the handler: the notifier is still inside its own signal.
    if (life->dispatching > 0)
        notifier->deleteLater();
    else
        delete notifier;
}

void BusWatch::dispatchPending() {
    // Held here, as the handler may destroy the watch.
    const std::shared_ptr<Life> current = life;
    const GstHandle<GstBus> source = watched;
    const Handler deliver = handler;
    ++current->dispatching;
    while (current->alive) {
        const GstHandle<GstMessage> message(gst_bus_pop(source.get()), GstRef::adopt);
        if (!message)
            break;
        deliver(message.get());
    }
    --current->dispatching;
}

} // namespace av
