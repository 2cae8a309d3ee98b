#pragma once

#include <QString>

namespace ui {

class MailComposeViewController;

// The platform's raw values.
enum class MailComposeResult {
    cancelled = 0,
    saved = 1,
    sent = 2,
    failed = 3,
};

// Told once when the user leaves the composer; the delegate dismisses it.
class MailComposeViewControllerDelegate {
public:
    virtual ~MailComposeViewControllerDelegate() = default;
    // error is empty unless result is failed.
    virtual void didFinishWithResult(MailComposeViewController* controller,
                                     MailComposeResult result, const QString& error) = 0;
};

} // namespace ui
