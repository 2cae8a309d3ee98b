#pragma once

#include <functional>

#include <QUrl>

#include "rating/RateAppDialogViewController.h"

// For a user who likes the app: asks for a review in the software centre, or closes.
class RateAppLikedViewController : public RateAppDialogViewController {
    Q_OBJECT

public:
    // The app's page in the software centre, under the id its desktop file and metainfo use.
    // Not "appstream://": as a host the id would be lowercased on its way through QUrl, and
    // software centres take the id from the path as well.
    static inline const QString reviewLink = QStringLiteral("appstream:org.tessaro.Tessaro");

    // How the review link is opened (QDesktopServices::openUrl); tests replace it.
    static std::function<bool(const QUrl& url)> openURL;

    explicit RateAppLikedViewController(QObject* parent = nullptr);

    // Closes, then opens the review link. Nothing records that the user rated.
    void rateMeButton(ui::Control* sender);
    void close(ui::Control* sender);

protected:
    void loadView() override;
};
