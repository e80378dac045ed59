#include "kymisc.h"

#include "devicepath.h"
#include "sambalock_p.h"
#include <QFile>
#include <sys/stat.h>

namespace {

// Bits of a share mode.
constexpr char WriteModes = 15; // all those that write
constexpr char CopyMode = 17;

/** The server's lock file for a file: it is named after where that lies on the disk. */
QString lockFileOf(const struct stat &file)
{
    return devicePath(QString::asprintf("/var/lock/samba/share.%u.%lu", static_cast<unsigned>(file.st_dev),
                                        static_cast<unsigned long>(file.st_ino)));
}

} // namespace

bool KyMisc::isTheSmbShareFileHasWriteEntry(const QString &lockFile)
{
    return checkTheSmbShareFileMode(lockFile, WriteModes, 0, false);
}

bool KyMisc::isTheSmbShareFileNowCopy(const QString &lockFile)
{
    return checkTheSmbShareFileMode(lockFile, CopyMode, CopyMode, true);
}

bool KyMisc::checkTheSmbShareFileMode(const QString &lockFile, char mask, char value, bool equal)
{
    QFile file(lockFile);
    return file.open(QIODevice::ReadOnly) && hasSambaLockEntry(file, mask, value, equal);
}

bool KyMisc::isTheFileLockedBySmbd(const QString &path)
{
    struct stat file = {};
    if (::stat(QFile::encodeName(path).constData(), &file) != 0)
        return true; // nobody may go on with a file that has gone
    const QString lockFile = lockFileOf(file);
    qDebug("lock file is %s", qUtf8Printable(lockFile));
    return isTheSmbShareFileHasWriteEntry(lockFile);
}

bool KyMisc::isSambaForked()
{
    return QFile::exists(devicePath(QStringLiteral("/var/lock/samba/smbd.pid")));
}
