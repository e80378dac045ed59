#ifndef TEXTENCODER_H
#define TEXTENCODER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/**
 * @file textencoder.h
 * The text of records: from characters to the bytes of a file.
 */

namespace ZipDict {

using Bytes = std::vector<uint8_t>;

/** Text of a file as long as its one-byte codes are not chosen: JIS X 0208 characters, and below 0x100 bytes
 * that go into the file as they are. */
using Text = std::u16string;

/** @p text must have characters of JIS X 0208 only. */
[[nodiscard]] Text textOf(std::u16string_view text);

[[nodiscard]] Text textOfJis(std::string_view jis);

/** The low @p count bytes of a number, the highest first. */
[[nodiscard]] Text numberText(uint32_t number, unsigned count);

/** Appends a text of bytes alone, such as numberText(). */
void appendBytes(Bytes &bytes, const Text &text);

/** A text of which the search by code shows @p shown, and to which the search by address compares @p matched:
 * their equal parts once, the others marked. */
[[nodiscard]] Text mergedText(const Text &shown, const Text &matched);

/** The characters of a file that take one byte instead of two. */
class OneByteCodes
{
public:
    /** Counts a text of the file. */
    void count(const Text &text);

    /** Gives the codes to the characters that were counted most. */
    void choose();

    /** The table as it stands in the file: the characters in the order of their codes. */
    [[nodiscard]] Bytes table() const;

    void append(Bytes &bytes, const Text &text) const;
    [[nodiscard]] size_t length(const Text &text) const;

private:
    std::vector<uint32_t> m_counts = std::vector<uint32_t>(0x10000); ///< by character
    std::vector<uint8_t> m_codes = std::vector<uint8_t>(0x10000);    ///< by character, 0: none
    Text m_characters;
};

} // namespace ZipDict

#endif
