#ifndef WHOLEFILE_H
#define WHOLEFILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ZipDict {

/** The bytes of a dictionary or a patch. Tells on standard error why there are none: the file can't be read,
 * or is larger than any dictionary. */
[[nodiscard]] std::optional<std::vector<uint8_t>> readWholeFile(const std::string &path);

} // namespace ZipDict

#endif
