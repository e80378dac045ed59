#ifndef CHECKPARTS_P_H
#define CHECKPARTS_P_H

#include "dictionaryfile.h"
#include "findings.h"
#include <set>

/**
 * @file checkparts_p.h
 * The steps of checkDictionary(). Each believes what the steps before it found to be right.
 */

namespace ZipDict {

/** What the code index leads to. */
struct CodeChunks
{
    std::set<uint32_t> shownCodes;  ///< codes with a record that shows something
    std::set<Section> whole;        ///< the chunks' bytes
    std::set<Section> complete;     ///< bytes of the complete records in them
    std::set<Section> forAddresses; ///< chunks with records that an address must lead to
    Section all;                    ///< from the first chunk to the end of the last one
};

/** The code index, its chunks and their records. @return false when they can't be followed further */
bool checkCodes(const DictionaryFile &file, CodeChunks &codes, Findings &findings);

/** A chunk, but for its place among others. */
void checkChunk(const DictionaryFile &file, const Chunk &chunk, Findings &findings);

/** A record. @param code the seven digits that its place makes it */
void checkRecord(const DictionaryFile &file, const Record &record, uint32_t code, Findings &findings);

/** The number index and the runs. */
void checkNumbers(const DictionaryFile &file, const CodeChunks &codes, Findings &findings);

/** The address index and what it leads to. */
void checkAddresses(const DictionaryFile &file, const CodeChunks &codes, Findings &findings);

} // namespace ZipDict

#endif
