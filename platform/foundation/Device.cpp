#include "platform/foundation/Device.h"

#include "platform/foundation/FoundationLogging.h"

#include <QAccelerometer>
#include <QCoreApplication>
#include <QFile>
#include <QOrientationSensor>
#include <QPointer>

namespace foundation {

namespace {

const QString systemDeviceTreeChassis =
    QStringLiteral("/sys/firmware/devicetree/base/chassis-type");
const QString systemDmiChassis = QStringLiteral("/sys/class/dmi/id/chassis_type");

// Device-tree strings end in NUL, sysfs values in a newline.
QString readSysfsText(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray text = file.read(64);
    const qsizetype end = text.indexOf('\0');
    if (end >= 0)
        text.truncate(end);
    return QString::fromLatin1(text.trimmed());
}

// The identifier of a real orientation sensor, empty when there is none. Qt Sensors ships a
// dummy accelerometer, and its generic orientation sensor would report a fixed portrait from it.
QByteArray orientationSensorIdentifier() {
    const QList<QByteArray> identifiers = QSensor::sensorsForType(QOrientationSensor::sensorType);
    for (const QByteArray& identifier : identifiers) {
        if (!identifier.startsWith("generic."))
            return identifier;
    }
    for (const QByteArray& accelerometer : QSensor::sensorsForType(QAccelerometer::sensorType)) {
        if (!accelerometer.startsWith("dummy.") && !identifiers.isEmpty())
            return identifiers.first();
    }
    return {};
}

} // namespace

Device::Device() {
    startOrientationSensor();
}

Device& Device::current() {
    // Parented to the application so the sensor goes before the application does.
    static QPointer<Device> device;
    if (!device) {
        device = new Device();
        device->setParent(QCoreApplication::instance());
    }
    return *device;
}

Device::FormFactor Device::formFactor() const {
    if (formFactorOverride)
        return *formFactorOverride;
    if (!deviceFormFactor) {
        deviceFormFactor = detectFormFactor(qEnvironmentVariable("TESSARO_FORM_FACTOR"),
                                            systemDeviceTreeChassis, systemDmiChassis);
        qCDebug(lcFoundation) << "Form factor" << *deviceFormFactor;
    }
    return *deviceFormFactor;
}

void Device::setFormFactorForTesting(std::optional<FormFactor> formFactor) {
    formFactorOverride = formFactor;
}

void Device::setOrientationForTesting(Orientation orientation) {
    orientationOverridden = true;
    deviceOrientation = orientation;
    emit orientationDidChange();
}

Device::FormFactor Device::detectFormFactor(const QString& overrideName,
                                            const QString& deviceTreeChassisPath,
                                            const QString& dmiChassisPath) {
    const QString name = overrideName.trimmed().toLower();
    if (name == QLatin1String("phone"))
        return FormFactor::phone;
    if (name == QLatin1String("tablet"))
        return FormFactor::tablet;
    if (name == QLatin1String("desktop"))
        return FormFactor::desktop;
    if (!name.isEmpty())
        qCWarning(lcFoundation).noquote()
            << QStringLiteral("Ignoring TESSARO_FORM_FACTOR=%1: not phone, tablet or desktop")
                   .arg(overrideName);

    const QString chassis = readSysfsText(deviceTreeChassisPath);
    if (chassis == QLatin1String("handset"))
        return FormFactor::phone;
    if (chassis == QLatin1String("tablet") || chassis == QLatin1String("convertible"))
        return FormFactor::tablet;

    bool isNumber = false;
    const int dmiType = readSysfsText(dmiChassisPath).toInt(&isNumber);
    constexpr int dmiTablet = 30, dmiConvertible = 31, dmiDetachable = 32;
    if (isNumber && (dmiType == dmiTablet || dmiType == dmiConvertible || dmiType == dmiDetachable))
        return FormFactor::tablet;
    return FormFactor::desktop;
}

Device::Orientation Device::orientationFromReading(QOrientationReading::Orientation reading) {
    switch (reading) {
    case QOrientationReading::TopUp:
        return Orientation::portrait;
    case QOrientationReading::TopDown:
        return Orientation::portraitUpsideDown;
    case QOrientationReading::RightUp:
        return Orientation::landscapeLeft;
    case QOrientationReading::LeftUp:
        return Orientation::landscapeRight;
    case QOrientationReading::FaceUp:
        return Orientation::faceUp;
    case QOrientationReading::FaceDown:
        return Orientation::faceDown;
    case QOrientationReading::Undefined:
        break;
    }
    return Orientation::unknown;
}

void Device::startOrientationSensor() {
    const QByteArray identifier = orientationSensorIdentifier();
    if (identifier.isEmpty())
        return;
    deviceSensor = new QOrientationSensor(this);
    deviceSensor->setIdentifier(identifier);
    connect(deviceSensor, &QOrientationSensor::readingChanged, this, &Device::readOrientation);
    if (!deviceSensor->start()) {
        qCDebug(lcFoundation) << "Orientation sensor" << identifier << "did not start";
        delete deviceSensor;
        deviceSensor = nullptr;
        return;
    }
    qCDebug(lcFoundation) << "Orientation from" << identifier;
    readOrientation();
}

void Device::readOrientation() {
    if (orientationOverridden || !deviceSensor || !deviceSensor->reading())
        return;
    const Orientation orientation = orientationFromReading(deviceSensor->reading()->orientation());
    if (orientation == deviceOrientation)
        return;
    deviceOrientation = orientation;
    emit orientationDidChange();
}

} // namespace foundation
