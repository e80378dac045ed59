#include "syscallfailures.h"

#include <cerrno>
#include <dlfcn.h>
#include <sys/types.h>

namespace syscalls {
int synchronisations = 0;
int failingSynchronisation = 0;
int failingWrite = 0;
} // namespace syscalls

namespace {

template <typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int synchronise(const char *name, int file)
{
    ++syscalls::synchronisations;
    if (syscalls::failingSynchronisation != 0) {
        errno = syscalls::failingSynchronisation;
        syscalls::failingSynchronisation = 0;
        return -1;
    }
    return next<int (*)(int)>(name)(file);
}

} // namespace

extern "C" __attribute__((visibility("default"))) int fsync(int file)
{
    return synchronise("fsync", file);
}

extern "C" __attribute__((visibility("default"))) int fdatasync(int file)
{
    return synchronise("fdatasync", file);
}

extern "C" __attribute__((visibility("default"))) ssize_t pwrite64(int file, const void *data, size_t size,
                                                                   off64_t offset)
{
    if (syscalls::failingWrite != 0) {
        errno = syscalls::failingWrite;
        return -1;
    }
    return next<ssize_t (*)(int, const void *, size_t, off64_t)>("pwrite64")(file, data, size, offset);
}
