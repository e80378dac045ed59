#ifndef PATCHWRITER_H
#define PATCHWRITER_H

#include "dictionarywriter.h"

namespace ZipDict {

/** The patch that turns one edition into another. @param older,newer places sorted by code */
[[nodiscard]] WrittenFile writePatch(const FileIdentity &identity, const std::vector<Place> &older,
                                     const std::vector<Place> &newer);

} // namespace ZipDict

#endif
