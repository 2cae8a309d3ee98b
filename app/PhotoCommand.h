#pragma once

#include <QSize>
#include <QString>

// Takes one still without a display: the photo session on the chosen camera, optionally with
// face detection first, and the photo written as a JPEG whose EXIF says how to show it. The
// output is claimed before the camera starts and never replaces a file.
class PhotoCommand {
public:
    struct Options {
        // Empty: the photo as the camera takes it.
        QSize resolution;
        double zoom = 1.0;
        bool faces = false;
        // Empty: a new "Tessaro Photo" file in the documents folder.
        QString output;
    };

    // The highest zoom --zoom takes: the camera's digital zoom limit.
    static constexpr double highestZoom = 10.0;
    // Detections waited for before the photo, so that the faces printed are settled.
    static constexpr int detectionsBeforePhoto = 3;

    // 0 with a photo, 1 when the camera gave none, 2 when the output cannot be claimed.
    static int run(const Options& options);
};
