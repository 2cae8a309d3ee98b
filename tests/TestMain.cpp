#include "platform/foundation/Strings.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Widgets need a QApplication; tests never need a real display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    QApplication app(argc, argv);
    // The texts the program shows, in English as the tests expect them.
    foundation::Strings::install();
    return RUN_ALL_TESTS();
}
