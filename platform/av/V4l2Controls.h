#pragma once

#include <QPointF>
#include <QString>

#include <functional>
#include <optional>

#include <linux/videodev2.h>

namespace av {

// The V4L2 controls behind a camera's torch and focus, as one device node has them. What the node
// offers is asked once, when made; each change says whether the device took it. A device that
// answers ENODEV (unplugged) is asked nothing more.
class V4l2Controls {
public:
    // One ioctl on the node, answering as ioctl(2) does: 0, or -1 with errno set.
    using Ioctl = std::function<int(unsigned long request, void* arg)>;

    // Opens the node beside whoever streams from it: controls belong to the device, not to one
    // open file. A node that cannot be opened has no controls.
    explicit V4l2Controls(const QString& node);
    explicit V4l2Controls(Ioctl ioctl);
    ~V4l2Controls();
    V4l2Controls(const V4l2Controls&) = delete;
    V4l2Controls& operator=(const V4l2Controls&) = delete;

    // A flash LED whose mode menu has a torch.
    bool hasTorch() const { return torch; }
    // Continuous or one-shot autofocus.
    bool hasAutofocus() const { return continuousFocus || oneShotFocus; }
    // Autofocus that can be pointed at a region of the picture.
    bool canFocusAtPoint() const { return region.has_value(); }

    bool setTorch(bool on);
    // Focuses around the point ((0,0) top left, (1,1) bottom right of the picture) where the
    // device can be pointed; otherwise lets its autofocus choose.
    bool focusAt(QPointF point);

private:
    // Where a focus region may lie (the whole picture) and how small it may be, in sensor pixels.
    struct Region {
        v4l2_rect bounds;
        v4l2_rect smallest;
    };

    void probe();
    bool call(unsigned long request, void* arg);
    std::optional<v4l2_query_ext_ctrl> query(quint32 id);
    bool offers(const v4l2_query_ext_ctrl& menu, quint32 index);
    std::optional<qint32> value(quint32 id);
    bool set(quint32 id, qint32 value);
    // Gets or sets one rectangle control through the extended-control ioctls.
    bool rectControl(unsigned long request, quint32 id, quint32 which, v4l2_rect* value);
    std::optional<v4l2_rect> rect(quint32 id, quint32 which);
    bool setRect(quint32 id, v4l2_rect value);

    int fd = -1;
    Ioctl device;
    bool gone = false;
    bool torch = false;
    std::optional<qint32> torchIntensity;
    bool continuousFocus = false;
    bool oneShotFocus = false;
    std::optional<Region> region;
};

} // namespace av
