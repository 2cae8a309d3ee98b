#pragma once

#include <QColor>
#include <QWidget>

namespace ui {

// A row of dots, one per page, the current one lit. Display only: clicks and touches pass
// through to what lies beneath.
class PageControl : public QWidget {
    Q_OBJECT

public:
    explicit PageControl(QWidget* parent = nullptr);

    int numberOfPages() const { return pages_; }
    void setNumberOfPages(int pages);
    // Kept within the pages.
    int currentPage() const { return current_; }
    void setCurrentPage(int page);

    void setPageIndicatorTintColor(const QColor& color);
    void setCurrentPageIndicatorTintColor(const QColor& color);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int pages_ = 0;
    int current_ = 0;
    QColor dot_ = QColor(255, 255, 255, 90);
    QColor currentDot_ = Qt::white;
};

} // namespace ui
