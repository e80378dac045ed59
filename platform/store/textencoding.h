#ifndef PDTM_TEXTENCODING_H
#define PDTM_TEXTENCODING_H

#include "record.h"

#include <string>
#include <string_view>

namespace pdtm {

/** Converts Shift-JIS (CP932) to UTF-8; each byte that is none gives U+FFFD. */
[[nodiscard]] std::string utf8FromCp932(std::string_view text);

/** A text value of an item type as UTF-8: the bytes themselves, or a copy converted into @p buffer. */
[[nodiscard]] std::string_view asUtf8(uint8_t type, Bytes text, std::string &buffer);

} // namespace pdtm

#endif
