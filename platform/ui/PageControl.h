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

    int numberOfPages() const { return pageCount; }
    void setNumberOfPages(int pages);
    // Kept within the pages.
    int currentPage() const { return shownPage; }
    void setCurrentPage(int page);

    void setPageIndicatorTintColor(const QColor& color);
    void setCurrentPageIndicatorTintColor(const QColor& color);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int pageCount = 0;
    int shownPage = 0;
    QColor dot = QColor(255, 255, 255, 90);
    QColor currentDot = Qt::white;
};

} // namespace ui
