#include "descriptor_p.h"
#include "replacefile_p.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/** False when another writer has renamed the file between our open and our lock. */
bool isStillAt(int fd, const QByteArray &path)
{
    struct stat ours, there;
    return ::fstat(fd, &ours) == 0 && ::stat(path.constData(), &there) == 0 && ours.st_dev == there.st_dev &&
           ours.st_ino == there.st_ino;
}

bool writeAll(int fd, const QByteArray &contents)
{
    qsizetype done = 0;
    while (done < contents.size()) {
        const ssize_t count =
            ::write(fd, contents.constData() + done, static_cast<size_t>(contents.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        done += count;
    }
    return true;
}

bool keepPermissions(int fd, const QByteArray &existing)
{
    struct stat old;
    return ::stat(existing.constData(), &old) != 0 || ::fchmod(fd, old.st_mode & 07777) == 0;
}

bool fillAndRename(int fd, const QByteArray &temporary, const QByteArray &target, const QByteArray &contents)
{
    const bool written = ::ftruncate(fd, 0) == 0 && keepPermissions(fd, target) && writeAll(fd, contents) &&
                         ::fsync(fd) == 0 && std::rename(temporary.constData(), target.constData()) == 0;
    const int error = errno;
    if (!written)
        ::unlink(temporary.constData());
    errno = error;
    return written;
}

bool replaceTarget(const QByteArray &target, const QByteArray &contents)
{
    const QByteArray temporary = target + ".new";
    for (;;) {
        const Descriptor fd(::open(temporary.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
        if (fd < 0 || ::flock(fd, LOCK_EX) != 0)
            return false;
        if (isStillAt(fd, temporary))
            return fillAndRename(fd, temporary, target, contents);
    }
}

} // namespace

bool replaceFile(const QString &path, const QByteArray &contents)
{
    const QFileInfo info(path);
    const QString target = info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
    if (replaceTarget(QFile::encodeName(target), contents))
        return true;
    qWarning("could not write %s: %s", qPrintable(target), std::strerror(errno));
    return false;
}
