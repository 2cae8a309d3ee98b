#include "rating/RateAppFirstViewController.h"

#include "platform/foundation/Strings.h"
#include "platform/ui/Label.h"
#include "platform/ui/Storyboard.h"
#include "rating/RateAppLikedViewController.h"
#include "rating/RateAppMailViewController.h"

RateAppFirstViewController::RateAppFirstViewController(QObject* parent)
    : RateAppDialogViewController({"RateAppFirstFirstLabel", nullptr, "RateAppFirstThirdLabel"},
                                  parent) {}

void RateAppFirstViewController::loadView() {
    RateAppDialogViewController::loadView();
    // The layout's own text: loading the dialog does not set this line.
    secondLabel->setText(foundation::Strings::localizedString("RateAppFirstSecondLabel"));
    addButton("rate_like", ButtonKind::primary,
              [this](ui::Control* sender) { showRateMeNow(sender); });
    addButton("rate_dislike", ButtonKind::secondary,
              [this](ui::Control* sender) { showSendMeEmail(sender); });
}

template <class Next> void RateAppFirstViewController::replaceBy() {
    // A second answer while the first one is leaving would show two dialogs.
    if (isBeingDismissed())
        return;
    ui::ViewController* next = ui::Storyboard(QStringLiteral("Main")).instantiate<Next>();
    if (!next)
        qFatal("RateAppFirstViewController: the storyboard \"Main\" has no %s scene",
               Next::staticMetaObject.className());
    // Owned by this dialog until shown, so it goes with it when there is nobody to show it.
    next->setParent(this);
    QPointer<ui::ViewController> presenter = presentingViewController();
    QPointer<ui::ViewController> target = next;
    dismiss(true, [presenter, target] {
        if (!target)
            return;
        target->setModalPresentationStyle(ui::ModalPresentationStyle::overCurrentContext);
        if (presenter)
            presenter->present(target, true);
    });
}

void RateAppFirstViewController::showRateMeNow(ui::Control*) {
    replaceBy<RateAppLikedViewController>();
}

void RateAppFirstViewController::showSendMeEmail(ui::Control*) {
    replaceBy<RateAppMailViewController>();
}
