#include "scratchcards.h"

namespace pdtm {

ScratchCards &scratchCardsOf(const std::string &realPath, int64_t birth)
{
    static std::map<std::pair<std::string, int64_t>, ScratchCards> cards;
    return cards[{realPath, birth}];
}

} // namespace pdtm
