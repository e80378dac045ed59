#ifndef BENCHMARKS_SEPARATEPROCESS_H
#define BENCHMARKS_SEPARATEPROCESS_H

#include <functional>

/** What @p work gives in a process of its own, which sees all that this one has. Both end with status 2 when
 * it fails. For a process that has no thread yet. */
double inSeparateProcess(const std::function<double()> &work);

/** Bytes of memory that this process has for itself, files and shared memory left out. */
[[nodiscard]] double anonymousMemory();

#endif
