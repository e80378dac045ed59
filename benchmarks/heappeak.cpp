#include "heappeak.h"

#include <malloc.h>

namespace {

bool isWatching = false;
std::ptrdiff_t inUse = 0;
std::ptrdiff_t most = 0;

void count(std::ptrdiff_t bytes)
{
    if (!isWatching)
        return;
    inUse += bytes;
    if (inUse > most)
        most = inUse;
}

void *counted(void *memory)
{
    count(static_cast<std::ptrdiff_t>(malloc_usable_size(memory)));
    return memory;
}

} // namespace

/* The C library's own entrances. */
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_calloc(std::size_t count, std::size_t size);
extern "C" void *__libc_realloc(void *memory, std::size_t size);
extern "C" void __libc_free(void *memory);

extern "C" void *malloc(std::size_t size)
{
    return counted(__libc_malloc(size));
}

extern "C" void *calloc(std::size_t elements, std::size_t size)
{
    return counted(__libc_calloc(elements, size));
}

extern "C" void *realloc(void *memory, std::size_t size)
{
    count(-static_cast<std::ptrdiff_t>(malloc_usable_size(memory)));
    return counted(__libc_realloc(memory, size));
}

extern "C" void free(void *memory)
{
    count(-static_cast<std::ptrdiff_t>(malloc_usable_size(memory)));
    __libc_free(memory);
}

HeapPeak::HeapPeak()
{
    inUse = 0;
    most = 0;
    isWatching = true;
}

HeapPeak::~HeapPeak()
{
    isWatching = false;
}

std::size_t HeapPeak::bytes() const
{
    return static_cast<std::size_t>(most);
}
