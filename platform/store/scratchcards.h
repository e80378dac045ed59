#ifndef PDTM_SCRATCHCARDS_H
#define PDTM_SCRATCHCARDS_H

#include "record.h"

#include <map>
#include <string>

namespace pdtm {

/** The scratch cards (0xFF00 and above) of one box in this process. */
using ScratchCards = std::map<CardId, std::string>;

[[nodiscard]] constexpr bool isScratchCard(CardId card)
{
    return card >= PdtmFirstReservedCard;
}

/** The scratch cards of a box, which outlive its handles. The reference stays valid. @param birth see
 * BoxState */
[[nodiscard]] ScratchCards &scratchCardsOf(const std::string &realPath, int64_t birth);

} // namespace pdtm

#endif
