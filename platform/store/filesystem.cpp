#include "filesystem.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace pdtm {

namespace {

class Descriptor
{
public:
    Descriptor(const std::string &path, int flags) : m_number(::open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

PdtmStatus synchronise(const std::string &path, int flags)
{
    const Descriptor file(path, flags);
    return file.number() >= 0 && fsync(file.number()) == 0 ? PdtmStatus(PdtmOk) : statusOfError(errno);
}

} // namespace

bool writeAll(int file, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(file, data, size);
        if (written < 0 && errno != EINTR)
            return false;
        data += written > 0 ? written : 0;
        size -= written > 0 ? static_cast<size_t>(written) : 0;
    }
    return true;
}

std::optional<FileIdentity> fileIdentity(const std::string &path)
{
    struct stat information;
    if (stat(path.c_str(), &information) != 0)
        return std::nullopt;
    return FileIdentity{information.st_dev, information.st_ino, information.st_size,
                        S_ISREG(information.st_mode) != 0};
}

std::string folderOf(const std::string &path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool canWriteFolder(const std::string &path)
{
    return access(folderOf(path).c_str(), W_OK | X_OK) == 0;
}

PdtmStatus synchroniseFile(const std::string &path)
{
    return synchronise(path, O_RDONLY);
}

PdtmStatus synchroniseFolder(const std::string &folder)
{
    return synchronise(folder, O_RDONLY | O_DIRECTORY);
}

PdtmStatus copyFile(const std::string &source, const std::string &destination)
{
    const Descriptor from(source, O_RDONLY);
    const Descriptor to(destination, O_WRONLY | O_CREAT | O_EXCL);
    if (from.number() < 0 || to.number() < 0)
        return statusOfError(errno);
    std::array<char, 1 << 16> buffer;
    ssize_t size = 0;
    while ((size = read(from.number(), buffer.data(), buffer.size())) > 0) {
        if (!writeAll(to.number(), buffer.data(), static_cast<size_t>(size)))
            return statusOfError(errno);
    }
    return size == 0 ? PdtmStatus(PdtmOk) : statusOfError(errno);
}

PdtmStatus renameToNew(const std::string &from, const std::string &to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return PdtmOk;
    if (errno != EINVAL && errno != ENOSYS)
        return statusOfError(errno);
    // File systems of cards may not know the flag; the caller holds the lock of the box.
    if (fileIdentity(to))
        return PdtmExists;
    return rename(from.c_str(), to.c_str()) == 0 ? PdtmStatus(PdtmOk) : statusOfError(errno);
}

PdtmStatus statusOfError(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return PdtmMissing;
    case EEXIST:
        return PdtmExists;
    case ENOSPC:
    case EDQUOT:
        return PdtmOutOfSpace;
    case EROFS:
    case EACCES:
    case EPERM:
        return PdtmReadOnly;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return PdtmTooShort;
    case ENAMETOOLONG:
        return PdtmBadArgument;
    default:
        return PdtmIoError;
    }
}

uint64_t freeSpace(const std::string &path)
{
    struct statvfs volume;
    return statvfs(path.c_str(), &volume) == 0 ? uint64_t(volume.f_bavail) * volume.f_frsize : 0;
}

} // namespace pdtm
