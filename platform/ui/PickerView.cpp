#include "platform/ui/PickerView.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVariantAnimation>
#include <QWheelEvent>

namespace ui {
namespace {

constexpr int visibleRowsHint = 5;
constexpr int smallestWidth = 60;
constexpr int preferredWidth = 200;
// A press that moves less than this is a click on a row, not a drag.
constexpr qreal clickSlop = 4.0;
// Only the moves of this last stretch before the release give its speed.
constexpr qint64 speedWindowMs = 80;
// How far the wheel coasts: the release speed kept up for this long.
constexpr qreal coastMs = 250.0;
constexpr int notchMs = 180;
constexpr int codeTurnMs = 300;
constexpr int wheelIdleMs = 120;
constexpr int wheelNotch = 120;
constexpr int pageRows = 5;
// How far past either end a drag can pull the wheel, in rows.
constexpr qreal maximumOverscroll = 1.5;
const QColor bandColor(118, 118, 128, 36);

} // namespace

PickerView::PickerView(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::WheelFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    wheelIdle.setSingleShot(true);
    wheelIdle.setInterval(wheelIdleMs);
    connect(&wheelIdle, &QTimer::timeout, this, &PickerView::endWheelScroll);
}

PickerView::~PickerView() {
    // Stopped while the components they write to still exist.
    for (Component& c : pickerComponents)
        stopAnimation(c);
}

void PickerView::setDataSource(PickerViewDataSource* dataSource) {
    pickerDataSource = dataSource;
    reloadAllComponents();
}

void PickerView::setDelegate(PickerViewDelegate* delegate) {
    pickerDelegate = delegate;
    update();
}

PickerView::Component& PickerView::component(int index, const char* caller) {
    if (index < 0 || index >= numberOfComponents())
        qFatal("ui::PickerView::%s: component %d of %d", caller, index, numberOfComponents());
    return pickerComponents[size_t(index)];
}

const PickerView::Component& PickerView::component(int index, const char* caller) const {
    return const_cast<PickerView*>(this)->component(index, caller);
}

int PickerView::numberOfRowsInComponent(int component) const {
    return this->component(component, "numberOfRowsInComponent").rows;
}

void PickerView::reloadAllComponents() {
    for (Component& c : pickerComponents)
        stopAnimation(c);
    // The wheel under the finger or the touchpad may be gone.
    dragComponent = -1;
    wheelComponent = -1;
    wheelIdle.stop();
    const int count =
        pickerDataSource ? std::max(0, pickerDataSource->numberOfComponents(this)) : 0;
    pickerComponents.resize(size_t(count));
    for (int i = 0; i < count; ++i)
        reloadComponent(i);
    focusedComponent = std::clamp(focusedComponent, 0, std::max(0, count - 1));
    updateGeometry();
    update();
}

void PickerView::reloadComponent(int index) {
    Component& c = component(index, "reloadComponent");
    stopAnimation(c);
    if (dragComponent == index)
        dragComponent = -1;
    c.rows =
        pickerDataSource ? std::max(0, pickerDataSource->numberOfRowsInComponent(this, index)) : 0;
    c.selectedRow = c.rows == 0 ? -1 : std::clamp(c.selectedRow, 0, c.rows - 1);
    c.offset = std::max(0, c.selectedRow);
    c.target = -1;
    update();
}

void PickerView::selectRow(int row, int index, bool animated) {
    Component& c = component(index, "selectRow");
    if (c.rows == 0)
        return;
    const int clamped = std::clamp(row, 0, c.rows - 1);
    // Code wins over a finger or a touchpad still on this wheel.
    if (dragComponent == index)
        dragComponent = -1;
    if (wheelComponent == index) {
        wheelIdle.stop();
        wheelComponent = -1;
    }
    c.selectedRow = clamped;
    settle(index, clamped, false, animated ? codeTurnMs : 0);
}

int PickerView::selectedRowInComponent(int index) const {
    return component(index, "selectedRowInComponent").selectedRow;
}

void PickerView::setRowHeight(int height) {
    pickerRowHeight = std::max(1, height);
    updateGeometry();
    update();
}

bool PickerView::isMoving() const {
    if ((dragComponent >= 0 && dragMoved) || wheelComponent >= 0)
        return true;
    return std::any_of(pickerComponents.begin(), pickerComponents.end(), [](const Component& c) {
        return c.animation && c.animation->state() == QAbstractAnimation::Running;
    });
}

QSize PickerView::sizeHint() const {
    return QSize(preferredWidth, visibleRowsHint * pickerRowHeight);
}

QSize PickerView::minimumSizeHint() const {
    return QSize(smallestWidth, 3 * pickerRowHeight);
}

QRectF PickerView::componentRect(int index) const {
    const qreal width = qreal(this->width()) / std::max(1, numberOfComponents());
    return QRectF(index * width, 0, width, height());
}

int PickerView::componentAt(QPointF position) const {
    if (pickerComponents.empty() || !rect().contains(position.toPoint()))
        return -1;
    return std::clamp(int(position.x() * numberOfComponents() / std::max(1, width())), 0,
                      numberOfComponents() - 1);
}

int PickerView::clampRow(const Component& c, qreal row) const {
    if (c.rows == 0)
        return -1;
    return int(std::clamp<qreal>(std::round(row), 0, c.rows - 1));
}

qreal PickerView::rubberBand(const Component& c, qreal offset) const {
    const qreal last = std::max(0, c.rows - 1);
    const auto pull = [](qreal beyond) {
        return maximumOverscroll * (1.0 - 1.0 / (beyond / maximumOverscroll * 0.55 + 1.0));
    };
    if (offset < 0)
        return -pull(-offset);
    if (offset > last)
        return last + pull(offset - last);
    return offset;
}

void PickerView::stopAnimation(Component& c) {
    if (c.animation)
        c.animation->stop();
}

void PickerView::settle(int index, int row, bool byUser, int milliseconds) {
    Component& c = component(index, "settle");
    stopAnimation(c);
    c.target = row;
    const auto arrive = [this, index, row, byUser] {
        Component& arrived = pickerComponents[size_t(index)];
        arrived.offset = row;
        arrived.selectedRow = row;
        arrived.target = -1;
        update();
        if (byUser && pickerDelegate)
            pickerDelegate->didSelectRow(this, row, index);
    };
    if (milliseconds <= 0 || c.offset == row) {
        arrive();
        return;
    }
    auto* animation = new QVariantAnimation(this);
    animation->setDuration(milliseconds);
    animation->setStartValue(c.offset);
    animation->setEndValue(qreal(row));
    animation->setEasingCurve(QEasingCurve::OutCubic);
    connect(animation, &QVariantAnimation::valueChanged, this, [this, index](const QVariant& v) {
        pickerComponents[size_t(index)].offset = v.toReal();
        update();
    });
    connect(animation, &QVariantAnimation::finished, this, arrive);
    c.animation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void PickerView::finishTurning() {
    if (dragComponent >= 0) {
        const int index = std::exchange(dragComponent, -1);
        dragMoved = false;
        Component& c = pickerComponents[size_t(index)];
        settle(index, clampRow(c, c.offset), true, 0);
    }
    if (wheelComponent >= 0)
        endWheelScroll();
    // Jumping to the end runs the animation's own arrival, with whoever started it.
    for (Component& c : pickerComponents)
        if (c.animation && c.animation->state() == QAbstractAnimation::Running)
            c.animation->setCurrentTime(c.animation->totalDuration());
}

void PickerView::turnBy(int index, int rows) {
    Component& c = component(index, "turnBy");
    if (c.rows == 0)
        return;
    const int from = c.target >= 0 ? c.target : c.selectedRow;
    const int to = std::clamp(from + rows, 0, c.rows - 1);
    // Against an end of a wheel at rest nothing turns, so nothing is chosen either.
    if (to == from && !c.animation && c.offset == to)
        return;
    settle(index, to, true, notchMs);
}

void PickerView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);

    const qreal centreY = height() / 2.0;
    const qreal radius = std::max(centreY, qreal(pickerRowHeight));
    const QRectF band(6, centreY - pickerRowHeight / 2.0, width() - 12, pickerRowHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bandColor);
    painter.drawRoundedRect(band, 8, 8);
    if (showsFocus) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.setBrush(Qt::NoBrush);
        const QRectF focused = componentRect(focusedComponent) & band;
        painter.drawRoundedRect(focused.adjusted(1, 1, -1, -1), 7, 7);
    }
    if (!pickerDelegate)
        return;

    QFont rowFont = font();
    rowFont.setPixelSize(std::max(1, int(pickerRowHeight * 0.6)));
    painter.setFont(rowFont);
    // Rows lie on a cylinder seen from the front: one row height of arc per row.
    const qreal anglePerRow = pickerRowHeight / radius;
    const int reach = int(std::ceil(std::numbers::pi / 2 / anglePerRow));
    for (int index = 0; index < numberOfComponents(); ++index) {
        const Component& c = pickerComponents[size_t(index)];
        const QRectF area = componentRect(index);
        painter.save();
        painter.setClipRect(area);
        const int first = std::max(0, int(std::floor(c.offset)) - reach);
        const int last = std::min(c.rows - 1, int(std::ceil(c.offset)) + reach);
        for (int row = first; row <= last; ++row) {
            const qreal distance = row - c.offset;
            const qreal angle = distance * anglePerRow;
            if (std::abs(angle) >= std::numbers::pi / 2)
                continue;
            const PickerViewDelegate::Title title =
                pickerDelegate->attributedTitleForRow(this, row, index);
            if (title.text.isEmpty())
                continue;
            const qreal depth = std::cos(angle);
            painter.save();
            painter.setOpacity((1.0 - 0.45 * std::min(1.0, std::abs(distance))) *
                               std::pow(depth, 2.0));
            painter.setPen(title.color.isValid() ? title.color : palette().color(QPalette::Text));
            painter.translate(area.center().x(), centreY + radius * std::sin(angle));
            painter.scale(0.9 + 0.1 * depth, depth);
            painter.drawText(QRectF(-area.width() / 2 + 8, -pickerRowHeight / 2.0,
                                    area.width() - 16, pickerRowHeight),
                             Qt::AlignCenter | Qt::TextSingleLine,
                             painter.fontMetrics().elidedText(title.text, Qt::ElideRight,
                                                              int(area.width()) - 16));
            painter.restore();
        }
        painter.restore();
    }
}

void PickerView::mousePressEvent(QMouseEvent* event) {
    const int index = event->button() == Qt::LeftButton ? componentAt(event->position()) : -1;
    if (index < 0 || pickerComponents[size_t(index)].rows == 0) {
        QWidget::mousePressEvent(event);
        return;
    }
    Component& c = pickerComponents[size_t(index)];
    stopAnimation(c);
    // A turn interrupted by the finger is no longer heading anywhere.
    c.target = -1;
    focusedComponent = index;
    dragComponent = index;
    dragMoved = false;
    pressPosition = event->position();
    offsetAtPress = c.offset;
    dragClock.start();
    samples.assign(1, Sample{0, event->position().y()});
}

void PickerView::mouseMoveEvent(QMouseEvent* event) {
    if (dragComponent < 0)
        return;
    const qreal dy = event->position().y() - pressPosition.y();
    if (!dragMoved && std::abs(dy) < clickSlop)
        return;
    dragMoved = true;
    Component& c = pickerComponents[size_t(dragComponent)];
    c.offset = rubberBand(c, offsetAtPress - dy / pickerRowHeight);
    samples.push_back(Sample{dragClock.elapsed(), event->position().y()});
    update();
}

void PickerView::mouseReleaseEvent(QMouseEvent* event) {
    if (dragComponent < 0 || event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    finishDrag(event->position());
}

void PickerView::finishDrag(QPointF position) {
    const int index = dragComponent;
    dragComponent = -1;
    Component& c = pickerComponents[size_t(index)];
    if (!dragMoved) {
        // A click on a row above or below the band turns the wheel to it.
        const qreal radius = std::max(height() / 2.0, qreal(pickerRowHeight));
        const qreal sine = std::clamp((position.y() - height() / 2.0) / radius, -1.0, 1.0);
        const int row = clampRow(c, c.offset + std::asin(sine) * radius / pickerRowHeight);
        if (row != c.selectedRow || c.offset != row)
            settle(index, row, true, codeTurnMs);
        return;
    }
    dragMoved = false;
    const qint64 now = dragClock.elapsed();
    samples.push_back(Sample{now, position.y()});
    const auto recent = std::find_if(samples.begin(), samples.end(), [now](const Sample& s) {
        return now - s.ms <= speedWindowMs;
    });
    qreal rowsPerMs = 0;
    if (recent != samples.end() && now > recent->ms)
        rowsPerMs = -(position.y() - recent->y) / (now - recent->ms) / pickerRowHeight;
    const int row = clampRow(c, c.offset + rowsPerMs * coastMs);
    const int duration = int(std::clamp(180.0 + 70.0 * std::abs(row - c.offset), 200.0, 900.0));
    settle(index, row, true, duration);
}

void PickerView::wheelEvent(QWheelEvent* event) {
    const int index = componentAt(event->position());
    if (index < 0 || pickerComponents[size_t(index)].rows == 0) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->phase() == Qt::ScrollEnd) {
        endWheelScroll();
        return;
    }
    Component& c = pickerComponents[size_t(index)];
    const bool touchpad = !event->pixelDelta().isNull() && event->phase() != Qt::NoScrollPhase;
    if (touchpad) {
        // Follows the fingers, and settles once they lift or rest.
        stopAnimation(c);
        c.target = -1;
        if (wheelComponent >= 0 && wheelComponent != index)
            endWheelScroll();
        wheelComponent = index;
        c.offset = std::clamp<qreal>(c.offset - qreal(event->pixelDelta().y()) / pickerRowHeight,
                                     -0.5, c.rows - 0.5);
        update();
        wheelIdle.start();
        return;
    }
    // A wheel that turns away from the user goes back to earlier rows, as a list does.
    wheelRemainder += event->angleDelta().y();
    const int notches = wheelRemainder / wheelNotch;
    wheelRemainder %= wheelNotch;
    if (notches != 0)
        turnBy(index, -notches);
}

void PickerView::endWheelScroll() {
    wheelIdle.stop();
    const int index = wheelComponent;
    wheelComponent = -1;
    if (index < 0 || index >= numberOfComponents())
        return;
    Component& c = pickerComponents[size_t(index)];
    if (c.rows > 0)
        settle(index, clampRow(c, c.offset), true, notchMs);
}

void PickerView::keyPressEvent(QKeyEvent* event) {
    if (pickerComponents.empty()) {
        QWidget::keyPressEvent(event);
        return;
    }
    const int rows = pickerComponents[size_t(focusedComponent)].rows;
    switch (event->key()) {
    case Qt::Key_Up:
        turnBy(focusedComponent, -1);
        break;
    case Qt::Key_Down:
        turnBy(focusedComponent, 1);
        break;
    case Qt::Key_PageUp:
        turnBy(focusedComponent, -pageRows);
        break;
    case Qt::Key_PageDown:
        turnBy(focusedComponent, pageRows);
        break;
    case Qt::Key_Home:
        turnBy(focusedComponent, -rows);
        break;
    case Qt::Key_End:
        turnBy(focusedComponent, rows);
        break;
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int step = event->key() == Qt::Key_Left ? -1 : 1;
        const int next = focusedComponent + (layoutDirection() == Qt::RightToLeft ? -step : step);
        if (next < 0 || next >= numberOfComponents()) {
            QWidget::keyPressEvent(event);
            return;
        }
        focusedComponent = next;
        update();
        break;
    }
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}

void PickerView::focusInEvent(QFocusEvent* event) {
    // Only a keyboard user needs to see which wheel the keys turn.
    showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
    QWidget::focusInEvent(event);
}

void PickerView::focusOutEvent(QFocusEvent* event) {
    showsFocus = false;
    update();
    QWidget::focusOutEvent(event);
}

} // namespace ui
