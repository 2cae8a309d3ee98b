#include "platform/ui/ActivityViewController.h"

#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Logging.h"
#include "platform/ui/View.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <QVBoxLayout>

namespace ui {

namespace {

const QColor backdropColor(0, 0, 0, 110);
const QColor cardColor(44, 44, 46);
const QColor rowColor(255, 255, 255, 20);
const QColor actionColor(10, 132, 255);
constexpr int cardWidth = 360;

struct Activity {
    const QString& type;
    const char* titleKey;
};

// The sheet's order: the most common first.
const Activity activities[] = {
    //% "Open in video player"
    {ActivityType::openInDefaultApplication, QT_TRID_NOOP("share_open")},
    //% "Show in folder"
    {ActivityType::showInFileManager, QT_TRID_NOOP("share_show_in_folder")},
    //% "Copy"
    {ActivityType::copyToPasteboard, QT_TRID_NOOP("share_copy")},
    //% "Send by e-mail"
    {ActivityType::mail, QT_TRID_NOOP("share_mail")},
    //% "Save a copy as…"
    {ActivityType::saveToFile, QT_TRID_NOOP("share_save_as")},
};

void showItemsOverDBus(const QList<QUrl>& files, std::function<void(bool)> done) {
    QStringList uris;
    for (const QUrl& file : files)
        uris << file.toString(QUrl::FullyEncoded);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << uris << QString();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return done(false);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [done = std::move(done)](QDBusPendingCallWatcher* w) {
                         done(!w->isError());
                         w->deleteLater();
                     });
}

QString askSaveFileName(QWidget* parent, const QString& suggestedPath) {
    //% "Save a copy of the clip"
    return QFileDialog::getSaveFileName(parent, qtTrId("share_save_as_title"), suggestedPath,
                                        QStringLiteral("*.mov *.mp4"));
}

void copyToClipboard(const QList<QUrl>& files) {
    auto* data = new QMimeData;
    data->setUrls(files);
    QByteArray copied = "copy";
    QStringList paths;
    for (const QUrl& file : files) {
        copied += '\n' + file.toEncoded();
        paths << file.toLocalFile();
    }
    // GNOME's file managers paste files from this; the URI list serves the others.
    data->setData(QStringLiteral("x-special/gnome-copied-files"), copied);
    data->setText(paths.join(QLatin1Char('\n')));
    QGuiApplication::clipboard()->setMimeData(data);
}

// The first file copied to a place the user picks; a file there is replaced only once the dialog
// has asked. The copy runs off the GUI thread.
void saveCopy(const QUrl& file, QWidget* dialogParent,
              const ActivityViewController::CompletionWithItemsHandler& done) {
    const QString source = file.toLocalFile();
    const QString suggested = QDir(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation))
                                  .filePath(QFileInfo(source).fileName());
    const QString target = ActivityViewController::services().saveFileName(dialogParent, suggested);
    if (target.isEmpty() || QFileInfo(target) == QFileInfo(source))
        return done(ActivityType::saveToFile, false);
    QThread* worker = QThread::create([source, target, done] {
        const bool copied =
            (!QFileInfo::exists(target) || QFile::remove(target)) && QFile::copy(source, target);
        if (!copied)
            qCWarning(lcUi).noquote() << "Could not copy" << source << "to" << target;
        if (QCoreApplication* application = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                application, [done, copied] { done(ActivityType::saveToFile, copied); },
                Qt::QueuedConnection);
    });
    QObject::connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
}

void perform(const QString& type, const QList<QUrl>& files, QWidget* dialogParent,
             const ActivityViewController::CompletionWithItemsHandler& done) {
    ActivityViewController::Services& services = ActivityViewController::services();
    if (type == ActivityType::openInDefaultApplication) {
        bool opened = !files.isEmpty();
        for (const QUrl& file : files)
            opened = services.openUrl(file) && opened;
        done(type, opened);
    } else if (type == ActivityType::showInFileManager) {
        services.showItems(files, [files, done](bool shown) {
            if (!shown && !files.isEmpty())
                ActivityViewController::services().openUrl(
                    QUrl::fromLocalFile(QFileInfo(files.first().toLocalFile()).absolutePath()));
            done(ActivityType::showInFileManager, true);
        });
    } else if (type == ActivityType::copyToPasteboard) {
        copyToClipboard(files);
        done(type, true);
    } else if (type == ActivityType::mail) {
        QStringList arguments;
        for (const QUrl& file : files)
            arguments << QStringLiteral("--attach") << file.toLocalFile();
        const bool started = services.startDetached(QStringLiteral("xdg-email"), arguments);
        if (!started)
            qCWarning(lcUi) << "No mail program could be started (xdg-email)";
        done(type, started);
    } else if (type == ActivityType::saveToFile && !files.isEmpty()) {
        saveCopy(files.first(), dialogParent, done);
    } else {
        done(type, false);
    }
}

} // namespace

namespace {

ActivityViewController::Services defaultServices() {
    ActivityViewController::Services s;
    s.openUrl = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    s.startDetached = [](const QString& program, const QStringList& arguments) {
        return QProcess::startDetached(program, arguments);
    };
    s.showItems = showItemsOverDBus;
    s.saveFileName = askSaveFileName;
    return s;
}

} // namespace

ActivityViewController::Services& ActivityViewController::services() {
    static Services current = defaultServices();
    return current;
}

void ActivityViewController::resetServices() {
    services() = defaultServices();
}

ActivityViewController::ActivityViewController(QList<QUrl> activityItems, QObject* parent)
    : ViewController(parent), items(std::move(activityItems)) {
    setModalPresentationStyle(ModalPresentationStyle::overCurrentContext);
}

QStringList ActivityViewController::availableActivityTypes() const {
    QStringList types;
    for (const Activity& activity : activities)
        if (!excluded.contains(activity.type))
            types << activity.type;
    return types;
}

void ActivityViewController::performActivity(const QString& type) {
    if (chosen || !availableActivityTypes().contains(type))
        return;
    chosen = true;
    // The dialog of "save as" belongs to the screen underneath, which outlives the sheet.
    QPointer<QWidget> dialogParent =
        presentingViewController() ? presentingViewController()->view() : nullptr;
    auto act = [type, files = items, dialogParent, done = completion] {
        perform(type, files, dialogParent, [done](const QString& t, bool completed) {
            if (done)
                done(t, completed);
        });
    };
    if (presentingViewController())
        dismiss(true, act);
    else
        act();
}

void ActivityViewController::cancel() {
    if (std::exchange(chosen, true))
        return;
    auto cancelled = [done = completion] {
        if (done)
            done(QString(), false);
    };
    if (presentingViewController())
        dismiss(true, cancelled);
    else
        cancelled();
}

void ActivityViewController::loadView() {
    auto* backdrop = new View;
    backdrop->setBackgroundColor(backdropColor);
    setView(backdrop);
    backdrop->installEventFilter(this);

    auto* sheet = new View(backdrop);
    card = sheet;
    sheet->setObjectName(QStringLiteral("card"));
    sheet->setBackgroundColor(cardColor);
    sheet->setCornerRadius(16);
    sheet->setFixedWidth(cardWidth);
    auto* layout = new QVBoxLayout(sheet);
    layout->setContentsMargins(14, 16, 14, 14);
    layout->setSpacing(8);

    auto* name = new Label(sheet);
    name->setObjectName(QStringLiteral("itemLabel"));
    name->setTextColor(QColor(235, 235, 245, 160));
    name->setAlignment(Qt::AlignCenter);
    QFont nameFont = name->font();
    nameFont.setPixelSize(13);
    name->setFont(nameFont);
    if (!items.isEmpty())
        name->setText(items.size() == 1 ? QFileInfo(items.first().toLocalFile()).fileName()
                                        : QString::number(items.size()));
    layout->addWidget(name);

    auto row = [&](const QString& objectName, const QString& title, bool bold) {
        auto* button = new Button(sheet);
        button->setObjectName(objectName);
        button->setTitle(title);
        button->setTitleColor(actionColor);
        button->setBackgroundColor(rowColor);
        button->setCornerRadius(10);
        button->setFixedHeight(48);
        QFont font = button->font();
        font.setPixelSize(17);
        font.setBold(bold);
        button->setFont(font);
        layout->addWidget(button);
        return button;
    };
    const QStringList offered = availableActivityTypes();
    for (const Activity& activity : activities) {
        if (!offered.contains(activity.type))
            continue;
        Button* button = row(activity.type, qtTrId(activity.titleKey), false);
        const QString type = activity.type;
        button->addTarget(
            this, [this, type](Control*) { performActivity(type); }, Control::touchUpInside);
    }
    layout->addSpacing(6);
    //% "Cancel"
    Button* cancelButton = row(QStringLiteral("cancelButton"), qtTrId("share_cancel"), true);
    cancelButton->addTarget(
        this, [this](Control*) { cancel(); }, Control::touchUpInside);

    auto* backdropLayout = new QVBoxLayout(backdrop);
    backdropLayout->setContentsMargins(12, 12, 12, 20);
    backdropLayout->addWidget(sheet, 0, Qt::AlignHCenter | Qt::AlignBottom);
}

void ActivityViewController::viewDidAppear(bool animated) {
    ViewController::viewDidAppear(animated);
    // Esc and the keyboard reach the card from the start.
    if (QWidget* first = view()->findChild<Button*>())
        first->setFocus();
}

bool ActivityViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view()) {
        if (event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            cancel();
            return true;
        }
        if (event->type() == QEvent::MouseButtonRelease && card &&
            !card->geometry().contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
            cancel();
            return true;
        }
    }
    return ViewController::eventFilter(watched, event);
}

} // namespace ui
