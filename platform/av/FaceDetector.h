#pragma once

#include <QRectF>
#include <QString>

#include <vector>

namespace av {

// Faces in a grey picture, by the face detector's module (platform/av/faces), loaded with its
// model on first use. Use from one thread at a time.
class FaceDetector {
public:
    FaceDetector() = default;
    ~FaceDetector();
    FaceDetector(const FaceDetector&) = delete;
    FaceDetector& operator=(const FaceDetector&) = delete;

    // Loads the module and the model; false, with a warning, when either is missing.
    bool load(const QString& modelPath);
    // Boxes in fractions of the picture; none before a successful load.
    std::vector<QRectF> detect(const unsigned char* grey, int width, int height, int stride,
                               int detectionWidth) const;

    // The module the build made for a program run from its build folder, else the one installed
    // beside the program (or under the configured prefix); empty when there is none.
    static QString modulePath();

private:
    void* cascade = nullptr;
};

} // namespace av
