#include "fepconf.h"
#include "descriptor_p.h"
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <QDir>
#include <QFile>
#include <sys/file.h>

namespace {

using FepModes = std::array<int, FepConf::Items>;

constexpr FepModes DefaultModes{0, 130, 0, 130};
constexpr size_t ItemSize = sizeof(int32_t);
constexpr size_t FileSize = FepConf::Items * ItemSize;
static_assert(sizeof(FepModes) == FileSize);

bool isItem(int item)
{
    return item >= 0 && item < FepConf::Items;
}

/** The folder is made where a file may be. Without HOME it would be one in the root of the machine. */
bool makeFolder(int flags)
{
    return (flags & O_CREAT) == 0 || (!qEnvironmentVariableIsEmpty("HOME") &&
                                      QDir().mkpath(QDir::homePath() + QLatin1String("/Settings")));
}

/** Waits for the lock. */
bool lock(int fd, int operation)
{
    int result = ::flock(fd, operation);
    while (result != 0 && errno == EINTR)
        result = ::flock(fd, operation);
    return result == 0;
}

/** Opens and locks the file. @return a descriptor, -1 on failure */
int openLocked(int flags, int operation)
{
    if (!makeFolder(flags))
        return -1;
    const QByteArray path = QFile::encodeName(FepConf::getConfigPathName());
    // Without waiting, should a pipe stand there; files don't know the difference.
    const int fd = ::open(path.constData(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (fd < 0)
        return -1;
    // Another user may have left the file. Who may not take it over may still use it.
    [[maybe_unused]] const int taken = ::fchown(fd, ::getuid(), ::getgid());
    if (lock(fd, operation))
        return fd;
    ::close(fd);
    return -1;
}

/** What a short file lacks stays as it is in @p items. */
bool readItems(int fd, int *items)
{
    ssize_t count = ::read(fd, items, FileSize);
    while (count < 0 && errno == EINTR)
        count = ::read(fd, items, FileSize);
    return count >= 0;
}

bool writeBytes(int fd, const int *items, size_t size)
{
    ssize_t count = ::write(fd, items, size);
    while (count < 0 && errno == EINTR)
        count = ::write(fd, items, size);
    return count == ssize_t(size);
}

bool writeItems(int fd, const int *items)
{
    return writeBytes(fd, items, FileSize);
}

bool goTo(int fd, size_t offset)
{
    return ::lseek(fd, off_t(offset), SEEK_SET) == off_t(offset);
}

/** For a file that can't be read. When another process has made it since, what it wrote stays. */
void writeDefaults()
{
    FepModes modes = DefaultModes;
    const int fd = FepConf::readLockOpenFepModeConfigFile(modes.data());
    if (fd >= 0)
        FepConf::writeUnLockCloseFepModeConfigFile(fd, modes.data());
    else
        FepConf::writeFepModeConfigFile(modes.data());
}

/** For a file that can't be opened: makes it. The same holds. */
bool makeFileWith(int item, int value)
{
    FepModes modes = DefaultModes;
    const int fd = FepConf::readLockOpenFepModeConfigFile(modes.data());
    modes[size_t(item)] = value;
    return FepConf::writeUnLockCloseFepModeConfigFile(fd, modes.data());
}

} // namespace

QString FepConf::getConfigPathName()
{
    return QDir::homePath() + QLatin1String("/Settings/fepmode.ja.conf");
}

void FepConf::setConfigDefault(int *items)
{
    std::copy(DefaultModes.begin(), DefaultModes.end(), items);
}

bool FepConf::readFepModeConfigFile(int *items)
{
    const Descriptor file(openLocked(O_RDONLY, LOCK_SH));
    return file.get() >= 0 && readItems(file.get(), items);
}

bool FepConf::writeFepModeConfigFile(int *items)
{
    const Descriptor file(openLocked(O_WRONLY | O_CREAT, LOCK_EX));
    return file.get() >= 0 && writeItems(file.get(), items);
}

bool FepConf::readFepModeConfigFileItem(int item, int *value)
{
    if (!isItem(item))
        return false;
    FepModes modes = DefaultModes;
    if (!readFepModeConfigFile(modes.data())) {
        writeDefaults();
        *value = 0;
        return false;
    }
    *value = modes[size_t(item)];
    return true;
}

bool FepConf::writeFepModeConfigFileItem(int item, int value)
{
    if (!isItem(item))
        return false;
    const Descriptor file(openLocked(O_WRONLY, LOCK_EX));
    if (file.get() < 0)
        return makeFileWith(item, value);
    return goTo(file.get(), size_t(item) * ItemSize) && writeBytes(file.get(), &value, ItemSize);
}

bool FepConf::toggleFepModeConfigFileItem(int item)
{
    if (!isItem(item))
        return false;
    const Descriptor file(openLocked(O_RDWR | O_CREAT, LOCK_EX));
    if (file.get() < 0)
        return false;
    FepModes modes = DefaultModes;
    const bool wasRead = readItems(file.get(), modes.data());
    if (wasRead)
        modes[size_t(item)] = modes[size_t(item)] == 0;
    return goTo(file.get(), 0) && writeItems(file.get(), modes.data()) && wasRead;
}

int FepConf::readLockOpenFepModeConfigFile(int *items)
{
    setConfigDefault(items);
    const int fd = openLocked(O_RDWR | O_CREAT, LOCK_EX);
    if (fd < 0)
        return -1;
    if (readItems(fd, items) && goTo(fd, 0))
        return fd;
    ::close(fd);
    return -1;
}

bool FepConf::writeUnLockCloseFepModeConfigFile(int fd, int *items)
{
    const Descriptor file(fd);
    return fd >= 0 && writeItems(fd, items);
}

void FepConf::unlockCloseFepModeConfigFile(int fd)
{
    const Descriptor file(fd);
}
