#pragma once

#include "platform/av/PlayerLayer.h"

#include <QList>
#include <QPointer>
#include <QWidget>

// Hosts the layers that draw a clip and keeps the player's layer sized to itself, so the clip
// follows rotation and resizing of the screen.
class VideoContainerView : public QWidget {
    Q_OBJECT

public:
    explicit VideoContainerView(QWidget* parent = nullptr);
    ~VideoContainerView() override;

    // Resized with the view at each layout; not owned (see addSublayer). Empty at creation.
    av::PlayerLayer* playerLayer() const { return player; }
    void setPlayerLayer(av::PlayerLayer* layer) { player = layer; }

    // The view takes ownership and draws the layers in the order added.
    void addSublayer(av::CaptureVideoPreviewLayer* layer);
    QList<av::CaptureVideoPreviewLayer*> sublayers() const;
    // Deletes every layer drawn here.
    void removeAllSublayers();

protected:
    virtual void layoutSubviews();
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QList<QPointer<av::CaptureVideoPreviewLayer>> layers;
    QPointer<av::PlayerLayer> player;
};
