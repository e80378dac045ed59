#ifndef TOWNNAMES_H
#define TOWNNAMES_H

#include <string>
#include <string_view>
#include <vector>

/**
 * @file townnames.h
 * Towns as the postal operator prints them, with remarks in brackets, and what they mean to those who read
 * and write addresses. Text is as fromJis() gives it.
 */

namespace ZipDict {

/** More texts than this don't lead to one place. */
constexpr size_t MaximumAliases = 60;

struct TownName
{
    std::u16string shown;                ///< empty: the whole municipality
    std::u16string matched;              ///< what addresses say, without brackets; empty: nothing
    std::vector<std::u16string> aliases; ///< other texts of this town, none equal to matched, each once
};

/** @param hasSeveralCodes the municipality has other codes of the same matched text, so that the areas in
 * brackets tell them apart */
[[nodiscard]] TownName townNameOf(std::u16string_view municipality, std::u16string_view printed,
                                  bool hasSeveralCodes);

/** A shown town of at most @p room characters, if leaving out areas at the end of its brackets achieves it.
 * 他 stands for what is left out. */
[[nodiscard]] std::u16string shortenedTown(std::u16string_view shown, size_t room);

} // namespace ZipDict

#endif
