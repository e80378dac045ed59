#ifndef KY_DEVICEPATH_H
#define KY_DEVICEPATH_H

#include "kyexport.h"
#include <QString>

/** Where a path of the device lies on this machine: the value of KY_DEVICE_ROOT in front of it, nothing when
 * that is unset. Paths below /dev, /tmp, /proc/self and /proc/PID are the machine's own and stay as they are,
 * and so do relative ones. The environment is read at each call. */
[[nodiscard]] KY_EXPORT QString devicePath(const QString &path);

/** True when @p path begins with the device path @p prefix, plain or with the device root in front. */
[[nodiscard]] KY_EXPORT bool startsWithDevicePath(const QString &path, const QString &prefix);

#endif
