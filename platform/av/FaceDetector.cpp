#include "platform/av/FaceDetector.h"

#include "platform/av/Logging.h"
#include "platform/av/faces/FaceCascade.h"
#include "platform/foundation/Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

namespace av {

namespace {

struct Module {
    decltype(&tessaroFacesLoad) load = nullptr;
    decltype(&tessaroFacesDetect) detect = nullptr;
    decltype(&tessaroFacesFree) free = nullptr;
};

// Resolved once for the process; the library stays loaded for good.
const Module& module() {
    static const Module resolved = [] {
        Module found;
        const QString path = FaceDetector::modulePath();
        if (path.isEmpty()) {
            qCWarning(lcAv) << "the face detector's module is not installed; faces are not "
                               "detected";
            return found;
        }
        QLibrary library(path);
        if (!library.load()) {
            qCWarning(lcAv).noquote()
                << "the face detector's module cannot be loaded:" << library.errorString();
            return found;
        }
        found.load = reinterpret_cast<decltype(found.load)>(library.resolve("tessaroFacesLoad"));
        found.detect =
            reinterpret_cast<decltype(found.detect)>(library.resolve("tessaroFacesDetect"));
        found.free = reinterpret_cast<decltype(found.free)>(library.resolve("tessaroFacesFree"));
        if (!found.load || !found.detect || !found.free) {
            qCWarning(lcAv).noquote() << path << "is not the face detector's module";
            found = Module{};
        }
        return found;
    }();
    return resolved;
}

} // namespace

FaceDetector::~FaceDetector() {
    if (cascade)
        module().free(cascade);
}

QString FaceDetector::modulePath() {
    const QString name = QStringLiteral("tessaro-faces.so");
    // Found the way the data files are: what the build made, or what was installed beside the
    // program, never the build folder's module under an installed program.
    QStringList folders;
    if (foundation::Bundle::runsFromBuildTree())
        folders << QStringLiteral(TESSARO_BUILD_MODULES_DIR);
    else
        folders << QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                                   QStringLiteral(TESSARO_MODULES_FROM_BINARY));
    folders << QStringLiteral(TESSARO_INSTALL_MODULES_DIR);
    for (const QString& folder : folders)
        if (QFileInfo(folder + QLatin1Char('/') + name).isFile())
            return folder + QLatin1Char('/') + name;
    return {};
}

bool FaceDetector::load(const QString& modelPath) {
    if (cascade)
        return true;
    if (!module().load)
        return false;
    cascade = module().load(modelPath.toLocal8Bit().constData());
    if (!cascade)
        qCWarning(lcAv).noquote() << "face model" << modelPath << "unreadable";
    return cascade != nullptr;
}

std::vector<QRectF> FaceDetector::detect(const unsigned char* grey, int width, int height,
                                         int stride, int detectionWidth) const {
    std::vector<QRectF> faces;
    if (!cascade)
        return faces;
    constexpr int most = 32;
    double boxes[4 * most];
    const int count =
        module().detect(cascade, grey, width, height, stride, detectionWidth, boxes, most);
    for (int i = 0; i < count; ++i)
        faces.emplace_back(boxes[4 * i], boxes[4 * i + 1], boxes[4 * i + 2], boxes[4 * i + 3]);
    return faces;
}

} // namespace av
