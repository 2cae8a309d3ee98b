#pragma once

#include <QByteArray>

#include <chrono>

namespace av {

// GStreamer for the whole process: initialised once, with our own elements registered.
class Gst {
public:
    static void ensureInitialized();
    // Runs a gst-launch description (one that ends by itself, such as a file writer) to its end
    // of stream; false on a parse error, an error message or the timeout.
    static bool runToEnd(const QByteArray& launch, std::chrono::milliseconds timeout);
};

} // namespace av
