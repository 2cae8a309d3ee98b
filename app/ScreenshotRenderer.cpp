#include "app/ScreenshotRenderer.h"

#include "capture/CKFGridView.h"
#include "capture/CKFPreviewView.h"
#include "capture/CKFVideoSession.h"
#include "platform/av/CapturePreviewOutput.h"
#include "platform/av/CaptureVideoPreviewLayer.h"
#include "recording/CameraButton.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QPixmap>
#include <QTextStream>
#include <QWidget>

#include <algorithm>

namespace {

// The size of a phone's screen in portrait, in device-independent pixels.
constexpr QSize phone(390, 844);
constexpr int framesBeforeGrab = 3;
constexpr int secondsForFrames = 10;

ScreenshotRenderer::Scene preview(const QSize& size) {
    auto view = std::make_unique<CKFPreviewView>();
    view->resize(size);
    view->setSession(std::make_shared<CKFVideoSession>(CKFSession::CameraPosition::back));
    view->previewLayer()->setVideoGravity(
        av::CaptureVideoPreviewLayer::VideoGravity::resizeAspectFill);
    view->setShowGrid(true);
    const av::CapturePreviewOutput* output = view->previewLayer()->output();
    return {std::move(view), [output] { return output->framesTaken() >= framesBeforeGrab; }};
}

ScreenshotRenderer::Scene grid() {
    auto backdrop = std::make_unique<QWidget>();
    backdrop->setStyleSheet(QStringLiteral("background: #202428;"));
    backdrop->resize(phone);
    new CKFGridView(QRect(QPoint(0, 0), phone), backdrop.get());
    return {std::move(backdrop), {}};
}

// The record button on a dark backdrop, idle or recording once its morph has ended.
ScreenshotRenderer::Scene recordButton(bool recording) {
    auto backdrop = std::make_unique<QWidget>();
    backdrop->setStyleSheet(QStringLiteral("background: #202428;"));
    backdrop->resize(120, 120);
    auto* button = new CameraButton(backdrop.get());
    button->setType(CameraButtonType::video);
    button->move((120 - CameraButton::side) / 2, (120 - CameraButton::side) / 2);
    if (recording)
        button->setSelected(true);
    return {std::move(backdrop), [button] { return !button->isAnimating(); }};
}

} // namespace

const std::vector<ScreenshotRenderer::Screen>& ScreenshotRenderer::screens() {
    static const std::vector<Screen> registry{
        {QStringLiteral("preview"), [] { return preview(phone); }},
        {QStringLiteral("preview-landscape"), [] { return preview(phone.transposed()); }},
        {QStringLiteral("grid"), grid},
        {QStringLiteral("record-button"), [] { return recordButton(false); }},
        {QStringLiteral("record-button-recording"), [] { return recordButton(true); }},
    };
    return registry;
}

QStringList ScreenshotRenderer::names() {
    QStringList result;
    for (const Screen& screen : screens())
        result << screen.name;
    return result;
}

int ScreenshotRenderer::render(const QString& name, const QString& file) {
    QTextStream err(stderr);
    const auto found = std::find_if(screens().begin(), screens().end(),
                                    [&](const Screen& screen) { return screen.name == name; });
    if (found == screens().end()) {
        err << QCoreApplication::translate("ScreenshotRenderer",
                                           "There is no screen \"%1\". Screens: %2.")
                   .arg(name, names().join(QStringLiteral(", ")))
            << Qt::endl;
        return 2;
    }
    if (file.isEmpty()) {
        err << QCoreApplication::translate("ScreenshotRenderer",
                                           "Which file? tessaro --screenshot %1 FILE.png")
                   .arg(name)
            << Qt::endl;
        return 2;
    }

    Scene scene = found->build();
    scene.widget->show();
    QDeadlineTimer deadline(secondsForFrames * 1000);
    while (scene.ready && !scene.ready() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    if (scene.ready && !scene.ready()) {
        err << QCoreApplication::translate("ScreenshotRenderer",
                                           "The screen \"%1\" had nothing to show after %2 s: "
                                           "no picture came from the camera.")
                   .arg(name)
                   .arg(secondsForFrames)
            << Qt::endl;
        return 1;
    }
    // Pending layouts and repaints first.
    QCoreApplication::processEvents();

    if (!scene.widget->grab().save(file, "PNG")) {
        err << QCoreApplication::translate("ScreenshotRenderer", "Could not write %1.").arg(file)
            << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << QFileInfo(file).absoluteFilePath() << Qt::endl;
    return 0;
}
