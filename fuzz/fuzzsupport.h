#ifndef FUZZSUPPORT_H
#define FUZZSUPPORT_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

/** Ends the run, in every build, when something that must hold doesn't. */
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

#endif
