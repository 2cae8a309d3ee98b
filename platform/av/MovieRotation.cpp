#include "platform/av/MovieRotation.h"

#include "platform/av/GstHandle.h"

#include <QByteArray>

#include <algorithm>

namespace av {

namespace {

constexpr guint32 fourcc(const char (&name)[5]) {
    return guint32(guint8(name[0])) << 24 | guint32(guint8(name[1])) << 16 |
           guint32(guint8(name[2])) << 8 | guint32(guint8(name[3]));
}

// Byte by byte: atoms sit at any offset, and GStreamer's macros load whole words.
guint32 readBigEndian(const guint8* at) {
    return guint32(at[0]) << 24 | guint32(at[1]) << 16 | guint32(at[2]) << 8 | guint32(at[3]);
}

void writeBigEndian(guint8* at, guint32 value) {
    for (int i = 0; i < 4; ++i)
        at[i] = guint8(value >> (24 - 8 * i));
}

// Calls visit(offset, size) for each atom of this type inside [begin, end).
template <typename Visit>
void forEachAtom(const guint8* data, gsize begin, gsize end, guint32 type, Visit visit) {
    gsize offset = begin;
    while (offset + 8 <= end) {
        const gsize size = readBigEndian(data + offset);
        if (size < 8 || offset + size > end)
            return;
        if (readBigEndian(data + offset + 4) == type)
            visit(offset, size);
        offset += size;
    }
}

GstPadProbeReturn rotateVideoTrack(GstPad*, GstPadProbeInfo* info, gpointer degrees) {
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    guint8 head[8];
    if (gst_buffer_extract(buffer, 0, head, 8) != 8 || readBigEndian(head + 4) != fourcc("moov"))
        return GST_PAD_PROBE_OK;
    buffer = gst_buffer_make_writable(buffer);
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_READWRITE)) {
        MovieRotation::setVideoTrackMatrix(map.data, map.size, GPOINTER_TO_INT(degrees));
        gst_buffer_unmap(buffer, &map);
    }
    return GST_PAD_PROBE_OK;
}

} // namespace

void MovieRotation::setVideoTrackMatrix(guint8* data, gsize size, int degrees) {
    if (size < 8 || readBigEndian(data + 4) != fourcc("moov"))
        return;
    const gsize moovEnd = std::min<gsize>(size, readBigEndian(data));
    forEachAtom(data, 8, moovEnd, fourcc("trak"), [&](gsize trak, gsize trakSize) {
        forEachAtom(data, trak + 8, trak + trakSize, fourcc("tkhd"), [&](gsize tkhd, gsize length) {
            const gsize matrixAt = data[tkhd + 8] == 1 ? 60 : 48;
            if (length < matrixAt + 44)
                return;
            guint8* matrix = data + tkhd + matrixAt;
            const gint32 width = gint32(readBigEndian(matrix + 36));
            const gint32 height = gint32(readBigEndian(matrix + 40));
            if (width == 0 || height == 0)
                return; // the sound track
            constexpr gint32 one = 1 << 16;
            gint32 values[9] = {one, 0, 0, 0, one, 0, 0, 0, 1 << 30};
            switch (degrees) {
            case 90:
                values[0] = 0, values[1] = one, values[3] = -one, values[4] = 0, values[6] = height;
                break;
            case 180:
                values[0] = -one, values[4] = -one, values[6] = width, values[7] = height;
                break;
            case 270:
                values[0] = 0, values[1] = -one, values[3] = one, values[4] = 0, values[7] = width;
                break;
            }
            for (int i = 0; i < 9; ++i)
                writeBigEndian(matrix + 4 * i, guint32(values[i]));
        });
    });
}

void MovieRotation::apply(GstElement* mux, int degrees) {
    degrees = ((degrees % 360) + 360) % 360;
    if (degrees == 0)
        return;
    // What a later qtmux writes by itself; the probe writes it for this one.
    const QByteArray orientation = QByteArray("rotate-") + QByteArray::number(degrees);
    gst_tag_setter_add_tags(GST_TAG_SETTER(mux), GST_TAG_MERGE_REPLACE, GST_TAG_IMAGE_ORIENTATION,
                            orientation.constData(), nullptr);
    GstHandle<GstPad> muxOutput(gst_element_get_static_pad(mux, "src"), GstRef::adopt);
    gst_pad_add_probe(muxOutput.get(), GST_PAD_PROBE_TYPE_BUFFER, rotateVideoTrack,
                      GINT_TO_POINTER(degrees), nullptr);
}

} // namespace av
