#include "rating/RateAppDialogViewController.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include "platform/foundation/Strings.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/View.h"

namespace {

const QColor backdropColor(0, 0, 0, 130);
const QColor cardColor(28, 28, 30, 242);
const QColor secondaryTextColor(200, 200, 208);
const QColor secondaryButtonColor(255, 255, 255, 38);
// The camera's accent, as on the record screen's active controls.
const QColor accentColor(255, 214, 10);

QFont fontOf(const QWidget* widget, int pixelSize, QFont::Weight weight) {
    QFont font = widget->font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

ui::Label* makeLabel(QWidget* card, int pixelSize, QFont::Weight weight, const QColor& color) {
    auto* label = new ui::Label(card);
    label->setNumberOfLines(0);
    label->setAlignment(Qt::AlignCenter);
    label->setTextColor(color);
    label->setFont(fontOf(label, pixelSize, weight));
    return label;
}

void applyText(ui::Label* label, const char* key) {
    if (key)
        label->setText(foundation::Strings::localizedString(key));
}

} // namespace

RateAppDialogViewController::RateAppDialogViewController(LabelKeys keys, QObject* parent)
    : ui::ViewController(parent), dialogKeys(keys) {
    setModalPresentationStyle(ui::ModalPresentationStyle::overCurrentContext);
}

void RateAppDialogViewController::loadView() {
    auto* backdrop = new ui::View;
    backdrop->setBackgroundColor(backdropColor);
    setView(backdrop);

    backgroundView = new ui::View(backdrop);
    backgroundView->setObjectName(QStringLiteral("backgroundView"));
    backgroundView->setBackgroundColor(cardColor);
    backgroundView->setFixedWidth(cardWidth);

    firstLabel = makeLabel(backgroundView, 20, QFont::DemiBold, Qt::white);
    secondLabel = makeLabel(backgroundView, 14, QFont::Normal, Qt::white);
    thirdLabel = makeLabel(backgroundView, 13, QFont::Normal, secondaryTextColor);

    auto* cardLayout = new QVBoxLayout(backgroundView);
    cardLayout->setContentsMargins(20, 22, 20, 18);
    cardLayout->setSpacing(10);
    cardLayout->addWidget(firstLabel);
    cardLayout->addWidget(secondLabel);
    cardLayout->addWidget(thirdLabel);
    cardLayout->addSpacing(8);
    dialogButtons = new QVBoxLayout;
    dialogButtons->setSpacing(10);
    cardLayout->addLayout(dialogButtons);

    auto* backdropLayout = new QVBoxLayout(backdrop);
    backdropLayout->setContentsMargins(16, 16, 16, 16);
    backdropLayout->addWidget(backgroundView, 0, Qt::AlignCenter);
    // Esc reaches the backdrop from whichever child has the focus.
    backdrop->installEventFilter(this);
}

void RateAppDialogViewController::viewDidLoad() {
    ui::ViewController::viewDidLoad();
    if (!backgroundView || !firstLabel || !secondLabel || !thirdLabel)
        qFatal("%s: the card or one of its three labels is missing", metaObject()->className());
    backgroundView->setCornerRadius(cornerRadius);
    applyText(firstLabel, dialogKeys.first);
    applyText(secondLabel, dialogKeys.second);
    applyText(thirdLabel, dialogKeys.third);
}

void RateAppDialogViewController::viewDidAppear(bool animated) {
    ui::ViewController::viewDidAppear(animated);
    // So that Enter answers and Esc closes without a click first.
    if (focusButton)
        focusButton->setFocus(Qt::OtherFocusReason);
}

ui::Button* RateAppDialogViewController::addButton(const char* titleKey, ButtonKind kind,
                                                   std::function<void(ui::Control*)> action) {
    if (!dialogButtons)
        qFatal("%s: buttons are added after the card is built", metaObject()->className());
    auto* button = new ui::Button(backgroundView);
    button->setTitle(foundation::Strings::localizedString(titleKey));
    const bool primary = kind == ButtonKind::primary;
    button->setTitleColor(primary ? QColor(Qt::black) : QColor(Qt::white));
    button->setBackgroundColor(primary ? accentColor : secondaryButtonColor);
    button->setCornerRadius(12);
    button->setFont(fontOf(button, 16, primary ? QFont::DemiBold : QFont::Normal));
    button->setFixedHeight(44);
    button->addTarget(this, std::move(action), ui::Control::touchUpInside);
    dialogButtons->addWidget(button);
    if (primary && !focusButton)
        focusButton = button;
    return button;
}

bool RateAppDialogViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view() && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        dismiss(true);
        return true;
    }
    return ui::ViewController::eventFilter(watched, event);
}
