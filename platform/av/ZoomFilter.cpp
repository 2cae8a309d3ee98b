#include "platform/av/ZoomFilter.h"

#include "platform/av/GstHandle.h"

#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define TESSARO_ZOOM_AVX2 1
// Copies for machines with wider vectors or byte shuffles, chosen when the program loads.
#define TESSARO_ZOOM_CLONES __attribute__((target_clones("avx2", "ssse3", "default")))
#else
#define TESSARO_ZOOM_CLONES
#endif

GST_DEBUG_CATEGORY_STATIC(zoomDebug);
#define GST_CAT_DEFAULT zoomDebug

namespace av {
namespace {

// One output sample's source position on an axis: the left (or upper) tap and the 8-bit weight of
// the next one, 0..256.
struct Tap {
    int index;
    unsigned weight;
};

// Maps n output samples onto the centred n/zoom source samples, pixel centres aligned, so zoom 1
// is the identity. Taps never reach past the last sample: at the edge the weight is 256.
void mapAxis(int n, double zoom, std::vector<Tap>& taps) {
    taps.assign(std::size_t(n), Tap{0, 0});
    if (n < 2)
        return;
    const double centre = n / 2.0;
    for (int i = 0; i < n; ++i) {
        const double position =
            std::clamp((i + 0.5 - centre) / zoom + centre - 0.5, 0.0, double(n - 1));
        int index = int(position);
        unsigned weight = unsigned(std::lround((position - index) * 256.0));
        if (weight == 256) {
            ++index;
            weight = 0;
        }
        if (index >= n - 1) {
            index = n - 2;
            weight = 256;
        }
        taps[std::size_t(i)] = Tap{index, weight};
    }
}

// a*(256-w) + b*w + 128 fits 16 bits, and so does every partial sum in this modular form; the
// vectoriser can then work in 16-bit lanes.
inline std::uint8_t blend(unsigned a, unsigned b, unsigned weight) {
    return std::uint8_t(std::uint16_t((a << 8) + 128 + (b - a) * weight) >> 8);
}

// Fixed-length chunks: at -O2 GCC vectorises only loops that leave no scalar remainder.
TESSARO_ZOOM_CLONES
void blendRows(const std::uint8_t* __restrict top, const std::uint8_t* __restrict bottom,
               std::uint8_t* __restrict out, std::size_t count, unsigned weight) {
    std::size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        for (std::size_t k = 0; k < 32; ++k)
            out[i + k] = blend(top[i + k], bottom[i + k], weight);
    }
    for (; i < count; ++i)
        out[i] = blend(top[i], bottom[i], weight);
}

// 16 output bytes whose left taps lie within 16 source bytes of the first, so one shuffle of one
// load gathers them (and one of the load a pixel further, their right taps).
struct alignas(16) Block {
    std::uint8_t shuffle[16];
    std::uint16_t weight[16];
    int base;
    bool gathered;
};

using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Words16 = std::uint16_t __attribute__((vector_size(32)));

// The gather is what the compiler cannot vectorise by itself; a variable byte shuffle does it for
// a block (pshufb, tbl), written with GCC's vector extensions so each machine gets its own.
// Same arithmetic as blend(), so every machine gives the same bytes.
TESSARO_ZOOM_CLONES
void interpolateBlocks(const std::uint8_t* source, std::uint8_t* out, const Block* blocks,
                       std::size_t count, int pixelStride) {
    for (std::size_t b = 0; b < count; ++b) {
        const Block& block = blocks[b];
        if (!block.gathered)
            continue;
        Bytes16 shuffle;
        Bytes16 left;
        Bytes16 right;
        Words16 weight;
        std::memcpy(&shuffle, block.shuffle, sizeof shuffle);
        std::memcpy(&left, source + block.base, sizeof left);
        std::memcpy(&right, source + block.base + pixelStride, sizeof right);
        std::memcpy(&weight, block.weight, sizeof weight);
        const Words16 leftWords =
            __builtin_convertvector(__builtin_shuffle(left, shuffle), Words16);
        const Words16 rightWords =
            __builtin_convertvector(__builtin_shuffle(right, shuffle), Words16);
        const Bytes16 result = __builtin_convertvector(
            ((leftWords << 8) + 128 + (rightWords - leftWords) * weight) >> 8, Bytes16);
        std::memcpy(out + b * 16, &result, sizeof result);
    }
}

#ifdef TESSARO_ZOOM_AVX2
const bool haveAvx2 = (__builtin_cpu_init(), __builtin_cpu_supports("avx2"));

__attribute__((target("avx2"))) inline __m256i load2x128(const void* low, const void* high) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(low))),
        _mm_loadu_si128(static_cast<const __m128i*>(high)), 1);
}

// interpolateBlocks() two blocks per step, one in each 128-bit lane, where AVX2's byte shuffles
// stay anyway. About a quarter faster than the generic kernel's AVX2 copy, which widens and
// narrows 16 bytes at a time.
__attribute__((target("avx2"))) void interpolateBlockPairs(const std::uint8_t* source,
                                                           std::uint8_t* out, const Block* blocks,
                                                           std::size_t count, int pixelStride) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i half = _mm256_set1_epi8(char(0x80));
    std::size_t b = 0;
    for (; b + 2 <= count; b += 2) {
        const Block& first = blocks[b];
        const Block& second = blocks[b + 1];
        if (!first.gathered || !second.gathered) {
            interpolateBlocks(source, out + b * 16, blocks + b, 2, pixelStride);
            continue;
        }
        const __m256i shuffle = load2x128(first.shuffle, second.shuffle);
        const __m256i left =
            _mm256_shuffle_epi8(load2x128(source + first.base, source + second.base), shuffle);
        const __m256i right = _mm256_shuffle_epi8(
            load2x128(source + first.base + pixelStride, source + second.base + pixelStride),
            shuffle);
        // (left << 8 | 128) + (right - left) * weight in 16-bit lanes, as in blend().
        const __m256i low =
            _mm256_add_epi16(_mm256_unpacklo_epi8(half, left),
                             _mm256_mullo_epi16(_mm256_sub_epi16(_mm256_unpacklo_epi8(right, zero),
                                                                 _mm256_unpacklo_epi8(left, zero)),
                                                load2x128(first.weight, second.weight)));
        const __m256i high =
            _mm256_add_epi16(_mm256_unpackhi_epi8(half, left),
                             _mm256_mullo_epi16(_mm256_sub_epi16(_mm256_unpackhi_epi8(right, zero),
                                                                 _mm256_unpackhi_epi8(left, zero)),
                                                load2x128(first.weight + 8, second.weight + 8)));
        _mm256_storeu_si256(
            reinterpret_cast<__m256i*>(out + b * 16),
            _mm256_packus_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8)));
    }
    interpolateBlocks(source, out + b * 16, blocks + b, count - b, pixelStride);
}
#endif

// Resamples one plane. Each needed source row is interpolated horizontally once into a two-row
// cache; output rows blend the two cached rows. Streaming thread only.
class PlaneScaler {
public:
    void configure(int width, int height, int pixelStride, double zoom);
    void scale(const std::uint8_t* source, int sourceStride, std::uint8_t* out, int outStride);

private:
    const std::uint8_t* sourceRow(const std::uint8_t* source, int sourceStride, int row, int keep);
    void interpolateRow(const std::uint8_t* source, std::uint8_t* out) const;
    void interpolateBytes(const std::uint8_t* source, std::uint8_t* out, std::size_t begin,
                          std::size_t end) const;
    int planeWidth = 0;
    int planeHeight = 0;
    int planePixelStride = 0;
    double planeZoom = 0.0;
    std::size_t rowBytes = 0;
    std::vector<Tap> columnTaps;
    std::vector<Tap> rowTaps;
    // Per output byte: offset of the left tap in the source row, and the right tap's weight.
    std::vector<int> leftOffsets;
    std::vector<std::uint16_t> rightWeights;
    std::vector<Block> blocks;
    std::array<std::vector<std::uint8_t>, 2> rowCache;
    std::array<int, 2> cachedRow{-1, -1};
};

void PlaneScaler::configure(int width, int height, int pixelStride, double zoom) {
    if (width == planeWidth && height == planeHeight && pixelStride == planePixelStride &&
        zoom == planeZoom)
        return;
    planeWidth = width;
    planeHeight = height;
    planePixelStride = pixelStride;
    planeZoom = zoom;
    rowBytes = std::size_t(width) * std::size_t(pixelStride);

    mapAxis(width, zoom, columnTaps);
    mapAxis(height, zoom, rowTaps);
    leftOffsets.resize(rowBytes);
    rightWeights.resize(rowBytes);
    for (std::size_t byte = 0; byte < rowBytes; ++byte) {
        const Tap& tap = columnTaps[byte / std::size_t(pixelStride)];
        leftOffsets[byte] = tap.index * pixelStride + int(byte % std::size_t(pixelStride));
        rightWeights[byte] = std::uint16_t(tap.weight);
    }

    blocks.resize((rowBytes + 15) / 16);
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        Block& block = blocks[b];
        const std::size_t first = b * 16;
        block.base = leftOffsets[first];
        // The right-hand load reads 16 bytes from base + pixelStride; it must stay in the row.
        block.gathered = width >= 2 && first + 16 <= rowBytes &&
                         leftOffsets[first + 15] - block.base < 16 &&
                         std::size_t(block.base + pixelStride + 16) <= rowBytes;
        for (std::size_t k = 0; k < 16; ++k) {
            const std::size_t byte = std::min(first + k, rowBytes - 1);
            block.shuffle[k] = std::uint8_t(block.gathered ? leftOffsets[byte] - block.base : 0);
            block.weight[k] = rightWeights[byte];
        }
    }

    for (auto& row : rowCache)
        row.resize(rowBytes);
}

void PlaneScaler::scale(const std::uint8_t* source, int sourceStride, std::uint8_t* out,
                        int outStride) {
    cachedRow = {-1, -1};
    for (int y = 0; y < planeHeight; ++y, out += outStride) {
        const Tap& row = rowTaps[std::size_t(y)];
        const int below = row.index + 1;
        const std::uint8_t* top =
            sourceRow(source, sourceStride, row.index, row.weight ? below : -1);
        if (row.weight == 0) {
            std::memcpy(out, top, rowBytes);
            continue;
        }
        const std::uint8_t* bottom = sourceRow(source, sourceStride, below, row.index);
        if (row.weight == 256)
            std::memcpy(out, bottom, rowBytes);
        else
            blendRows(top, bottom, out, rowBytes, row.weight);
    }
}

// The cached interpolation of source row `row`, computed if needed into the slot that does not
// hold `keep`.
const std::uint8_t* PlaneScaler::sourceRow(const std::uint8_t* source, int sourceStride, int row,
                                           int keep) {
    for (std::size_t slot = 0; slot < 2; ++slot) {
        if (cachedRow[slot] == row)
            return rowCache[slot].data();
    }
    const std::size_t slot = cachedRow[0] == keep ? 1 : 0;
    interpolateRow(source + std::ptrdiff_t(row) * sourceStride, rowCache[slot].data());
    cachedRow[slot] = row;
    return rowCache[slot].data();
}

void PlaneScaler::interpolateRow(const std::uint8_t* source, std::uint8_t* out) const {
    if (planeWidth < 2) {
        std::memcpy(out, source, rowBytes);
        return;
    }
#ifdef TESSARO_ZOOM_AVX2
    const auto gather = haveAvx2 ? interpolateBlockPairs : interpolateBlocks;
#else
    const auto gather = interpolateBlocks;
#endif
    gather(source, out, blocks.data(), blocks.size(), planePixelStride);
    // Blocks that cannot be gathered, at the right edge, take the scalar loop.
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        if (!blocks[b].gathered)
            interpolateBytes(source, out, b * 16, std::min(b * 16 + 16, rowBytes));
    }
}

void PlaneScaler::interpolateBytes(const std::uint8_t* __restrict source,
                                   std::uint8_t* __restrict out, std::size_t begin,
                                   std::size_t end) const {
    // Locals: stores through a byte pointer could otherwise alias the members.
    const int* __restrict left = leftOffsets.data();
    const std::uint16_t* __restrict weight = rightWeights.data();
    const int pixelStride = planePixelStride;
    for (std::size_t byte = begin; byte < end; ++byte)
        out[byte] = blend(source[left[byte]], source[left[byte] + pixelStride], weight[byte]);
}

struct ZoomState {
    // Guarded by the object lock: written by any thread, read once per frame.
    double zoom = 1.0;
    // Writes not yet in effect, with the running time they were made at, so that each frame
    // shows the zoom last written before it was captured, however late it reaches this stage.
    std::deque<std::pair<GstClockTime, double>> writes;
    double settledZoom = 1.0; // the last write in effect
    bool followCaptureTime = false;

    // Streaming thread only.
    double frameZoom = 1.0; // taken in before_transform, used by the frame in flight
    std::array<PlaneScaler, GST_VIDEO_MAX_PLANES> planes;

    // Guards observer. Held while it runs, so a replaced observer is never running once
    // setFrameObserver returns.
    std::mutex observerMutex;
    ZoomFilter::FrameObserver observer;
};

} // namespace
} // namespace av

namespace {

struct TessaroZoom {
    GstVideoFilter parent;
    av::ZoomState* state;
};

struct TessaroZoomClass {
    GstVideoFilterClass parentClass;
};

enum { PROP_0, PROP_ZOOM, PROP_FOLLOW_CAPTURE_TIME };

G_DEFINE_TYPE_WITH_CODE(TessaroZoom, tessaro_zoom, GST_TYPE_VIDEO_FILTER,
                        GST_DEBUG_CATEGORY_INIT(zoomDebug, av::ZoomFilter::factoryName, 0,
                                                "Tessaro digital zoom"))

av::ZoomState& stateOf(gpointer element) {
    return *reinterpret_cast<TessaroZoom*>(element)->state;
}

void notifyObserver(av::ZoomState& state, GstClockTime pts, double zoom) {
    std::lock_guard lock(state.observerMutex);
    if (state.observer)
        state.observer(pts, zoom);
}

void tessaroZoomSetProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    switch (id) {
    case PROP_ZOOM: {
        const double zoom = g_value_get_double(value);
        GstElement* element = GST_ELEMENT(object);
        const av::GstHandle<GstClock> clock(gst_element_get_clock(element), av::GstRef::adopt);
        GstClockTime when = 0;
        if (clock) {
            const GstClockTime now = gst_clock_get_time(clock.get());
            const GstClockTime base = gst_element_get_base_time(element);
            when = now > base ? now - base : 0;
        }
        {
            av::ObjectLock lock(object);
            av::ZoomState& state = stateOf(object);
            state.zoom = zoom;
            // A frame is never older than a second; older writes only settle.
            constexpr std::size_t kept = 256;
            if (state.writes.size() >= kept) {
                state.settledZoom = state.writes.front().second;
                state.writes.pop_front();
            }
            state.writes.emplace_back(when, zoom);
        }
        GST_LOG_OBJECT(object, "zoom written: %g", zoom);
        break;
    }
    case PROP_FOLLOW_CAPTURE_TIME: {
        av::ObjectLock lock(object);
        stateOf(object).followCaptureTime = g_value_get_boolean(value);
        break;
    }
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

void tessaroZoomGetProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
    switch (id) {
    case PROP_ZOOM: {
        av::ObjectLock lock(object);
        g_value_set_double(value, stateOf(object).zoom);
        break;
    }
    case PROP_FOLLOW_CAPTURE_TIME: {
        av::ObjectLock lock(object);
        g_value_set_boolean(value, stateOf(object).followCaptureTime);
        break;
    }
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

void tessaroZoomFinalize(GObject* object) {
    delete reinterpret_cast<TessaroZoom*>(object)->state;
    G_OBJECT_CLASS(tessaro_zoom_parent_class)->finalize(object);
}

// Takes this frame's zoom. At 1 the element goes passthrough, saving a frame copy; basetransform
// then drops its output buffer pool, so leaving passthrough asks for a new one before this very
// frame is prepared (the source pad's reconfigure is handled right after this call).
void tessaroZoomBeforeTransform(GstBaseTransform* transform, GstBuffer* buffer) {
    av::ZoomState& state = stateOf(transform);
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    double written;
    {
        av::ObjectLock lock(transform);
        const GstClockTime captured =
            state.followCaptureTime
                ? gst_segment_to_running_time(&transform->segment, GST_FORMAT_TIME, pts)
                : GST_CLOCK_TIME_NONE;
        // Without a capture time every write so far is in effect.
        while (!state.writes.empty() &&
               (!GST_CLOCK_TIME_IS_VALID(captured) || state.writes.front().first <= captured)) {
            state.settledZoom = state.writes.front().second;
            state.writes.pop_front();
        }
        written = state.settledZoom;
    }
    state.frameZoom = av::ZoomFilter::pictureZoom(written);

    const bool unity = state.frameZoom == 1.0;
    if (unity != bool(gst_base_transform_is_passthrough(transform))) {
        GST_DEBUG_OBJECT(transform, "zoom %g: %s", state.frameZoom,
                         unity ? "passing frames through" : "scaling");
        gst_base_transform_set_passthrough(transform, unity);
        if (!unity)
            gst_base_transform_reconfigure_src(transform);
    }
}

// Called only in passthrough, where the frame is left as it is (mapped for reading only).
GstFlowReturn tessaroZoomPassthrough(GstVideoFilter* filter, GstVideoFrame* frame) {
    av::ZoomState& state = stateOf(filter);
    notifyObserver(state, GST_BUFFER_PTS(frame->buffer), state.frameZoom);
    return GST_FLOW_OK;
}

gboolean tessaroZoomSetInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo* in, GstCaps*,
                            GstVideoInfo* out) {
    if (GST_VIDEO_INFO_FORMAT(in) != GST_VIDEO_INFO_FORMAT(out) ||
        GST_VIDEO_INFO_WIDTH(in) != GST_VIDEO_INFO_WIDTH(out) ||
        GST_VIDEO_INFO_HEIGHT(in) != GST_VIDEO_INFO_HEIGHT(out)) {
        GST_WARNING_OBJECT(filter, "input and output formats differ");
        return FALSE;
    }
    GST_DEBUG_OBJECT(filter, "%s %dx%d", GST_VIDEO_INFO_NAME(in), GST_VIDEO_INFO_WIDTH(in),
                     GST_VIDEO_INFO_HEIGHT(in));
    return TRUE;
}

GstFlowReturn tessaroZoomTransformFrame(GstVideoFilter* filter, GstVideoFrame* in,
                                        GstVideoFrame* out) {
    av::ZoomState& state = stateOf(filter);
    const double zoom = state.frameZoom;
    // Both formats keep each plane's samples in the layout of the component the plane starts
    // with, plane p with component p (NV12's second plane interleaves U and V, pixel stride 2).
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(in); ++plane) {
        av::PlaneScaler& scaler = state.planes[plane];
        scaler.configure(GST_VIDEO_FRAME_COMP_WIDTH(in, plane),
                         GST_VIDEO_FRAME_COMP_HEIGHT(in, plane),
                         GST_VIDEO_FRAME_COMP_PSTRIDE(in, plane), zoom);
        scaler.scale(static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(in, plane)),
                     GST_VIDEO_FRAME_PLANE_STRIDE(in, plane),
                     static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, plane)),
                     GST_VIDEO_FRAME_PLANE_STRIDE(out, plane));
    }
    notifyObserver(state, GST_BUFFER_PTS(in->buffer), zoom);
    return GST_FLOW_OK;
}

void tessaro_zoom_class_init(TessaroZoomClass* zoomClass) {
    auto* objectClass = G_OBJECT_CLASS(zoomClass);
    objectClass->set_property = tessaroZoomSetProperty;
    objectClass->get_property = tessaroZoomGetProperty;
    objectClass->finalize = tessaroZoomFinalize;

    // The full double range and lax validation: the property keeps whatever was written, NaN
    // included, and only the picture clamps.
    g_object_class_install_property(
        objectClass, PROP_ZOOM,
        g_param_spec_double("zoom", "Zoom", "Zoom factor: the centre 1/zoom of the frame is shown",
                            -INFINITY, INFINITY, 1.0,
                            GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                        G_PARAM_LAX_VALIDATION | GST_PARAM_MUTABLE_PLAYING)));
    g_object_class_install_property(
        objectClass, PROP_FOLLOW_CAPTURE_TIME,
        g_param_spec_boolean("follow-capture-time", "Follow capture time",
                             "Give each frame of a live source the zoom last written before it "
                             "was captured (its timestamp), not the zoom current when it arrives",
                             FALSE, GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));

    auto* elementClass = GST_ELEMENT_CLASS(zoomClass);
    gst_element_class_set_static_metadata(
        elementClass, "Digital zoom", "Filter/Effect/Video",
        "Crops the centre 1/zoom of the frame with sub-pixel precision and scales it back",
        "Tessaro");
    const av::GstHandle<GstCaps> caps(gst_caps_from_string(GST_VIDEO_CAPS_MAKE("{ I420, NV12 }")),
                                      av::GstRef::adopt);
    gst_element_class_add_pad_template(
        elementClass, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps.get()));
    gst_element_class_add_pad_template(
        elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps.get()));

    auto* transformClass = GST_BASE_TRANSFORM_CLASS(zoomClass);
    transformClass->before_transform = tessaroZoomBeforeTransform;

    auto* filterClass = GST_VIDEO_FILTER_CLASS(zoomClass);
    filterClass->set_info = tessaroZoomSetInfo;
    filterClass->transform_frame = tessaroZoomTransformFrame;
    filterClass->transform_frame_ip = tessaroZoomPassthrough;
}

void tessaro_zoom_init(TessaroZoom* self) {
    self->state = new av::ZoomState;
    // The stage feeds the recording as well as the preview: a late preview sink must not make it
    // drop frames (video filters answer QoS by default).
    gst_base_transform_set_qos_enabled(GST_BASE_TRANSFORM(self), FALSE);
}

} // namespace

namespace av {

void ZoomFilter::registerElement() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (!gst_element_register(nullptr, factoryName, GST_RANK_NONE, type()))
            qFatal("ZoomFilter: cannot register the %s element", factoryName);
    });
}

GstElement* ZoomFilter::create(const char* name) {
    registerElement();
    GstElement* element = gst_element_factory_make(factoryName, name);
    if (!element)
        qFatal("ZoomFilter: cannot create a %s element", factoryName);
    return element;
}

GType ZoomFilter::type() {
    return tessaro_zoom_get_type();
}

void ZoomFilter::setFrameObserver(GstElement* zoomFilter, FrameObserver observer) {
    if (!G_TYPE_CHECK_INSTANCE_TYPE(zoomFilter, type()))
        qFatal("ZoomFilter::setFrameObserver: %s is not a %s element",
               zoomFilter ? GST_ELEMENT_NAME(zoomFilter) : "null", factoryName);
    ZoomState& state = stateOf(zoomFilter);
    std::lock_guard lock(state.observerMutex);
    std::swap(state.observer, observer);
    // The previous observer goes when `observer` does, after the lock: its captures may own
    // things whose release takes locks of their own.
}

double ZoomFilter::pictureZoom(double zoom) {
    if (!(zoom >= 1.0))
        return 1.0;
    return std::min(zoom, maxZoom);
}

} // namespace av
