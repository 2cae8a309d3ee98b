#pragma once

#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <ostream>

#include "platform/foundation/Preferences.h"
#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "rating/AppRating.h"
#include "rating/RateAppFirstViewController.h"
#include "rating/RateAppLikedViewController.h"
#include "rating/RateAppMailViewController.h"

// Readable failures: the texts, not their UTF-16 units.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace rating::test {

// Fresh preferences, a scheduler as after launch with a clock that stands still and its lines
// caught, the three dialogs' scenes, and a phone-sized window whose root asks for ratings.
class RatingFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        qputenv("TESSARO_CONFIG_DIR", folder.path().toUtf8());
        foundation::Preferences::resetStandardForTesting();
        resetScheduler();

        const QString main = QStringLiteral("Main");
        ui::Storyboard::unregisterAll(main);
        ui::Storyboard::registerFactory(main, QStringLiteral("RateAppFirstViewController"),
                                        [] { return new RateAppFirstViewController; });
        ui::Storyboard::registerFactory(main, QStringLiteral("RateAppLikedViewController"),
                                        [] { return new RateAppLikedViewController; });
        ui::Storyboard::registerFactory(main, QStringLiteral("RateAppMailViewController"),
                                        [] { return new RateAppMailViewController; });

        window.resize(390, 844);
        window.setRootViewController(root);
        window.show();
    }
    void TearDown() override {
        AppRating::resetForTesting();
        ui::Storyboard::unregisterAll(QStringLiteral("Main"));
        foundation::Preferences::resetStandardForTesting();
    }

    // As after launch, with the clock that stands still and the lines caught.
    void resetScheduler() {
        AppRating::resetForTesting();
        AppRating::now = [this] { return clock; };
        AppRating::writeLine = [this](const QString& line) { lines.append(line); };
    }

    QTemporaryDir folder;
    const QDateTime start = QDateTime(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC);
    QDateTime clock = start;
    QStringList lines;
    ui::Window window;
    ui::ViewController* root = new ui::ViewController;
};

} // namespace rating::test
