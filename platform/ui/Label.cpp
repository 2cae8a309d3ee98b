#include "platform/ui/Label.h"

#include <QPainter>
#include <QStyle>
#include <QTextLayout>

namespace ui {

Label::Label(QWidget* parent) : Label(QString(), parent) {}

Label::Label(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
}

QColor Label::textColor() const {
    return palette().color(QPalette::WindowText);
}

void Label::setTextColor(const QColor& color) {
    QPalette p = palette();
    p.setColor(QPalette::WindowText, color);
    setPalette(p);
}

void Label::setNumberOfLines(int lines) {
    labelNumberOfLines = qMax(0, lines);
    setWordWrap(labelNumberOfLines != 1);
    updateGeometry();
    update();
}

bool Label::paintsItself() const {
    return labelNumberOfLines > 0 && textFormat() == Qt::PlainText;
}

QStringList Label::visibleLines(int width) const {
    QString text = this->text();
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    QTextOption option;
    option.setWrapMode(labelNumberOfLines == 1 ? QTextOption::NoWrap
                                               : QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(text, font());
    layout.setTextOption(option);
    QList<QPair<int, int>> ranges;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        ranges.append({line.textStart(), line.textLength()});
    }
    layout.endLayout();

    const QFontMetrics metrics = fontMetrics();
    QStringList lines;
    for (int i = 0; i < ranges.size(); ++i) {
        if (i == labelNumberOfLines - 1) {
            // The last line shown takes the rest of the text, cut with an ellipsis.
            QString rest = text.mid(ranges[i].first);
            rest.replace(QChar::LineSeparator, QLatin1Char(' '));
            lines.append(metrics.elidedText(rest.trimmed(), Qt::ElideRight, width));
            break;
        }
        lines.append(text.mid(ranges[i].first, ranges[i].second).trimmed());
    }
    return lines;
}

void Label::paintEvent(QPaintEvent* event) {
    if (!paintsItself()) {
        QLabel::paintEvent(event);
        return;
    }
    const QRect area =
        contentsRect().marginsRemoved(QMargins(margin(), margin(), margin(), margin()));
    const QStringList lines = visibleLines(area.width());
    const QFontMetrics metrics = fontMetrics();
    const int height = lines.size() * metrics.lineSpacing();
    int top = area.top();
    if (alignment() & Qt::AlignBottom)
        top = area.bottom() + 1 - height;
    else if (!(alignment() & Qt::AlignTop))
        top = area.top() + (area.height() - height) / 2;

    QPainter painter(this);
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    const Qt::Alignment horizontal =
        QStyle::visualAlignment(layoutDirection(), alignment() & Qt::AlignHorizontal_Mask);
    for (const QString& line : lines) {
        painter.drawText(QRect(area.left(), top, area.width(), metrics.lineSpacing()),
                         int(horizontal | Qt::AlignVCenter | Qt::TextSingleLine), line);
        top += metrics.lineSpacing();
    }
}

QSize Label::minimumSizeHint() const {
    if (!paintsItself())
        return QLabel::minimumSizeHint();
    // Text that does not fit is cut, so the label can shrink to an ellipsis.
    const QFontMetrics metrics = fontMetrics();
    const int frame = 2 * (frameWidth() + margin());
    return QSize(metrics.horizontalAdvance(QChar(0x2026)) + frame, metrics.height() + frame);
}

int Label::heightForWidth(int width) const {
    const int natural = QLabel::heightForWidth(width);
    if (!paintsItself() || labelNumberOfLines == 1)
        return natural;
    const int frame = 2 * (frameWidth() + margin());
    return qMin(natural, labelNumberOfLines * fontMetrics().lineSpacing() + frame);
}

} // namespace ui
