#include "capture/CKFPreviewView.h"

#include "platform/av/CapturePreviewOutput.h"

#include "capture/CKFGridView.h"
#include "capture/CKFSession.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "platform/foundation/Device.h"
#include "platform/ui/PinchGestureRecognizer.h"
#include "platform/ui/TapGestureRecognizer.h"

#include <QPainter>

#include <algorithm>

CKFPreviewView::CKFPreviewView(QWidget* parent)
    : QWidget(parent), tapRecognizer(new ui::TapGestureRecognizer(this)),
      pinchRecognizer(new ui::PinchGestureRecognizer(this)) {
    // Every pixel is painted, the picture or black around it.
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(tapRecognizer, &ui::TapGestureRecognizer::action, this,
            &CKFPreviewView::handleTapWithRecognizer);
    connect(pinchRecognizer, &ui::PinchGestureRecognizer::action, this,
            &CKFPreviewView::handlePinchWithRecognizer);
    // A device turned without the window turning sends no resize, so ask for a layout.
    connect(&foundation::Device::current(), &foundation::Device::orientationDidChange, this,
            [this] {
                if (rotates)
                    setNeedsLayout();
            });
}

CKFPreviewView::~CKFPreviewView() = default;

void CKFPreviewView::setPreviewLayer(av::CaptureVideoPreviewLayer* value) {
    if (value == layer)
        return;
    delete std::exchange(layer, value);
    if (layer) {
        layer->setParent(this);
        connect(layer, &av::CaptureVideoPreviewLayer::needsDisplay, this, [this] {
            placeGrid();
            update();
        });
        setNeedsLayout();
    }
    update();
}

quint64 CKFPreviewView::framesTaken() const {
    return layer ? layer->output()->framesTaken() : 0;
}

void CKFPreviewView::setSession(std::shared_ptr<CKFSession> value) {
    const std::shared_ptr<CKFSession> previous = std::exchange(boundSession, std::move(value));
    if (previous)
        previous->session()->stopRunning();
    if (!boundSession)
        return;
    auto* newLayer = new av::CaptureVideoPreviewLayer(boundSession->session());
    setPreviewLayer(newLayer);
    boundSession->setPreviewLayer(newLayer);
    boundSession->setOverlayView(this);
    boundSession->session()->startRunning();
}

void CKFPreviewView::setGridView(CKFGridView* value) {
    if (value == grid)
        return;
    delete std::exchange(grid, value);
    if (grid) {
        grid->setParent(this);
        grid->raise();
        grid->show();
        placeGrid();
    }
}

void CKFPreviewView::setShowGrid(bool value) {
    if (std::exchange(gridShown, value) == value)
        return;
    setGridView(value ? new CKFGridView(rect()) : nullptr);
}

void CKFPreviewView::setAutorotate(bool value) {
    rotates = value;
    if (!value) {
        if (layer && layer->connection())
            layer->connection()->setVideoOrientation(
                av::CaptureConnection::VideoOrientation::portrait);
        update();
    } else {
        setNeedsLayout();
    }
}

void CKFPreviewView::handlePinchWithRecognizer(ui::PinchGestureRecognizer* recognizer) {
    using State = ui::PinchGestureRecognizer::State;
    if (recognizer->state() == State::began)
        recognizer->setScale(pinchEndScale);
    // The view's own range, whatever the camera could do.
    const double scale = std::max(std::min(recognizer->scale(), 10.0), 1.0);
    if (boundSession)
        boundSession->setZoom(scale);
    if (recognizer->state() == State::ended)
        pinchEndScale = scale;
}

void CKFPreviewView::handleTapWithRecognizer(ui::TapGestureRecognizer* recognizer) {
    if (!layer)
        return;
    const QPointF point = layer->captureDevicePointOfInterestForPoint(recognizer->locationInView() -
                                                                      layer->frame().topLeft());
    if (boundSession)
        boundSession->focusAt(point);
}

void CKFPreviewView::setNeedsLayout() {
    if (std::exchange(layoutPending, true))
        return;
    QMetaObject::invokeMethod(this, &CKFPreviewView::layoutIfNeeded, Qt::QueuedConnection);
}

void CKFPreviewView::layoutIfNeeded() {
    if (layoutPending)
        layoutSubviews();
}

void CKFPreviewView::layoutSubviews() {
    layoutPending = false;
    if (layer)
        layer->setFrame(rect());
    placeGrid();
    if (rotates && layer && layer->connection())
        layer->connection()->setVideoOrientation(
            CKFSession::videoOrientation(foundation::Device::current().orientation()));
    update();
}

void CKFPreviewView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutSubviews();
}

void CKFPreviewView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QImage picture;
    if (layer) {
        layer->setContentsScale(devicePixelRatioF());
        picture = layer->contents();
    }
    if (picture.isNull() || layer->frame() != QRectF(rect()))
        painter.fillRect(rect(), Qt::black);
    if (!picture.isNull())
        painter.drawImage(layer->frame().topLeft(), picture);
}

void CKFPreviewView::placeGrid() {
    if (!grid)
        return;
    // A camera that shows nothing (held by another program, refused) has no thirds to mark.
    grid->setVisible(!layer || layer->hasPicture());
    // The thirds of the picture, not of the bars beside it.
    const QRect picture =
        layer ? layer->pictureFrame().toAlignedRect().intersected(rect()) : rect();
    const QRect place = picture.isEmpty() ? rect() : picture;
    if (grid->geometry() != place)
        grid->setGeometry(place);
}
