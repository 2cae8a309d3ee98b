#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QWidget;

// Draws one of the app's screens into a PNG without a display, for documentation and for
// checking a screen by eye. Each screen is an entry of the registry: a name and a function that
// builds the widget at its size and says when it has something to show.
class ScreenshotRenderer {
public:
    struct Scene {
        std::unique_ptr<QWidget> widget;
        // Until this answers true the event loop runs (camera frames arrive); none: at once.
        std::function<bool()> ready;
    };
    struct Screen {
        QString name;
        std::function<Scene()> build;
    };

    static const std::vector<Screen>& screens();
    static QStringList names();

    // Writes the screen to file and prints the file's path. Returns the process's exit code: 0
    // when written, 1 when the screen had nothing to show in time or the file could not be
    // written, 2 for an unknown screen or a missing file name.
    static int render(const QString& name, const QString& file);
};
