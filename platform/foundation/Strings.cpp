#include "platform/foundation/Strings.h"

#include "platform/foundation/FoundationLogging.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

namespace foundation {

namespace {

const QString englishTable = QStringLiteral(":/i18n/tessaro_en.qm");

// Owned by the application; QPointer notices when they went away with it.
QPointer<QTranslator> englishTranslator;
QPointer<QTranslator> localTranslator;
QPointer<QTranslator> qtTranslator;

void uninstall(QPointer<QTranslator>& translator) {
    if (translator) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
}

} // namespace

void Strings::install() {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        qFatal("Strings::install: no QCoreApplication");
    uninstall(englishTranslator);
    uninstall(localTranslator);
    uninstall(qtTranslator);

    // Qt's own texts (the command line's standard options, standard dialogs) in the same
    // language, where the system has them.
    auto* qt = new QTranslator(app);
    if (qt->load(QLocale::system(), QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(qt);
        qtTranslator = qt;
    } else {
        delete qt;
    }

    auto* english = new QTranslator(app);
    if (!english->load(englishTable)) {
        qCWarning(lcFoundation).noquote() << "Cannot load the English texts from" << englishTable;
        delete english;
        return;
    }
    QCoreApplication::installTranslator(english);
    englishTranslator = english;

    // Installed last, so it is asked first; keys it lacks fall through to English.
    auto* local = new QTranslator(app);
    if (local->load(QLocale::system(), QStringLiteral("tessaro"), QStringLiteral("_"),
                    QStringLiteral(":/i18n")) &&
        local->filePath() != englishTable) {
        QCoreApplication::installTranslator(local);
        localTranslator = local;
        qCDebug(lcFoundation) << "Texts for" << QLocale::system().name() << "from"
                              << local->filePath();
    } else {
        delete local;
    }
}

QString Strings::localizedString(const char* key) {
    if (!key || !*key)
        qFatal("Strings::localizedString: empty key");
    // qtTrId answers the id itself when no installed table has it.
    return qtTrId(key);
}

} // namespace foundation
