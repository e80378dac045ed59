#ifndef KY_TEST_MEMORYFAULTS_H
#define KY_TEST_MEMORYFAULTS_H

#include <cstdlib>
#include <malloc.h>

/**
 * @file memoryfaults.h
 * Memory of the engine, counted and made to run out. A test program that includes it is linked with
 * --wrap=malloc,--wrap=free, so that only what is part of the program comes here.
 */

namespace memoryfaults {

inline int allowed = -1; ///< allocations that may still succeed; negative: any number
inline int blocks = 0;   ///< that are in use
inline size_t bytes = 0; ///< that are in use
inline size_t peak = 0;  ///< most bytes that were in use at once

/** Counts anew. @param allowedAllocations how many may succeed */
inline void reset(int allowedAllocations = -1)
{
    allowed = allowedAllocations;
    blocks = 0;
    bytes = 0;
    peak = 0;
}

} // namespace memoryfaults

extern "C" void *__real_malloc(size_t size);
extern "C" void __real_free(void *memory);

extern "C" void *__wrap_malloc(size_t size)
{
    using namespace memoryfaults;
    if (allowed == 0)
        return nullptr;
    if (allowed > 0)
        --allowed;
    void *memory = __real_malloc(size);
    ++blocks;
    bytes += malloc_usable_size(memory);
    peak = bytes > peak ? bytes : peak;
    return memory;
}

extern "C" void __wrap_free(void *memory)
{
    using namespace memoryfaults;
    if (memory) {
        --blocks;
        bytes -= malloc_usable_size(memory);
    }
    __real_free(memory);
}

#endif
