#pragma once

#include <QObject>
#include <QOrientationReading>
#include <QString>
#include <optional>

class QOrientationSensor;

namespace foundation {

// The machine the app runs on: what kind of device it is and which way it is held.
class Device : public QObject {
    Q_OBJECT

public:
    enum class FormFactor { phone, tablet, desktop };
    Q_ENUM(FormFactor)

    // The platform's device-orientation values. landscapeLeft has the device's top edge to the
    // left (its right edge up).
    enum class Orientation {
        unknown = 0,
        portrait = 1,
        portraitUpsideDown = 2,
        landscapeLeft = 3,
        landscapeRight = 4,
        faceUp = 5,
        faceDown = 6
    };
    Q_ENUM(Orientation)

    static Device& current();

    FormFactor formFactor() const;
    bool isTablet() const { return formFactor() == FormFactor::tablet; }
    // nullopt goes back to what the machine says.
    void setFormFactorForTesting(std::optional<FormFactor> formFactor);

    // From the orientation sensor; unknown on a machine without one.
    Orientation orientation() const { return deviceOrientation; }
    static bool isLandscape(Orientation orientation) {
        return orientation == Orientation::landscapeLeft ||
               orientation == Orientation::landscapeRight;
    }
    // From then on the sensor is ignored.
    void setOrientationForTesting(Orientation orientation);

    // overrideName ("phone", "tablet" or "desktop", as TESSARO_FORM_FACTOR takes it) first, then
    // the device tree's chassis-type ("handset", "tablet", "convertible"), then the DMI
    // chassis_type number (30 tablet, 31 convertible, 32 detachable); desktop otherwise.
    static FormFactor detectFormFactor(const QString& overrideName,
                                       const QString& deviceTreeChassisPath,
                                       const QString& dmiChassisPath);
    static Orientation orientationFromReading(QOrientationReading::Orientation reading);

signals:
    void orientationDidChange();

private:
    Device();
    void startOrientationSensor();
    void readOrientation();

    mutable std::optional<FormFactor> deviceFormFactor;
    std::optional<FormFactor> formFactorOverride;
    Orientation deviceOrientation = Orientation::unknown;
    bool orientationOverridden = false;
    QOrientationSensor* deviceSensor = nullptr;
};

} // namespace foundation
