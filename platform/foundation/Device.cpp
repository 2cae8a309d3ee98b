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
    if (m_formFactorOverride)
        return *m_formFactorOverride;
    if (!m_formFactor) {
        m_formFactor = detectFormFactor(qEnvironmentVariable("TESSARO_FORM_FACTOR"),
                                        systemDeviceTreeChassis, systemDmiChassis);
        qCDebug(lcFoundation) << "Form factor" << *m_formFactor;
    }
    return *m_formFactor;
}

void Device::setFormFactorForTesting(std::optional<FormFactor> formFactor) {
    m_formFactorOverride = formFactor;
}

void Device::setOrientationForTesting(Orientation orientation) {
    m_orientationOverridden = true;
    m_orientation = orientation;
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
    m_sensor = new QOrientationSensor(this);
    m_sensor->setIdentifier(identifier);
    connect(m_sensor, &QOrientationSensor::readingChanged, this, &Device::readOrientation);
    if (!m_sensor->start()) {
        qCDebug(lcFoundation) << "Orientation sensor" << identifier << "did not start";
        delete m_sensor;
        m_sensor = nullptr;
        return;
    }
    qCDebug(lcFoundation) << "Orientation from" << identifier;
    readOrientation();
}

void Device::readOrientation() {
    if (m_orientationOverridden || !m_sensor || !m_sensor->reading())
        return;
    const Orientation orientation = orientationFromReading(m_sensor->reading()->orientation());
    if (orientation == m_orientation)
        return;
    m_orientation = orientation;
    emit orientationDidChange();
}

} // namespace foundation
