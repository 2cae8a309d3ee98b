#pragma once

#include <functional>

#include <QString>

namespace ui {

class ViewController;

// Screens by identifier: a process-wide registry of factories, grouped by storyboard name.
class Storyboard {
public:
    using Factory = std::function<ViewController*()>;

    explicit Storyboard(QString name);

    const QString& name() const { return name_; }

    // A later registration of the same identifier replaces the earlier one.
    static void registerFactory(const QString& storyboardName, const QString& identifier,
                                Factory factory);

    // Forgets one scene.
    static void unregisterFactory(const QString& storyboardName, const QString& identifier);
    // Forgets every scene of a storyboard, so tests can start from an empty one.
    static void unregisterAll(const QString& storyboardName);

    // A new controller the caller owns, or null with a warning for an unknown identifier.
    ViewController* instantiate(const QString& identifier) const;
    bool contains(const QString& identifier) const;

private:
    QString name_;
};

} // namespace ui
