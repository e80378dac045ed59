#ifndef KY_STORAGEINFO_H
#define KY_STORAGEINFO_H

#include "filesystem.h"
#include "kyexport.h"
#include <memory>
#include <QList>
#include <QObject>

class StorageInfoPrivate;

/**
 * The mounted volumes.
 *
 * The list begins with the internal volume, on which $HOME lies. Then come those of the mount table in its
 * order: with a device root that of its etc/mtab, whose entries are device paths and get the root in front,
 * else the kernel's. Left out are pseudo file systems (proc, tmpfs and the like), a second mount of a volume,
 * and what is mounted at "/". Always listed are mounts at the device's card paths /usr/mnt.rom/card and
 * /usr/mnt.rom/cf, whatever their type, and the memory area /dev/shm, which who shows volumes passes over.
 *
 * Changes are noticed while the event loop runs. FileSystem pointers are good until the next update() that
 * finds a change, so they aren't kept across the event loop.
 */
class KY_EXPORT StorageInfo : public QObject
{
    Q_OBJECT
public:
    /** Reads the mount table and watches it from then on. */
    explicit StorageInfo(QObject *parent = nullptr);
    ~StorageInfo() override;

    /** Owned by this object; never empty. */
    [[nodiscard]] const QList<FileSystem *> &fileSystems() const;

    /** The file system that holds a file or folder, a pseudo file system too. Symbolic links are followed; of
     * a path that doesn't exist yet, the folder that it would be made in counts. Null when there is none. */
    [[nodiscard]] const FileSystem *fileSystemOf(const QString &path) const;
    /** The listed volume that a path belongs to; null when it lies on none of them. */
    [[nodiscard]] const FileSystem *fileSystemOfThePath(const QString &path) const;

    /**
     * The name that the user sees.
     * @param n 0 the internal volume, 1 the SD card, 2 the CF card; for others the result is empty
     * @param inFull "SD card" and not "SD"
     */
    [[nodiscard]] static QString getDefaultStorageName(int n, bool inFull = false);

public slots:
    /** Reads the mount table again. */
    void update();

signals:
    /** The list of volumes, or options of one, changed; fileSystems() already shows it. Once a change. */
    void disksChanged();

private:
    const std::unique_ptr<StorageInfoPrivate> d;
};

#endif
