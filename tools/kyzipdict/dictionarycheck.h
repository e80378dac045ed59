#ifndef DICTIONARYCHECK_H
#define DICTIONARYCHECK_H

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace ZipDict {

/** Every offset, order and limit of the format that @p file breaks, a line each; empty: the file is good. */
[[nodiscard]] std::vector<std::string> checkDictionary(std::span<const uint8_t> file);

/** Prints a file readably. A damaged one is printed as far as it goes. @return false when it is no dictionary
 */
bool dumpDictionary(std::span<const uint8_t> file, FILE *out);

} // namespace ZipDict

#endif
