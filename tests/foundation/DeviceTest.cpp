#include "platform/foundation/Device.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace foundation {
namespace {

using FormFactor = Device::FormFactor;
using Orientation = Device::Orientation;

TEST(DeviceTest, FormFactorFromOverrideThenChassis) {
    struct Row {
        const char* overrideName;
        std::optional<QByteArray> deviceTree; // nullopt: no such file
        std::optional<QByteArray> dmi;
        FormFactor expected;
    };
    const Row rows[] = {
        {"", QByteArray("handset\0", 8), std::nullopt, FormFactor::phone},
        {"", QByteArray("tablet\0", 7), std::nullopt, FormFactor::tablet},
        {"", QByteArray("convertible\0", 12), std::nullopt, FormFactor::tablet},
        {"", "handset", "10\n", FormFactor::phone},
        {"", "laptop", "10\n", FormFactor::desktop},
        {"", "desktop\n", std::nullopt, FormFactor::desktop},
        {"", std::nullopt, "30\n", FormFactor::tablet},
        {"", std::nullopt, "31\n", FormFactor::tablet},
        {"", std::nullopt, "32\n", FormFactor::tablet},
        {"", std::nullopt, "3\n", FormFactor::desktop},
        {"", std::nullopt, "10\n", FormFactor::desktop},
        {"", std::nullopt, "300\n", FormFactor::desktop},
        {"", std::nullopt, "tablet\n", FormFactor::desktop},
        {"", "", "", FormFactor::desktop},
        {"", std::nullopt, std::nullopt, FormFactor::desktop},
        {"phone", std::nullopt, "30\n", FormFactor::phone},
        {" Tablet ", "handset", std::nullopt, FormFactor::tablet},
        {"desktop", "handset", "30\n", FormFactor::desktop},
        {"watch", "handset", std::nullopt, FormFactor::phone},
    };
    for (const Row& row : rows) {
        QTemporaryDir folder;
        const QString deviceTree = folder.filePath("chassis-type");
        const QString dmi = folder.filePath("chassis_type");
        for (const auto& [path, content] :
             {std::pair{deviceTree, row.deviceTree}, {dmi, row.dmi}}) {
            QFile file(path);
            ASSERT_TRUE(!content || (file.open(QIODevice::WriteOnly) && file.write(*content) >= 0));
        }
        EXPECT_EQ(Device::detectFormFactor(row.overrideName, deviceTree, dmi), row.expected)
            << "row " << &row - rows;
    }
}

TEST(DeviceTest, SensorReadingsMapToDeviceOrientations) {
    const std::pair<QOrientationReading::Orientation, Orientation> rows[] = {
        {QOrientationReading::TopUp, Orientation::portrait},
        {QOrientationReading::TopDown, Orientation::portraitUpsideDown},
        {QOrientationReading::RightUp, Orientation::landscapeLeft},
        {QOrientationReading::LeftUp, Orientation::landscapeRight},
        {QOrientationReading::FaceUp, Orientation::faceUp},
        {QOrientationReading::FaceDown, Orientation::faceDown},
        {QOrientationReading::Undefined, Orientation::unknown},
    };
    for (const auto& [reading, expected] : rows)
        EXPECT_EQ(Device::orientationFromReading(reading), expected) << reading;
}

TEST(DeviceTest, OrientationForTestingIsAnnounced) {
    Device& device = Device::current();
    int announcements = 0;
    QObject context;
    QObject::connect(&device, &Device::orientationDidChange, &context, [&] {
        ++announcements;
        EXPECT_EQ(device.orientation(), Orientation::landscapeRight);
    });
    device.setOrientationForTesting(Orientation::landscapeRight);
    EXPECT_EQ(announcements, 1);
    EXPECT_TRUE(Device::isLandscape(device.orientation()));
    EXPECT_FALSE(Device::isLandscape(Orientation::faceUp));
}

} // namespace
} // namespace foundation
