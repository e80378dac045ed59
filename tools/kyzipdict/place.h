#ifndef PLACE_H
#define PLACE_H

#include "ydic.h"
#include <cstdint>
#include <string>
#include <vector>

namespace ZipDict {

/** Of an address: what a search has room for. */
constexpr size_t ShownCharacters = YDIC_ADDRESS_LENGTH / 2;

/** One place with its postal code, as it goes into a dictionary. Text is UTF-16. */
struct Place
{
    uint32_t code = 0;           ///< the seven digits as a number
    uint8_t prefecture = 0;      ///< 1 to 47, in the order of JIS X 0401
    std::u16string municipality; ///< with its 郡 or its city: 北佐久郡立科町, 札幌市中央区
    std::u16string town;         ///< what is shown behind the municipality; empty: the whole of it
    std::u16string matched; ///< what an address says behind the municipality to mean this place; empty: any
    std::vector<std::u16string> aliases; ///< other texts behind the municipality that lead to this code
    bool isCodeOnly = false;             ///< found by its code alone: a business with a code of its own

    bool operator==(const Place &) const = default;
};

/** The name of a prefecture. @param number 1 to 47 */
[[nodiscard]] std::u16string prefectureName(uint8_t number);

/** The number of a prefecture; 0 when there is none of this name. */
[[nodiscard]] uint8_t prefectureNumber(std::u16string_view name);

/** An address as a search shows it: prefecture, solidus, municipality, town; cut to what a result holds, at a
 * whole character. */
[[nodiscard]] std::u16string shownAddress(const Place &place);

} // namespace ZipDict

#endif
