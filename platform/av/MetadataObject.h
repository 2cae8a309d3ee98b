#pragma once

#include <QRectF>
#include <QString>

#include <gst/gst.h>

namespace av {

// Something found in a frame. Bounds are normalised to the camera's unturned picture, (0, 0)
// top left to (1, 1) bottom right, until a preview layer transforms them into its coordinates.
struct MetadataObject {
    static inline const QString typeFace = QStringLiteral("face");

    QString type;
    QRectF bounds;
    // The running time of the frame it was found in.
    GstClockTime time = GST_CLOCK_TIME_NONE;
};

} // namespace av
