#ifndef NUMBEREDLISTS_H
#define NUMBEREDLISTS_H

#include <string>
#include <string_view>
#include <vector>

/**
 * @file numberedlists.h
 * Lists as the postal operator prints them: １、３〜５丁目.
 */

namespace ZipDict {

/** What lies between the 、 of a list. Those within 「」, 〔〕 or （） separate nothing. */
[[nodiscard]] std::vector<std::u16string_view> listItems(std::u16string_view list);

/** The names that the numbers of a list stand for: １丁目, ３丁目, ４丁目, ５丁目. Items that are no number
 * of a unit that addresses are written with (丁目, 条, 地割, ...) give nothing. At most @p maximum. */
[[nodiscard]] std::vector<std::u16string> numberedNames(std::u16string_view list, size_t maximum);

} // namespace ZipDict

#endif
