#include "platform/ui/Storyboard.h"

#include <QHash>

#include "platform/ui/Logging.h"
#include "platform/ui/ViewController.h"

namespace ui {
namespace {

// Storyboard name -> identifier -> factory.
QHash<QString, QHash<QString, Storyboard::Factory>>& registry() {
    static QHash<QString, QHash<QString, Storyboard::Factory>> factories;
    return factories;
}

} // namespace

Storyboard::Storyboard(QString name) : boardName(std::move(name)) {}

void Storyboard::registerFactory(const QString& storyboardName, const QString& identifier,
                                 Factory factory) {
    if (!factory)
        qFatal("ui::Storyboard::registerFactory: null factory for \"%s\" in \"%s\"",
               qPrintable(identifier), qPrintable(storyboardName));
    registry()[storyboardName].insert(identifier, std::move(factory));
}

void Storyboard::unregisterFactory(const QString& storyboardName, const QString& identifier) {
    const auto scenes = registry().find(storyboardName);
    if (scenes != registry().end())
        scenes->remove(identifier);
}

void Storyboard::unregisterAll(const QString& storyboardName) {
    registry().remove(storyboardName);
}

ViewController* Storyboard::instantiate(const QString& identifier) const {
    const auto scenes = registry().constFind(boardName);
    if (scenes == registry().constEnd() || !scenes->contains(identifier)) {
        qCWarning(lcUi).noquote() << "Storyboard" << boardName
                                  << "has no controller with identifier" << identifier;
        return nullptr;
    }
    const Factory factory = scenes->value(identifier);
    ViewController* controller = factory();
    if (!controller)
        qFatal("ui::Storyboard: the factory for \"%s\" in \"%s\" made no controller",
               qPrintable(identifier), qPrintable(boardName));
    if (controller->objectName().isEmpty())
        controller->setObjectName(identifier);
    return controller;
}

void Storyboard::discard(ViewController* made, const char* expected) const {
    qCWarning(lcUi).noquote() << "Storyboard" << boardName << "made a"
                              << made->metaObject()->className() << "for" << expected;
    delete made;
}

QString Storyboard::identifierOf(const QMetaObject& type) {
    const QString name = QString::fromLatin1(type.className());
    return name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
}

bool Storyboard::contains(const QString& identifier) const {
    const auto scenes = registry().constFind(boardName);
    return scenes != registry().constEnd() && scenes->contains(identifier);
}

} // namespace ui
