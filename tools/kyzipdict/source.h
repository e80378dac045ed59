#ifndef SOURCE_H
#define SOURCE_H

#include "place.h"
#include <functional>
#include <string>
#include <vector>

/**
 * @file source.h
 * The files of the postal operator.
 */

namespace ZipDict {

/** A row of a source, as printed: the lines of a row that was split are joined. */
struct SourceRow
{
    unsigned line = 0; ///< of the file, the first is 1
    uint32_t code = 0;
    std::u16string prefecture;
    std::u16string municipality;
    std::u16string town;          ///< with its brackets
    std::u16string business;      ///< name of a business with a code of its own; empty for places
    std::u16string businessBlock; ///< its number in the town
};

/** Something that could not be used. */
struct SourceProblem
{
    std::string file;
    unsigned line = 0; ///< 0: the whole file
    std::string text;
};

/** Told now and then how much of a long piece of work is done. */
using Progress = std::function<void(const char *what, size_t done, size_t all)>;

struct Source
{
    std::vector<SourceRow> rows;
    std::vector<SourceProblem> problems;
};

/** Reads a file of places or of businesses, in Shift-JIS or UTF-8; what kind it is shows in its columns. A
 * row that can't be used is a problem and is left out. */
[[nodiscard]] Source readSource(const std::string &path, const Progress &progress);

/** The places of all rows, in the order of their codes; those of one code stay in the order of the rows. */
[[nodiscard]] std::vector<Place> placesOf(const std::vector<SourceRow> &rows);

} // namespace ZipDict

#endif
