#ifndef ADDRESSINDEX_H
#define ADDRESSINDEX_H

#include "chunkwriter.h"

/**
 * @file addressindex.h
 * The index of the municipalities.
 */

namespace ZipDict {

struct AddressIndex
{
    Bytes level1; ///< with the entry behind the last key
    Bytes level2;
    uint16_t secondStart = 0; ///< of the fixed range of level 2, 0: there is none
    uint16_t secondEnd = 0;
    std::vector<std::u16string> keysLeftOut; ///< municipalities without a key for their name without 郡
    std::vector<std::string> errors;
};

/** @param references by municipality */
[[nodiscard]] AddressIndex writeAddressIndex(const std::vector<Municipality> &municipalities,
                                             const std::vector<std::vector<WrittenReference>> &references);

} // namespace ZipDict

#endif
