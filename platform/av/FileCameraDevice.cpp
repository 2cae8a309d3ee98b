#include "platform/av/FileCameraDevice.h"

#include "platform/av/VirtualCameraDevice.h"

#include <QFileInfo>

namespace av {

FileCameraDevice::FileCameraDevice(QString path, QObject* parent)
    : CaptureDevice(QStringLiteral("file:") + path, QFileInfo(path).fileName(), MediaType::video,
                    DevicePosition::back, parent),
      filePath(std::move(path)) {
    // The picture is scaled to whatever the session asks for.
    setFormats(VirtualCameraDevice::sceneFormats());
}

GstElement* FileCameraDevice::createSourceElement() const {
    GError* error = nullptr;
    // Decoders named outright: decodebin's late pads do not link inside a parsed bin here.
    const QString suffix = QFileInfo(filePath).suffix().toLower();
    const QByteArray decoder = suffix == QStringLiteral("png") ? "pngdec"
                               : suffix == QStringLiteral("jpg") || suffix == QStringLiteral("jpeg")
                                   ? "jpegdec"
                                   : "decodebin";
    const QByteArray description =
        "filesrc name=file ! " + decoder + " ! videoconvert ! imagefreeze is-live=true";
    GstElement* bin = gst_parse_bin_from_description(description.constData(), TRUE, &error);
    if (!bin) {
        g_clear_error(&error);
        return nullptr;
    }
    GstElement* file = gst_bin_get_by_name(GST_BIN(bin), "file");
    g_object_set(file, "location", filePath.toUtf8().constData(), nullptr);
    gst_object_unref(file);
    return bin;
}

} // namespace av
