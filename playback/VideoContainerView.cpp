#include "playback/VideoContainerView.h"

#include "platform/av/PlayerLayer.h"

#include <QPainter>

VideoContainerView::VideoContainerView(QWidget* parent) : QWidget(parent) {
    // Every pixel is painted: the pictures, or black.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

VideoContainerView::~VideoContainerView() = default;

void VideoContainerView::addSublayer(av::CaptureVideoPreviewLayer* layer) {
    if (!layer || layers.contains(layer))
        return;
    layer->setParent(this);
    connect(layer, &av::CaptureVideoPreviewLayer::needsDisplay, this,
            qOverload<>(&QWidget::update));
    layers.append(layer);
    update();
}

QList<av::CaptureVideoPreviewLayer*> VideoContainerView::sublayers() const {
    QList<av::CaptureVideoPreviewLayer*> result;
    for (const auto& layer : layers)
        if (layer)
            result.append(layer);
    return result;
}

void VideoContainerView::removeAllSublayers() {
    for (const auto& layer : std::exchange(layers, {}))
        delete layer.data();
    update();
}

void VideoContainerView::layoutSubviews() {
    if (player)
        player->setFrame(rect());
}

void VideoContainerView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutSubviews();
}

void VideoContainerView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    for (const auto& layer : layers) {
        if (!layer)
            continue;
        layer->setContentsScale(devicePixelRatioF());
        const QImage picture = layer->contents();
        if (!picture.isNull())
            painter.drawImage(layer->frame().topLeft(), picture);
    }
}
