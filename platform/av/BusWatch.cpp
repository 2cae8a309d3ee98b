#include "platform/av/BusWatch.h"

#include <QSocketNotifier>

namespace av {

// Shared with a delivery in progress, so it can tell that the handler destroyed the watch.
struct BusWatch::Life {
    bool alive = true;
    int dispatching = 0;
};

BusWatch::BusWatch(GstBus* bus, Handler handler)
    : m_bus(bus, GstRef::adopt), m_handler(std::move(handler)), m_life(std::make_shared<Life>()) {
    if (!m_bus)
        qFatal("av::BusWatch: there is no bus to watch");
    GPollFD pollFd{};
    gst_bus_get_pollfd(m_bus.get(), &pollFd);
    // The descriptor stays readable while messages are queued, so one notice can cover several.
    m_notifier = new QSocketNotifier(qintptr(pollFd.fd), QSocketNotifier::Read);
    QObject::connect(m_notifier, &QSocketNotifier::activated, m_notifier,
                     [this] { dispatchPending(); });
}

BusWatch::~BusWatch() {
    m_life->alive = false;
    m_notifier->setEnabled(false);
    QObject::disconnect(m_notifier, nullptr, nullptr, nullptr);
    // Destroyed by the handler: the notifier is still inside its own signal.
    if (m_life->dispatching > 0)
        m_notifier->deleteLater();
    else
        delete m_notifier;
}

void BusWatch::dispatchPending() {
    const std::shared_ptr<Life> life = m_life;
    const GstHandle<GstBus> bus = m_bus;
    const Handler handler = m_handler;
    ++life->dispatching;
    while (life->alive) {
        const GstHandle<GstMessage> message(gst_bus_pop(bus.get()), GstRef::adopt);
        if (!message)
            break;
        handler(message.get());
    }
    --life->dispatching;
}

} // namespace av
