#pragma once

#include "platform/ui/ViewController.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace ui {

// The kinds of activity a share sheet can offer.
namespace ActivityType {
inline const QString openInDefaultApplication = QStringLiteral("org.tessaro.activity.open");
inline const QString showInFileManager = QStringLiteral("org.tessaro.activity.show-in-folder");
inline const QString copyToPasteboard = QStringLiteral("org.tessaro.activity.copy");
inline const QString mail = QStringLiteral("org.tessaro.activity.mail");
inline const QString saveToFile = QStringLiteral("org.tessaro.activity.save-as");
// Known so that they can be excluded; this platform has neither.
inline const QString addToReadingList = QStringLiteral("org.tessaro.activity.reading-list");
inline const QString assignToContact = QStringLiteral("org.tessaro.activity.assign-to-contact");
} // namespace ActivityType

// The share sheet for local files: a card of activities that work on a desktop and on a phone.
// Open in the default video player; show in the file manager (FileManager1 over D-Bus, else the
// folder); copy the files to the clipboard as a URI list that file managers and chat apps paste;
// send by e-mail with the files attached (xdg-email); save a copy as… (a file dialog that asks
// before replacing a file).
//
// Choosing an activity closes the sheet, then performs it; the completion then receives its type
// and whether it was done. Cancel, Esc or a click beside the card close it with no type and
// completed false.
class ActivityViewController : public ViewController {
    Q_OBJECT

public:
    using CompletionWithItemsHandler =
        std::function<void(const QString& activityType, bool completed)>;

    // What the activities do outside the application, replaceable so that tests start nothing.
    struct Services {
        std::function<bool(const QUrl& url)> openUrl;
        std::function<bool(const QString& program, const QStringList& arguments)> startDetached;
        // Selects the files in a file manager window; done(false) when none answered.
        std::function<void(const QList<QUrl>& files, std::function<void(bool)> done)> showItems;
        // The file to save to, or empty when the user cancelled.
        std::function<QString(QWidget* parent, const QString& suggestedPath)> saveFileName;
    };
    static Services& services();
    static void resetServices();

    explicit ActivityViewController(QList<QUrl> activityItems, QObject* parent = nullptr);

    const QList<QUrl>& activityItems() const { return items; }
    QStringList excludedActivityTypes() const { return excluded; }
    void setExcludedActivityTypes(const QStringList& types) { excluded = types; }
    CompletionWithItemsHandler completionWithItemsHandler() const { return completion; }
    void setCompletionWithItemsHandler(CompletionWithItemsHandler handler) {
        completion = std::move(handler);
    }

    // In the order the sheet lists them, without the excluded ones.
    QStringList availableActivityTypes() const;
    // As a click on the activity's row, or on Cancel.
    void performActivity(const QString& type);
    void cancel();

protected:
    void loadView() override;
    void viewDidAppear(bool animated) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QList<QUrl> items;
    QStringList excluded;
    CompletionWithItemsHandler completion;
    bool chosen = false;
    QPointer<QWidget> card;
};

} // namespace ui
