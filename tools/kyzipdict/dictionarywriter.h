#ifndef DICTIONARYWRITER_H
#define DICTIONARYWRITER_H

#include "place.h"
#include <cstdint>
#include <string>
#include <vector>

namespace ZipDict {

/** An entry of a file: a place, or in a patch the removal of one. */
struct Entry
{
    Place place;
    bool cancels = false;
};

/** How a code of the combined data differs from the dictionary that a patch corrects. */
enum class ChangeKind : uint8_t { Kept = 0, Added = 1, Removed = 2 };

/** A row of the change table of a patch. */
struct Change
{
    uint32_t code = 0;
    ChangeKind kind = ChangeKind::Kept;

    bool operator==(const Change &) const = default;
};

/** What a file says of itself. */
struct FileIdentity
{
    uint8_t edition = 1; ///< from 1; of a patch: the edition that it makes
    bool isPatch = false;
    uint8_t corrects = 0; ///< of a patch: the edition that it corrects
    uint8_t serial = 0;   ///< of a patch: orders two of the same editions
};

struct WrittenFile
{
    std::vector<uint8_t> bytes;              ///< empty when there are errors
    std::vector<std::u16string> keysLeftOut; ///< municipalities not to be found without their 郡
    std::vector<std::string> errors;         ///< limits of the format that the data passes
};

/** The bytes of a dictionary or a patch. @param entries sorted by code
 * @param changes of a patch, sorted by code; empty for a dictionary */
[[nodiscard]] WrittenFile writeDictionary(const FileIdentity &identity, const std::vector<Entry> &entries,
                                          const std::vector<Change> &changes);

/** writeDictionary() of an edition's places. */
[[nodiscard]] WrittenFile writeDictionary(uint8_t edition, const std::vector<Place> &places);

} // namespace ZipDict

#endif
