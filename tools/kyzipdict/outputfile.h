#ifndef OUTPUTFILE_H
#define OUTPUTFILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace ZipDict {

/** Whether a file may be written to @p path, which can't be a device or a pipe, nor one of the files it is
 * made of. Tells on standard error why not. */
[[nodiscard]] bool canReplace(const std::string &path, const std::vector<std::string> &sources);

/** Writes a file as a whole: one that is there stays as it is until the new one is complete. Tells on
 * standard error what went wrong. @return false when nothing was written */
[[nodiscard]] bool replaceFile(const std::string &path, const std::vector<uint8_t> &bytes);

} // namespace ZipDict

#endif
