#include "platform/ui/Button.h"

#include <algorithm>

#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

namespace ui {
namespace {

constexpr QSize scalableImageSize(24, 24);
constexpr qreal highlightedOpacity = 0.5;
constexpr qreal disabledOpacity = 0.4;

template <typename T> T valueForState(const QHash<unsigned, T>& values, unsigned state) {
    const auto it = values.constFind(state);
    return it != values.constEnd() ? *it : values.value(Control::normal);
}

} // namespace

Button::Button(QWidget* parent) : Control(parent) {
    titleColors.insert(normal, Qt::white);
}

void Button::setTitle(const QString& title, unsigned state) {
    titles.insert(state, title);
    contentChanged();
}

QString Button::titleForState(unsigned state) const {
    return valueForState(titles, state);
}

void Button::setTitleColor(const QColor& color, unsigned state) {
    titleColors.insert(state, color);
    update();
}

QColor Button::titleColorForState(unsigned state) const {
    return valueForState(titleColors, state);
}

void Button::setImage(const QIcon& image, unsigned state) {
    buttonImages.insert(state, image);
    contentChanged();
}

QIcon Button::imageForState(unsigned state) const {
    return valueForState(buttonImages, state);
}

QSize Button::imageSize() const {
    return imageSizeFor(imageForState(normal));
}

void Button::setImageSize(QSize size) {
    buttonImageSize = size;
    contentChanged();
}

QSize Button::imageSizeFor(const QIcon& image) const {
    if (image.isNull())
        return QSize(0, 0);
    QSize box = buttonImageSize;
    if (!box.isValid()) {
        const QList<QSize> sizes = image.availableSizes();
        box = sizes.isEmpty() ? scalableImageSize
                              : *std::max_element(sizes.begin(), sizes.end(), [](QSize a, QSize b) {
                                    return a.width() * a.height() < b.width() * b.height();
                                });
    }
    // Keeps the image's shape within the box.
    return image.actualSize(box);
}

void Button::setContentEdgeInsets(const QMargins& insets) {
    buttonContentEdgeInsets = insets;
    contentChanged();
}

void Button::setAdjustsImageWhenHighlighted(bool adjusts) {
    buttonAdjustsImageWhenHighlighted = adjusts;
    update();
}

void Button::setAdjustsImageWhenDisabled(bool adjusts) {
    buttonAdjustsImageWhenDisabled = adjusts;
    update();
}

void Button::setBackgroundColor(const QColor& color) {
    buttonBackgroundColor = color;
    update();
}

void Button::setCornerRadius(qreal radius) {
    buttonCornerRadius = radius;
    update();
}

void Button::contentChanged() {
    updateGeometry();
    update();
}

// From the normal state, so that pressing a button never changes its layout.
QSize Button::sizeHint() const {
    const QSize image = imageSizeFor(imageForState(normal));
    const QString title = titleForState(normal);
    const QFontMetricsF metrics(font());
    // Rounded up: a title a fraction wider than its button is drawn elided.
    const int titleWidth = title.isEmpty() ? 0 : qCeil(metrics.horizontalAdvance(title));
    const int titleHeight = title.isEmpty() ? 0 : qCeil(metrics.height());
    const QMargins& insets = buttonContentEdgeInsets;
    return QSize(qMax(0, image.width() + titleWidth + insets.left() + insets.right()),
                 qMax(0, qMax(image.height(), titleHeight) + insets.top() + insets.bottom()));
}

void Button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);

    if (buttonBackgroundColor.isValid()) {
        const qreal radius = qMin(buttonCornerRadius, qMin(width(), height()) / 2.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(buttonBackgroundColor);
        painter.drawRoundedRect(QRectF(rect()), radius, radius);
    }

    const QRect content = rect().marginsRemoved(buttonContentEdgeInsets);
    if (content.width() <= 0 || content.height() <= 0)
        return;
    const unsigned s = state();
    const bool isHighlighted = s & highlighted;
    const bool isDisabled = s & disabled;
    const QIcon image = imageForState(s);
    QSize imageSize = imageSizeFor(image);
    if (imageSize.width() > content.width() || imageSize.height() > content.height())
        imageSize.scale(content.size(), Qt::KeepAspectRatio);

    const QFontMetrics metrics = fontMetrics();
    const QString title =
        metrics.elidedText(titleForState(s), Qt::ElideMiddle, content.width() - imageSize.width());
    const int titleWidth = title.isEmpty() ? 0 : metrics.horizontalAdvance(title);
    const qreal left = content.left() + (content.width() - imageSize.width() - titleWidth) / 2.0;

    if (!imageSize.isEmpty()) {
        qreal opacity = 1.0;
        if (isHighlighted && buttonAdjustsImageWhenHighlighted)
            opacity = highlightedOpacity;
        if (isDisabled && buttonAdjustsImageWhenDisabled)
            opacity = disabledOpacity;
        const QRectF target(left, content.top() + (content.height() - imageSize.height()) / 2.0,
                            imageSize.width(), imageSize.height());
        const QPixmap pixmap = image.pixmap(imageSize, devicePixelRatioF(), QIcon::Normal,
                                            isSelected() ? QIcon::On : QIcon::Off);
        painter.setOpacity(opacity);
        painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
    }

    if (titleWidth > 0) {
        // A state given its own colour is drawn as given; otherwise the normal colour is dimmed.
        qreal opacity = 1.0;
        if (isHighlighted && !titleColors.contains(s))
            opacity = highlightedOpacity;
        if (isDisabled && !titleColors.contains(s))
            opacity = disabledOpacity;
        painter.setOpacity(opacity);
        painter.setPen(titleColorForState(s));
        painter.setFont(font());
        painter.drawText(
            QRectF(left + imageSize.width(), content.top(), titleWidth + 1, content.height()),
            Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, title);
    }
}

} // namespace ui
