#pragma once

#include <functional>

#include <QPointer>
#include <QStringList>

#include "platform/ui/MailComposeViewControllerDelegate.h"
#include "platform/ui/ViewController.h"

class QLineEdit;
class QPlainTextEdit;

namespace ui {

class Button;
class Control;
class Label;

// A screen on which the user writes a mail (to, subject, body) and hands it to their own mail
// program with xdg-email, which opens it there ready to send. Cancel, Esc or Send tell the
// delegate once, and it dismisses the composer; without a delegate the composer dismisses itself.
// When xdg-email cannot be started the composer stays open with the reason, keeping the text.
class MailComposeViewController : public ViewController {
    Q_OBJECT

public:
    explicit MailComposeViewController(QObject* parent = nullptr);

    // Whether a mail program is registered for mailto links: `xdg-mime query default
    // x-scheme-handler/mailto` names one. The query runs in the background, so the GUI thread
    // never waits for it; answer is called on the GUI thread, unless context has gone by then.
    // Without xdg-utils the answer is false.
    static void canSendMail(QObject* context, std::function<void(bool canSend)> answer);

    MailComposeViewControllerDelegate* mailComposeDelegate() const { return mailDelegate; }
    void setMailComposeDelegate(MailComposeViewControllerDelegate* delegate) {
        mailDelegate = delegate;
    }

    QStringList toRecipients() const { return mailToRecipients; }
    void setToRecipients(const QStringList& recipients);
    QString subject() const;
    void setSubject(const QString& subject);
    QString messageBody() const;
    void setMessageBody(const QString& body);

    // Outlets: owned by the view, null until the view is loaded.
    QPointer<Label> toLabel;
    QPointer<QLineEdit> subjectField;
    QPointer<QPlainTextEdit> bodyView;
    QPointer<Button> cancelButton;
    QPointer<Button> sendButton;
    // What Send does, or why it could not.
    QPointer<Label> hintLabel;

    // Actions of the two buttons.
    void cancel(Control* sender);
    void send(Control* sender);

protected:
    void loadView() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void finish(MailComposeResult result);

    MailComposeViewControllerDelegate* mailDelegate = nullptr;
    QStringList mailToRecipients;
    // Kept here until the view exists, then in the fields, which the user may edit.
    QString mailSubject;
    QString mailBody;
    bool mailFinished = false;
};

} // namespace ui
