#include "outputfile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace ZipDict {

namespace {

bool writeBytes(const std::string &path, const std::vector<uint8_t> &bytes)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() &&
                           std::fflush(file) == 0 && fsync(fileno(file)) == 0;
    const int reason = errno;
    const bool isClosed = std::fclose(file) == 0;
    if (!isWritten)
        errno = reason;
    return isWritten && isClosed;
}

bool refuse(const std::string &path, const char *reason)
{
    std::fprintf(stderr, "kyzipdict: %s: %s\n", path.c_str(), reason);
    return false;
}

} // namespace

bool canReplace(const std::string &path, const std::vector<std::string> &sources)
{
    struct stat there = {};
    if (stat(path.c_str(), &there) != 0)
        return true;
    if (!S_ISREG(there.st_mode))
        return refuse(path, S_ISDIR(there.st_mode) ? "it is a folder" : "it is no file that can be replaced");
    for (const std::string &source : sources) {
        struct stat read = {};
        if (stat(source.c_str(), &read) == 0 && read.st_dev == there.st_dev && read.st_ino == there.st_ino)
            return refuse(path, "it is one of the files to read");
    }
    return true;
}

bool replaceFile(const std::string &path, const WrittenFile &file)
{
    for (const std::string &error : file.errors)
        std::fprintf(stderr, "kyzipdict: %s\n", error.c_str());
    if (!file.errors.empty())
        return false;
    const std::string newPath = path + ".new";
    if (writeBytes(newPath, file.bytes) && std::rename(newPath.c_str(), path.c_str()) == 0)
        return true;
    const int reason = errno;
    std::remove(newPath.c_str());
    return refuse(path, std::strerror(reason));
}

} // namespace ZipDict
