#include "boxlock.h"

#include "filesystem.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace pdtm {

PdtmStatus BoxLock::acquire(const std::string &boxPath)
{
    if (isHeld())
        return PdtmBusy;
    const int file = open((boxPath + "-lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return statusOfError(errno);
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        const PdtmStatus status = errno == EWOULDBLOCK ? PdtmStatus(PdtmBusy) : statusOfError(errno);
        close(file);
        return status;
    }
    m_file = file;
    m_process = getpid();
    return PdtmOk;
}

void BoxLock::release()
{
    if (m_file < 0)
        return;
    // A close alone would leave the lock with a child that was forked meanwhile.
    if (m_process == getpid())
        flock(m_file, LOCK_UN);
    close(m_file);
    m_file = -1;
}

} // namespace pdtm
