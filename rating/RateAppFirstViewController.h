#pragma once

#include "rating/RateAppDialogViewController.h"

// The first rating dialog: does the user like the app? Either answer replaces this dialog by the
// next one, over the screen that showed this one. It has no close button of its own; Esc closes
// it.
class RateAppFirstViewController : public RateAppDialogViewController {
    Q_OBJECT

public:
    explicit RateAppFirstViewController(QObject* parent = nullptr);

    // The user likes the app: on to the review dialog.
    void showRateMeNow(ui::Control* sender);
    // The user does not: on to the feedback dialog.
    void showSendMeEmail(ui::Control* sender);

protected:
    void loadView() override;

private:
    template <class Next> void replaceBy();
};
