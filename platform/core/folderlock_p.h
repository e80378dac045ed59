#ifndef KY_FOLDERLOCK_H
#define KY_FOLDERLOCK_H

#include "descriptor_p.h"
#include <cerrno>
#include <fcntl.h>
#include <QFile>
#include <QString>
#include <sys/file.h>

/** Keeps other processes that do the same out of a folder while it lives; waits for them first. A folder that
 * can't be opened is nobody's. No file is left behind, and the end of a process ends its lock. */
class FolderLock
{
public:
    explicit FolderLock(const QString &folder)
        : m_folder(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        while (::flock(m_folder.get(), LOCK_EX) != 0 && errno == EINTR) {
        }
    }

private:
    const Descriptor m_folder;
};

#endif
