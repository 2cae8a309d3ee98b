#include "platform/ui/AlertController.h"

#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/View.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace ui {

namespace {

const QColor backdropColor(0, 0, 0, 110);
const QColor cardColor(44, 44, 46);
const QColor actionColor(10, 132, 255);
const QColor destructiveColor(255, 69, 58);
constexpr int cardWidth = 300;

Label* cardLabel(QWidget* parent, const QString& text, int pixelSize, bool bold) {
    auto* label = new Label(text, parent);
    label->setTextColor(Qt::white);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setNumberOfLines(0);
    QFont font = label->font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    label->setFont(font);
    return label;
}

} // namespace

AlertController::AlertController(QString title, QString message, Style preferredStyle,
                                 QObject* parent)
    : ViewController(parent), titleText(std::move(title)), messageText(std::move(message)),
      style(preferredStyle) {
    setModalPresentationStyle(ModalPresentationStyle::overCurrentContext);
}

void AlertController::addAction(AlertAction action) {
    if (isViewLoaded())
        qFatal("ui::AlertController::addAction: \"%s\" added after the alert was shown",
               qPrintable(action.title));
    alertActions.append(std::move(action));
}

void AlertController::performAction(int index) {
    if (index < 0 || index >= alertActions.size() || std::exchange(chosen, true))
        return;
    const std::function<void()> handler = alertActions.at(index).handler;
    dismiss(true, handler);
}

void AlertController::loadView() {
    auto* backdrop = new View;
    backdrop->setBackgroundColor(backdropColor);
    setView(backdrop);
    backdrop->installEventFilter(this);

    auto* card = new View(backdrop);
    card->setObjectName(QStringLiteral("card"));
    card->setBackgroundColor(cardColor);
    card->setCornerRadius(14);
    card->setFixedWidth(cardWidth);

    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(18, 20, 18, 12);
    layout->setSpacing(6);
    auto* titleLabel = cardLabel(card, titleText, 17, true);
    titleLabel->setObjectName(QStringLiteral("titleLabel"));
    layout->addWidget(titleLabel);
    if (!messageText.isEmpty()) {
        auto* messageLabel = cardLabel(card, messageText, 14, false);
        messageLabel->setObjectName(QStringLiteral("messageLabel"));
        layout->addWidget(messageLabel);
    }
    layout->addSpacing(10);

    // Two actions side by side, more in a column, as the platform lays them out.
    auto* buttons = alertActions.size() == 2 ? static_cast<QBoxLayout*>(new QHBoxLayout)
                                             : static_cast<QBoxLayout*>(new QVBoxLayout);
    buttons->setSpacing(8);
    for (int i = 0; i < alertActions.size(); ++i) {
        const AlertAction& action = alertActions.at(i);
        auto* button = new Button(card);
        button->setObjectName(QStringLiteral("action%1").arg(i));
        button->setTitle(action.title);
        button->setTitleColor(action.style == AlertAction::Style::destructive ? destructiveColor
                                                                              : actionColor);
        button->setBackgroundColor(QColor(255, 255, 255, 20));
        button->setCornerRadius(10);
        button->setFixedHeight(44);
        QFont font = button->font();
        font.setPixelSize(17);
        font.setBold(action.style == AlertAction::Style::cancel);
        button->setFont(font);
        button->addTarget(
            this, [this, i](Control*) { performAction(i); }, Control::touchUpInside);
        buttons->addWidget(button);
    }
    layout->addLayout(buttons);

    auto* backdropLayout = new QVBoxLayout(backdrop);
    backdropLayout->setContentsMargins(24, 24, 24, 24);
    backdropLayout->addWidget(card, 0, Qt::AlignCenter);
}

void AlertController::viewDidAppear(bool animated) {
    ViewController::viewDidAppear(animated);
    // Esc and the keyboard reach the card from the start.
    if (QWidget* first = view()->findChild<Button*>())
        first->setFocus();
}

bool AlertController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view() && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        const auto cancel =
            std::find_if(alertActions.cbegin(), alertActions.cend(), [](const AlertAction& a) {
                return a.style == AlertAction::Style::cancel;
            });
        if (cancel != alertActions.cend())
            performAction(int(cancel - alertActions.cbegin()));
        else if (!std::exchange(chosen, true))
            dismiss(true);
        return true;
    }
    return ViewController::eventFilter(watched, event);
}

} // namespace ui
