#pragma once

#include <QCommandLineParser>
#include <QVariantMap>

#include "app/PhotoCommand.h"
#include "app/RecordDemo.h"

#include <optional>

class QCoreApplication;

// The program's options. Help and version print and leave; everything else becomes launch
// options for the delegate, except a screenshot request, which replaces the launch.
class CommandLine {
public:
    struct Screenshot {
        QString name;
        // Empty when none was given.
        QString file;
    };

    CommandLine();

    // Exits the process for --help, --version and unknown options, like every command-line tool.
    void process(const QCoreApplication& application);

    QVariantMap launchOptions() const;
    std::optional<Screenshot> screenshot() const;
    // Whether the first argument is the command "record".
    bool asksForRecording() const;
    // Whether the first argument is the command "photo".
    bool asksForPhoto() const;
    bool asksForCameraList() const;
    // Every camera and microphone there is, with its formats and position, and what --camera
    // takes to choose it.
    static QString cameraList();
    // The demo's options, each checked against the chosen format and camera before anything
    // starts; nullopt with a message for the user when one is out of range or a camera file
    // cannot be used.
    std::optional<RecordDemo::Options> recordOptions(QString* problem) const;
    // The photo's options, checked the same way.
    std::optional<PhotoCommand::Options> photoOptions(QString* problem) const;
    // "1080x1920" (or with "×" or "X"); nullopt for anything else or a side out of 1 to largest.
    static std::optional<QSize> parseSize(const QString& text, int largest);
    static constexpr int largestPhotoSide = 16384;

    // Reads "2.5" and "2,5" alike, whatever the locale.
    static std::optional<double> parseNumber(const QString& text);
    // The highest start zoom of a format (a row of the screen's format table).
    static double highestZoom(VideoMode videoMode);

    // Whether the arguments ask for a screenshot or the headless recording, which draw offscreen
    // even on a desktop; answered before the application (and its display) is set up.
    static bool runsOffscreen(int argc, char** argv);

private:
    // Why --camera cannot be used by a command, or empty.
    QString cameraProblem() const;

    QCommandLineParser parser;
    QCommandLineOption cameraOption;
    QCommandLineOption listCamerasOption;
    QCommandLineOption screenshotOption;
    QCommandLineOption tutorialOption;
    QCommandLineOption durationOption;
    QCommandLineOption zoomOption;
    QCommandLineOption zoomInOption;
    QCommandLineOption formatOption;
    QCommandLineOption outputOption;
    QCommandLineOption resolutionOption;
    QCommandLineOption facesOption;
};
