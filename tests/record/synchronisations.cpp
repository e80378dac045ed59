#include "synchronisations.h"

#include <dlfcn.h>

namespace {

int count(const char *call, int descriptor)
{
    ++synchronisations();
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, call))(descriptor);
}

} // namespace

int &synchronisations()
{
    static int calls = 0;
    return calls;
}

extern "C" {

__attribute__((visibility("default"))) int fsync(int descriptor)
{
    return count("fsync", descriptor);
}

__attribute__((visibility("default"))) int fdatasync(int descriptor)
{
    return count("fdatasync", descriptor);
}

} // extern "C"
