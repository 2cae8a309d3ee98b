#pragma once

#include "platform/av/GstHandle.h"

#include <QByteArray>
#include <QString>

#include <gst/gst.h>

#include <chrono>

namespace av {

// The error, warning or info a bus message carries.
struct GstMessageError {
    GQuark domain = 0;
    int code = 0;
    QString message;
    QString debug;

    bool is(GQuark errorDomain, int errorCode) const {
        return domain == errorDomain && code == errorCode;
    }
};

// GStreamer for the whole process: initialised once, with our own elements registered.
class Gst {
public:
    static void ensureInitialized();
    // Runs a gst-launch description (one that ends by itself, such as a file writer) to its end
    // of stream; false on a parse error, an error message or the timeout.
    static bool runToEnd(const QByteArray& launch, std::chrono::milliseconds timeout);

    // A new element (floating) that the installation ought to have. A missing plugin is an
    // incomplete installation, not a programming error: av::Error (encoderMissing) naming it.
    static GstElement* make(const char* factory, const char* name = nullptr);
    // Takes a pipeline to NULL, which joins its streaming threads, and lets go of it. Nothing for
    // an empty handle.
    static void stop(GstHandle<GstElement>& pipeline);
    // Whether the installation has this element, without making one.
    static bool exists(const char* factory);
    // An ERROR, WARNING or INFO message's content; empty for any other message.
    static GstMessageError errorOf(GstMessage* message);
};

} // namespace av
