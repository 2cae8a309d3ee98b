#include "recording/CameraButton.h"

#include <QEasingCurve>
#include <QPainter>
#include <QPainterPath>
#include <QVariantAnimation>

namespace {

const QColor photoRestColor = QColor::fromRgbF(1, 1, 1, 0.24f);

QColor restColor(CameraButtonType type) {
    return type == CameraButtonType::video ? QColor(Qt::red) : photoRestColor;
}

QColor pressedColor(CameraButtonType type) {
    return type == CameraButtonType::video ? QColor(Qt::red) : QColor(Qt::white);
}

QEasingCurve easeInEaseOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0.0}, {0.58, 1.0}, {1.0, 1.0});
    return curve;
}

} // namespace

CameraButton::CameraButton(QWidget* parent) : Control(parent), fillColor(restColor(buttonType)) {
    setFixedSize(side, side);
    addTarget(
        this, [this](Control* sender) { touchUpInside(sender); }, Control::touchUpInside);
    addTarget(
        this, [this](Control* sender) { touchDown(sender); }, Control::touchDown);
    // A drag out of the button, not a lost touch, is what undoes the shape.
    addTarget(
        this, [this](Control* sender) { touchCancel(sender); }, Control::touchDragExit);
}

void CameraButton::setType(CameraButtonType type) {
    buttonType = type;
    delete pathAnimation;
    delete fillAnimation;
    fillColor = restColor(buttonType);
    update();
}

void CameraButton::setSelected(bool selected) {
    Control::setSelected(selected);
    animatePath();
}

void CameraButton::touchDown(ui::Control*) {
    animateFill(pressedColor(buttonType));
    if (buttonType == CameraButtonType::video)
        return;
    // A photo button shows its selected shape for as long as the finger is down.
    Control::setSelected(!isSelected());
    animatePath();
}

void CameraButton::touchUpInside(ui::Control*) {
    animateFill(restColor(buttonType));
    Control::setSelected(!isSelected());
    animatePath();
}

void CameraButton::touchCancel(ui::Control*) {
    Control::setSelected(!isSelected());
    animatePath();
}

CameraButton::Shape CameraButton::idleShape() {
    return {QRectF(8, 8, 50, 50), 25};
}

CameraButton::Shape CameraButton::selectedShape(CameraButtonType type) {
    if (type == CameraButtonType::video)
        return {QRectF(17, 17, 32, 32), 8};
    return {QRectF(13, 13, 40, 40), 20};
}

CameraButton::Shape CameraButton::shownShape() const {
    // The stored path, under any animation, is always the idle disc: the button is never created
    // selected.
    if (!pathAnimation)
        return idleShape();
    const qreal t = pathAnimation->currentValue().toReal();
    const QRectF& a = pathFrom.rect;
    const QRectF& b = pathTo.rect;
    auto mix = [t](qreal from, qreal to) { return from + (to - from) * t; };
    return {QRectF(mix(a.x(), b.x()), mix(a.y(), b.y()), mix(a.width(), b.width()),
                   mix(a.height(), b.height())),
            mix(pathFrom.cornerRadius, pathTo.cornerRadius)};
}

QRectF CameraButton::innerRect() const {
    return shownShape().rect;
}

qreal CameraButton::innerCornerRadius() const {
    return shownShape().cornerRadius;
}

QColor CameraButton::innerColor() const {
    if (!fillAnimation)
        return fillColor;
    // Interpolated colours have 8-bit channels; the end value is exactly the colour asked for.
    const bool ended = fillAnimation->state() == QAbstractAnimation::Stopped;
    return (ended ? fillAnimation->endValue() : fillAnimation->currentValue()).value<QColor>();
}

bool CameraButton::isAnimating() const {
    auto running = [](const QVariantAnimation* animation) {
        return animation && animation->state() == QAbstractAnimation::Running;
    };
    return running(pathAnimation) || running(fillAnimation);
}

QSize CameraButton::sizeHint() const {
    return {side, side};
}

QVariantAnimation* CameraButton::startAnimation(const QVariant& from, const QVariant& to) {
    auto* animation = new QVariantAnimation(this);
    animation->setDuration(buttonAnimateDuration > 0 ? qRound(buttonAnimateDuration * 1000.0) : 0);
    animation->setEasingCurve(easeInEaseOut());
    animation->setStartValue(from);
    animation->setEndValue(to);
    // One repaint of the button per tick of the animation timer.
    connect(animation, &QVariantAnimation::valueChanged, this, [this] { update(); });
    // Kept after it ends: the finished animation is what holds the final value.
    animation->start();
    return animation;
}

void CameraButton::animatePath() {
    const Shape from = shownShape();
    delete pathAnimation;
    pathFrom = from;
    pathTo = isSelected() ? selectedShape(buttonType) : idleShape();
    pathAnimation = startAnimation(0.0, 1.0);
}

void CameraButton::animateFill(const QColor& to) {
    const QColor from = innerColor();
    delete fillAnimation;
    fillAnimation = startAnimation(from, to);
}

void CameraButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 4));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(3, 3, 60, 60));

    const Shape shape = shownShape();
    QPainterPath path;
    path.addRoundedRect(shape.rect, shape.cornerRadius, shape.cornerRadius);
    painter.fillPath(path, innerColor());

    // Only for focus moved by the keyboard: a window gives focus to its first control on showing.
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        // Thin and just outside the white ring, so the look of the button is otherwise unchanged.
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.drawEllipse(QRectF(0.75, 0.75, side - 1.5, side - 1.5));
    }
}
