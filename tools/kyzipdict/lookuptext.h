#ifndef LOOKUPTEXT_H
#define LOOKUPTEXT_H

#include <string>
#include <string_view>
#include <vector>

/**
 * @file lookuptext.h
 * What people type for a postal code or an address.
 */

namespace ZipDict {

/** The words of a text: what stands between its blanks, of either width. */
[[nodiscard]] std::vector<std::u16string> wordsOf(std::u16string_view text);

/** The seven digits of a word that is a code, with or without 〒 and a dash, of either width; empty when it
 * is none. */
[[nodiscard]] std::string codeOf(std::u16string_view word);

/** Whether a text has digits and dashes only. */
[[nodiscard]] bool isNumber(std::u16string_view text);

/** An address as the dictionary writes its characters: all of full width, without 〒. */
[[nodiscard]] std::u16string fullWidth(std::u16string_view address);

} // namespace ZipDict

#endif
