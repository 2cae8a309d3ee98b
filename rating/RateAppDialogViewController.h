#pragma once

#include <functional>

#include <QPointer>

#include "platform/ui/ViewController.h"

class QVBoxLayout;

namespace ui {
class Button;
class Control;
class Label;
class View;
} // namespace ui

// What the three rating dialogs share: a rounded card of three lines and buttons over the screen
// that asked, which stays visible, dimmed, around it. Esc closes the dialog.
class RateAppDialogViewController : public ui::ViewController {
    Q_OBJECT

public:
    static constexpr qreal cornerRadius = 11;
    static constexpr int cardWidth = 320;

    // Outlets: owned by the view, null until the view is loaded.
    QPointer<ui::View> backgroundView;
    QPointer<ui::Label> firstLabel;
    QPointer<ui::Label> secondLabel;
    QPointer<ui::Label> thirdLabel;

protected:
    // The label texts applied on load; a null key leaves the text the layout gave the label.
    struct LabelKeys {
        const char* first;
        const char* second;
        const char* third;
    };

    RateAppDialogViewController(LabelKeys keys, QObject* parent);

    // The card with its labels; subclasses add their buttons with addButton.
    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

    enum class ButtonKind { primary, secondary };
    // A button at the bottom of the card, below those added before; the first primary one has
    // the focus when the dialog shows.
    ui::Button* addButton(const char* titleKey, ButtonKind kind,
                          std::function<void(ui::Control*)> action);

private:
    LabelKeys dialogKeys;
    QPointer<QVBoxLayout> dialogButtons;
    QPointer<ui::Button> focusButton;
};
