#include "matchtext.h"

#include "ydicaddress_p.h"
#include "ydicbytes_p.h"
#include <algorithm>
#include <cstring>

namespace ZipDict {

namespace {

constexpr uint8_t AnyLastDigits = 1; ///< of the code of a record to try; a text with 0 gives no candidate

/* Two cities whose names differ in a variant: a search sees both in the spelling of the second. */
constexpr const char16_t *Kashima[] = {u"鹿島市", u"鹿嶋市"};
constexpr char Island[] = {0x45, 0x68}; // 嶋

void setQuery(ydic_search &search, const Text &address)
{
    search = {};
    size_t at = 0;
    for (const char16_t character : address.substr(0, YDIC_QUERY_LENGTH / 2)) {
        search.query[at++] = static_cast<char>(character >> 8);
        search.query[at++] = static_cast<char>(character & 0xFF);
    }
    yuragi_check(&search);
    for (const char16_t *city : Kashima) {
        if (address.starts_with(textOf(city)))
            std::copy_n(Island, std::size(Island), search.query + 2);
    }
}

/* Compares a record with the query, as a search does. */
bool isAccepted(ydic_search &search, uint8_t prefecture, size_t consumed, const Text &matched)
{
    Bytes chunk = {0, 0, 0, AnyLastDigits};
    for (const char16_t character : matched.substr(0, YDIC_QUERY_LENGTH)) {
        chunk.push_back(static_cast<uint8_t>(character >> 8 | 0x80));
        chunk.push_back(static_cast<uint8_t>((character & 0xFF) | 0x80));
    }
    search.readBuf = reinterpret_cast<char *>(chunk.data());
    search.consumed = static_cast<int16_t>(consumed);
    search.groupPrefecture = prefecture;
    dic_knsk(0, static_cast<uint16_t>(chunk.size()), &search);
    return search.candCount == 1 && search.candMatch[0] == search.queryLen && search.candDrop[0] == 0;
}

} // namespace

Text normalisedText(const Text &address)
{
    ydic_search search;
    setQuery(search, address);
    return textOfJis(search.query);
}

MatchText matchText(uint8_t prefecture, const Text &municipality, const Text &matched)
{
    if (matched.empty())
        return {};
    const size_t consumed = normalisedText(municipality).size();
    ydic_search search;
    setQuery(search, municipality + matched);
    const Text all = textOfJis(search.query);
    const Text normalised = all.substr(std::min(consumed, all.size()));
    const bool isAsItIs = normalised == matched || isAccepted(search, prefecture, consumed, matched);
    return {isAsItIs ? matched : normalised, normalised};
}

} // namespace ZipDict
