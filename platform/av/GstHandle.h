#pragma once

#include <gst/gst.h>

#include <type_traits>
#include <utility>

// Ownership of GStreamer and GLib objects, one way throughout:
// - GstHandle holds every reference-counted object: any GObject (elements, pads, buses, clocks,
//   pools, devices, discoverers) and every mini object (caps, buffers, samples, messages ...).
// - g_autoptr / g_autofree only for what is not reference counted and so cannot be a handle:
//   GError, strings, GstStructure, lists (g_autolist).
// - ObjectLock for the object lock; av::Gst::make for elements; av::Gst::errorOf for the error
//   or warning a message carries.
// A bare gst_object_unref or gst_caps_unref outside this header is refused by the test suite.

namespace av {

// How a GstHandle takes its pointer: adopting the reference the caller owns (a floating one is
// sunk, so a fresh element from gst_element_factory_make is owned, not leaked), or adding one of
// its own to a pointer the caller merely borrows.
enum class GstRef { adopt, add };

namespace detail {

template <typename T>
inline constexpr bool isMiniObject =
    std::is_same_v<T, GstCaps> || std::is_same_v<T, GstBuffer> ||
    std::is_same_v<T, GstBufferList> || std::is_same_v<T, GstSample> ||
    std::is_same_v<T, GstEvent> || std::is_same_v<T, GstMessage> || std::is_same_v<T, GstQuery> ||
    std::is_same_v<T, GstContext> || std::is_same_v<T, GstMemory> ||
    std::is_same_v<T, GstTagList> || std::is_same_v<T, GstToc>;

} // namespace detail

// One reference to a GStreamer object (any GObject) or mini object (caps, buffer, event ...),
// released when the handle goes. Copies add a reference; moves carry it.
template <typename T> class GstHandle {
public:
    GstHandle() = default;
    GstHandle(T* pointer, GstRef how) : held(pointer) {
        if (!held)
            return;
        if constexpr (detail::isMiniObject<T>) {
            if (how == GstRef::add)
                gst_mini_object_ref(GST_MINI_OBJECT_CAST(held));
        } else if (how == GstRef::add) {
            g_object_ref(held);
        } else if (g_object_is_floating(held)) {
            g_object_ref_sink(held);
        }
    }
    GstHandle(const GstHandle& other) : GstHandle(other.held, GstRef::add) {}
    GstHandle(GstHandle&& other) noexcept : held(std::exchange(other.held, nullptr)) {}
    GstHandle& operator=(GstHandle other) noexcept {
        std::swap(held, other.held);
        return *this;
    }
    ~GstHandle() { reset(); }

    T* get() const { return held; }
    T* operator->() const { return held; }
    explicit operator bool() const { return held != nullptr; }

    // Hands the reference to the caller, for APIs that take ownership ("transfer full").
    [[nodiscard]] T* release() { return std::exchange(held, nullptr); }

    void reset() {
        if (T* pointer = std::exchange(held, nullptr)) {
            if constexpr (detail::isMiniObject<T>)
                gst_mini_object_unref(GST_MINI_OBJECT_CAST(pointer));
            else
                g_object_unref(pointer);
        }
    }

private:
    T* held = nullptr;
};

// Holds a GstObject's object lock for a scope.
class ObjectLock {
public:
    explicit ObjectLock(gpointer object) : object(GST_OBJECT_CAST(object)) {
        GST_OBJECT_LOCK(this->object);
    }
    ~ObjectLock() { GST_OBJECT_UNLOCK(object); }
    ObjectLock(const ObjectLock&) = delete;
    ObjectLock& operator=(const ObjectLock&) = delete;

private:
    GstObject* object;
};

} // namespace av
