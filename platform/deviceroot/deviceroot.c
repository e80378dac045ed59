#include "deviceroot.h"

#include <stdbool.h>
#include <stdlib.h>
#include <string.h>

static bool isBelow(const char *path, const char *folder)
{
    const size_t length = strlen(folder);
    return strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == '\0');
}

static bool isProcessFolder(const char *path)
{
    static const char proc[] = "/proc/";
    if (strncmp(path, proc, sizeof proc - 1) != 0)
        return false;
    const char *name = path + sizeof proc - 1;
    const size_t digits = strspn(name, "0123456789");
    return digits > 0 && (name[digits] == '/' || name[digits] == '\0');
}

static bool isOfTheMachine(const char *path)
{
    return path[0] != '/' || isBelow(path, "/dev") || isBelow(path, "/tmp") || isBelow(path, "/proc/self") ||
           isProcessFolder(path);
}

static size_t rootLength(const char *root)
{
    size_t length = root ? strlen(root) : 0;
    while (length > 0 && root[length - 1] == '/')
        --length;
    return length;
}

/* Copies what fits behind the first `used` bytes of `out`, and gives the length as if all did. */
static size_t append(char *out, size_t room, size_t used, const char *text, size_t length)
{
    if (used < room) {
        const size_t left = room - used;
        memcpy(out + used, text, length < left ? length : left);
    }
    return used + length;
}

size_t kyDevicePath(const char *path, char *out, size_t room)
{
    const char *root = isOfTheMachine(path) ? NULL : getenv("KY_DEVICE_ROOT");
    size_t length = root ? append(out, room, 0, root, rootLength(root)) : 0;
    length = append(out, room, length, path, strlen(path));
    if (room > 0)
        out[length < room ? length : room - 1] = '\0';
    return length;
}
