#ifndef BENCHMARKS_HEAPPEAK_H
#define BENCHMARKS_HEAPPEAK_H

#include <cstddef>

/** The most memory of the heap that was in use at a time since this was made, beyond what was in use then. */
class HeapPeak
{
public:
    HeapPeak();
    ~HeapPeak();
    HeapPeak(const HeapPeak &) = delete;
    HeapPeak &operator=(const HeapPeak &) = delete;
    [[nodiscard]] std::size_t bytes() const;
};

#endif
