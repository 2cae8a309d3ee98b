#pragma once

#include <QCommandLineParser>
#include <QVariantMap>

class QCoreApplication;

// The program's options. Help and version print and leave; everything else becomes launch
// options for the delegate.
class CommandLine {
public:
    CommandLine();

    // Exits the process for --help, --version and unknown options, like every command-line tool.
    void process(const QCoreApplication& application);

    QVariantMap launchOptions() const;

private:
    QCommandLineParser parser;
    QCommandLineOption cameraOption;
};
