#pragma once

#include <QLabel>

namespace ui {

// Plain text in one colour, on at most numberOfLines lines (0: as many as it needs); text that
// does not fit ends in an ellipsis. Alignment is QLabel's, vertically centred by default.
class Label : public QLabel {
    Q_OBJECT

public:
    explicit Label(QWidget* parent = nullptr);
    explicit Label(const QString& text, QWidget* parent = nullptr);

    QColor textColor() const;
    void setTextColor(const QColor& color);

    int numberOfLines() const { return labelNumberOfLines; }
    void setNumberOfLines(int lines);

    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QStringList visibleLines(int width) const;
    bool paintsItself() const;

    int labelNumberOfLines = 1;
};

} // namespace ui
