#pragma once

#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/av/Player.h"

#include <QPointer>

namespace av {

// Draws a player's pictures exactly as the camera's preview layer draws the camera's: the
// streaming thread hands over the newest frame only, and the picture is converted at the size it
// is shown when painted, with the layer's gravity. Whoever shows the layer sets its frame and
// paints contents() when told that the layer needs display.
class PlayerLayer : public CaptureVideoPreviewLayer {
    Q_OBJECT

public:
    explicit PlayerLayer(Player* player, QObject* parent = nullptr);
    ~PlayerLayer() override;

    static PlayerLayer* playerLayerWithPlayer(Player* player) { return new PlayerLayer(player); }

    Player* player() const { return source; }

private:
    QPointer<Player> source;
};

} // namespace av
