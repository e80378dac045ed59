#include "ydicaddress_p.h"
#include "ydictext_p.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr char City_Kashima[] = "\x3C\x2F\x45\x67\x3B\x54";    // 鹿島市
constexpr char City_OldKashima[] = "\x3C\x2F\x45\x68\x3B\x54"; // 鹿嶋市
constexpr uint16_t Kanji_OldIsland = 0x4568;                   // 嶋
constexpr uint16_t Prefecture_Saga = 41;

bool begins(const ydic_search *search, const char *text)
{
    return strncmp(search->query, text, strlen(text)) == 0;
}

/** Normalises the query but for the name of 鹿嶋市, which the index has in this form only. */
void normalise(ydic_search *search)
{
    const bool saysKashima = begins(search, City_Kashima);
    const bool isKashima = saysKashima || begins(search, City_OldKashima);
    if (saysKashima)
        search->flags |= YDIC_SAYS_KASHIMA;
    yuragi_check(search);
    if (isKashima)
        ydic_setCharacter(search->query, 1, Kanji_OldIsland);
}

/** Whether the query may mean the 鹿島市 of 佐賀県, which has a range of the index to itself. */
bool mayMeanSaga(const ydic_search *search)
{
    return (search->flags & YDIC_SAYS_KASHIMA) && search->fields.secondStart != 0 &&
           (search->prefecture == 0 || search->prefecture == Prefecture_Saga);
}

int searchIndex(ydic_search *search, ydic_info *info)
{
    uint16_t start = 0;
    uint16_t end = 0;
    int result = idx1_knsk(&start, &end, 1, search, info);
    if (result <= 0)
        return result;
    result = knsk_sub(start, end, search, info);
    if (result < 0 || !mayMeanSaga(search))
        return result;
    search->charInfo[1] = 0;
    return knsk_sub(search->fields.secondStart, search->fields.secondEnd, search, info);
}

int searchFiles(const char *address, ydic_search *search, ydic_info *info)
{
    const int result = ydic_rev_knsk(address, search, info);
    if (result < 0 || !info->hasPatch)
        return result;
    search->fileSel = 1;
    return ydic_rev_knsk(address, search, info);
}

} // namespace

int Adr2ZipSearch(const char *address, uint32_t max, char *result, ydic_info *info)
{
    if (max > 0)
        result[0] = '\0';
    ydic_search search = {};
    search.readBuf = static_cast<char *>(malloc(YDIC_READ_LENGTH));
    if (!search.readBuf)
        return YDIC_NO_MEMORY;
    const int found = searchFiles(address, &search, info);
    free(search.readBuf);
    return found < 0 ? found : set_kouho(max, result, &search);
}

int ydic_rev_knsk(const char *address, ydic_search *search, ydic_info *info)
{
    int result = InitDicData(search, info);
    if (result >= 0)
        result = set_moji(address, search);
    if (result < 0)
        return result;
    normalise(search);
    return searchIndex(search, info);
}
