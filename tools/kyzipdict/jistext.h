#ifndef JISTEXT_H
#define JISTEXT_H

#include <optional>
#include <string>
#include <string_view>

/**
 * @file jistext.h
 * Text of the dictionary, 7-bit JIS X 0208, two bytes a character and nothing else, and text as the tools
 * hold it, UTF-16.
 */

namespace ZipDict {

/** The code of a character, row and cell in its bytes; 0 when JIS X 0208 has none. Both spellings of the
 * doubtful characters (wave dash, minus, ...) have their code. */
[[nodiscard]] unsigned jisOf(char16_t character);

/** Text to JIS; nothing when a character has no code. */
[[nodiscard]] std::optional<std::string> toJis(std::u16string_view text);

/** JIS to text; what is no character becomes U+FFFD. */
[[nodiscard]] std::u16string fromJis(std::string_view jis);

/** UTF-8 to text; nothing when it isn't UTF-8, or has characters behind U+FFFF. */
[[nodiscard]] std::optional<std::u16string> fromUtf8(std::string_view bytes);
[[nodiscard]] std::string toUtf8(std::u16string_view text);

/** Shift-JIS to text; nothing when it isn't Shift-JIS of JIS X 0208. Half-width kana are read too. */
[[nodiscard]] std::optional<std::u16string> fromSjis(std::string_view bytes);

} // namespace ZipDict

#endif
