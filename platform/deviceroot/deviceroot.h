#ifndef KY_DEVICEROOT_H
#define KY_DEVICEROOT_H

#include <stddef.h>

#ifndef KY_EXPORT
#define KY_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Where a path of the device lies on this machine: the value of KY_DEVICE_ROOT (without slashes at its end)
 * in front of it, nothing when that is unset. Device nodes below /dev, /tmp, /proc/self and /proc/PID are the
 * machine's own and stay as they are, and so does a relative path.
 *
 * @param path absolute path of the device, terminated
 * @param out receives the result, terminated and cut to @p room bytes; may be null when @p room is 0
 * @return length of the whole result without its terminator
 */
KY_EXPORT size_t kyDevicePath(const char *path, char *out, size_t room);

#ifdef __cplusplus
}
#endif

#endif
