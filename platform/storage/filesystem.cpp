#include "filesystem.h"

#include "storageinfo.h"
#include "storagekind_p.h"
#include <QFile>
#include <QFileInfo>
#include <sys/statvfs.h>

namespace {

struct statvfs numbersOf(const QString &path)
{
    struct statvfs numbers = {};
    if (::statvfs(QFile::encodeName(path).constData(), &numbers) != 0)
        return {};
    return numbers;
}

} // namespace

FileSystem::FileSystem(const MountEntry &mount, bool internal) : m_mount(mount), m_internal(internal) {}

QString FileSystem::name() const
{
    switch (storageKind(path(), m_internal)) {
    case StorageKind::Internal:
        return QStringLiteral("Internal");
    case StorageKind::Sd:
        return QStringLiteral("SD");
    case StorageKind::Cf:
        return QStringLiteral("CF");
    case StorageKind::Other:
        break;
    }
    const QString last = QFileInfo(path()).fileName();
    return last.isEmpty() ? path() : last;
}

QString FileSystem::uiName() const
{
    const StorageKind kind = storageKind(path(), m_internal);
    return kind == StorageKind::Other ? name()
                                      : StorageInfo::getDefaultStorageName(static_cast<int>(kind), false);
}

bool FileSystem::isRemovable() const
{
    const StorageKind kind = storageKind(path(), m_internal);
    return kind == StorageKind::Sd || kind == StorageKind::Cf ||
           (kind == StorageKind::Other && isBelowMediaFolder(path()));
}

bool FileSystem::isWritable() const
{
    return m_mount.options.contains(QStringLiteral("rw"));
}

long FileSystem::blockSize() const
{
    return static_cast<long>(numbersOf(path()).f_frsize);
}

long FileSystem::totalBlocks() const
{
    return static_cast<long>(numbersOf(path()).f_blocks);
}

long FileSystem::availBlocks() const
{
    return static_cast<long>(numbersOf(path()).f_bavail);
}
