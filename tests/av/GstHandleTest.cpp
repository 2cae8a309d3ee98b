#include "platform/av/GstHandle.h"

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

// Adopting takes the caller's reference (sinking a floating one), adding takes a new one.
TEST(GstHandleTest, AdoptsOrAddsReferences) {
    gst_init(nullptr, nullptr);
    GstElement* element = gst_element_factory_make("identity", nullptr);
    {
        av::GstHandle<GstElement> adopted(element, av::GstRef::adopt);
        EXPECT_FALSE(g_object_is_floating(element));
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 1);
        av::GstHandle<GstElement> added(element, av::GstRef::add);
        av::GstHandle<GstElement> copied = added;
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 3);
        av::GstHandle<GstElement> moved = std::move(copied);
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 3);
        gst_object_unref(added.release());
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 2);
    }
    av::GstHandle<GstCaps> caps(gst_caps_new_any(), av::GstRef::adopt);
    av::GstHandle<GstCaps> other(caps.get(), av::GstRef::add);
    EXPECT_EQ(GST_CAPS_REFCOUNT_VALUE(caps.get()), 2);
}

} // namespace
