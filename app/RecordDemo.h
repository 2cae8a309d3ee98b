#pragma once

#include "recording/RecordingModes.h"

#include <QString>

// Records one dolly-zoom clip without a display: the real recording screen runs offscreen, the
// slider is set and the record button pressed through its control events, and the clip is
// summarised when the ramp has ended and the file is complete. A contact sheet of five frames
// is written beside the clip.
//
// The run keeps to a private settings and documents folder, so the user's settings and last
// clip stay as they were; only the finished clip and its sheet land where asked.
class RecordDemo {
public:
    struct Options {
        int duration = 5;
        double zoom = 3.0;
        bool zoomIn = false;
        VideoMode videoMode = VideoMode::hd;
        // Empty: a new "Tessaro Demo" file in the documents folder.
        QString output;
        // As --camera names it: a picture ("file:PATH") or the virtual camera lets the run tell
        // the zoom of the first and last frame from their pixels.
        QString camera;
    };

    // Returns the process's exit code: 0 with a clip, 1 when recording failed, 2 for bad options
    // (nothing recorded), 130 when interrupted (the clip so far is kept). The output is claimed
    // first and recorded into directly, so a run ended in any way, even killed, leaves either
    // no file or a playable clip there.
    static int run(const Options& options);

    // Creates "Tessaro Demo.mov", else "Tessaro Demo 2.mov" and so on, empty, in one step per
    // name (never an existing file, not even one another run creates at the same time). Empty,
    // with the reason in *problem, when the folder cannot be written.
    static QString claimNewFile(const QString& folder, QString* problem);
    // The same for "name.suffix", "name 2.suffix" ... .
    static QString claimNewFile(const QString& folder, const QString& name, const QString& suffix,
                                QString* problem);
    // Claims path itself, creating its folder; empty, with the reason, when it exists already or
    // cannot be written.
    static QString claimFile(const QString& path, QString* problem);
    // "clip.mov" → "clip contact sheet.png", in the same folder.
    static QString contactSheetPath(const QString& clipPath);
};
