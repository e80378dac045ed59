#ifndef CHUNKWRITER_H
#define CHUNKWRITER_H

#include "records.h"

/**
 * @file chunkwriter.h
 * The chunks of a file and the index of their codes.
 */

namespace ZipDict {

/** Where the search by address finds a chunk or a complete address. */
struct WrittenReference
{
    uint32_t offset = 0; ///< from the start of level 2 of the code index
    uint16_t length = 0; ///< with the top bit set for a complete address
    NameForm form = NameForm::Both;
};

struct Chunks
{
    Bytes level1;
    Bytes level2;
    Bytes bytes;                                           ///< of the chunks; they follow level 2
    uint32_t largestSlice = 0;                             ///< of level 2
    std::vector<std::vector<WrittenReference>> references; ///< by municipality, ascending
    std::vector<std::string> errors;
};

[[nodiscard]] Chunks writeChunks(const Records &records, const OneByteCodes &codes);

} // namespace ZipDict

#endif
