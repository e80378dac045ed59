#ifndef WHOLEFILE_H
#define WHOLEFILE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZipDict {

struct FileCloser
{
    void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

/** The bytes of a dictionary or a patch. Tells on standard error why there are none: the file can't be read,
 * or is larger than any dictionary. */
[[nodiscard]] std::optional<std::vector<uint8_t>> readWholeFile(const std::string &path);

} // namespace ZipDict

#endif
