#ifndef MATCHTEXT_H
#define MATCHTEXT_H

#include "textencoder.h"

/**
 * @file matchtext.h
 * What the engine makes of an address before it compares it.
 */

namespace ZipDict {

/** The normalised form of an address, as far as a search reads it. */
[[nodiscard]] Text normalisedText(const Text &address);

/** What a record has to say so that an address matches. */
struct MatchText
{
    Text text; ///< as given, when the engine brings it to the form of the address by itself; else normalised
    Text normalised; ///< the form of the address itself
};

/** For addresses that say @p municipality and @p matched. */
[[nodiscard]] MatchText matchText(uint8_t prefecture, const Text &municipality, const Text &matched);

} // namespace ZipDict

#endif
