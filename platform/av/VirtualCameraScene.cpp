#include "platform/av/VirtualCameraScene.h"

#include <QColor>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <gst/gst.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>

GST_DEBUG_CATEGORY_EXTERN(tessaro_virtual_cam_debug);
#define GST_CAT_DEFAULT tessaro_virtual_cam_debug

namespace av {

namespace {

// Painted in frame heights.

// One period of the background: the widest view up to zoom 4 shows no repeat. Past zoom 5.7 the
// view is taller than the background; the rows beyond repeat its edge rows, plain sky and floor.
constexpr double backgroundWidth = 2.4;
constexpr double backgroundHeight = 1.5;
constexpr double backgroundAxisX = 1.2;
constexpr double backgroundAxisY = 0.75;
// Up to zoom 16 the background is seen at under 2.7 texels a pixel, the subject at up to 16.
constexpr int backgroundLevels = 2;
constexpr int subjectLevels = 5;

constexpr double clockLeft = VirtualCameraScene::clockLeft;
constexpr double clockTop = VirtualCameraScene::clockTop;
constexpr double clockDigitHeight = VirtualCameraScene::clockDigitHeight;

// Deterministic, so every size paints the same scene.
class Random {
public:
    explicit Random(uint32_t seed) : state(seed * 2654435761u + 1u) {}
    double uniform(double low, double high) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return low + (high - low) * double(state) / 4294967296.0;
    }
    bool chance(double p) { return uniform(0, 1) < p; }

private:
    uint32_t state;
};

QColor mix(const QColor& a, const QColor& b, double t) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

constexpr const char* clockPattern = "88:88.88";

double clockWidth() {
    double right = 0;
    VirtualCameraScene::forEachSegment(
        clockPattern, [&](double x, double, double w, double) { right = std::max(right, x + w); });
    return right;
}

void paintClock(QPainter& p) {
    const double h = clockDigitHeight;
    const double pad = 0.4 * h;
    const QRectF panel(clockLeft - pad, clockTop - pad, clockWidth() * h + 2 * pad, h + 2 * pad);
    p.setPen(QPen(QColor(92, 96, 108), 0.003));
    p.setBrush(QColor(22, 25, 31));
    p.drawRoundedRect(panel, 0.006, 0.006);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(34, 48, 44));
    VirtualCameraScene::forEachSegment(clockPattern, [&](double x, double y, double w, double sh) {
        p.drawRect(QRectF(clockLeft + x * h, clockTop + y * h, w * h, sh * h));
    });
}

// Draws the periodic background three times over so shapes that cross an edge wrap around.
void paintPeriodic(QPainter& p, void (*paintOnce)(QPainter&)) {
    for (int copy = -1; copy <= 1; ++copy) {
        p.save();
        p.translate(copy * backgroundWidth, 0);
        paintOnce(p);
        p.restore();
    }
}

void paintBuilding(QPainter& p, const QRectF& r, const QColor& base, int style, Random& random) {
    p.fillRect(r, base);
    p.fillRect(QRectF(r.right() - r.width() * 0.12, r.top(), r.width() * 0.12, r.height()),
               base.darker(118));
    p.fillRect(QRectF(r.left(), r.top(), r.width(), 0.008), base.lighter(125));
    const QColor lit(250, 214, 140), dark(52, 66, 92), sky(96, 122, 158);
    const double margin = 0.016;
    if (style == 0) {
        const int columns = std::max(1, int((r.width() - 2 * margin) / 0.034));
        const double pitch = (r.width() - 2 * margin) / columns;
        for (double y = r.top() + 0.03; y + 0.03 < r.bottom() - 0.02; y += 0.048) {
            for (int c = 0; c < columns; ++c) {
                const QColor& glass = random.chance(0.28) ? lit : random.chance(0.5) ? dark : sky;
                p.fillRect(
                    QRectF(r.left() + margin + c * pitch + (pitch - 0.018) / 2, y, 0.018, 0.028),
                    glass);
            }
        }
    } else if (style == 1) {
        p.fillRect(
            QRectF(r.left() + margin, r.top() + 0.02, r.width() - 2 * margin, r.height() - 0.04),
            dark);
        for (double y = r.top() + 0.05; y < r.bottom() - 0.03; y += 0.048)
            p.fillRect(QRectF(r.left() + margin, y, r.width() - 2 * margin, 0.005),
                       base.darker(140));
        const QColor pillar = mix(base, Qt::white, 0.3);
        for (double x = r.left() + margin; x < r.right() - margin; x += 0.03)
            p.fillRect(QRectF(x, r.top() + 0.02, 0.008, r.height() - 0.04), pillar);
        for (double y = r.top() + 0.03; y < r.bottom() - 0.03; y += 0.048) {
            if (random.chance(0.3))
                p.fillRect(QRectF(r.left() + margin + 0.01, y + 0.01, r.width() * 0.3, 0.03),
                           QColor(lit.red(), lit.green(), lit.blue(), 90));
        }
    } else {
        for (double y = r.top() + 0.03; y + 0.022 < r.bottom() - 0.02; y += 0.045) {
            p.fillRect(QRectF(r.left() + margin, y, r.width() - 2 * margin, 0.022),
                       random.chance(0.25) ? lit : dark);
            for (double x = r.left() + margin; x < r.right() - margin; x += 0.025)
                p.fillRect(QRectF(x, y, 0.003, 0.022), base);
        }
    }
    if (random.chance(0.4)) {
        const double x = r.left() + r.width() * random.uniform(0.2, 0.8);
        p.fillRect(QRectF(x, r.top() - random.uniform(0.05, 0.12), 0.003, 0.12),
                   QColor(50, 54, 62));
    }
}

constexpr double cityHorizon = 0.87;

void paintCityOnce(QPainter& p) {
    const double w = backgroundWidth;
    QLinearGradient sky(0, 0.05, 0, cityHorizon);
    sky.setColorAt(0.0, QColor(38, 70, 140));
    sky.setColorAt(0.45, QColor(95, 150, 210));
    sky.setColorAt(0.8, QColor(180, 205, 225));
    sky.setColorAt(1.0, QColor(240, 224, 204));
    p.fillRect(QRectF(0, 0, w, cityHorizon), sky);

    QRadialGradient sun(QPointF(1.85, 0.5), 0.34);
    sun.setColorAt(0.0, QColor(255, 250, 232));
    sun.setColorAt(0.09, QColor(255, 246, 218));
    sun.setColorAt(0.13, QColor(255, 238, 205, 150));
    sun.setColorAt(1.0, QColor(255, 238, 205, 0));
    p.fillRect(QRectF(1.5, 0.16, 0.7, 0.68), sun);

    Random random(7);
    p.setPen(Qt::NoPen);
    for (int cloud = 0; cloud < 9; ++cloud) {
        const double cx = random.uniform(0, w);
        const double cy = random.uniform(0.1, 0.38);
        const double size = random.uniform(0.03, 0.06);
        p.setBrush(QColor(255, 255, 255, 150));
        for (int puff = 0; puff < 6; ++puff) {
            const double r = size * random.uniform(0.6, 1.1);
            p.drawEllipse(QPointF(cx + random.uniform(-2.5, 2.5) * size,
                                  cy + random.uniform(-0.4, 0.3) * size),
                          r * 1.6, r);
        }
    }

    const QColor haze(160, 180, 205);
    for (double x = 0; x < w;) {
        const double width = random.uniform(0.05, 0.15);
        const double top = random.uniform(0.42, 0.62);
        p.fillRect(QRectF(x, top, width, cityHorizon - top),
                   mix(haze, QColor(120, 140, 170), random.uniform(0, 0.5)));
        x += width;
    }

    const QColor palette[] = {QColor(70, 90, 120),   QColor(150, 142, 126), QColor(95, 120, 118),
                              QColor(178, 176, 170), QColor(62, 68, 84),    QColor(120, 130, 150)};
    for (double x = 0; x < w - 0.01;) {
        double width = random.uniform(0.11, 0.24);
        const double gap = random.uniform(0.0, 0.03);
        if (w - (x + width + gap) < 0.12)
            width = w - x;
        const bool central = std::abs(x + width / 2 - backgroundAxisX) < 0.4;
        const double top = central ? random.uniform(0.14, 0.28) : random.uniform(0.3, 0.62);
        const QColor& base = palette[int(random.uniform(0, 5.999))];
        paintBuilding(p, QRectF(x, top, width, cityHorizon - top), base,
                      int(random.uniform(0, 2.999)), random);
        x += width + (width == w - x ? 0 : gap);
    }

    // The plaza: a low wall along the horizon, paving below, plain at the very bottom.
    p.fillRect(QRectF(0, cityHorizon, w, 0.025), QColor(172, 166, 156));
    p.fillRect(QRectF(0, cityHorizon, w, 0.004), QColor(204, 198, 188));
    int band = 0;
    for (double y = cityHorizon + 0.025; y < backgroundHeight - 0.06; y += 0.035, ++band) {
        p.fillRect(QRectF(0, y, w, 0.035),
                   band % 2 ? QColor(140, 137, 133) : QColor(128, 126, 124));
        for (double x = band % 2 ? 0.035 : 0.0; x < w; x += 0.07)
            p.fillRect(QRectF(x, y, 0.003, 0.035), QColor(108, 106, 104));
    }
    p.fillRect(QRectF(0, backgroundHeight - 0.06, w, 0.06), QColor(128, 126, 124));

    for (int i = 0; i < 8; ++i) {
        const double x = 0.1 + i * 0.3 + random.uniform(-0.04, 0.04);
        p.fillRect(QRectF(x - 0.006, cityHorizon - 0.09, 0.012, 0.1), QColor(85, 65, 50));
        const QColor leaves[] = {QColor(52, 95, 62), QColor(64, 112, 70), QColor(44, 82, 56)};
        for (int puff = 0; puff < 6; ++puff) {
            p.setBrush(leaves[puff % 3]);
            const double r = random.uniform(0.035, 0.05);
            p.drawEllipse(QPointF(x + random.uniform(-0.04, 0.04),
                                  cityHorizon - 0.13 + random.uniform(-0.03, 0.03)),
                          r, r);
        }
        const double lamp = x + 0.15;
        p.fillRect(QRectF(lamp - 0.0025, cityHorizon - 0.2, 0.005, 0.2), QColor(45, 50, 60));
        p.fillRect(QRectF(lamp - 0.012, cityHorizon - 0.205, 0.024, 0.007), QColor(45, 50, 60));
        p.setBrush(QColor(255, 236, 180));
        p.drawEllipse(QPointF(lamp, cityHorizon - 0.195), 0.007, 0.005);
    }
    paintClock(p);
}

void paintCity(QPainter& p) {
    paintPeriodic(p, paintCityOnce);
}

constexpr double roomFloor = 0.95;

void paintRoomOnce(QPainter& p) {
    const double w = backgroundWidth;
    p.fillRect(QRectF(0, 0, w, roomFloor), QColor(226, 212, 188));
    for (double x = 0; x < w; x += 0.05)
        p.fillRect(QRectF(x, 0.15, 0.02, roomFloor - 0.15), QColor(216, 201, 176));
    p.fillRect(QRectF(0, 0, w, 0.14), QColor(242, 238, 230));
    p.fillRect(QRectF(0, 0.14, w, 0.012), QColor(250, 248, 244));
    p.fillRect(QRectF(0, 0.152, w, 0.004), QColor(200, 188, 168));

    // Floorboards, plain at the very bottom.
    int board = 0;
    for (double y = roomFloor; y < backgroundHeight - 0.06; y += 0.03, ++board) {
        p.fillRect(QRectF(0, y, w, 0.03), board % 2 ? QColor(156, 113, 76) : QColor(166, 122, 82));
        for (double x = std::fmod(board * 0.37, 0.22); x < w; x += 0.22)
            p.fillRect(QRectF(x, y, 0.003, 0.03), QColor(120, 86, 58));
    }
    p.fillRect(QRectF(0, backgroundHeight - 0.06, w, 0.06), QColor(160, 117, 79));
    p.fillRect(QRectF(0, roomFloor - 0.025, w, 0.025), QColor(240, 236, 228));

    // A window with curtains.
    p.fillRect(QRectF(1.5, 0.3, 0.45, 0.5), QColor(245, 245, 242));
    QLinearGradient view(0, 0.32, 0, 0.78);
    view.setColorAt(0, QColor(120, 170, 225));
    view.setColorAt(0.7, QColor(200, 222, 242));
    view.setColorAt(0.71, QColor(110, 150, 100));
    view.setColorAt(1, QColor(90, 130, 85));
    p.fillRect(QRectF(1.52, 0.32, 0.41, 0.46), view);
    p.fillRect(QRectF(1.719, 0.32, 0.012, 0.46), QColor(245, 245, 242));
    p.fillRect(QRectF(1.52, 0.545, 0.41, 0.012), QColor(245, 245, 242));
    p.fillRect(QRectF(1.38, 0.235, 0.71, 0.008), QColor(90, 80, 70));
    for (double left : {1.4, 1.97}) {
        p.fillRect(QRectF(left, 0.24, 0.1, 0.66), QColor(70, 125, 135));
        for (double x = left + 0.008; x < left + 0.1; x += 0.018)
            p.fillRect(QRectF(x, 0.24, 0.006, 0.66), QColor(56, 104, 114));
    }

    // A bookshelf.
    const QRectF shelf(0.15, 0.32, 0.5, roomFloor - 0.025 - 0.32);
    p.fillRect(shelf, QColor(120, 86, 58));
    p.fillRect(shelf.adjusted(0.015, 0.015, -0.015, 0), QColor(82, 58, 40));
    const QColor books[] = {QColor(40, 60, 110), QColor(150, 60, 62),   QColor(210, 170, 70),
                            QColor(60, 110, 80), QColor(200, 200, 190), QColor(90, 90, 95),
                            QColor(176, 110, 70)};
    Random random(23);
    for (double y = shelf.top() + 0.015; y + 0.11 < shelf.bottom(); y += 0.12) {
        for (double x = shelf.left() + 0.02; x < shelf.right() - 0.04;) {
            const double bw = random.uniform(0.01, 0.022);
            const double bh = random.uniform(0.07, 0.098);
            p.fillRect(QRectF(x, y + 0.105 - bh, bw, bh), books[int(random.uniform(0, 6.999))]);
            x += bw + 0.002;
        }
        p.fillRect(QRectF(shelf.left(), y + 0.105, shelf.width(), 0.012), QColor(138, 100, 68));
    }

    // Two pictures, behind the subject's head.
    auto picture = [&](const QRectF& frame) {
        p.fillRect(frame, QColor(60, 50, 45));
        const QRectF art = frame.adjusted(0.02, 0.02, -0.02, -0.02);
        p.fillRect(frame.adjusted(0.008, 0.008, -0.008, -0.008), QColor(240, 235, 225));
        p.fillRect(art, QColor(150, 195, 230));
        p.fillRect(QRectF(art.left(), art.center().y(), art.width(), art.height() / 2),
                   QColor(96, 150, 90));
        p.setBrush(QColor(250, 220, 120));
        p.drawEllipse(QPointF(art.left() + art.width() * 0.7, art.top() + art.height() * 0.3),
                      art.height() * 0.12, art.height() * 0.12);
    };
    p.setPen(Qt::NoPen);
    picture(QRectF(0.98, 0.28, 0.17, 0.15));
    picture(QRectF(1.24, 0.25, 0.13, 0.19));

    // A plant in the corner by the window.
    p.fillRect(QRectF(2.17, roomFloor - 0.11, 0.07, 0.1), QColor(176, 104, 74));
    for (int leaf = 0; leaf < 9; ++leaf) {
        p.setBrush(leaf % 2 ? QColor(60, 120, 70) : QColor(80, 140, 80));
        p.drawEllipse(QPointF(2.205 + random.uniform(-0.06, 0.06),
                              roomFloor - 0.17 + random.uniform(-0.06, 0.05)),
                      0.025, 0.045);
    }
    paintClock(p);
}

void paintRoom(QPainter& p) {
    paintPeriodic(p, paintRoomOnce);
}

// A soft dark oval around an eye: the detector knows a face by its eye band, darker than the
// cheeks and the nose bridge.
void paintEyeShadow(QPainter& p, QPointF centre, QSizeF radii) {
    QRadialGradient socket(0, 0, 1);
    socket.setColorAt(0, QColor(100, 62, 48, 255));
    socket.setColorAt(1, QColor(100, 62, 48, 0));
    p.save();
    p.translate(centre);
    p.scale(radii.width(), radii.height());
    p.setBrush(socket);
    p.drawEllipse(QPointF(0, 0), 1, 1);
    p.restore();
}

// The back camera's subject: a walker's friend in an orange jacket, cut off by the frame's
// bottom edge like a real subject filmed from the chest up.
void paintPerson(QPainter& p) {
    p.translate(0.25, 0.35);
    p.setPen(Qt::NoPen);
    QPainterPath jacket;
    jacket.moveTo(-0.07, -0.09);
    jacket.cubicTo(-0.14, -0.085, -0.19, -0.06, -0.195, 0.03);
    jacket.lineTo(-0.205, 0.55);
    jacket.lineTo(0.205, 0.55);
    jacket.lineTo(0.195, 0.03);
    jacket.cubicTo(0.19, -0.06, 0.14, -0.085, 0.07, -0.09);
    jacket.closeSubpath();
    QLinearGradient orange(0, -0.09, 0, 0.55);
    orange.setColorAt(0, QColor(245, 112, 42));
    orange.setColorAt(1, QColor(222, 86, 30));
    p.setBrush(orange);
    p.drawPath(jacket);
    // Sleeves a shade darker than the chest, then the arm creases and the zip.
    p.save();
    p.setClipPath(jacket);
    for (double x : {-0.21, 0.15})
        p.fillRect(QRectF(x, -0.1, 0.06, 0.7), QColor(214, 88, 32));
    p.restore();
    for (double x : {-0.15, 0.15})
        p.fillRect(QRectF(x - 0.003, 0.0, 0.006, 0.55), QColor(186, 68, 24));
    p.fillRect(QRectF(-0.003, -0.02, 0.006, 0.57), QColor(70, 60, 56));

    p.setBrush(QColor(212, 160, 128));
    p.drawRect(QRectF(-0.03, -0.135, 0.06, 0.07));
    QPainterPath shirt;
    shirt.moveTo(-0.045, -0.088);
    shirt.lineTo(0.045, -0.088);
    shirt.lineTo(0, -0.015);
    shirt.closeSubpath();
    p.setBrush(QColor(238, 238, 232));
    p.drawPath(shirt);
    QPainterPath collar;
    collar.moveTo(-0.075, -0.092);
    collar.lineTo(-0.04, -0.092);
    collar.lineTo(-0.004, -0.01);
    collar.lineTo(-0.045, -0.04);
    collar.closeSubpath();
    p.setBrush(QColor(200, 76, 28));
    p.drawPath(collar);
    p.drawPath(QTransform::fromScale(-1, 1).map(collar));

    p.setBrush(QColor(60, 42, 35));
    p.drawEllipse(QPointF(0, -0.212), 0.066, 0.078);
    p.setBrush(QColor(224, 172, 140));
    p.drawEllipse(QPointF(-0.062, -0.19), 0.012, 0.02);
    p.drawEllipse(QPointF(0.062, -0.19), 0.012, 0.02);
    p.drawEllipse(QPointF(0, -0.185), 0.058, 0.07);
    p.setBrush(QColor(60, 42, 35));
    p.drawEllipse(QPointF(0.01, -0.245), 0.062, 0.032);
    // Shadowed eyes under brows, a lit nose bridge and the shade under the nose.
    for (double x : {-0.024, 0.024})
        paintEyeShadow(p, QPointF(x, -0.195), QSizeF(0.027, 0.02));
    p.setBrush(QColor(244, 204, 172));
    p.drawEllipse(QPointF(0, -0.18), 0.006, 0.02);
    p.setBrush(QColor(176, 118, 94));
    p.drawEllipse(QPointF(0, -0.163), 0.012, 0.0045);
    p.setBrush(QColor(40, 32, 30));
    p.drawEllipse(QPointF(-0.024, -0.194), 0.0075, 0.0075);
    p.drawEllipse(QPointF(0.024, -0.194), 0.0075, 0.0075);
    p.setPen(QPen(QColor(64, 44, 36), 0.007, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(-0.036, -0.207), QPointF(-0.011, -0.209));
    p.drawLine(QPointF(0.011, -0.209), QPointF(0.036, -0.207));
    p.setPen(QPen(QColor(130, 60, 56), 0.007, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    QPainterPath smile;
    smile.moveTo(-0.02, -0.146);
    smile.quadTo(0, -0.134, 0.02, -0.146);
    p.drawPath(smile);
}

// The front camera's subject: the user's own face, close.
void paintFace(QPainter& p) {
    p.translate(0.35, 0.45);
    p.setPen(Qt::NoPen);
    QPainterPath shirt;
    shirt.moveTo(-0.07, 0.13);
    shirt.cubicTo(-0.2, 0.14, -0.3, 0.18, -0.315, 0.32);
    shirt.lineTo(-0.33, 0.55);
    shirt.lineTo(0.33, 0.55);
    shirt.lineTo(0.315, 0.32);
    shirt.cubicTo(0.3, 0.18, 0.2, 0.14, 0.07, 0.13);
    shirt.closeSubpath();
    p.setBrush(QColor(38, 132, 140));
    p.drawPath(shirt);
    p.setBrush(QColor(200, 150, 120));
    p.drawRect(QRectF(-0.055, 0.04, 0.11, 0.1));
    p.setBrush(QColor(30, 104, 112));
    p.drawEllipse(QPointF(0, 0.135), 0.075, 0.03);
    p.setBrush(QColor(206, 156, 126));
    p.drawEllipse(QPointF(0, 0.13), 0.062, 0.022);

    p.setBrush(QColor(58, 40, 32));
    p.drawEllipse(QPointF(0, -0.085), 0.145, 0.178);
    p.setBrush(QColor(228, 180, 148));
    p.drawEllipse(QPointF(-0.118, -0.02), 0.02, 0.036);
    p.drawEllipse(QPointF(0.118, -0.02), 0.02, 0.036);
    p.drawEllipse(QPointF(0, -0.02), 0.118, 0.15);
    p.setBrush(QColor(58, 40, 32));
    p.drawEllipse(QPointF(0.025, -0.15), 0.12, 0.058);

    QRadialGradient blush(0, 0, 1);
    blush.setColorAt(0, QColor(236, 140, 130, 110));
    blush.setColorAt(1, QColor(236, 140, 130, 0));
    for (double x : {-0.065, 0.065}) {
        p.save();
        p.translate(x, 0.03);
        p.scale(0.03, 0.022);
        p.setBrush(blush);
        p.drawEllipse(QPointF(0, 0), 1, 1);
        p.restore();
    }
    for (double x : {-0.045, 0.045})
        paintEyeShadow(p, QPointF(x, -0.04), QSizeF(0.05, 0.036));
    for (double x : {-0.045, 0.045}) {
        p.setBrush(QColor(214, 204, 194));
        p.drawEllipse(QPointF(x, -0.035), 0.021, 0.011);
        p.setBrush(QColor(58, 70, 44));
        p.drawEllipse(QPointF(x, -0.035), 0.011, 0.011);
        p.setBrush(QColor(20, 20, 20));
        p.drawEllipse(QPointF(x, -0.035), 0.0045, 0.0045);
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(x + 0.003, -0.038), 0.002, 0.002);
    }
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(64, 44, 36), 0.014, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(-0.07, -0.066), QPointF(-0.022, -0.07));
    p.drawLine(QPointF(0.022, -0.07), QPointF(0.07, -0.066));
    // A lit nose bridge between the shadowed eyes, and the shade under the nose.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(244, 204, 172));
    p.drawEllipse(QPointF(0, -0.015), 0.012, 0.04);
    p.setBrush(QColor(176, 118, 94));
    p.drawEllipse(QPointF(0, 0.04), 0.024, 0.009);
    p.setPen(QPen(QColor(196, 146, 116), 0.005, Qt::SolidLine, Qt::RoundCap));
    QPainterPath nose;
    nose.moveTo(0.002, -0.02);
    nose.lineTo(-0.01, 0.032);
    nose.lineTo(0.008, 0.036);
    p.drawPath(nose);
    p.setPen(QPen(QColor(140, 56, 56), 0.014, Qt::SolidLine, Qt::RoundCap));
    QPainterPath smile;
    smile.moveTo(-0.042, 0.068);
    smile.quadTo(0, 0.1, 0.042, 0.068);
    p.drawPath(smile);
}

constexpr VirtualCameraLayer::Layout cityLayout{backgroundWidth, backgroundHeight, backgroundAxisX,
                                                backgroundAxisY, backgroundLevels, true,
                                                paintCity};
constexpr VirtualCameraLayer::Layout roomLayout{backgroundWidth, backgroundHeight, backgroundAxisX,
                                                backgroundAxisY, backgroundLevels, true,
                                                paintRoom};
constexpr VirtualCameraLayer::Layout personLayout{0.5,           0.9,   0.25,       0.35,
                                                  subjectLevels, false, paintPerson};
constexpr VirtualCameraLayer::Layout faceLayout{0.7,           1.0,   0.35,     0.45,
                                                subjectLevels, false, paintFace};

} // namespace

// Textures scale with the frame height only: all our formats are 16:9.
std::shared_ptr<const VirtualCameraScene> VirtualCameraScene::shared(int height, bool front) {
    static std::mutex mutex; // guards cache; held while building so a scene is built once
    static std::map<std::pair<int, bool>, std::weak_ptr<const VirtualCameraScene>> cache;
    std::lock_guard lock(mutex);
    std::weak_ptr<const VirtualCameraScene>& entry = cache[{height, front}];
    if (std::shared_ptr<const VirtualCameraScene> scene = entry.lock())
        return scene;
    GST_DEBUG("building the %s scene for height %d", front ? "front" : "back", height);
    auto scene = std::make_shared<const VirtualCameraScene>(VirtualCameraScene{
        height, VirtualCameraLayer::build(front ? roomLayout : cityLayout, height),
        VirtualCameraLayer::build(front ? faceLayout : personLayout, height)});
    entry = scene;
    return scene;
}

} // namespace av
