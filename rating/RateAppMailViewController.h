#pragma once

#include "platform/ui/MailComposeViewControllerDelegate.h"
#include "rating/RateAppDialogViewController.h"

// For a user who does not like the app: offers a feedback mail to the support address, written
// in the mail composer, or closes. Without a mail program the send button does nothing.
class RateAppMailViewController : public RateAppDialogViewController,
                                  public ui::MailComposeViewControllerDelegate {
    Q_OBJECT

public:
    static inline const QString supportAddress = QStringLiteral("support@tessaro.org");
    static inline const QString subject = QStringLiteral("Tessaro CAM");

    explicit RateAppMailViewController(QObject* parent = nullptr);

    void sendEmailBtn(ui::Control* sender);
    // A composer addressed to support with the subject, this dialog its delegate; not shown.
    ui::MailComposeViewController* makeComposer();
    void close(ui::Control* sender);

    // Whatever the result: the composer goes, then this dialog.
    void didFinishWithResult(ui::MailComposeViewController* controller,
                             ui::MailComposeResult result, const QString& error) override;

protected:
    void loadView() override;
};
