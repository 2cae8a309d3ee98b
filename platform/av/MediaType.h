#pragma once

namespace av {

enum class MediaType { video, audio };

// Where a device sits; the raw values are the platform's.
enum class DevicePosition { unspecified = 0, back = 1, front = 2 };

} // namespace av
