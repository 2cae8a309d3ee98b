#pragma once

#include "platform/ui/ViewController.h"

#include <QList>
#include <QString>

#include <functional>

namespace ui {

class Button;

// One button of an alert.
struct AlertAction {
    // The platform's raw values.
    enum class Style { standard = 0, cancel = 1, destructive = 2 };

    QString title;
    Style style = Style::standard;
    // Runs after the alert has gone; may be empty.
    std::function<void()> handler;
};

// A message with a title and buttons on a card over the screen that presents it, which stays
// visible, dimmed, underneath. Choosing an action dismisses the alert, then runs the action's
// handler. Esc chooses the cancel action (or just closes an alert without one).
class AlertController : public ViewController {
    Q_OBJECT

public:
    // The platform's raw values; both are drawn as a centred card here.
    enum class Style { actionSheet = 0, alert = 1 };

    AlertController(QString title, QString message, Style preferredStyle,
                    QObject* parent = nullptr);

    const QString& title() const { return titleText; }
    const QString& message() const { return messageText; }
    Style preferredStyle() const { return style; }

    // Before the view is loaded.
    void addAction(AlertAction action);
    const QList<AlertAction>& actions() const { return alertActions; }
    // As a click on the action's button.
    void performAction(int index);

protected:
    void loadView() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString titleText;
    QString messageText;
    Style style;
    QList<AlertAction> alertActions;
    bool chosen = false;
};

} // namespace ui
