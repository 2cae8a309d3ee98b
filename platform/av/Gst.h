#pragma once

namespace av {

// GStreamer for the whole process: initialised once, with our own elements registered.
class Gst {
public:
    static void ensureInitialized();
};

} // namespace av
