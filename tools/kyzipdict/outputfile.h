#ifndef OUTPUTFILE_H
#define OUTPUTFILE_H

#include "dictionarywriter.h"

namespace ZipDict {

/** Whether a file may be written to @p path, which can't be a device or a pipe, nor one of the files it is
 * made of. Tells on standard error why not. */
[[nodiscard]] bool canReplace(const std::string &path, const std::vector<std::string> &sources);

/** Writes a file as a whole: one that is there stays as it is until the new one is complete. Tells on
 * standard error what went wrong, the errors of @p file too. @return false when nothing was written */
[[nodiscard]] bool replaceFile(const std::string &path, const WrittenFile &file);

} // namespace ZipDict

#endif
