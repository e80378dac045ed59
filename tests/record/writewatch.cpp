#include "writewatch.h"
#include "pdtm.h"
#include <dlfcn.h>

namespace {

QByteArrayList written;
QByteArray failing;

} // namespace

void WriteWatch::reset()
{
    written.clear();
    failing.clear();
}

QByteArrayList WriteWatch::codes()
{
    return written;
}

void WriteWatch::fail(const QByteArray &code)
{
    failing = code;
}

PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size)
{
    static const auto next = reinterpret_cast<decltype(&_CardWrite)>(dlsym(RTLD_NEXT, "_CardWrite"));
    const QByteArray code(key->code, sizeof key->code);
    written.append(code);
    return code == failing ? PdtmStatus(PdtmIoError) : next(handle, key, buffer, size);
}
