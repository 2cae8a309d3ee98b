#include "platform/av/V4l2Controls.h"

#include "platform/av/Logging.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace av {

namespace {

// The uvcvideo region of interest and the bounds query it needs came with kernels newer than the
// oldest headers we build against; the values are kernel ABI.
constexpr quint32 userUvcBase = V4L2_CID_USER_BASE + 0x11e0;
constexpr quint32 regionOfInterestRect = userUvcBase + 1;
constexpr quint32 regionOfInterestAuto = userUvcBase + 2;
constexpr qint32 regionOfInterestAutoFocus = 1 << 3;
constexpr quint32 controlTypeRect = 0x0107;
constexpr quint32 whichMinimum = 0x0f020000;
constexpr quint32 whichMaximum = 0x0f030000;

// A fifth of the picture each way, no smaller than the device allows, centred on the point as far
// as the picture's edges let it.
v4l2_rect regionAround(QPointF point, const v4l2_rect& bounds, const v4l2_rect& smallest) {
    const auto extent = [](quint32 whole, quint32 least) {
        return std::clamp(std::max(whole / 5, least), 1u, whole);
    };
    const auto start = [](qint32 origin, quint32 whole, quint32 size, double at) {
        const qint64 centred = origin + std::llround(std::clamp(at, 0.0, 1.0) * whole) - size / 2;
        return qint32(std::clamp<qint64>(centred, origin, qint64(origin) + whole - size));
    };
    v4l2_rect result{};
    result.width = extent(bounds.width, smallest.width);
    result.height = extent(bounds.height, smallest.height);
    result.left = start(bounds.left, bounds.width, result.width, point.x());
    result.top = start(bounds.top, bounds.height, result.height, point.y());
    return result;
}

} // namespace

V4l2Controls::V4l2Controls(const QString& node)
    : fd(::open(QFile::encodeName(node).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (fd < 0)
        return;
    device = [fd = fd](unsigned long request, void* arg) {
        int result;
        do
            result = ::ioctl(fd, request, arg);
        while (result < 0 && errno == EINTR);
        return result;
    };
    probe();
    qCDebug(lcAv).noquote() << node << "torch:" << torch << "autofocus:" << hasAutofocus()
                            << "focus region:" << canFocusAtPoint();
}

V4l2Controls::V4l2Controls(Ioctl ioctl) : device(std::move(ioctl)) {
    probe();
}

V4l2Controls::~V4l2Controls() {
    if (fd >= 0)
        ::close(fd);
}

void V4l2Controls::probe() {
    if (const auto mode = query(V4L2_CID_FLASH_LED_MODE)) {
        torch = mode->type == V4L2_CTRL_TYPE_MENU && offers(*mode, V4L2_FLASH_LED_MODE_NONE) &&
                offers(*mode, V4L2_FLASH_LED_MODE_TORCH);
        const auto intensity = torch ? query(V4L2_CID_FLASH_TORCH_INTENSITY) : std::nullopt;
        if (intensity)
            torchIntensity = qint32(intensity->maximum);
    }
    const auto continuous = query(V4L2_CID_FOCUS_AUTO);
    continuousFocus = continuous && continuous->maximum >= 1;
    oneShotFocus = query(V4L2_CID_AUTO_FOCUS_START).has_value();
    if (!hasAutofocus())
        return;
    // The region steers autofocus only where the device lets focus follow it.
    const auto area = query(regionOfInterestRect);
    const auto follows = query(regionOfInterestAuto);
    if (!area || area->type != controlTypeRect || !follows ||
        !(follows->maximum & regionOfInterestAutoFocus))
        return;
    const auto bounds = rect(regionOfInterestRect, whichMaximum);
    const auto smallest = rect(regionOfInterestRect, whichMinimum);
    if (bounds && smallest && bounds->width > 0 && bounds->height > 0)
        region = Region{*bounds, *smallest};
}

bool V4l2Controls::setTorch(bool on) {
    if (!torch)
        return false;
    // Lit at the LED's rated torch current, whatever another program left it at.
    if (on && torchIntensity)
        set(V4L2_CID_FLASH_TORCH_INTENSITY, *torchIntensity);
    return set(V4L2_CID_FLASH_LED_MODE, on ? V4L2_FLASH_LED_MODE_TORCH : V4L2_FLASH_LED_MODE_NONE);
}

bool V4l2Controls::focusAt(QPointF point) {
    if (!hasAutofocus())
        return false;
    bool aimed = true;
    if (region) {
        // Keep whatever else (exposure ...) already follows the region.
        const std::optional<qint32> following = value(regionOfInterestAuto);
        aimed =
            setRect(regionOfInterestRect, regionAround(point, region->bounds, region->smallest)) &&
            following && set(regionOfInterestAuto, *following | regionOfInterestAutoFocus);
    }
    // Continuous autofocus keeps a walking subject sharp; one run is the fallback.
    const bool focusing =
        continuousFocus ? set(V4L2_CID_FOCUS_AUTO, 1) : set(V4L2_CID_AUTO_FOCUS_START, 1);
    return focusing && aimed;
}

bool V4l2Controls::call(unsigned long request, void* arg) {
    if (gone || !device)
        return false;
    if (device(request, arg) == 0)
        return true;
    gone = errno == ENODEV;
    return false;
}

std::optional<v4l2_query_ext_ctrl> V4l2Controls::query(quint32 id) {
    v4l2_query_ext_ctrl control{};
    control.id = id;
    if (!call(VIDIOC_QUERY_EXT_CTRL, &control) ||
        (control.flags & (V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY)))
        return std::nullopt;
    return control;
}

bool V4l2Controls::offers(const v4l2_query_ext_ctrl& menu, quint32 index) {
    if (qint64(index) < menu.minimum || qint64(index) > menu.maximum)
        return false;
    // Items a device leaves out of its menu are refused here.
    v4l2_querymenu item{};
    item.id = menu.id;
    item.index = index;
    return call(VIDIOC_QUERYMENU, &item);
}

std::optional<qint32> V4l2Controls::value(quint32 id) {
    v4l2_control control{id, 0};
    if (!call(VIDIOC_G_CTRL, &control))
        return std::nullopt;
    return control.value;
}

bool V4l2Controls::set(quint32 id, qint32 value) {
    v4l2_control control{id, value};
    return call(VIDIOC_S_CTRL, &control);
}

bool V4l2Controls::rectControl(unsigned long request, quint32 id, quint32 which, v4l2_rect* value) {
    v4l2_ext_control control{};
    control.id = id;
    control.size = sizeof *value;
    control.ptr = value;
    v4l2_ext_controls controls{};
    controls.which = which;
    controls.count = 1;
    controls.controls = &control;
    return call(request, &controls);
}

std::optional<v4l2_rect> V4l2Controls::rect(quint32 id, quint32 which) {
    v4l2_rect value{};
    if (!rectControl(VIDIOC_G_EXT_CTRLS, id, which, &value))
        return std::nullopt;
    return value;
}

bool V4l2Controls::setRect(quint32 id, v4l2_rect value) {
    return rectControl(VIDIOC_S_EXT_CTRLS, id, V4L2_CTRL_WHICH_CUR_VAL, &value);
}

} // namespace av
