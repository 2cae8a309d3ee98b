#include "platform/av/GstHandle.h"

#include "platform/av/Error.h"
#include "platform/av/Gst.h"

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
        // Released, the reference is the caller's to hand on.
        av::GstHandle<GstElement>(added.release(), av::GstRef::adopt);
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 2);
    }
    av::GstHandle<GstCaps> caps(gst_caps_new_any(), av::GstRef::adopt);
    av::GstHandle<GstCaps> other(caps.get(), av::GstRef::add);
    EXPECT_EQ(GST_CAPS_REFCOUNT_VALUE(caps.get()), 2);
}

// A plugin missing from the installation is a failure the user is told of, never a crash.
TEST(GstTest, aMissingElementIsAnErrorNamingIt) {
    av::Gst::ensureInitialized();
    EXPECT_TRUE(av::Gst::exists("identity"));
    EXPECT_FALSE(av::Gst::exists("tessaronosuchelement"));
    av::GstHandle<GstElement> made(av::Gst::make("identity", "named"), av::GstRef::adopt);
    EXPECT_STREQ(GST_OBJECT_NAME(made.get()), "named");
    try {
        (void)av::Gst::make("tessaronosuchelement");
        FAIL() << "no error for a missing element";
    } catch (const av::Error& error) {
        EXPECT_EQ(error.code(), av::Error::Code::encoderMissing);
        EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("tessaronosuchelement")));
    }
}

TEST(GstTest, errorsAndWarningsAreReadFromTheirMessages) {
    av::Gst::ensureInitialized();
    using Create = GstMessage* (*)(GstObject*, GError*, const gchar*);
    for (Create create : {gst_message_new_error, gst_message_new_warning, gst_message_new_info}) {
        g_autoptr(GError) error =
            g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT, "disk full");
        const av::GstHandle<GstMessage> message(create(nullptr, error, "where"), av::GstRef::adopt);
        const av::GstMessageError parsed = av::Gst::errorOf(message.get());
        EXPECT_TRUE(parsed.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT));
        EXPECT_FALSE(parsed.is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND));
        EXPECT_EQ(parsed.message, QStringLiteral("disk full"));
        EXPECT_EQ(parsed.debug, QStringLiteral("where"));
    }
    const av::GstHandle<GstMessage> other(gst_message_new_eos(nullptr), av::GstRef::adopt);
    EXPECT_TRUE(av::Gst::errorOf(other.get()).message.isEmpty());
    EXPECT_EQ(av::Gst::errorOf(other.get()).domain, GQuark(0));
}

} // namespace
