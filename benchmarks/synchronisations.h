#ifndef BENCHMARKS_SYNCHRONISATIONS_H
#define BENCHMARKS_SYNCHRONISATIONS_H

/** Calls of fsync() and fdatasync() by this process so far, those of its libraries included. */
[[nodiscard]] int synchronisations();

#endif
