#include "platform/av/VirtualCameraSource.h"

#include "platform/av/GstHandle.h"

#include <gst/base/gstpushsrc.h>
#include <gst/video/gstvideopool.h>

#include <algorithm>
#include <mutex>
#include <optional>

// Shared with the scene, which says when it builds one.
GST_DEBUG_CATEGORY(tessaro_virtual_cam_debug);
#define GST_CAT_DEFAULT tessaro_virtual_cam_debug

namespace av {

namespace {

constexpr VirtualFormat formatTable[] = {
    {1920, 1080, 1, 60},
    {3840, 2160, 1, 30},
    {1280, 720, 1, 60},
};

struct SourceState {
    // Guarded by the object lock: the properties, the frame wait that unlock() cancels, and
    // whether it did.
    double zoom = 1.0;
    // The lowest zoom written since the last frame was drawn (NaN for one that zooms nowhere).
    double lowestZoom = 1.0;
    bool torch = false;
    bool front = false;
    bool zoomCrops = false;
    GstClockID pendingWait = nullptr;
    bool flushing = false;
    // One frame's time at the negotiated rate, for latency queries from any thread; none before
    // the caps are set.
    GstClockTime frameDuration = GST_CLOCK_TIME_NONE;

    // Streaming thread only (and start/stop, which run while it does not).
    GstVideoInfo info{};
    std::optional<VirtualCameraRenderer> renderer;
    // Frames are slots on the running clock from epoch on; a frame whose slot has passed is gone.
    GstClockTime epoch = GST_CLOCK_TIME_NONE;
    guint64 nextSlot = 0;
};

struct TessaroVirtualCam {
    GstPushSrc parent;
    SourceState* state;
};

struct TessaroVirtualCamClass {
    GstPushSrcClass parentClass;
};

enum { PROP_0, PROP_ZOOM, PROP_TORCH, PROP_FRONT, PROP_ZOOM_CROPS };

// The lower of two zooms, where NaN (which a zoom stage takes as 1) is the lowest.
double lowerZoom(double a, double b) {
    return b >= a ? a : b;
}

G_DEFINE_TYPE(TessaroVirtualCam, tessaro_virtual_cam, GST_TYPE_PUSH_SRC)

TessaroVirtualCam* self(gpointer object) {
    return reinterpret_cast<TessaroVirtualCam*>(object);
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    SourceState& state = *self(object)->state;
    ObjectLock lock(object);
    switch (id) {
    case PROP_ZOOM:
        state.zoom = g_value_get_double(value);
        state.lowestZoom = lowerZoom(state.lowestZoom, state.zoom);
        break;
    case PROP_TORCH:
        state.torch = g_value_get_boolean(value);
        break;
    case PROP_FRONT:
        state.front = g_value_get_boolean(value);
        break;
    case PROP_ZOOM_CROPS:
        state.zoomCrops = g_value_get_boolean(value);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    SourceState& state = *self(object)->state;
    ObjectLock lock(object);
    switch (id) {
    case PROP_ZOOM:
        g_value_set_double(value, state.zoom);
        break;
    case PROP_TORCH:
        g_value_set_boolean(value, state.torch);
        break;
    case PROP_FRONT:
        g_value_set_boolean(value, state.front);
        break;
    case PROP_ZOOM_CROPS:
        g_value_set_boolean(value, state.zoomCrops);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void finalize(GObject* object) {
    delete self(object)->state;
    G_OBJECT_CLASS(tessaro_virtual_cam_parent_class)->finalize(object);
}

GstCaps* fixate(GstBaseSrc* source, GstCaps* caps) {
    caps = gst_caps_make_writable(caps);
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure* structure = gst_caps_get_structure(caps, i);
        gst_structure_fixate_field_string(structure, "format", "I420");
        gst_structure_fixate_field_nearest_int(structure, "width", 1920);
        gst_structure_fixate_field_nearest_int(structure, "height", 1080);
        gst_structure_fixate_field_nearest_fraction(structure, "framerate", 30, 1);
    }
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->fixate(source, caps);
}

gboolean setCaps(GstBaseSrc* source, GstCaps* caps) {
    SourceState& state = *self(source)->state;
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps) || info.fps_n <= 0 || info.fps_d <= 0) {
        GST_ERROR_OBJECT(source, "unusable caps %" GST_PTR_FORMAT, caps);
        return FALSE;
    }
    bool front;
    {
        ObjectLock lock(source);
        front = state.front;
        state.frameDuration = gst_util_uint64_scale_int(GST_SECOND, info.fps_d, info.fps_n);
    }
    state.info = info;
    // The textures are made here, once, rather than on the first frame.
    state.renderer.emplace(info.width, info.height, front);
    gst_base_src_set_blocksize(source, guint(info.size));
    GST_DEBUG_OBJECT(source, "negotiated %" GST_PTR_FORMAT, caps);
    return TRUE;
}

gboolean decideAllocation(GstBaseSrc* source, GstQuery* query) {
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstVideoInfo info;
    if (!caps || !gst_video_info_from_caps(&info, caps))
        return FALSE;
    GstBufferPool* offered = nullptr;
    guint size = guint(info.size), minimum = 0, maximum = 0;
    const bool update = gst_query_get_n_allocation_pools(query) > 0;
    if (update) {
        gst_query_parse_nth_allocation_pool(query, 0, &offered, &size, &minimum, &maximum);
        size = std::max(size, guint(info.size));
    }
    const GstHandle<GstBufferPool> pool(offered ? offered : gst_video_buffer_pool_new(),
                                        GstRef::adopt);
    GstStructure* config = gst_buffer_pool_get_config(pool.get());
    gst_buffer_pool_config_set_params(config, caps, size, minimum, maximum);
    if (gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr))
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    gst_buffer_pool_set_config(pool.get(), config);
    if (update)
        gst_query_set_nth_allocation_pool(query, 0, pool.get(), size, minimum, maximum);
    else
        gst_query_add_allocation_pool(query, pool.get(), size, minimum, maximum);
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->decide_allocation(source, query);
}

gboolean start(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    state.epoch = GST_CLOCK_TIME_NONE;
    state.nextSlot = 0;
    return TRUE;
}

gboolean stop(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    {
        ObjectLock lock(source);
        state.frameDuration = GST_CLOCK_TIME_NONE;
    }
    state.renderer.reset();
    state.epoch = GST_CLOCK_TIME_NONE;
    return TRUE;
}

gboolean unlock(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    ObjectLock lock(source);
    state.flushing = true;
    if (state.pendingWait)
        gst_clock_id_unschedule(state.pendingWait);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc* source) {
    SourceState& state = *self(source)->state;
    ObjectLock lock(source);
    state.flushing = false;
    return TRUE;
}

gboolean query(GstBaseSrc* source, GstQuery* query) {
    SourceState& state = *self(source)->state;
    if (GST_QUERY_TYPE(query) == GST_QUERY_LATENCY) {
        // Asked from any thread, while the streaming thread may be negotiating: only what the
        // object lock guards is read.
        GstClockTime frame;
        {
            ObjectLock lock(source);
            frame = state.frameDuration;
        }
        if (!GST_CLOCK_TIME_IS_VALID(frame))
            return FALSE;
        // A frame is an exposure of one frame time, stamped with its start. Nothing here holds
        // frames back, so there is no upper bound.
        gst_query_set_latency(query, TRUE, frame, GST_CLOCK_TIME_NONE);
        return TRUE;
    }
    return GST_BASE_SRC_CLASS(tessaro_virtual_cam_parent_class)->query(source, query);
}

GstClockTime slotTime(const SourceState& state, guint64 slot) {
    return state.epoch + gst_util_uint64_scale(slot, GST_SECOND * guint64(state.info.fps_d),
                                               guint64(state.info.fps_n));
}

// Waits for the next frame slot on the pipeline clock, like a sensor delivering frames at its own
// pace. A caller that comes late gets the newest slot: the frames in between are dropped, never
// delivered in a hurry. Sets *slot; FLUSHING when unlock() interrupts.
GstFlowReturn waitForSlot(GstElement* element, SourceState& state, guint64* slot) {
    const GstHandle<GstClock> clock(gst_element_get_clock(element), GstRef::adopt);
    if (!clock) {
        // Outside a running pipeline there is no time to keep: frames come as asked.
        if (!GST_CLOCK_TIME_IS_VALID(state.epoch))
            state.epoch = 0;
        *slot = state.nextSlot++;
        return GST_FLOW_OK;
    }
    const GstClockTime base = gst_element_get_base_time(element);
    const GstClockTime now = gst_clock_get_time(clock.get());
    const GstClockTime running = now > base ? now - base : 0;
    if (!GST_CLOCK_TIME_IS_VALID(state.epoch)) {
        state.epoch = running;
        state.nextSlot = 0;
    }
    const GstClockTime due = slotTime(state, state.nextSlot);
    if (running < due) {
        GstClockID wait = gst_clock_new_single_shot_id(clock.get(), base + due);
        {
            ObjectLock lock(element);
            if (state.flushing) {
                gst_clock_id_unref(wait);
                return GST_FLOW_FLUSHING;
            }
            state.pendingWait = wait;
        }
        const GstClockReturn result = gst_clock_id_wait(wait, nullptr);
        {
            ObjectLock lock(element);
            state.pendingWait = nullptr;
        }
        gst_clock_id_unref(wait);
        if (result == GST_CLOCK_UNSCHEDULED)
            return GST_FLOW_FLUSHING;
        *slot = state.nextSlot;
    } else {
        *slot = std::max(state.nextSlot,
                         gst_util_uint64_scale(running - state.epoch, guint64(state.info.fps_n),
                                               GST_SECOND * guint64(state.info.fps_d)));
        if (*slot > state.nextSlot)
            GST_DEBUG_OBJECT(element, "late: dropped %" G_GUINT64_FORMAT " frames",
                             *slot - state.nextSlot);
    }
    state.nextSlot = *slot + 1;
    return GST_FLOW_OK;
}

GstFlowReturn fill(GstPushSrc* pushSource, GstBuffer* buffer) {
    GstElement* element = GST_ELEMENT(pushSource);
    SourceState& state = *self(pushSource)->state;
    if (!state.renderer)
        return GST_FLOW_NOT_NEGOTIATED;
    guint64 slot = 0;
    const GstFlowReturn waited = waitForSlot(element, state, &slot);
    if (waited != GST_FLOW_OK)
        return waited;

    double zoom, cropZoom;
    bool torch, front;
    {
        ObjectLock lock(element);
        zoom = state.zoom;
        // The zoom stage gives this frame a zoom written since the last one was drawn.
        cropZoom = state.zoomCrops ? lowerZoom(state.lowestZoom, zoom) : 1.0;
        state.lowestZoom = zoom;
        torch = state.torch;
        front = state.front;
    }
    if (front != state.renderer->front())
        state.renderer.emplace(state.info.width, state.info.height, front);

    const GstClockTime pts = slotTime(state, slot);
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &state.info, buffer, GST_MAP_WRITE)) {
        GST_ELEMENT_ERROR(element, RESOURCE, WRITE, (nullptr), ("could not map the frame"));
        return GST_FLOW_ERROR;
    }
    state.renderer->render(&frame, zoom, torch, pts, cropZoom);
    gst_video_frame_unmap(&frame);

    GST_BUFFER_PTS(buffer) = pts;
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(buffer) = slotTime(state, slot + 1) - pts;
    GST_BUFFER_OFFSET(buffer) = slot;
    GST_BUFFER_OFFSET_END(buffer) = slot + 1;
    return GST_FLOW_OK;
}

void tessaro_virtual_cam_class_init(TessaroVirtualCamClass* klass) {
    GObjectClass* objectClass = G_OBJECT_CLASS(klass);
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    objectClass->finalize = finalize;

    const auto flags =
        GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        objectClass, PROP_ZOOM,
        g_param_spec_double("zoom", "Zoom",
                            "The zoom factor applied downstream, which the walker follows "
                            "(below 1 counts as 1)",
                            -G_MAXDOUBLE, G_MAXDOUBLE, 1.0, flags));
    g_object_class_install_property(
        objectClass, PROP_TORCH,
        g_param_spec_boolean("torch", "Torch", "Light the scene", FALSE, flags));
    g_object_class_install_property(
        objectClass, PROP_FRONT,
        g_param_spec_boolean("front", "Front", "Show the front camera's scene", FALSE, flags));
    g_object_class_install_property(
        objectClass, PROP_ZOOM_CROPS,
        g_param_spec_boolean("zoom-crops", "Zoom crops",
                             "A zoom stage downstream crops every frame to its centre 1/zoom: "
                             "only that centre is drawn, the rest is black",
                             FALSE, flags));

    GstElementClass* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(
        elementClass, "Tessaro virtual camera", "Source/Video",
        "A rendered dolly-zoom scene whose walker follows the zoom", "Tessaro");
    const GstHandle<GstCaps> caps(VirtualCameraSource::caps(), GstRef::adopt);
    gst_element_class_add_pad_template(
        elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps.get()));

    GstBaseSrcClass* baseClass = GST_BASE_SRC_CLASS(klass);
    baseClass->fixate = fixate;
    baseClass->set_caps = setCaps;
    baseClass->decide_allocation = decideAllocation;
    baseClass->start = start;
    baseClass->stop = stop;
    baseClass->unlock = unlock;
    baseClass->unlock_stop = unlockStop;
    baseClass->query = query;
    GST_PUSH_SRC_CLASS(klass)->fill = fill;
}

void tessaro_virtual_cam_init(TessaroVirtualCam* source) {
    source->state = new SourceState;
    GstBaseSrc* base = GST_BASE_SRC(source);
    gst_base_src_set_live(base, TRUE);
    gst_base_src_set_format(base, GST_FORMAT_TIME);
}

} // namespace

void VirtualCameraSource::registerElement() {
    static std::once_flag once;
    std::call_once(once, [] {
        GST_DEBUG_CATEGORY_INIT(tessaro_virtual_cam_debug, "tessaravirtualcam", 0,
                                "Tessaro virtual camera");
        if (!gst_element_register(nullptr, factoryName, GST_RANK_NONE,
                                  tessaro_virtual_cam_get_type()))
            g_error("could not register the %s element", factoryName);
    });
}

GstElement* VirtualCameraSource::create(const char* name) {
    registerElement();
    return gst_element_factory_make(factoryName, name);
}

std::span<const VirtualFormat> VirtualCameraSource::formats() {
    return formatTable;
}

GstCaps* VirtualCameraSource::caps() {
    GstCaps* caps = gst_caps_new_empty();
    for (const VirtualFormat& format : formatTable) {
        GValue formats = G_VALUE_INIT;
        g_value_init(&formats, GST_TYPE_LIST);
        for (const char* name : {"I420", "NV12"}) {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, G_TYPE_STRING);
            g_value_set_static_string(&value, name);
            gst_value_list_append_and_take_value(&formats, &value);
        }
        GstStructure* structure = gst_structure_new_empty("video/x-raw");
        gst_structure_take_value(structure, "format", &formats);
        gst_structure_set(structure, "width", G_TYPE_INT, format.width, "height", G_TYPE_INT,
                          format.height, "framerate", GST_TYPE_FRACTION_RANGE, format.minFps, 1,
                          format.maxFps, 1, "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr);
        gst_caps_append_structure(caps, structure);
    }
    return caps;
}

} // namespace av
