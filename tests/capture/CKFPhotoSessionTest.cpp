#include "capture/CKFPhotoSession.h"
#include "capture/CKFPreviewView.h"

#include <QTest>

#include "CaptureTest.h"

namespace {

using Detection = CKFPhotoSession::CameraDetection;

struct Delivery {
    int photos = 0;
    int errors = 0;
    std::optional<ui::Image> image;
    av::CaptureResolvedPhotoSettings settings;
    QString error;

    CKFPhotoSession::CaptureCallback onPhoto() {
        return [this](const ui::Image& photo, const av::CaptureResolvedPhotoSettings& resolved) {
            ++photos;
            image = photo;
            settings = resolved;
        };
    }
    CKFPhotoSession::ErrorCallback onError() {
        return [this](const std::exception& failure) {
            ++errors;
            error = QString::fromUtf8(failure.what());
        };
    }
};

std::vector<av::MetadataObject> faces(int count) {
    std::vector<av::MetadataObject> objects;
    // Something else found in the frame is no face and gets no box.
    objects.push_back({QStringLiteral("barcode"), QRectF(0.0, 0.0, 0.1, 0.1)});
    for (int i = 0; i < count; ++i)
        objects.push_back({av::MetadataObject::typeFace, QRectF(0.1 + 0.25 * i, 0.2, 0.2, 0.3)});
    return objects;
}

QByteArray grayJpeg() {
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    return av::CapturePhoto::encodeJpeg(picture, 1, QDateTime());
}

class PhotoSessionTest : public CaptureTest {
protected:
    // Captures one photo from the running session; false when no callback came.
    static bool take(CKFPhotoSession& session, Delivery& delivery) {
        const int before = delivery.photos + delivery.errors;
        session.capture(delivery.onPhoto(), delivery.onError());
        return QTest::qWaitFor([&] { return delivery.photos + delivery.errors > before; }, 15000);
    }
};

// Three faces then one keep the first box.
TEST_F(PhotoSessionTest, threeFacesThenOneKeepsTheFirstBox) {
    for (const bool withOverlay : {true, false}) {
        SCOPED_TRACE(withOverlay ? "overlay" : "no overlay");
        QWidget overlay;
        overlay.resize(400, 300);
        overlay.show();
        CKFPhotoSession session(Position::back, Detection::faces);
        if (withOverlay)
            session.setOverlayView(&overlay);
        av::CaptureMetadataOutput* metadata = session.metadataOutput();
        ASSERT_TRUE(metadata);
        EXPECT_EQ(metadata->metadataObjectTypes(), QStringList{av::MetadataObject::typeFace});
        session.didOutputMetadataObjects(metadata, faces(3));
        ASSERT_EQ(session.faceDetectionBoxes().size(), 3u);
        for (const QPointer<ui::View>& box : session.faceDetectionBoxes()) {
            ASSERT_TRUE(box);
            EXPECT_EQ(box->parentWidget(), withOverlay ? &overlay : nullptr);
            EXPECT_EQ(box->isVisible(), withOverlay);
            // No preview layer: nowhere to place it.
            EXPECT_EQ(box->geometry(), QRect());
        }
        QPointer<ui::View> first = session.faceDetectionBoxes().front();
        QPointer<ui::View> last = session.faceDetectionBoxes().back();
        session.didOutputMetadataObjects(metadata, faces(1));
        ASSERT_EQ(session.faceDetectionBoxes().size(), 1u);
        EXPECT_EQ(session.faceDetectionBoxes().front(), first);
        EXPECT_FALSE(last);
        EXPECT_EQ(overlay.findChildren<ui::View*>().size(), withOverlay ? 1 : 0);
    }
}

// The camera asked for takes the zoom unclamped, and it is announced.
TEST_F(PhotoSessionTest, theZoomReachesTheCamera) {
    CKFPhotoSession session(Position::front, Detection::none);
    ASSERT_TRUE(camera(session));
    EXPECT_EQ(camera(session)->position(), av::DevicePosition::front);
    ZoomNotices notices;
    session.setDelegate(&notices);
    session.setZoom(2.5);
    session.setZoom(40);
    EXPECT_EQ(camera(session)->videoZoomFactor(), 40);
    EXPECT_EQ(notices.values, (std::vector<double>{2.5, 40}));
    session.setZoom(1); // the camera keeps its zoom for the rest of the process
}

// Both sizes, from the running virtual camera: the format, the orientation and the photo.
TEST_F(PhotoSessionTest, resolutionChoosesFormatOrientationAndCrop) {
    orient(Orientation::landscapeLeft);
    CKFPhotoSession session(Position::back, Detection::none);
    av::CaptureDevice* device = camera(session);
    session.start();
    Delivery delivery;

    session.setResolution(QSizeF(0, 0));
    EXPECT_EQ(session.session()->sessionPreset(), av::CaptureSession::presetHigh);
    ASSERT_TRUE(take(session, delivery));
    ASSERT_EQ(delivery.photos, 1) << delivery.error.toStdString();
    // Uncropped, and turned as the device is held: landscape left is shown turned a quarter left.
    EXPECT_EQ(delivery.image->cgImage().size(), QSize(1920, 1080));
    EXPECT_EQ(delivery.image->imageOrientation(), ui::Image::Orientation::left);
    EXPECT_EQ(delivery.settings.photoDimensions, QSize(1920, 1080));

    session.setResolution(QSizeF(1920, 1080));
    EXPECT_GE(device->activeFormat().width, 1920);
    EXPECT_GE(device->activeFormat().height, 1080);
    ASSERT_TRUE(take(session, delivery));
    ASSERT_EQ(delivery.photos, 2) << delivery.error.toStdString();
    EXPECT_EQ(
        session.photoOutput()->connectionWithMediaType(av::MediaType::video)->videoOrientation(),
        av::CaptureConnection::VideoOrientation::portrait);
    // The bitmap is the exchanged target, tagged for the device held landscape left: up.
    EXPECT_EQ(delivery.image->cgImage().size(), QSize(1080, 1920));
    EXPECT_EQ(delivery.image->imageOrientation(), ui::Image::Orientation::up);
}

TEST_F(PhotoSessionTest, flashLightsTheShotAndTheTorchGoesBack) {
    CKFPhotoSession session(Position::back, Detection::none);
    av::CaptureDevice* device = camera(session);
    session.start();
    Delivery dark, automatic, lit;
    ASSERT_TRUE(take(session, dark));
    // The virtual street is bright: the automatic flash stays off.
    session.setFlashMode(Flash::automatic);
    ASSERT_TRUE(take(session, automatic));
    session.setFlashMode(Flash::on);
    ASSERT_TRUE(take(session, lit));
    ASSERT_TRUE(dark.image && lit.image);
    EXPECT_FALSE(dark.settings.isFlashEnabled);
    EXPECT_FALSE(automatic.settings.isFlashEnabled);
    EXPECT_TRUE(lit.settings.isFlashEnabled);
    EXPECT_EQ(device->torchMode(), av::CaptureDevice::TorchMode::off);
    // Two flash photos at once share the light, and the torch still goes back off.
    Delivery overlapping;
    session.capture(overlapping.onPhoto(), overlapping.onError());
    session.capture(overlapping.onPhoto(), overlapping.onError());
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return session.photoOutput()->pendingPhotos() == 0 && overlapping.photos == 1; },
        15000));
    EXPECT_EQ(device->torchMode(), av::CaptureDevice::TorchMode::off);
    // The torch lights the near subject: its jacket is brighter.
    const auto centre = [](const ui::Image& image) {
        const QImage& pixels = image.cgImage();
        int sum = 0;
        for (int y = 0; y < 10; ++y)
            sum += qGray(pixels.pixel(pixels.width() / 2 + 20, pixels.height() * 3 / 4 + y));
        return sum / 10;
    };
    EXPECT_GT(centre(*lit.image), centre(*dark.image) + 10);
}

// A stopped session ends a capture in an error.
TEST_F(PhotoSessionTest, eachCaptureEndsInOneCallbackAndASecondNoticeReachesNobody) {
    CKFPhotoSession session(Position::back, Detection::none);
    Delivery stopped;
    ASSERT_TRUE(take(session, stopped));
    EXPECT_EQ(stopped.errors, 1);
    EXPECT_EQ(stopped.photos, 0);
    const av::CapturePhoto good(grayJpeg(), {});
    const struct {
        av::CapturePhoto photo;
        std::optional<av::Error> error;
        int photos, errors;
        QString message;
    } rows[] = {
        {good, std::nullopt, 1, 0, {}},
        {good, av::Error(av::Error::Code::sessionNotRunning, QStringLiteral("stopped")), 0, 1,
         QStringLiteral("stopped")},
        {av::CapturePhoto({}, {}), std::nullopt, 0, 1,
         QStringLiteral("Cannot get photo file data representation")},
        {av::CapturePhoto("not a picture", {}), std::nullopt, 0, 1,
         QStringLiteral("Cannot get photo")},
    };
    for (const auto& row : rows) {
        Delivery delivery;
        session.capture(delivery.onPhoto(), delivery.onError());
        session.didFinishProcessingPhoto(session.photoOutput(), row.photo, row.error);
        session.didFinishProcessingPhoto(session.photoOutput(), row.photo, row.error);
        // Photos are processed in order: once a later capture's photo is back, both notices
        // above are through.
        Delivery later;
        session.capture(later.onPhoto(), later.onError());
        session.didFinishProcessingPhoto(session.photoOutput(), good, std::nullopt);
        ASSERT_TRUE(QTest::qWaitFor([&] { return later.photos == 1; }, 10000));
        EXPECT_EQ(delivery.photos, row.photos) << row.message.toStdString();
        EXPECT_EQ(delivery.errors, row.errors) << row.message.toStdString();
        EXPECT_EQ(delivery.error, row.message);
    }
}

// The virtual scene's subject, and the front camera's face, are found within a few detections,
// and their boxes lie over the face in the preview.
TEST_F(PhotoSessionTest, facesOfTheVirtualCamerasAreBoxedOnTheSubject) {
    const struct {
        Position position;
        QPointF face; // the face's centre in the picture, from the scene's drawing
    } rows[] = {{Position::back, {0.5, 0.31}}, {Position::front, {0.5, 0.49}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.position));
        CKFPreviewView view;
        view.resize(640, 360);
        view.show();
        auto session = std::make_shared<CKFPhotoSession>(row.position, Detection::faces);
        view.setSession(session);
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                const auto& boxes = session->faceDetectionBoxes();
                return boxes.size() == 1 && boxes.front() && !boxes.front()->geometry().isEmpty();
            },
            20000));
        EXPECT_LE(session->metadataOutput()->framesDetected(), 10u);
        const QRect box = session->faceDetectionBoxes().front()->geometry();
        EXPECT_TRUE(box.contains(QPoint(int(row.face.x() * 640), int(row.face.y() * 360))))
            << box.x() << "," << box.y() << " " << box.width() << "x" << box.height();
        EXPECT_LT(box.width(), 640 / 3);
        EXPECT_EQ(session->faceDetectionBoxes().front()->parentWidget(), &view);
        view.setSession(nullptr);
    }
}

} // namespace
