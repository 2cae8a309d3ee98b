#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

namespace av {

class Player;

// One movie file as a player plays it: its length, where playback is, and the notices of its
// end. The end notice carries the item itself, so an owner answers only its own item's end.
class PlayerItem : public QObject {
    Q_OBJECT

public:
    enum class Status { unknown, readyToPlay, failed };
    Q_ENUM(Status)

    explicit PlayerItem(QUrl url, QObject* parent = nullptr);

    const QUrl& url() const { return asset; }
    Status status() const { return itemStatus; }
    // Why the item failed, in words for the user; empty otherwise.
    const QString& errorDescription() const { return error; }
    // Seconds; 0 until the item is ready.
    double duration() const { return length; }
    // Seconds from the start of the current pass; 0 while there is no player.
    double currentTime() const;

    // Moves playback there without changing the rate. Asked at the end notice, the next pass
    // follows the last frame without a gap; before the item is ready, it is where playback
    // starts.
    void seekToTime(double seconds);

signals:
    void statusChanged(av::PlayerItem* item);
    // The last frame and sound of a pass have been handed to the sinks.
    void didPlayToEndTime(av::PlayerItem* item);

private:
    friend class Player;

    void setStatus(Status value, const QString& description = {});

    QUrl asset;
    QPointer<Player> player;
    Status itemStatus = Status::unknown;
    QString error;
    double length = 0.0;
};

} // namespace av
