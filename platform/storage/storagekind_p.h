#ifndef KY_STORAGEKIND_H
#define KY_STORAGEKIND_H

#include <QString>

/** What a volume is to the user; the first three are the numbers of StorageInfo::getDefaultStorageName(). */
enum class StorageKind { Internal, Sd, Cf, Other };

/** By where the volume is mounted on this machine. */
StorageKind storageKind(const QString &path, bool internal);

/** True for places where desktops mount what is plugged in. */
bool isBelowMediaFolder(const QString &path);

#endif
