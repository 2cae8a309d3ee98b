#include "platform/av/V4l2Controls.h"
#include "platform/av/Gst.h"
#include "platform/av/SystemCaptureDevice.h"

#include <QRect>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>
#include <set>
#include <vector>

namespace {

struct FakeDevice {
    GstDevice parent;
};
struct FakeDeviceClass {
    GstDeviceClass parent;
};
G_DEFINE_TYPE(FakeDevice, fake_device, GST_TYPE_DEVICE)
void fake_device_class_init(FakeDeviceClass*) {}
void fake_device_init(FakeDevice*) {}

constexpr quint32 roiRect = V4L2_CID_USER_BASE + 0x11e0 + 1;
constexpr quint32 roiAuto = V4L2_CID_USER_BASE + 0x11e0 + 2;
constexpr qint32 roiFocus = 1 << 3;

// A device node as the kernel answers it: the controls it has, and every value written to it.
struct FakeNode {
    std::map<quint32, v4l2_query_ext_ctrl> controls;
    std::set<quint32> ledModes;
    std::map<quint32, qint32> values;
    v4l2_rect smallest{0, 0, 1, 1};
    std::vector<std::pair<quint32, qint32>> writes;
    std::vector<QRect> regions;
    int failure = 0;
    int calls = 0;

    void add(quint32 id, quint32 type, qint64 maximum) {
        v4l2_query_ext_ctrl& control = controls[id] = v4l2_query_ext_ctrl{};
        control.id = id;
        control.type = type;
        control.maximum = maximum;
    }
    void addLed(std::set<quint32> modes) {
        add(V4L2_CID_FLASH_LED_MODE, V4L2_CTRL_TYPE_MENU, V4L2_FLASH_LED_MODE_TORCH);
        ledModes = std::move(modes);
    }
    void addRegion(qint32 follows) {
        add(roiRect, 0x0107, 0);
        add(roiAuto, V4L2_CTRL_TYPE_BITMASK, follows);
        values[roiAuto] = 1;
    }

    int operator()(unsigned long request, void* arg) {
        ++calls;
        errno = failure ? failure : EINVAL;
        // All but the extended requests start with the control's id.
        const quint32 id = *static_cast<quint32*>(arg);
        if (failure ||
            (request != VIDIOC_G_EXT_CTRLS && request != VIDIOC_S_EXT_CTRLS && !controls.count(id)))
            return -1;
        if (request == VIDIOC_QUERY_EXT_CTRL)
            *static_cast<v4l2_query_ext_ctrl*>(arg) = controls[id];
        if (request == VIDIOC_QUERYMENU)
            return ledModes.count(static_cast<v4l2_querymenu*>(arg)->index) ? 0 : -1;
        if (request == VIDIOC_G_CTRL)
            static_cast<v4l2_control*>(arg)->value = values[id];
        if (request == VIDIOC_S_CTRL) {
            writes.push_back({id, static_cast<v4l2_control*>(arg)->value});
            values[id] = writes.back().second;
        }
        if (request == VIDIOC_G_EXT_CTRLS || request == VIDIOC_S_EXT_CTRLS) {
            const auto* list = static_cast<v4l2_ext_controls*>(arg);
            const v4l2_ext_control& control = list->controls[0];
            if (list->count != 1 || !controls.count(roiRect) || control.id != roiRect ||
                control.size != sizeof(v4l2_rect))
                return -1;
            auto* rect = static_cast<v4l2_rect*>(control.ptr);
            if (request == VIDIOC_S_EXT_CTRLS)
                regions.push_back(QRect(rect->left, rect->top, rect->width, rect->height));
            else
                *rect = list->which == 0x0f030000 ? v4l2_rect{0, 0, 1920, 1080} : smallest;
        }
        return 0;
    }
};

using Writes = std::vector<std::pair<quint32, qint32>>;

TEST(V4l2Controls, aFlashLedIsATorchOnlyWhereItsMenuHasOne) {
    FakeNode led;
    led.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_FLASH, V4L2_FLASH_LED_MODE_TORCH});
    led.add(V4L2_CID_FLASH_TORCH_INTENSITY, V4L2_CTRL_TYPE_INTEGER, 7);
    av::V4l2Controls torch(std::ref(led));
    EXPECT_TRUE(torch.hasTorch());
    EXPECT_TRUE(torch.setTorch(true));
    EXPECT_TRUE(torch.setTorch(false));
    EXPECT_EQ(led.writes, (Writes{{V4L2_CID_FLASH_TORCH_INTENSITY, 7},
                                  {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH},
                                  {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE}}));

    FakeNode flashOnly; // the menu's range covers the torch, but the device skips that item
    flashOnly.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_FLASH});
    av::V4l2Controls flash(std::ref(flashOnly));
    EXPECT_FALSE(flash.hasTorch());
    EXPECT_FALSE(flash.setTorch(true));
    EXPECT_TRUE(flashOnly.writes.empty());
}

TEST(V4l2Controls, aPointAimsTheFocusRegionWhereTheDeviceHasOne) {
    FakeNode uvc; // continuous autofocus that follows a region of interest
    uvc.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    uvc.addRegion(0xff);
    av::V4l2Controls camera(std::ref(uvc));
    ASSERT_TRUE(camera.canFocusAtPoint());
    EXPECT_TRUE(camera.focusAt({0.25, 0.5}));
    EXPECT_TRUE(camera.focusAt({1.0, 1.0}));
    EXPECT_EQ(uvc.regions,
              (std::vector<QRect>{{288, 432, 384, 216}, {1920 - 384, 1080 - 216, 384, 216}}));
    // Exposure already followed the region and still does.
    EXPECT_EQ(uvc.writes, (Writes{{roiAuto, 1 | roiFocus},
                                  {V4L2_CID_FOCUS_AUTO, 1},
                                  {roiAuto, 1 | roiFocus},
                                  {V4L2_CID_FOCUS_AUTO, 1}}));

    FakeNode coarse; // one-shot focus over a region no smaller than 640×480
    coarse.add(V4L2_CID_AUTO_FOCUS_START, V4L2_CTRL_TYPE_BUTTON, 0);
    coarse.addRegion(roiFocus);
    coarse.smallest = {0, 0, 640, 480};
    EXPECT_TRUE(av::V4l2Controls(std::ref(coarse)).focusAt({0.0, 0.5}));
    EXPECT_EQ(coarse.regions, (std::vector<QRect>{{0, 300, 640, 480}}));
    EXPECT_EQ(coarse.writes.back(), (std::pair<quint32, qint32>{V4L2_CID_AUTO_FOCUS_START, 1}));
}

TEST(V4l2Controls, withoutARegionAutofocusChoosesForItself) {
    FakeNode continuous;
    continuous.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    continuous.addRegion(1); // the region steers exposure only
    FakeNode oneShot;
    oneShot.add(V4L2_CID_AUTO_FOCUS_START, V4L2_CTRL_TYPE_BUTTON, 0);
    const std::pair<FakeNode*, quint32> cases[] = {{&continuous, V4L2_CID_FOCUS_AUTO},
                                                   {&oneShot, V4L2_CID_AUTO_FOCUS_START}};
    for (const auto& [node, written] : cases) {
        av::V4l2Controls camera(std::ref(*node));
        EXPECT_TRUE(camera.hasAutofocus());
        EXPECT_FALSE(camera.canFocusAtPoint());
        EXPECT_TRUE(camera.focusAt({0.2, 0.2}));
        EXPECT_EQ(node->writes, (Writes{{written, 1}}));
        EXPECT_TRUE(node->regions.empty());
    }
}

TEST(V4l2Controls, aNodeWithoutControlsOrGoneOffersNothingAndIsLeftAlone) {
    FakeNode bare;
    av::V4l2Controls none(std::ref(bare));
    EXPECT_FALSE(none.hasTorch() || none.hasAutofocus());
    EXPECT_FALSE(none.setTorch(true) || none.focusAt({0.5, 0.5}));
    EXPECT_TRUE(bare.writes.empty());

    FakeNode unplugged;
    unplugged.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_TORCH});
    unplugged.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    unplugged.failure = ENODEV;
    EXPECT_FALSE(av::V4l2Controls(std::ref(unplugged)).hasTorch());
    EXPECT_EQ(unplugged.calls, 1); // a gone device is asked nothing more

    unplugged.failure = 0;
    av::V4l2Controls camera(std::ref(unplugged));
    ASSERT_TRUE(camera.hasTorch());
    unplugged.failure = ENODEV;
    EXPECT_FALSE(camera.setTorch(true) || camera.focusAt({0.5, 0.5}));
    EXPECT_TRUE(unplugged.writes.empty());

    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    for (const QString& path : {QStringLiteral("/nonexistent/video9"), file.fileName()}) {
        av::V4l2Controls node(path);
        EXPECT_FALSE(node.hasTorch() || node.hasAutofocus()) << path.toStdString();
        EXPECT_FALSE(node.setTorch(true));
    }
}

// The session's part: the device lights its torch and focuses only while a pipeline runs, and an
// automatic torch stays dark.
TEST(V4l2Controls, aCameraDrivesItsNodeWhileASessionRuns) {
    FakeNode node;
    node.addLed({V4L2_FLASH_LED_MODE_NONE, V4L2_FLASH_LED_MODE_TORCH});
    node.add(V4L2_CID_FOCUS_AUTO, V4L2_CTRL_TYPE_BOOLEAN, 1);
    av::SystemCaptureDevice::setControlsForTesting(std::ref(node));
    av::Gst::ensureInitialized();
    g_autoptr(GstStructure) properties =
        gst_structure_new("properties", "device.path", G_TYPE_STRING, "/dev/video0", nullptr);
    const av::GstHandle<GstDevice> device(
        GST_DEVICE(g_object_new(fake_device_get_type(), "display-name", "Torch camera",
                                "device-class", "Video/Source", "properties", properties, nullptr)),
        av::GstRef::adopt);
    av::SystemCaptureDevice camera(device.get());
    EXPECT_TRUE(camera.hasTorch());
    EXPECT_TRUE(camera.isFocusPointOfInterestSupported());

    camera.lockForConfiguration();
    camera.setTorchMode(av::CaptureDevice::TorchMode::on);
    EXPECT_TRUE(node.writes.empty());
    const av::GstHandle<GstElement> source(gst_element_factory_make("fakesrc", nullptr),
                                           av::GstRef::adopt);
    camera.attachPipeline(source.get(), nullptr);
    camera.setTorchMode(av::CaptureDevice::TorchMode::automatic);
    camera.setFocusPointOfInterest({0.3, 0.7});
    camera.detachPipeline();
    camera.unlockForConfiguration();
    av::SystemCaptureDevice::setControlsForTesting(nullptr);
    EXPECT_EQ(node.writes, (Writes{{V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH},
                                   {V4L2_CID_FOCUS_AUTO, 1},
                                   {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE},
                                   {V4L2_CID_FOCUS_AUTO, 1},
                                   {V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE}}));
}

} // namespace
