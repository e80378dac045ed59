#ifndef KY_FILESYSTEM_H
#define KY_FILESYSTEM_H

#include "kyexport.h"
#include <QString>
#include <QStringList>

/** What a line of the mount table tells. */
struct MountEntry
{
    QString disk;        ///< the device or source, such as /dev/mmcblk0p1
    QString path;        ///< where it is mounted on this machine
    QString type;        ///< such as ext4
    QStringList options; ///< such as rw, noatime

    /** True when all fields are the same. */
    bool operator==(const MountEntry &other) const = default;
};

/** A mounted volume. Its place and options are those at the last StorageInfo::update(); its numbers of blocks
 * are asked of the system at each call, and are 0 when it doesn't answer. */
class KY_EXPORT FileSystem
{
public:
    /** @param internal whether this is the volume of $HOME */
    FileSystem(const MountEntry &mount, bool internal);

    /** The device or source, such as /dev/mmcblk0p1. */
    [[nodiscard]] QString disk() const { return m_mount.disk; }
    /** The mount point on this machine, without a slash at the end unless it is the root. */
    [[nodiscard]] QString path() const { return m_mount.path; }
    /** Separated by commas; "rw" is one of them unless the volume is read-only. */
    [[nodiscard]] QString options() const { return m_mount.options.join(QLatin1Char(',')); }
    /** A name that is the same in every language: Internal, SD, CF, or the last part of the path. */
    [[nodiscard]] QString name() const;
    /** The name to show; that of a card begins with StorageInfo::getDefaultStorageName(). */
    [[nodiscard]] QString uiName() const;

    /** True for the device's cards and for what desktops mount below /media and /run/media. */
    [[nodiscard]] bool isRemovable() const;
    /** True when it is mounted for writing. */
    [[nodiscard]] bool isWritable() const;

    /** Size of a block in bytes. */
    [[nodiscard]] long blockSize() const;
    /** Size of the volume in blocks. */
    [[nodiscard]] long totalBlocks() const;
    /** Blocks that a user without privileges can still fill. */
    [[nodiscard]] long availBlocks() const;

private:
    const MountEntry m_mount;
    const bool m_internal;
};

#endif
