#include "textencoder.h"

#include "jistext.h"
#include "ydicbytes_p.h"
#include <algorithm>

namespace ZipDict {

namespace {

constexpr size_t OneByteCharacters = YDIC_ASK1JI_LENGTH / 2;
constexpr char16_t FirstCharacter = 0x100; ///< below lie bytes that stand for themselves
constexpr char16_t Solidus = 0x213F;       ///< ends the prefecture of a complete address, always in two bytes
constexpr char16_t Blank = 0x2121;

struct Common
{
    size_t inShown = 0;
    size_t inMatched = 0;
    size_t length = 0;
};

Common longestCommonPart(std::u16string_view shown, std::u16string_view matched)
{
    Common best;
    for (size_t i = 0; i + best.length < shown.size(); ++i) {
        for (size_t j = 0; j + best.length < matched.size(); ++j) {
            size_t length = 0;
            while (i + length < shown.size() && j + length < matched.size() &&
                   shown[i + length] == matched[j + length])
                ++length;
            if (length > best.length)
                best = {i, j, length};
        }
    }
    return best;
}

void appendMarked(Text &out, char16_t mark, std::u16string_view part)
{
    if (!part.empty())
        out.append(1, mark).append(part).append(1, mark);
}

void appendMerged(Text &out, std::u16string_view shown, std::u16string_view matched)
{
    const Common common = longestCommonPart(shown, matched);
    if (common.length == 0) {
        appendMarked(out, YDIC_MARK_SHOWN, shown);
        appendMarked(out, YDIC_MARK_HIDDEN, matched);
        return;
    }
    appendMerged(out, shown.substr(0, common.inShown), matched.substr(0, common.inMatched));
    out += shown.substr(common.inShown, common.length);
    appendMerged(out, shown.substr(common.inShown + common.length),
                 matched.substr(common.inMatched + common.length));
}

/* Hidden text at the very end needs one mark instead of a pair. */
void shortenEnd(Text &text)
{
    if (text.empty() || text.back() != YDIC_MARK_HIDDEN)
        return;
    text.pop_back();
    text[text.rfind(char16_t{YDIC_MARK_HIDDEN})] = YDIC_MARK_END;
}

} // namespace

Text textOf(std::u16string_view text)
{
    Text result;
    result.reserve(text.size());
    for (const char16_t character : text)
        result += static_cast<char16_t>(jisOf(character));
    return result;
}

Text textOfJis(std::string_view jis)
{
    Text text;
    for (size_t at = 0; at + 1 < jis.size(); at += 2) {
        text += static_cast<char16_t>(static_cast<unsigned char>(jis[at]) << 8 |
                                      static_cast<unsigned char>(jis[at + 1]));
    }
    return text;
}

Text numberText(uint32_t number, unsigned count)
{
    Text text;
    while (count-- > 0)
        text += static_cast<char16_t>(number >> (8 * count) & 0xFF);
    return text;
}

void appendBytes(Bytes &bytes, const Text &text)
{
    for (const char16_t byte : text)
        bytes.push_back(static_cast<uint8_t>(byte));
}

Text mergedText(const Text &shown, const Text &matched)
{
    Text text;
    appendMerged(text, shown, matched);
    shortenEnd(text);
    return text;
}

void OneByteCodes::count(const Text &text)
{
    for (const char16_t character : text)
        ++m_counts[character];
}

void OneByteCodes::choose()
{
    m_counts[Solidus] = 0;
    for (unsigned character = FirstCharacter; character < m_counts.size(); ++character) {
        if (m_counts[character] > 0)
            m_characters += static_cast<char16_t>(character);
    }
    std::stable_sort(m_characters.begin(), m_characters.end(),
                     [this](char16_t a, char16_t b) { return m_counts[a] > m_counts[b]; });
    m_characters.resize(std::min(m_characters.size(), OneByteCharacters));
    for (size_t i = 0; i < m_characters.size(); ++i)
        m_codes[m_characters[i]] = static_cast<uint8_t>(YDIC_ASK1JI_FIRST + i);
    m_characters.resize(OneByteCharacters, Blank);
}

Bytes OneByteCodes::table() const
{
    Bytes bytes;
    for (const char16_t character : m_characters) {
        bytes.push_back(static_cast<uint8_t>(character >> 8));
        bytes.push_back(static_cast<uint8_t>(character & 0xFF));
    }
    return bytes;
}

void OneByteCodes::append(Bytes &bytes, const Text &text) const
{
    for (const char16_t character : text) {
        if (character < FirstCharacter) {
            bytes.push_back(static_cast<uint8_t>(character));
        } else if (m_codes[character] != 0) {
            bytes.push_back(m_codes[character]);
        } else {
            bytes.push_back(static_cast<uint8_t>(character >> 8 | 0x80));
            bytes.push_back(static_cast<uint8_t>((character & 0xFF) | 0x80));
        }
    }
}

size_t OneByteCodes::length(const Text &text) const
{
    return text.size() + static_cast<size_t>(std::count_if(text.begin(), text.end(), [this](char16_t c) {
               return c >= FirstCharacter && m_codes[c] == 0;
           }));
}

} // namespace ZipDict
