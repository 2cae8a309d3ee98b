#pragma once

#include <QColor>
#include <QHash>
#include <QIcon>
#include <QMargins>

#include "platform/ui/Control.h"

namespace ui {

// A push button with an image and a title per control state, drawn side by side and centred in
// the rect inset by contentEdgeInsets. A state without its own value uses the normal one.
class Button : public Control {
    Q_OBJECT

public:
    explicit Button(QWidget* parent = nullptr);

    void setTitle(const QString& title, unsigned state = normal);
    QString titleForState(unsigned state) const;
    QString currentTitle() const { return titleForState(state()); }

    // White on normal unless set, as the platform's custom buttons.
    void setTitleColor(const QColor& color, unsigned state = normal);
    QColor titleColorForState(unsigned state) const;

    void setImage(const QIcon& image, unsigned state = normal);
    QIcon imageForState(unsigned state) const;
    QIcon currentImage() const { return imageForState(state()); }
    // The box images are drawn in, keeping their shape; unset, an image's largest own size, or
    // 24 × 24 for a scalable one. Shrunk to fit the content rect.
    QSize imageSize() const;
    void setImageSize(QSize size);

    // Negative insets let the content use more than the rect, or move it off centre.
    QMargins contentEdgeInsets() const { return buttonContentEdgeInsets; }
    void setContentEdgeInsets(const QMargins& insets);

    bool adjustsImageWhenHighlighted() const { return buttonAdjustsImageWhenHighlighted; }
    void setAdjustsImageWhenHighlighted(bool adjusts);
    bool adjustsImageWhenDisabled() const { return buttonAdjustsImageWhenDisabled; }
    void setAdjustsImageWhenDisabled(bool adjusts);

    // A filled rounded rectangle behind the content; invalid colour: none.
    QColor backgroundColor() const { return buttonBackgroundColor; }
    void setBackgroundColor(const QColor& color);
    qreal cornerRadius() const { return buttonCornerRadius; }
    void setCornerRadius(qreal radius);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSize imageSizeFor(const QIcon& image) const;
    void contentChanged();

    QHash<unsigned, QString> titles;
    QHash<unsigned, QColor> titleColors;
    QHash<unsigned, QIcon> buttonImages;
    QSize buttonImageSize;
    QMargins buttonContentEdgeInsets;
    bool buttonAdjustsImageWhenHighlighted = true;
    bool buttonAdjustsImageWhenDisabled = true;
    QColor buttonBackgroundColor;
    qreal buttonCornerRadius = 0;
};

} // namespace ui
