#include "foldedtext.h"

#include "schema.h"

#include <algorithm>

namespace pdtm {

namespace {

constexpr size_t LargeBlock = 64; // starts that are looked at together, as vectors
constexpr size_t SmallBlock = 16;
constexpr size_t Nowhere = std::string_view::npos;
constexpr uint8_t CaseBit = 0x20;
constexpr uint8_t FirstLeadByte = 0xC0; // of a character of several bytes in UTF-8

bool sameFolded(char stored, char folded)
{
    return lowerAscii(stored) == folded;
}

/** Lead bytes are the same for thousands of characters, so that looking for one finds little. */
bool tellsLittle(char byte)
{
    return static_cast<uint8_t>(byte) >= FirstLeadByte;
}

} // namespace

FoldedText::FoldedText(std::string_view text) : m_folded(text)
{
    std::ranges::transform(m_folded, m_folded.begin(), lowerAscii);
    if (m_folded.empty())
        return;
    const auto telling = std::ranges::find_if_not(m_folded, tellsLittle);
    m_first = probeAt(telling == m_folded.end() ? 0 : static_cast<size_t>(telling - m_folded.begin()));
    m_last = probeAt(m_folded.size() - 1);
}

FoldedText::Probe FoldedText::probeAt(size_t offset) const
{
    const char byte = m_folded[offset];
    const bool isLetter = byte >= 'a' && byte <= 'z';
    return {offset, static_cast<uint8_t>(byte), isLetter ? CaseBit : uint8_t{0}};
}

bool FoldedText::equals(std::string_view text) const
{
    return std::ranges::equal(text, m_folded, sameFolded);
}

bool FoldedText::startsAt(const uint8_t *start) const
{
    const auto *text = reinterpret_cast<const char *>(start);
    return m_last.differenceAt(start) == 0 &&
           std::equal(text, text + m_folded.size(), m_folded.begin(), sameFolded);
}

/** Looks at @p Size starts. Most blocks are told apart by two bytes of the text alone. */
template <size_t Size> size_t FoldedText::findInBlock(const uint8_t *block) const
{
    const Probe first = m_first;
    const Probe last = m_last;
    uint8_t least = UINT8_MAX;
    for (size_t i = 0; i < Size; ++i) { // to the end, so that it is vectorised
        const auto both = static_cast<uint8_t>(first.differenceAt(block + i) | last.differenceAt(block + i));
        least = std::min(least, both);
    }
    for (size_t i = 0; i < Size && least == 0; ++i)
        if (startsAt(block + i))
            return i;
    return Nowhere;
}

/** @param starts at least @p Size; the last block overlaps the one before */
template <size_t Size> size_t FoldedText::findInBlocks(const uint8_t *first, size_t starts) const
{
    for (size_t block = 0; block < starts; block += Size) {
        const size_t begin = std::min(block, starts - Size);
        const size_t found = findInBlock<Size>(first + begin);
        if (found != Nowhere)
            return begin + found;
    }
    return Nowhere;
}

size_t FoldedText::findIn(std::string_view text) const
{
    if (m_folded.empty())
        return 0;
    if (text.size() < m_folded.size())
        return Nowhere;
    const auto *first = reinterpret_cast<const uint8_t *>(text.data());
    const size_t starts = text.size() - m_folded.size() + 1;
    if (starts >= LargeBlock)
        return findInBlocks<LargeBlock>(first, starts);
    if (starts >= SmallBlock)
        return findInBlocks<SmallBlock>(first, starts);
    return findInBlocks<1>(first, starts);
}

} // namespace pdtm
