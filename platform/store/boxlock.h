#ifndef PDTM_BOXLOCK_H
#define PDTM_BOXLOCK_H

#include "pdtm.h"

#include <string>
#include <sys/types.h>

namespace pdtm {

/**
 * The right to change a box: a lock on the file NAME-lock, which is never deleted. It is a file of its own,
 * because a process loses its locks on the box file as soon as anything in it opens and closes that file.
 */
class BoxLock
{
public:
    BoxLock() = default;
    ~BoxLock() { release(); }
    BoxLock(const BoxLock &) = delete;
    BoxLock &operator=(const BoxLock &) = delete;

    /** Never waits. PdtmBusy while anybody has it, in this process too; PdtmReadOnly, PdtmIoError */
    [[nodiscard]] PdtmStatus acquire(const std::string &boxPath);
    void release();
    [[nodiscard]] bool isHeld() const { return m_file >= 0; }

private:
    int m_file = -1;
    pid_t m_process = 0; ///< who took it: a forked child has a copy that it must not give back
};

} // namespace pdtm

#endif
