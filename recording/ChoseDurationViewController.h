#pragma once

#include <array>

#include <QPointer>

#include "platform/ui/PickerView.h"
#include "platform/ui/ViewController.h"

namespace ui {
class Button;
class Control;
class Label;
} // namespace ui

// The small sheet, over the recording screen, on which the user picks how long the zoom ramp lasts:
// 1 to 15 whole seconds. The wheel writes "zoomDuration" each time it settles on a row, and
// either button or Esc settles a turning wheel at once, so there is no cancel that restores the
// earlier value.
class ChoseDurationViewController : public ui::ViewController,
                                    public ui::PickerViewDataSource,
                                    public ui::PickerViewDelegate {
    Q_OBJECT

public:
    static constexpr std::array<int, 15> timeArrayInSeconds{1, 2,  3,  4,  5,  6,  7, 8,
                                                            9, 10, 11, 12, 13, 14, 15};
    static constexpr int cardWidth = 320;

    explicit ChoseDurationViewController(QObject* parent = nullptr);

    // Outlets: owned by the view, null until the view is loaded.
    QPointer<ui::PickerView> pickerView;
    QPointer<ui::Label> durationLabel;
    QPointer<ui::Button> doneButton;
    QPointer<ui::Button> closeButton;

    int numberOfComponents(ui::PickerView* pickerView) override;
    int numberOfRowsInComponent(ui::PickerView* pickerView, int component) override;
    Title attributedTitleForRow(ui::PickerView* pickerView, int row, int component) override;
    void didSelectRow(ui::PickerView* pickerView, int row, int component) override;

    // Actions of the close and done buttons; the same on purpose. Esc does the same.
    void dismiss(ui::Control* sender);
    void save(ui::Control* sender);
    using ui::ViewController::dismiss;

protected:
    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
};
