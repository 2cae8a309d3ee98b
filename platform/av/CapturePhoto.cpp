#include "platform/av/CapturePhoto.h"

#include <QBuffer>
#include <QImageWriter>

#include <libexif/exif-data.h>

#include <cstring>
#include <memory>

namespace av {

namespace {

struct ExifDataUnref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

// A tag of the IFD with its default format and size, for the caller to fill.
ExifEntry* addEntry(ExifData* exif, ExifIfd ifd, ExifTag tag) {
    ExifEntry* entry = exif_entry_new();
    exif_content_add_entry(exif->ifd[ifd], entry);
    exif_entry_initialize(entry, tag);
    exif_entry_unref(entry); // the IFD holds it
    return entry;
}

void setTime(ExifEntry* entry, const QByteArray& text) {
    // The format's fixed 20 bytes, "YYYY:MM:DD HH:MM:SS" and a NUL.
    if (entry->data && entry->size >= size_t(text.size()) + 1)
        std::memcpy(entry->data, text.constData(), text.size() + 1);
}

// The APP1 segment's payload: "Exif\0\0" and the TIFF structure.
QByteArray exifPayload(int orientation, const QDateTime& captureTime) {
    std::unique_ptr<ExifData, ExifDataUnref> exif(exif_data_new());
    if (!exif)
        return {};
    exif_data_set_byte_order(exif.get(), EXIF_BYTE_ORDER_INTEL);
    exif_set_short(addEntry(exif.get(), EXIF_IFD_0, EXIF_TAG_ORIENTATION)->data,
                   EXIF_BYTE_ORDER_INTEL, ExifShort(orientation));
    const QByteArray time = captureTime.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1();
    setTime(addEntry(exif.get(), EXIF_IFD_0, EXIF_TAG_DATE_TIME), time);
    setTime(addEntry(exif.get(), EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL), time);
    setTime(addEntry(exif.get(), EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_DIGITIZED), time);
    unsigned char* bytes = nullptr;
    unsigned int size = 0;
    exif_data_save_data(exif.get(), &bytes, &size);
    QByteArray payload(reinterpret_cast<const char*>(bytes), qsizetype(size));
    free(bytes);
    return payload;
}

} // namespace

QByteArray CapturePhoto::encodeJpeg(const QImage& picture, int exifOrientation,
                                    const QDateTime& captureTime, int quality) {
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    if (!writer.write(picture))
        return {};
    const QByteArray payload = exifPayload(exifOrientation, captureTime);
    // A segment holds at most 65533 bytes; ours is a few hundred.
    if (payload.isEmpty() || payload.size() > 0xfffd || !jpeg.startsWith("\xff\xd8"))
        return jpeg;
    QByteArray segment("\xff\xe1", 2);
    const int length = int(payload.size()) + 2;
    segment.append(char(length >> 8)).append(char(length & 0xff)).append(payload);
    // Right after the start of image, where readers look for it.
    jpeg.insert(2, segment);
    return jpeg;
}

} // namespace av
