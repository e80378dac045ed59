#include "storageinfo.h"

#include "devicepath.h"
#include "mounttable_p.h"
#include "storagekind_p.h"
#include <algorithm>
#include <array>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QSocketNotifier>
#include <string_view>
#include <vector>

using namespace std::string_view_literals;

namespace {

constexpr QLatin1String kernelTable("/proc/self/mounts");

constexpr std::array pseudoTypes = {
    "autofs"sv,     "binfmt_misc"sv, "bpf"sv,     "cgroup"sv,    "cgroup2"sv,    "configfs"sv,
    "debugfs"sv,    "devfs"sv,       "devpts"sv,  "devtmpfs"sv,  "efivarfs"sv,   "fuse.gvfsd-fuse"sv,
    "fuse.lxcfs"sv, "fuse.portal"sv, "fusectl"sv, "hugetlbfs"sv, "mqueue"sv,     "nsfs"sv,
    "proc"sv,       "pstore"sv,      "ramfs"sv,   "rootfs"sv,    "rpc_pipefs"sv, "securityfs"sv,
    "selinuxfs"sv,  "squashfs"sv,    "sysfs"sv,   "tmpfs"sv,     "tracefs"sv,    "usbfs"sv,
    "usbdevfs"sv};

bool isPseudo(const MountEntry &mount)
{
    return std::find(pseudoTypes.begin(), pseudoTypes.end(), mount.type.toStdString()) != pseudoTypes.end();
}

QList<MountEntry> readTable(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? parseMountTable(file.readAll()) : QList<MountEntry>();
}

QString deviceTable()
{
    return devicePath(QStringLiteral("/etc/mtab"));
}

bool hasDeviceRoot()
{
    return devicePath(QStringLiteral("/")) != QLatin1String("/");
}

QList<MountEntry> readDeviceTable()
{
    QList<MountEntry> mounts = readTable(deviceTable());
    for (MountEntry &mount : mounts)
        mount.path = QDir::cleanPath(devicePath(mount.path));
    return mounts;
}

bool isAlwaysListed(const MountEntry &mount)
{
    return storageKind(mount.path, false) != StorageKind::Other || mount.path == QLatin1String("/dev/shm");
}

bool isOrdinaryVolume(const MountEntry &mount)
{
    const bool isRoot = mount.path == QDir::cleanPath(devicePath(QStringLiteral("/")));
    return !isRoot && !isPseudo(mount) && QFileInfo(mount.path).isDir();
}

MountEntry internalVolume(const QList<MountEntry> &mounts)
{
    const qsizetype index = indexHolding(mounts, resolvedPath(QDir::homePath()));
    return mounts.value(index, {QString(), QStringLiteral("/"), QString(), {QStringLiteral("rw")}});
}

/** Adds a mount that isn't the internal volume, if it belongs into the list. Of mounts at one place the last
 * shows, of an ordinary volume's several places the first. */
void addVolume(QList<MountEntry> &volumes, const MountEntry &mount)
{
    const auto hasPath = [&](const MountEntry &other) { return other.path == mount.path; };
    const auto hasDisk = [&](const MountEntry &other) { return other.disk == mount.disk; };
    const auto hidden = std::find_if(volumes.begin(), volumes.end(), hasPath);
    if (hidden != volumes.end())
        *hidden = mount;
    else if (isAlwaysListed(mount) ||
             (isOrdinaryVolume(mount) && std::none_of(volumes.begin(), volumes.end(), hasDisk)))
        volumes.append(mount);
}

QList<MountEntry> volumesOf(const QList<MountEntry> &mounts, const MountEntry &internal)
{
    QList<MountEntry> volumes{internal};
    for (const MountEntry &mount : mounts) {
        if (mount.path != internal.path)
            addVolume(volumes, mount);
    }
    return volumes;
}

} // namespace

class StorageInfoPrivate
{
public:
    /** @return true when the list of volumes changed */
    bool update();
    void watchDeviceTable();
    const FileSystem *holding(const QString &path, qsizetype firstPlace) const;

    QFile kernelFile{kernelTable};
    std::unique_ptr<QSocketNotifier> kernelNotifier;
    QFileSystemWatcher deviceWatcher;

    QList<MountEntry> volumes;
    /** Of each known file system, the entry with a path free of links: the kernel's, then the volumes. */
    QList<MountEntry> places;
    std::vector<std::unique_ptr<FileSystem>> fileSystems; ///< as the places
    QList<FileSystem *> listed;                           ///< those of the volumes

private:
    void setTable(const QList<MountEntry> &kernelMounts, const QList<MountEntry> &newVolumes);
    void add(const MountEntry &mount, bool internal);
};

bool StorageInfoPrivate::update()
{
    const QList<MountEntry> kernelMounts = readTable(kernelTable);
    const MountEntry internal = internalVolume(kernelMounts);
    const QList<MountEntry> newVolumes =
        volumesOf(hasDeviceRoot() ? readDeviceTable() : kernelMounts, internal);
    const bool isSameList = newVolumes == volumes;
    if (!isSameList || kernelMounts != places.first(places.size() - volumes.size()))
        setTable(kernelMounts, newVolumes);
    return !isSameList;
}

void StorageInfoPrivate::setTable(const QList<MountEntry> &kernelMounts, const QList<MountEntry> &newVolumes)
{
    volumes = newVolumes;
    places.clear();
    listed.clear();
    fileSystems.clear();
    for (const MountEntry &mount : kernelMounts)
        add(mount, false);
    for (const MountEntry &volume : volumes) {
        add(volume, listed.isEmpty());
        places.last().path = resolvedPath(volume.path);
        listed.append(fileSystems.back().get());
    }
}

void StorageInfoPrivate::add(const MountEntry &mount, bool internal)
{
    places.append(mount);
    fileSystems.push_back(std::make_unique<FileSystem>(mount, internal));
}

const FileSystem *StorageInfoPrivate::holding(const QString &path, qsizetype firstPlace) const
{
    const qsizetype place = indexHolding(places, resolvedPath(path), firstPlace);
    return place < 0 ? nullptr : fileSystems[static_cast<size_t>(place)].get();
}

/** The folder is watched too, since a table that is renamed into its place is another file. */
void StorageInfoPrivate::watchDeviceTable()
{
    const QString table = deviceTable();
    for (const QString &path : {table, QFileInfo(table).path()}) {
        if (QFileInfo::exists(path))
            deviceWatcher.addPath(path);
    }
}

StorageInfo::StorageInfo(QObject *parent) : QObject(parent), d(std::make_unique<StorageInfoPrivate>())
{
    // A mount shows as an exceptional condition on the table; a notifier for reading would never rest.
    if (d->kernelFile.open(QIODevice::ReadOnly)) {
        d->kernelNotifier =
            std::make_unique<QSocketNotifier>(d->kernelFile.handle(), QSocketNotifier::Exception);
        connect(d->kernelNotifier.get(), &QSocketNotifier::activated, this, &StorageInfo::update);
    }
    if (hasDeviceRoot()) {
        connect(&d->deviceWatcher, &QFileSystemWatcher::fileChanged, this, &StorageInfo::update);
        connect(&d->deviceWatcher, &QFileSystemWatcher::directoryChanged, this, &StorageInfo::update);
    }
    update();
}

StorageInfo::~StorageInfo() = default;

const QList<FileSystem *> &StorageInfo::fileSystems() const
{
    return d->listed;
}

const FileSystem *StorageInfo::fileSystemOf(const QString &path) const
{
    return d->holding(path, 0);
}

const FileSystem *StorageInfo::fileSystemOfThePath(const QString &path) const
{
    return d->holding(path, d->places.size() - d->volumes.size());
}

QString StorageInfo::getDefaultStorageName(int n, bool inFull)
{
    switch (static_cast<StorageKind>(n)) {
    case StorageKind::Internal:
        return inFull ? tr("Internal storage") : tr("Internal");
    case StorageKind::Sd:
        return inFull ? tr("SD card") : tr("SD");
    case StorageKind::Cf:
        return inFull ? tr("CF card") : tr("CF");
    case StorageKind::Other:
        break;
    }
    return QString();
}

void StorageInfo::update()
{
    if (hasDeviceRoot())
        d->watchDeviceTable();
    if (d->update())
        emit disksChanged();
}
