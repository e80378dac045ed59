#include "storagekind_p.h"

#include "devicepath.h"

StorageKind storageKind(const QString &path, bool internal)
{
    if (internal)
        return StorageKind::Internal;
    if (startsWithDevicePath(path, QStringLiteral("/usr/mnt.rom/card")))
        return StorageKind::Sd;
    if (startsWithDevicePath(path, QStringLiteral("/usr/mnt.rom/cf")))
        return StorageKind::Cf;
    return StorageKind::Other;
}

bool isBelowMediaFolder(const QString &path)
{
    return path.startsWith(QStringLiteral("/media/")) || path.startsWith(QStringLiteral("/run/media/"));
}
