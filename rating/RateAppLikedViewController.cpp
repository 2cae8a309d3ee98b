#include "rating/RateAppLikedViewController.h"

#include <QDesktopServices>

#include "rating/RatingLogging.h"

std::function<bool(const QUrl& url)> RateAppLikedViewController::openURL = [](const QUrl& url) {
    return QDesktopServices::openUrl(url);
};

RateAppLikedViewController::RateAppLikedViewController(QObject* parent)
    : RateAppDialogViewController(
          {"RateAppLikedFirstLabel", "RateAppLikedSecondLabel", "RateAppLikedThirdLabel"}, parent) {
}

void RateAppLikedViewController::loadView() {
    RateAppDialogViewController::loadView();
    addButton("rate_rate", ButtonKind::primary,
              [this](ui::Control* sender) { rateMeButton(sender); });
    addButton("rate_not_now", ButtonKind::secondary,
              [this](ui::Control* sender) { close(sender); });
}

void RateAppLikedViewController::rateMeButton(ui::Control*) {
    dismiss(true, [] {
        const QUrl link(reviewLink, QUrl::StrictMode);
        if (!link.isValid())
            return;
        // Without a software centre there is nothing to open; the user is not told, as on a
        // device without a store.
        if (!openURL(link))
            qCInfo(lcRating).noquote() << "No program opens" << link.toString();
    });
}

void RateAppLikedViewController::close(ui::Control*) {
    dismiss(true);
}
