#ifndef YDICBUFFER_P_H
#define YDICBUFFER_P_H

#include <memory>
#include <stdint.h>
#include <stdlib.h>

/** Gives memory of malloc() back. */
struct YdicFree
{
    void operator()(void *memory) const { free(memory); }
};

/** Bytes that a search reads into; null when there was no memory. */
using YdicBuffer = std::unique_ptr<uint8_t, YdicFree>;

inline YdicBuffer ydic_allocate(uint32_t size)
{
    return YdicBuffer(static_cast<uint8_t *>(malloc(size > 0 ? size : 1)));
}

#endif
