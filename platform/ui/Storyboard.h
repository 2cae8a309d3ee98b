#pragma once

#include <functional>

#include <QObject>
#include <QString>

namespace ui {

class ViewController;

// Screens by identifier: a process-wide registry of factories, grouped by storyboard name.
class Storyboard {
public:
    using Factory = std::function<ViewController*()>;

    explicit Storyboard(QString name);

    const QString& name() const { return boardName; }

    // A later registration of the same identifier replaces the earlier one.
    static void registerFactory(const QString& storyboardName, const QString& identifier,
                                Factory factory);

    // Forgets one scene.
    static void unregisterFactory(const QString& storyboardName, const QString& identifier);
    // Forgets every scene of a storyboard, so tests can start from an empty one.
    static void unregisterAll(const QString& storyboardName);

    // A new controller the caller owns, or null with a warning for an unknown identifier.
    ViewController* instantiate(const QString& identifier) const;
    // The scene of class T, registered under its class name without namespace; null with a
    // warning when there is none or its factory makes another class.
    template <class T> T* instantiate() const {
        ViewController* made = instantiate(identifierOf(T::staticMetaObject));
        T* typed = qobject_cast<T*>(made);
        if (made && !typed)
            discard(made, T::staticMetaObject.className());
        return typed;
    }
    bool contains(const QString& identifier) const;
    template <class T> bool contains() const { return contains(identifierOf(T::staticMetaObject)); }
    static QString identifierOf(const QMetaObject& type);

private:
    void discard(ViewController* made, const char* expected) const;

    QString boardName;
};

} // namespace ui
