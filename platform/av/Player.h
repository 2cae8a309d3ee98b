#pragma once

#include "platform/av/BusWatch.h"
#include "platform/av/GstHandle.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QUrl>

#include <gst/app/gstappsink.h>

#include <atomic>
#include <memory>

namespace av {

class CapturePreviewOutput;
class PlayerItem;

// Plays one movie file with its sound. Passes end in segments rather than end-of-stream, so a
// seek to zero asked at the item's end notice continues the same running clock: the next pass's
// first frame follows the last one as any two frames do, and nothing is flushed (no black frame,
// no re-buffering). The sound fades over a few milliseconds at both ends of a pass so the jump
// back does not click.
//
// Without a sound device (no PulseAudio or PipeWire socket, no ALSA card) the sound goes to a
// fake sink paced like a real one; a sound sink that fails while starting is replaced by one too.
// TESSARO_AUDIO_SINK names the sink to use instead of the automatic choice.
//
// State changes and bus messages are handled on the thread that created the player (the GUI
// thread); frames leave the streaming thread through the video outputs.
class Player : public QObject {
    Q_OBJECT

public:
    // The platform's raw values.
    enum class ActionAtItemEnd { advance = 0, pause = 1, none = 2 };

    explicit Player(const QUrl& url, QObject* parent = nullptr);
    ~Player() override;

    PlayerItem* currentItem() const { return item; }

    void play();
    void pause();
    // 1 while playing, 0 while paused.
    float rate() const { return wantsPlaying ? 1.0f : 0.0f; }

    bool isMuted() const { return muted; }
    void setMuted(bool value);

    // What happens when the item ends: advance and pause both pause (there is no next item);
    // none leaves the rate alone, for an owner that seeks back.
    ActionAtItemEnd actionAtItemEnd() const { return endAction; }
    void setActionAtItemEnd(ActionAtItemEnd value) { endAction = value; }

    // True when the sound goes nowhere because no device could take it.
    bool playsSilently() const { return silent; }
    // Passes begun so far, the first included.
    int passes() const { return passCount; }

    // Frames go to each added output on the streaming thread; removing waits for a delivery in
    // progress, so a removed output is never touched again.
    void addVideoOutput(CapturePreviewOutput* output);
    void removeVideoOutput(CapturePreviewOutput* output);

    // For measurements: the playbin.
    GstElement* pipeline() const { return playbin.get(); }

private:
    friend class PlayerItem;

    void build(bool fakeAudio);
    void teardown();
    void handleMessage(GstMessage* message);
    void handleReady();
    void handleEnd();
    void fail(const QString& description);
    bool comesFromAudioSink(GstMessage* message) const;
    void applyState();
    void prepareNextPass();
    void seekItem(double seconds);
    double itemPosition() const;

    // What the streaming threads reach: it outlives the player until the pipeline has stopped,
    // which happens off the GUI thread when the player goes.
    struct Link {
        QMutex mutex; // guards owner and outputs; held while a frame or the end is handed over
        Player* owner = nullptr;
        QList<CapturePreviewOutput*> outputs;
        // Frames of a pass nobody asked for are not shown.
        std::atomic<bool> stalled{false};
    };
    static void releaseLink(gpointer link);
    static void deliver(Link* link, GstSample* sample);
    static GstFlowReturn newSample(GstAppSink* sink, gpointer link);
    static GstFlowReturn newPreroll(GstAppSink* sink, gpointer link);

    PlayerItem* item;
    GstHandle<GstElement> playbin;
    GstElement* audioSink = nullptr; // owned by playbin
    std::unique_ptr<BusWatch> busWatch;
    // The first preroll is done and passes end in segments from then on.
    bool segmented = false;
    bool atEnd = false;
    bool eosReached = false;
    // The next pass is queued behind the current one (see the segment-done message).
    bool prepared = false;
    // The file was read to its end while paused; the next pass is queued on the next play().
    bool prepareOnPlay = false;
    double startAt = 0.0;
    bool wantsPlaying = false;
    bool muted = false;
    bool silent = false;
    int passCount = 0;
    ActionAtItemEnd endAction = ActionAtItemEnd::pause;
    // The item's length in nanoseconds, read by the sound's fades on the streaming thread.
    std::shared_ptr<std::atomic<gint64>> fadeEnd;
    std::shared_ptr<Link> link;
};

} // namespace av
