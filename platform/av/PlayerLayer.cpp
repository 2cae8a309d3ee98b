#include "platform/av/PlayerLayer.h"

#include "platform/av/Player.h"

namespace av {

PlayerLayer::PlayerLayer(Player* player, QObject* parent)
    : CaptureVideoPreviewLayer(nullptr, parent), source(player) {
    if (source)
        source->addVideoOutput(output());
}

PlayerLayer::~PlayerLayer() {
    if (source)
        source->removeVideoOutput(output());
}

} // namespace av
