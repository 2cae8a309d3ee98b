#include "rating/RateAppMailViewController.h"

#include "platform/ui/MailComposeViewController.h"

RateAppMailViewController::RateAppMailViewController(QObject* parent)
    : RateAppDialogViewController(
          {"RateAppMailFirstLabel", "RateAppMailSecondLabel", "RateAppMailThirdLabel"}, parent) {}

void RateAppMailViewController::loadView() {
    RateAppDialogViewController::loadView();
    addButton("rate_write", ButtonKind::primary,
              [this](ui::Control* sender) { sendEmailBtn(sender); });
    addButton("rate_not_now", ButtonKind::secondary,
              [this](ui::Control* sender) { close(sender); });
}

ui::MailComposeViewController* RateAppMailViewController::makeComposer() {
    auto* composer = new ui::MailComposeViewController(this);
    composer->setMailComposeDelegate(this);
    composer->setToRecipients({supportAddress});
    composer->setSubject(subject);
    return composer;
}

void RateAppMailViewController::sendEmailBtn(ui::Control*) {
    QPointer<ui::MailComposeViewController> pending(makeComposer());
    ui::MailComposeViewController::canSendMail(this, [this, pending](bool canSend) {
        if (!pending)
            return;
        // Also drops a composer asked for by a second click while the first one shows.
        if (!canSend || presentedViewController() || isBeingDismissed()) {
            delete pending.data();
            return;
        }
        present(pending, true);
    });
}

void RateAppMailViewController::close(ui::Control*) {
    dismiss(true);
}

void RateAppMailViewController::didFinishWithResult(ui::MailComposeViewController* controller,
                                                    ui::MailComposeResult, const QString&) {
    QPointer<RateAppMailViewController> self(this);
    controller->dismiss(true, [self] {
        if (self)
            self->dismiss(true);
    });
}
