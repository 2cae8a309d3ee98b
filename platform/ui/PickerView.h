#pragma once

#include <vector>

#include <QColor>
#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

class QVariantAnimation;

namespace ui {

class PickerView;

// Where a picker's rows come from.
class PickerViewDataSource {
public:
    virtual ~PickerViewDataSource() = default;
    virtual int numberOfComponents(PickerView* pickerView) = 0;
    virtual int numberOfRowsInComponent(PickerView* pickerView, int component) = 0;
};

// What a picker shows in its rows, and who hears that the user chose one.
class PickerViewDelegate {
public:
    struct Title {
        QString text;
        // Invalid: the picker's own text colour (black).
        QColor color;
    };

    virtual ~PickerViewDelegate() = default;
    virtual Title attributedTitleForRow(PickerView* pickerView, int row, int component) = 0;
    // Sent once each time user input has turned a wheel and it came to rest on a row; never for
    // selectRow().
    virtual void didSelectRow(PickerView* /*pickerView*/, int /*row*/, int /*component*/) {}
};

// Spinning wheels side by side, one per component, each showing its selected row in the middle
// band and its neighbours curving away, smaller and fainter.
//
// Turned by the mouse wheel or touchpad (one row per notch), by dragging (the wheel coasts with
// the release speed and settles on the nearest row), by clicking a row above or below the band,
// and with Up/Down, Page Up/Page Down, Home/End on the focused wheel (Left/Right pick the wheel).
//
// selectRow() clamps a row outside the component to its first or last row, so a stale stored
// index shows the nearest end instead of an empty wheel. A component without rows has no
// selection: selectedRowInComponent() answers -1. A component index outside the picker is a
// programming error and stops the program.
//
// The data source and delegate are not owned; they must outlive the picker or be unset.
class PickerView : public QWidget {
    Q_OBJECT

public:
    static constexpr int defaultRowHeight = 36;

    explicit PickerView(QWidget* parent = nullptr);
    ~PickerView() override;

    PickerViewDataSource* dataSource() const { return pickerDataSource; }
    // Reloads every component.
    void setDataSource(PickerViewDataSource* dataSource);
    PickerViewDelegate* delegate() const { return pickerDelegate; }
    void setDelegate(PickerViewDelegate* delegate);

    int numberOfComponents() const { return int(pickerComponents.size()); }
    int numberOfRowsInComponent(int component) const;
    // Asks the data source again; selections are kept where the rows still exist, else clamped.
    void reloadAllComponents();
    void reloadComponent(int component);

    // Animated, the wheel turns there; selectedRowInComponent() has the new row at once.
    void selectRow(int row, int component, bool animated);
    int selectedRowInComponent(int component) const;

    int rowHeight() const { return pickerRowHeight; }
    void setRowHeight(int height);

    // Whether a wheel is turning: dragged, coasting or settling.
    bool isMoving() const;
    // Brings every turning wheel to rest at once on the row it was heading for (the nearest
    // row under a finger), telling the delegate as if it had settled: what the wheel shows is
    // the choice, also when the sheet closes mid-turn.
    void finishTurning();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct Component {
        int rows = 0;
        int selectedRow = -1;
        // The row shown in the middle of the band, fractional while turning.
        qreal offset = 0;
        // Where a wheel or key turn is heading, so that quick notches add up.
        int target = -1;
        QPointer<QVariantAnimation> animation;
    };

    Component& component(int index, const char* caller);
    const Component& component(int index, const char* caller) const;
    QRectF componentRect(int index) const;
    int componentAt(QPointF position) const;
    int clampRow(const Component& c, qreal row) const;
    // Beyond the first and last row a drag moves the wheel only a little.
    qreal rubberBand(const Component& c, qreal offset) const;
    void stopAnimation(Component& c);
    // Turns to row, then records it; byUser sends didSelectRow at the end.
    void settle(int index, int row, bool byUser, int milliseconds);
    void turnBy(int index, int rows);
    void finishDrag(QPointF position);
    void endWheelScroll();

    PickerViewDataSource* pickerDataSource = nullptr;
    PickerViewDelegate* pickerDelegate = nullptr;
    std::vector<Component> pickerComponents;
    int pickerRowHeight = defaultRowHeight;
    int focusedComponent = 0;
    bool showsFocus = false;

    // Mouse or touch drag of one wheel.
    int dragComponent = -1;
    bool dragMoved = false;
    QPointF pressPosition;
    qreal offsetAtPress = 0;
    // The last moves, for the release speed.
    struct Sample {
        qint64 ms;
        qreal y;
    };
    std::vector<Sample> samples;
    QElapsedTimer dragClock;

    // Touchpad scrolling turns the wheel freely until the fingers lift or stop.
    int wheelComponent = -1;
    int wheelRemainder = 0;
    QTimer wheelIdle;
};

} // namespace ui
