#include "jistext.h"

#include "jistable.h"
#include <cstdint>
#include <memory>

namespace ZipDict {

namespace {

constexpr unsigned Cells = 94;
constexpr unsigned FirstByte = 0x21;

struct Doubtful
{
    char16_t other;
    char16_t inTable;
};

/* Characters whose code has two readings in Unicode. */
constexpr Doubtful Doubtfuls[] = {{0x301C, 0xFF5E}, {0x2212, 0xFF0D}, {0x2016, 0x2225}, {0x2014, 0x2015},
                                  {0x00A2, 0xFFE0}, {0x00A3, 0xFFE1}, {0x00AC, 0xFFE2}};

/** Codes by character. */
using CodeTable = std::unique_ptr<uint16_t[]>;

CodeTable makeCodeTable()
{
    CodeTable codes = std::make_unique<uint16_t[]>(0x10000);
    for (unsigned row = 0; row < Cells; ++row) {
        for (unsigned cell = 0; cell < Cells; ++cell) {
            if (const char16_t character = JisTable[row][cell])
                codes[character] = static_cast<uint16_t>((row + FirstByte) << 8 | (cell + FirstByte));
        }
    }
    for (const Doubtful &doubtful : Doubtfuls)
        codes[doubtful.other] = codes[doubtful.inTable];
    return codes;
}

/* 0 where there is none. */
char16_t characterOf(unsigned rowByte, unsigned cellByte)
{
    const unsigned row = rowByte - FirstByte;
    const unsigned cell = cellByte - FirstByte;
    return row < Cells && cell < Cells ? JisTable[row][cell] : char16_t{0};
}

/* Two rows of JIS share a lead byte of Shift-JIS. */
char16_t characterOfSjis(unsigned lead, unsigned trail)
{
    const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xEF);
    const bool isTrail = trail >= 0x40 && trail <= 0xFC && trail != 0x7F;
    if (!isLead || !isTrail)
        return 0;
    const unsigned pair = lead - (lead <= 0x9F ? 0x81 : 0xC1);
    const bool isSecond = trail >= 0x9F;
    return characterOf(FirstByte + 2 * pair + (isSecond ? 1 : 0),
                       isSecond ? trail - 0x7E : trail - (trail > 0x7F ? 0x20 : 0x1F));
}

} // namespace

unsigned jisOf(char16_t character)
{
    static const CodeTable codes = makeCodeTable();
    return codes[character];
}

std::optional<std::string> toJis(std::u16string_view text)
{
    std::string jis;
    jis.reserve(text.size() * 2);
    for (const char16_t character : text) {
        const unsigned code = jisOf(character);
        if (code == 0)
            return std::nullopt;
        jis += static_cast<char>(code >> 8);
        jis += static_cast<char>(code & 0xFF);
    }
    return jis;
}

std::u16string fromJis(std::string_view jis)
{
    std::u16string text;
    for (size_t at = 0; at + 1 < jis.size(); at += 2) {
        const char16_t character =
            characterOf(static_cast<unsigned char>(jis[at]), static_cast<unsigned char>(jis[at + 1]));
        text += character ? character : u'\uFFFD';
    }
    if (jis.size() % 2 == 1)
        text += u'\uFFFD';
    return text;
}

std::optional<std::u16string> fromUtf8(std::string_view bytes)
{
    std::u16string text;
    for (size_t at = 0; at < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[at++]);
        const unsigned more = lead < 0x80                   ? 0
                              : lead >= 0xC2 && lead < 0xE0 ? 1
                              : (lead & 0xF0) == 0xE0       ? 2
                                                            : 9;
        if (more > bytes.size() - at)
            return std::nullopt;
        unsigned character = more == 0 ? lead : lead & (0x3FU >> more);
        for (unsigned i = 0; i < more; ++i, ++at) {
            const auto byte = static_cast<unsigned char>(bytes[at]);
            if ((byte & 0xC0) != 0x80)
                return std::nullopt;
            character = character << 6 | (byte & 0x3FU);
        }
        const bool isOverlong = more == 2 && character < 0x800;
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        if (isOverlong || isSurrogate)
            return std::nullopt;
        text += static_cast<char16_t>(character);
    }
    return text;
}

std::string toUtf8(std::u16string_view text)
{
    std::string bytes;
    for (const char16_t character : text) {
        const unsigned value = character;
        if (value < 0x80) {
            bytes += static_cast<char>(value);
        } else if (value < 0x800) {
            bytes += static_cast<char>(0xC0 | value >> 6);
            bytes += static_cast<char>(0x80 | (value & 0x3F));
        } else {
            bytes += static_cast<char>(0xE0 | value >> 12);
            bytes += static_cast<char>(0x80 | (value >> 6 & 0x3F));
            bytes += static_cast<char>(0x80 | (value & 0x3F));
        }
    }
    return bytes;
}

std::optional<std::u16string> fromSjis(std::string_view bytes)
{
    std::u16string text;
    for (size_t at = 0; at < bytes.size(); ++at) {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        if (byte < 0x80) {
            text += static_cast<char16_t>(byte);
        } else if (byte >= 0xA1 && byte <= 0xDF) {
            text += static_cast<char16_t>(0xFF61 + byte - 0xA1);
        } else {
            const unsigned trail = at + 1 < bytes.size() ? static_cast<unsigned char>(bytes[at + 1]) : 0;
            const char16_t character = characterOfSjis(byte, trail);
            if (!character)
                return std::nullopt;
            text += character;
            ++at;
        }
    }
    return text;
}

} // namespace ZipDict
