#include "wholefile.h"

#include "dictionaryfile.h"
#include <cerrno>
#include <cstring>

namespace ZipDict {

std::optional<std::vector<uint8_t>> readWholeFile(const std::string &path)
{
    const File file(std::fopen(path.c_str(), "rb"));
    std::vector<uint8_t> bytes;
    uint8_t part[65536];
    while (file && bytes.size() <= LargestFile) {
        const size_t count = std::fread(part, 1, sizeof part, file.get());
        if (count == 0)
            break;
        bytes.insert(bytes.end(), part, part + count);
    }
    if (!file || std::ferror(file.get()))
        std::fprintf(stderr, "kyzipdict: %s: %s\n", path.c_str(), std::strerror(errno));
    else if (bytes.size() > LargestFile)
        std::fprintf(stderr, "kyzipdict: %s is too large for a dictionary\n", path.c_str());
    else
        return bytes;
    return std::nullopt;
}

} // namespace ZipDict
