#ifndef KY_DEVICEROOT_H
#define KY_DEVICEROOT_H

#include <stddef.h>

#if defined(__GNUC__)
#define KY_EXPORT __attribute__((visibility("default")))
#else
#define KY_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Where a path of the device lies on this machine: the value of KY_DEVICE_ROOT in front of it, nothing when that
 * is unset. Device nodes below /dev, /tmp and /proc/self are the machine's own and stay as they are.
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
