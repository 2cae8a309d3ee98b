#pragma once

#include <QIcon>
#include <QPixmap>
#include <QWidget>

namespace ui {

// Shows one image, scaled to the view by its content mode.
class ImageView : public QWidget {
    Q_OBJECT

public:
    // The platform's raw values.
    enum class ContentMode {
        scaleToFill = 0,
        scaleAspectFit = 1,
        scaleAspectFill = 2,
        center = 4,
    };

    explicit ImageView(QWidget* parent = nullptr);
    explicit ImageView(const QIcon& image, QWidget* parent = nullptr);

    QIcon image() const { return shownImage; }
    void setImage(const QIcon& image);
    void setImage(const QPixmap& image);

    ContentMode contentMode() const { return shownContentMode; }
    void setContentMode(ContentMode mode);

    // A pixmap's own size, an icon's largest one, or for a scalable icon its shape fitted to the
    // view.
    QSize imageSize() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRectF imageRect() const;

    QIcon shownImage;
    QSize pixmapSize;
    ContentMode shownContentMode = ContentMode::scaleToFill;
};

} // namespace ui
