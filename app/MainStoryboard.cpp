#include "app/MainStoryboard.h"

#include "onboarding/TutorialViewController.h"
#include "platform/ui/Storyboard.h"
#include "playback/VideoPreviewViewController.h"
#include "rating/RateAppFirstViewController.h"
#include "rating/RateAppLikedViewController.h"
#include "rating/RateAppMailViewController.h"
#include "recording/CameraViewController.h"
#include "recording/ChoseDurationViewController.h"

void MainStoryboard::registerScenes() {
    const QString main = QStringLiteral("Main");
    ui::Storyboard::registerFactory(main, QStringLiteral("CameraViewController"),
                                    [] { return new CameraViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("ChoseDurationViewController"),
                                    [] { return new ChoseDurationViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("RateAppFirstViewController"),
                                    [] { return new RateAppFirstViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("RateAppLikedViewController"),
                                    [] { return new RateAppLikedViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("RateAppMailViewController"),
                                    [] { return new RateAppMailViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("VideoPreviewViewController"),
                                    [] { return new VideoPreviewViewController; });
    ui::Storyboard::registerFactory(main, QStringLiteral("TutorialViewController"),
                                    [] { return new TutorialViewController; });
}
