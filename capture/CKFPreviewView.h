#pragma once

#include <QWidget>

#include <memory>

namespace av {
class CaptureVideoPreviewLayer;
} // namespace av

namespace ui {
class PinchGestureRecognizer;
class TapGestureRecognizer;
} // namespace ui

class CKFGridView;
class CKFSession;

// The live picture of a session. Binding a session gives it a new preview layer and starts it
// (stopping the one bound before); a pinch sets the session's zoom between 1 and 10, continuing
// from where the last pinch ended; a tap asks the session to focus there. It can follow the
// device's orientation and lay a thirds grid over the picture.
class CKFPreviewView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool showGrid READ showGrid WRITE setShowGrid)
    Q_PROPERTY(bool autorotate READ autorotate WRITE setAutorotate)

public:
    explicit CKFPreviewView(QWidget* parent = nullptr);
    ~CKFPreviewView() override;

    // The view owns its layer; the one replaced is deleted.
    av::CaptureVideoPreviewLayer* previewLayer() const { return layer; }
    void setPreviewLayer(av::CaptureVideoPreviewLayer* value);
    // Pictures the current layer has taken from its session; 0 without a layer.
    quint64 framesTaken() const;

    // Held strongly; binding stops the previous session and starts this one, synchronously.
    // Unbinding (null) only stops the previous one and leaves its last picture.
    const std::shared_ptr<CKFSession>& session() const { return boundSession; }
    void setSession(std::shared_ptr<CKFSession> value);

    // A child of the view; the one replaced is deleted.
    CKFGridView* gridView() const { return grid; }
    void setGridView(CKFGridView* value);

    bool showGrid() const { return gridShown; }
    void setShowGrid(bool value);

    // When off, the picture is held at portrait; when on, it follows the device at each layout.
    bool autorotate() const { return rotates; }
    void setAutorotate(bool value);

    // The zoom at which the last pinch ended.
    double lastScale() const { return pinchEndScale; }

    ui::TapGestureRecognizer* tapGestureRecognizer() const { return tapRecognizer; }
    ui::PinchGestureRecognizer* pinchGestureRecognizer() const { return pinchRecognizer; }

    void handleTapWithRecognizer(ui::TapGestureRecognizer* recognizer);
    void handlePinchWithRecognizer(ui::PinchGestureRecognizer* recognizer);

    // Layout runs on resizing, and once soon after a change asks for it.
    void setNeedsLayout();
    void layoutIfNeeded();

protected:
    // Fits the layer and the grid to the view, then turns the picture with the device.
    virtual void layoutSubviews();
    // Lays the thirds grid over the picture itself.
    void placeGrid();
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    double pinchEndScale = 1.0;
    av::CaptureVideoPreviewLayer* layer = nullptr;
    std::shared_ptr<CKFSession> boundSession;
    CKFGridView* grid = nullptr;
    bool gridShown = false;
    bool rotates = false;
    bool layoutPending = false;
    ui::TapGestureRecognizer* tapRecognizer;
    ui::PinchGestureRecognizer* pinchRecognizer;
};
