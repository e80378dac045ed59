#include "outputfile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ZipDict {

namespace {

bool writeBytes(const std::string &path, const std::vector<uint8_t> &bytes)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const int reason = errno;
    const bool isClosed = std::fclose(file) == 0;
    if (!isWritten)
        errno = reason;
    return isWritten && isClosed;
}

} // namespace

bool replaceFile(const std::string &path, const std::vector<uint8_t> &bytes)
{
    const std::string newPath = path + ".new";
    if (writeBytes(newPath, bytes) && std::rename(newPath.c_str(), path.c_str()) == 0)
        return true;
    const int reason = errno;
    std::remove(newPath.c_str());
    std::fprintf(stderr, "%s: %s\n", path.c_str(), std::strerror(reason));
    return false;
}

} // namespace ZipDict
