#ifndef KY_TEST_SEARCHEVERYTHING_H
#define KY_TEST_SEARCHEVERYTHING_H

#include "sampleimages.h"

#include <algorithm>
#include <cstring>
#include <vector>

/**
 * @file searcheverything.h
 * Searches in files of any bytes, with a look at what must hold for the answer to any of them.
 */

namespace imagebuilder {

/** Room for the results of a search, with bytes behind it that must stay. */
class ResultRoom
{
public:
    explicit ResultRoom(size_t size) : m_bytes(size + Fence, Untouched) {}

    char *data() { return m_bytes.data(); }
    bool isFenceWhole() const
    {
        return std::ranges::all_of(m_bytes.end() - Fence, m_bytes.end(),
                                   [](char c) { return c == Untouched; });
    }
    /** Whether @p count texts of at most @p length bytes lie one behind the other. */
    bool holds(int count, size_t length) const
    {
        const char *at = m_bytes.data(), *end = at + m_bytes.size() - Fence;
        for (; count > 0; --count) {
            const size_t found = strnlen(at, static_cast<size_t>(end - at));
            if (found == 0 || found > length || at + found == end)
                return false;
            at += found + 1;
        }
        return true;
    }

private:
    static constexpr std::ptrdiff_t Fence = 64;
    static constexpr char Untouched = 0x5A;
    std::vector<char> m_bytes;
};

constexpr uint32_t ResultsWanted = 3;

/** A failure, nothing, or as many results as were wanted at most, and they are there. */
inline bool isAnswer(int count, const ResultRoom &room, size_t length, uint32_t wanted = ResultsWanted)
{
    return count >= YDIC_BAD_INPUT && count <= static_cast<int>(wanted) && room.isFenceWhole() &&
           room.holds(count, length);
}

inline bool isCode(const char *code)
{
    return strlen(code) == 7 && std::all_of(code, code + 7, [](char c) { return c >= '0' && c <= '9'; });
}

/** @return whether all is as it must be */
inline bool searchCode(const char *code, ydic_info *info, uint32_t wanted = ResultsWanted)
{
    ResultRoom room(size_t{wanted} * (YDIC_ADDRESS_LENGTH + 1));
    return isAnswer(Zip2AdrSearch(code, wanted, room.data(), info), room, YDIC_ADDRESS_LENGTH, wanted);
}

inline bool searchNeighbour(const char *code, uint8_t direction, ydic_info *info)
{
    ResultRoom room(ResultsWanted * (YDIC_ADDRESS_LENGTH + 1)), near(8);
    const int count = Zip2AdrSearchNP(code, ResultsWanted, direction, near.data(), room.data(), info);
    return isAnswer(count, room, YDIC_ADDRESS_LENGTH) && near.isFenceWhole() &&
           (*near.data() == '\0' || isCode(near.data()));
}

inline bool searchAddress(const Bytes &address, ydic_info *info)
{
    ResultRoom room(size_t{ResultsWanted} * 8);
    const int count = Adr2ZipSearch(address.c_str(), ResultsWanted, room.data(), info);
    if (!isAnswer(count, room, 7))
        return false;
    for (int i = 0; i < count; ++i)
        if (!isCode(room.data() + size_t(i) * 8))
            return false;
    return true;
}

/** @return the first of the samples' codes whose search is not as it must be, null when all are */
inline const char *searchAllCodes(ydic_info *info)
{
    for (const char *code : sampleCodes())
        if (!searchCode(code, info) || !searchNeighbour(code, YDIC_NEXT, info) ||
            !searchNeighbour(code, YDIC_PREVIOUS, info))
            return code;
    return nullptr;
}

/** @return whether the search of every address of the samples is as it must be */
inline bool searchAllAddresses(ydic_info *info)
{
    static const std::vector<Bytes> addresses = [] {
        std::vector<Bytes> texts;
        for (const std::u16string &address : sampleAddresses())
            texts.push_back(jis(address));
        return texts;
    }();
    return std::ranges::all_of(addresses, [&](const Bytes &address) { return searchAddress(address, info); });
}

} // namespace imagebuilder

#endif
