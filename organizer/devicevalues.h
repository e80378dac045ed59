#ifndef DEVICEVALUES_H
#define DEVICEVALUES_H

#include <QList>
#include <QString>

/** A reading of the device with its name, for people. */
struct DeviceValue
{
    const char *name; ///< English; to be translated in the context "DeviceValues"
    QString (*read)();
};

/** What the settings page tells of the device, by section. */
namespace DeviceValues {

[[nodiscard]] const QList<DeviceValue> &identity();
[[nodiscard]] const QList<DeviceValue> &power();
[[nodiscard]] const QList<DeviceValue> &memory();
[[nodiscard]] const QList<DeviceValue> &screen();
[[nodiscard]] const QList<DeviceValue> &inputMethod();

/** The name in the user's language. */
[[nodiscard]] QString nameOf(const DeviceValue &value);

} // namespace DeviceValues

#endif
