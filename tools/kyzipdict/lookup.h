#ifndef LOOKUP_H
#define LOOKUP_H

#include "ydic.h"
#include <string>
#include <vector>

namespace ZipDict {

/** Most results of a search. */
constexpr unsigned MostResults = 500;

/**
 * Looks words up and prints what is found, a code and an address a line: each word that is a code for its
 * addresses, the other words together as an address for its codes.
 *
 * @param max of the addresses of a code, and of the codes of an address; up to MostResults
 * @param errors receives what isn't found, or why
 * @return whether all was found
 */
bool lookUp(const std::vector<std::string> &words, unsigned max, ydic_info *info, FILE *out, FILE *errors);

} // namespace ZipDict

#endif
