#include "platform/av/PictureZoom.h"

#include "platform/av/Gst.h"
#include "platform/av/GstHandle.h"
#include "platform/av/VirtualCameraRenderer.h"

#include <QPainter>

#include <gst/video/video.h>

#include <cmath>
#include <cstdlib>
#include <memory>

namespace av {

namespace {

// Frames are compared at this width: fine enough for a thousandth, quick enough for hundreds of
// tries.
constexpr int compareWidth = 480;
// The virtual scene is drawn at this width: its geometry does not depend on the size.
constexpr int sceneWidth = 960;

QImage grey(const QImage& image, int width) {
    return image.convertToFormat(QImage::Format_Grayscale8)
        .scaledToWidth(width, Qt::SmoothTransformation);
}

// The centre 1/zoom of the reference, scaled to the compared size, with fractional edges as
// the zoom stage crops.
QImage crop(const QImage& reference, double zoom, QSize size) {
    QImage out(size, QImage::Format_Grayscale8);
    out.fill(0);
    QPainter painter(&out);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QSizeF part(reference.width() / zoom, reference.height() / zoom);
    const QPointF corner((reference.width() - part.width()) / 2,
                         (reference.height() - part.height()) / 2);
    painter.drawImage(QRectF(QPointF(0, 0), QSizeF(size)), reference, QRectF(corner, part));
    return out;
}

// Mean difference over the middle of the picture, where the crop's edges do not reach.
double difference(const QImage& a, const QImage& b) {
    const int marginX = a.width() / 10;
    const int marginY = a.height() / 10;
    qint64 sum = 0;
    for (int y = marginY; y < a.height() - marginY; ++y) {
        const uchar* rowA = a.constScanLine(y);
        const uchar* rowB = b.constScanLine(y);
        for (int x = marginX; x < a.width() - marginX; ++x)
            sum += std::abs(int(rowA[x]) - int(rowB[x]));
    }
    return double(sum) / double((a.width() - 2 * marginX) * (a.height() - 2 * marginY));
}

} // namespace

PictureZoom::Reference PictureZoom::still(const QImage& picture, QSize frameSize) {
    QImage framed(frameSize, QImage::Format_Grayscale8);
    framed.fill(0);
    QPainter painter(&framed);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QRect placed(QPoint(0, 0), picture.size().scaled(frameSize, Qt::KeepAspectRatio));
    placed.moveCenter(framed.rect().center());
    painter.drawImage(placed, picture.convertToFormat(QImage::Format_Grayscale8));
    painter.end();
    return [framed](double) { return framed; };
}

PictureZoom::Reference PictureZoom::virtualScene() {
    Gst::ensureInitialized();
    const int height = sceneWidth * 9 / 16;
    auto renderer = std::make_shared<VirtualCameraRenderer>(sceneWidth, height, false);
    return [renderer, height](double zoom) {
        GstVideoInfo info;
        gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, sceneWidth, height);
        const GstHandle<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr),
                                          GstRef::adopt);
        QImage luma(sceneWidth, height, QImage::Format_Grayscale8);
        GstVideoFrame frame;
        if (gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_READWRITE)) {
            renderer->render(&frame, zoom, false, 0);
            const auto* plane = static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
            const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
            for (int y = 0; y < height; ++y)
                std::copy_n(plane + y * stride, sceneWidth, luma.scanLine(y));
            gst_video_frame_unmap(&frame);
        }
        return luma;
    };
}

double PictureZoom::measure(const QImage& frame, const Reference& reference, double highest) {
    if (frame.isNull() || highest < 1.0)
        return 0.0;
    const QImage target = grey(frame, compareWidth);
    const auto cost = [&](double zoom) {
        return difference(target, crop(reference(zoom), zoom, target.size()));
    };
    // Every fiftieth first, so a picture that repeats itself cannot trap the search, then a
    // golden-section search around the best.
    constexpr double coarse = 0.02;
    double best = 1.0;
    double bestCost = cost(1.0);
    for (double zoom = 1.0 + coarse; zoom <= highest + 1e-9; zoom += coarse)
        if (const double c = cost(zoom); c < bestCost)
            best = zoom, bestCost = c;
    const double ratio = (std::sqrt(5.0) - 1) / 2;
    double low = std::max(1.0, best - coarse);
    double high = std::min(highest, best + coarse);
    while (high - low > 0.0005) {
        const double a = high - ratio * (high - low);
        const double b = low + ratio * (high - low);
        if (cost(a) < cost(b))
            high = b;
        else
            low = a;
    }
    return (low + high) / 2;
}

} // namespace av
