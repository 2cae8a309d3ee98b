#include "playback/VideoPreviewViewController.h"

#include "platform/av/Player.h"
#include "platform/av/PlayerItem.h"
#include "platform/foundation/PhotoLibrary.h"
#include "platform/foundation/Preferences.h"
#include "platform/ui/ActivityViewController.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"
#include "rating/AppRating.h"
#include "rating/RateAppFirstViewController.h"
#include "tests/av/TestClip.h"
#include "tests/ui/ProbeViewController.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void press(ui::Button* button) {
    button->sendActions(ui::Control::touchDown | ui::Control::touchUpInside);
}

class VideoPreviewTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = new QTemporaryDir;
        clip = folder->filePath(QStringLiteral("Tessaro Video.mov"));
        ASSERT_TRUE(writeTestClip(clip, 1.0));
        shortClip = folder->filePath(QStringLiteral("short.mov"));
        ASSERT_TRUE(writeTestClip(shortClip, 0.3));
    }
    static void TearDownTestSuite() { delete folder; }

    void SetUp() override {
        qputenv("TESSARO_CONFIG_DIR", QFile::encodeName(work.filePath(QStringLiteral("config"))));
        qputenv("TESSARO_VIDEOS_DIR", QFile::encodeName(videos()));
        foundation::Preferences::resetStandardForTesting();
        ui::ActivityViewController::resetServices();
        // Nothing outside the test is started.
        ui::ActivityViewController::services().startDetached =
            [](const QString&, const QStringList&) { return false; };
        window.setRootViewController(camera);
        window.resize(390, 844);
        window.show();
    }
    void TearDown() override {
        qunsetenv("TESSARO_VIDEOS_DIR");
        ui::ActivityViewController::resetServices();
    }

    QString videos() const { return work.filePath(QStringLiteral("Videos/Tessaro")); }

    // Presents the preview as the recording screen does.
    VideoPreviewViewController* presentPreview(const QString& path) {
        auto* preview = new VideoPreviewViewController;
        if (!path.isEmpty())
            preview->videoURL = QUrl::fromLocalFile(path);
        preview->cameraVC = camera;
        camera->present(preview, true);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !preview->isBeingPresented(); }));
        return preview;
    }

    ui::AlertController* shownAlert() const {
        return qobject_cast<ui::AlertController*>(window.topViewController());
    }

    static inline QTemporaryDir* folder = nullptr;
    static inline QString clip;
    static inline QString shortClip;
    QTemporaryDir work;
    QStringList journal;
    ui::Window window;
    ui::test::ProbeViewController* camera =
        new ui::test::ProbeViewController(QStringLiteral("camera"), &journal);
};

// The clip plays loud and looping (still playing after its end), and another player's end does not
// loop it.
TEST_F(VideoPreviewTest, PlaysTheClipLoudAndLooping) {
    VideoPreviewViewController* preview = presentPreview(clip);
    ASSERT_TRUE(preview->player);
    av::Player other(QUrl::fromLocalFile(shortClip));
    other.setActionAtItemEnd(av::Player::ActionAtItemEnd::none);
    QSignalSpy otherEnded(other.currentItem(), &av::PlayerItem::didPlayToEndTime);
    other.play();
    EXPECT_FALSE(preview->player->isMuted());
    EXPECT_EQ(preview->videoView->playerLayer(), preview->playerLayer);
    // The layer follows the container.
    window.resize(844, 390);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return preview->playerLayer->frame() == QRectF(0, 0, 844, 390); }));

    ASSERT_TRUE(QTest::qWaitFor([&] { return otherEnded.count() == 1; }, 20000));
    // The other clip has ended (and nobody sought it back); ours plays on from where it was.
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->player->currentItem()->currentTime() > 0.5; },
                                20000));
    EXPECT_EQ(preview->player->passes(), 1);
    // Handed someone else's item, the handler seeks that item, never its own.
    preview->playerItemDidReachEnd(other.currentItem());
    EXPECT_EQ(preview->player->passes(), 1);
    EXPECT_EQ(other.passes(), 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->player->passes() >= 2; }, 20000));
    EXPECT_EQ(preview->player->rate(), 1.0f);
}

TEST_F(VideoPreviewTest, SaveClosesAtOnceAndCopiesTheClipByteForByte) {
    VideoPreviewViewController* preview = presentPreview(clip);
    QPointer<VideoPreviewViewController> watched(preview);
    press(preview->saveButton);
    EXPECT_TRUE(preview->isBeingDismissed());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watched; }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !QDir(videos()).entryList(QDir::Files).isEmpty(); }));
    EXPECT_EQ(shownAlert(), nullptr);
    EXPECT_EQ(window.topViewController(), camera);

    const QStringList saved = QDir(videos()).entryList(QDir::Files);
    ASSERT_EQ(saved.size(), 1);
    const QString copy = QDir(videos()).filePath(saved.first());
    EXPECT_EQ(contents(copy), contents(clip));
    EXPECT_TRUE(QFileInfo::exists(clip));
    // A second save of the same second gets a name of its own.
    QString error;
    const QString second = foundation::PhotoLibrary::copyIntoAlbum(clip, &error);
    EXPECT_NE(second, copy);
    EXPECT_EQ(contents(second), contents(clip)) << qPrintable(error);
}

TEST_F(VideoPreviewTest, AFailedSaveShowsTheErrorOverTheScreenUnderneath) {
    struct Case {
        const char* what;
        bool clipMissing;
        const char* inMessage;
    };
    for (const Case& c : {Case{"clip gone", true, "no longer there"},
                          Case{"folder blocked", false, "cannot be created"}}) {
        SCOPED_TRACE(c.what);
        QString path = clip;
        if (c.clipMissing) {
            path = work.filePath(QStringLiteral("gone.mov"));
        } else {
            // A file where the folder would go.
            QFile blocker(work.filePath(QStringLiteral("Videos")));
            ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
        }
        VideoPreviewViewController* preview = presentPreview(path);
        press(preview->saveButton);
        ASSERT_TRUE(QTest::qWaitFor([&] { return shownAlert() != nullptr; }, 5000));
        ui::AlertController* alert = shownAlert();
        EXPECT_EQ(alert->presentingViewController(), camera);
        EXPECT_EQ(alert->title(), "Error");
        EXPECT_TRUE(alert->message().contains(QLatin1String(c.inMessage)))
            << qPrintable(alert->message());
        ASSERT_EQ(alert->actions().size(), 1);
        EXPECT_EQ(alert->actions().first().title, "OK");
        EXPECT_EQ(alert->actions().first().style, ui::AlertAction::Style::cancel);
        alert->performAction(0);
        ASSERT_TRUE(QTest::qWaitFor([&] { return camera->presentedViewController() == nullptr; }));
        QFile::remove(work.filePath(QStringLiteral("Videos")));
    }
}

// With a prompt due at every consultation, only a save or a completed share asks for a rating:
// a save over the recording screen it returns to, a share over the preview, which stays open.
TEST_F(VideoPreviewTest, ASaveOrACompletedShareAsksForARatingACancelDoesNot) {
    const QString main = QStringLiteral("Main");
    ui::Storyboard::registerFactory(main, QStringLiteral("RateAppFirstViewController"),
                                    [] { return new RateAppFirstViewController; });
    AppRating::resetForTesting();
    AppRating::writeLine = [](const QString&) {};
    AppRating::setDebugMode(true);
    AppRating::setMinuteUntilPrompt(0);
    AppRating::setMinuteRemindPeriod(0);
    const auto remembered = [] {
        return foundation::Preferences::standard().hasStoredValue(
            QStringLiteral("AppRatingLastRemind"));
    };
    const auto ratingOver = [](ui::ViewController* screen) {
        return qobject_cast<RateAppFirstViewController*>(screen->presentedViewController());
    };

    VideoPreviewViewController* preview = presentPreview(clip);
    press(preview->shareButton);
    auto* sheet = qobject_cast<ui::ActivityViewController*>(preview->presentedViewController());
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->activityItems(), QList<QUrl>{QUrl::fromLocalFile(clip)});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !sheet->isBeingPresented(); }));
    QTest::keyClick(sheet->view(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->presentedViewController() == nullptr; }));
    QTest::qWait(100);
    EXPECT_FALSE(remembered()) << "no prompt was consulted";

    press(preview->shareButton);
    sheet = qobject_cast<ui::ActivityViewController*>(preview->presentedViewController());
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !sheet->isBeingPresented(); }));
    sheet->performActivity(ui::ActivityType::copyToPasteboard);
    ASSERT_TRUE(QTest::qWaitFor([&] { return ratingOver(preview) != nullptr; }));
    EXPECT_EQ(camera->presentedViewController(), preview);
    ratingOver(preview)->dismiss(false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->presentedViewController() == nullptr; }));

    QPointer<VideoPreviewViewController> watched(preview);
    press(preview->saveButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watched && ratingOver(camera) != nullptr; }));
    ratingOver(camera)->dismiss(false);
    AppRating::resetForTesting();
    ui::Storyboard::unregisterAll(main);
}

TEST_F(VideoPreviewTest, CloseAndEscLeaveTheClipUntouched) {
    const QFileInfo before(clip);
    for (bool byKey : {false, true}) {
        VideoPreviewViewController* preview = presentPreview(clip);
        QPointer<VideoPreviewViewController> watched(preview);
        if (byKey) {
            QTest::keyClick(preview->view(), Qt::Key_Escape);
        } else {
            press(preview->closeButton);
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return !watched; }));
        EXPECT_EQ(camera->presentedViewController(), nullptr);
    }
    const QFileInfo after(clip);
    EXPECT_TRUE(after.exists());
    EXPECT_EQ(after.size(), before.size());
    EXPECT_EQ(after.lastModified(), before.lastModified());
    EXPECT_TRUE(QDir(videos()).entryList(QDir::Files).isEmpty());
}

TEST_F(VideoPreviewTest, AClipThatDoesNotPlaySaysSo) {
    const QString broken = work.filePath(QStringLiteral("broken.mov"));
    QFile file(broken);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a movie");
    file.close();
    VideoPreviewViewController* preview = presentPreview(broken);
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->statusLabel->isVisible(); }, 10000));
    EXPECT_TRUE(preview->statusLabel->text().contains(QStringLiteral("broken.mov")));
    EXPECT_TRUE(preview->saveButton->isVisible());
}

} // namespace
