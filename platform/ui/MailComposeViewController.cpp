#include "platform/ui/MailComposeViewController.h"

#include <QFrame>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTimer>
#include <QVBoxLayout>

#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Logging.h"
#include "platform/ui/View.h"

namespace ui {
namespace {

const QColor screenColor(28, 28, 30);
const QColor fieldTextColor(235, 235, 245);
const QColor dimTextColor(152, 152, 159);
const QColor accentColor(255, 214, 10);
const QColor errorColor(255, 105, 97);
// A stuck xdg-mime must not keep the answer forever.
constexpr int queryTimeoutMs = 5000;

QFont fontOf(const QWidget* widget, int pixelSize, QFont::Weight weight = QFont::Normal) {
    QFont font = widget->font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

QFrame* separator(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFixedHeight(1);
    line->setStyleSheet(QStringLiteral("background: rgba(255, 255, 255, 40);"));
    return line;
}

Label* rowTitle(const QString& text, QWidget* parent) {
    auto* label = new Label(text, parent);
    label->setTextColor(dimTextColor);
    label->setFont(fontOf(label, 15));
    return label;
}

} // namespace

MailComposeViewController::MailComposeViewController(QObject* parent) : ViewController(parent) {}

void MailComposeViewController::canSendMail(QObject* context,
                                            std::function<void(bool canSend)> answer) {
    auto* process = new QProcess;
    auto answered = std::make_shared<bool>(false);
    QPointer<QObject> guard(context);
    auto reply = [process, answered, guard, answer = std::move(answer)](bool canSend) {
        if (*answered)
            return;
        *answered = true;
        process->deleteLater();
        if (guard)
            answer(canSend);
    };
    QObject::connect(process, &QProcess::finished, process,
                     [process, reply](int exitCode, QProcess::ExitStatus status) {
                         const QByteArray handler = process->readAllStandardOutput().trimmed();
                         reply(status == QProcess::NormalExit && exitCode == 0 &&
                               !handler.isEmpty());
                     });
    QObject::connect(process, &QProcess::errorOccurred, process,
                     [reply](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart) {
                             qCDebug(lcUi) << "xdg-mime is not there: no mail program known";
                             reply(false);
                         }
                     });
    QTimer::singleShot(queryTimeoutMs, process, [process] { process->kill(); });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"),
                                                QStringLiteral("x-scheme-handler/mailto")});
}

void MailComposeViewController::setToRecipients(const QStringList& recipients) {
    mailToRecipients = recipients;
    if (toLabel)
        toLabel->setText(recipients.join(QStringLiteral(", ")));
}

QString MailComposeViewController::subject() const {
    return subjectField ? subjectField->text() : mailSubject;
}

void MailComposeViewController::setSubject(const QString& subject) {
    mailSubject = subject;
    if (subjectField)
        subjectField->setText(subject);
}

QString MailComposeViewController::messageBody() const {
    return bodyView ? bodyView->toPlainText() : mailBody;
}

void MailComposeViewController::setMessageBody(const QString& body) {
    mailBody = body;
    if (bodyView)
        bodyView->setPlainText(body);
}

void MailComposeViewController::loadView() {
    auto* screen = new View;
    screen->setBackgroundColor(screenColor);
    setView(screen);

    cancelButton = new Button(screen);
    cancelButton->setTitle(qtTrId("mail_cancel"));
    cancelButton->setTitleColor(accentColor);
    cancelButton->setFont(fontOf(cancelButton, 16));
    cancelButton->addTarget(
        this, [this](Control* sender) { cancel(sender); }, Control::touchUpInside);

    auto* title = new Label(qtTrId("mail_title"), screen);
    title->setTextColor(Qt::white);
    title->setFont(fontOf(title, 17, QFont::DemiBold));
    title->setAlignment(Qt::AlignCenter);

    sendButton = new Button(screen);
    sendButton->setTitle(qtTrId("mail_send"));
    sendButton->setTitleColor(Qt::black);
    sendButton->setBackgroundColor(accentColor);
    sendButton->setCornerRadius(8);
    sendButton->setContentEdgeInsets(QMargins(14, 6, 14, 6));
    sendButton->setFont(fontOf(sendButton, 16, QFont::DemiBold));
    sendButton->addTarget(
        this, [this](Control* sender) { send(sender); }, Control::touchUpInside);

    // The title gives way to the buttons, never the other way round.
    cancelButton->setMinimumSize(cancelButton->sizeHint());
    sendButton->setMinimumSize(sendButton->sizeHint());
    auto* bar = new QGridLayout;
    bar->addWidget(cancelButton, 0, 0, Qt::AlignLeft | Qt::AlignVCenter);
    bar->addWidget(title, 0, 1, Qt::AlignCenter);
    bar->addWidget(sendButton, 0, 2, Qt::AlignRight | Qt::AlignVCenter);
    bar->setColumnStretch(0, 1);
    bar->setColumnStretch(2, 1);

    toLabel = new Label(mailToRecipients.join(QStringLiteral(", ")), screen);
    toLabel->setTextColor(fieldTextColor);
    toLabel->setFont(fontOf(toLabel, 15));

    const QString fieldStyle = QStringLiteral("background: transparent; border: none; color: "
                                              "rgb(235, 235, 245); selection-background-color: "
                                              "rgb(90, 90, 96);");
    subjectField = new QLineEdit(mailSubject, screen);
    subjectField->setFont(fontOf(subjectField, 15));
    subjectField->setStyleSheet(fieldStyle);
    // Its text starts where the recipient's does.
    subjectField->setTextMargins(-2, 0, 0, 0);

    auto* header = new QGridLayout;
    header->setHorizontalSpacing(8);
    header->setVerticalSpacing(10);
    header->addWidget(rowTitle(qtTrId("mail_to"), screen), 0, 0);
    header->addWidget(toLabel, 0, 1);
    header->addWidget(separator(screen), 1, 0, 1, 2);
    header->addWidget(rowTitle(qtTrId("mail_subject"), screen), 2, 0);
    header->addWidget(subjectField, 2, 1);
    header->addWidget(separator(screen), 3, 0, 1, 2);
    header->setColumnStretch(1, 1);

    bodyView = new QPlainTextEdit(mailBody, screen);
    bodyView->setFont(fontOf(bodyView, 15));
    bodyView->setStyleSheet(fieldStyle);
    bodyView->setPlaceholderText(qtTrId("mail_body_placeholder"));
    bodyView->setTabChangesFocus(true);

    // Send does not send by itself; saying so avoids a user waiting for a mail that never left.
    hintLabel = new Label(qtTrId("mail_hint"), screen);
    hintLabel->setTextColor(dimTextColor);
    hintLabel->setFont(fontOf(hintLabel, 13));
    hintLabel->setNumberOfLines(0);
    hintLabel->setAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(screen);
    layout->setContentsMargins(16, 12, 16, 16);
    layout->setSpacing(14);
    layout->addLayout(bar);
    layout->addLayout(header);
    layout->addWidget(bodyView, 1);
    layout->addWidget(hintLabel);

    QWidget::setTabOrder(subjectField, bodyView);
    QWidget::setTabOrder(bodyView, sendButton);
    QWidget::setTabOrder(sendButton, cancelButton);
    // Esc reaches the screen from whichever child has the focus.
    screen->installEventFilter(this);
}

void MailComposeViewController::viewDidAppear(bool animated) {
    ViewController::viewDidAppear(animated);
    if (bodyView)
        bodyView->setFocus(Qt::OtherFocusReason);
}

void MailComposeViewController::cancel(Control*) {
    finish(MailComposeResult::cancelled);
}

void MailComposeViewController::send(Control*) {
    if (mailFinished)
        return;
    QStringList arguments;
    const QString subjectText = subject();
    const QString bodyText = messageBody();
    if (!subjectText.isEmpty())
        arguments << QStringLiteral("--subject") << subjectText;
    if (!bodyText.isEmpty())
        arguments << QStringLiteral("--body") << bodyText;
    arguments << mailToRecipients;
    // Detached: the mail program may run for as long as the user writes, long after this screen.
    if (QProcess::startDetached(QStringLiteral("xdg-email"), arguments)) {
        finish(MailComposeResult::sent);
        return;
    }
    // Staying open keeps what the user wrote; they can copy it or cancel.
    qCWarning(lcUi) << "Could not start xdg-email to hand the mail over";
    if (hintLabel) {
        hintLabel->setText(qtTrId("mail_error_no_program"));
        hintLabel->setTextColor(errorColor);
    }
}

void MailComposeViewController::finish(MailComposeResult result) {
    if (mailFinished)
        return;
    mailFinished = true;
    if (mailDelegate)
        mailDelegate->didFinishWithResult(this, result, QString());
    else
        dismiss(true);
}

bool MailComposeViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view() && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        cancel(nullptr);
        return true;
    }
    return ViewController::eventFilter(watched, event);
}

} // namespace ui
