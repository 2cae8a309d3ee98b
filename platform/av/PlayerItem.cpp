#include "platform/av/PlayerItem.h"

#include "platform/av/Player.h"

namespace av {

PlayerItem::PlayerItem(QUrl url, QObject* parent) : QObject(parent), asset(std::move(url)) {}

double PlayerItem::currentTime() const {
    return player ? player->itemPosition() : 0.0;
}

void PlayerItem::seekToTime(double seconds) {
    if (player)
        player->seekItem(seconds);
}

void PlayerItem::setStatus(Status value, const QString& description) {
    error = description;
    if (std::exchange(itemStatus, value) != value)
        emit statusChanged(this);
}

} // namespace av
