#ifndef SYSCALLFAILURES_H
#define SYSCALLFAILURES_H

/** System calls of this process that a test counts and lets fail; see syscallfailures.cpp. */
namespace syscalls {

extern int synchronisations;       ///< fsync() and fdatasync() calls since it was set to 0
extern int failingSynchronisation; ///< error of the next synchronisation, 0: none
extern int failingWrite;           ///< error of all pwrite() calls, 0: none

} // namespace syscalls

#endif
