#include "edition.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace ZipDict {

namespace {

void printProblems(const std::vector<SourceProblem> &problems)
{
    for (const SourceProblem &problem : problems) {
        std::fputs(problem.file.c_str(), stderr);
        if (problem.line > 0)
            std::fprintf(stderr, ":%u", problem.line);
        std::fprintf(stderr, ": %s\n", problem.text.c_str());
    }
}

/* Adds the rows of a file. @return whether it has any */
bool addRows(std::vector<SourceRow> &rows, const std::string &path, const Progress &progress)
{
    Source source = readSource(path, progress);
    printProblems(source.problems);
    if (source.rows.empty())
        std::fprintf(stderr, "kyzipdict: no row of %s can be used\n", path.c_str());
    std::ranges::move(source.rows, std::back_inserter(rows));
    return !source.rows.empty();
}

} // namespace

Edition readEdition(const std::string &places, const std::string &businesses, const Progress &progress)
{
    std::vector<SourceRow> rows;
    const bool hasPlaces = addRows(rows, places, progress);
    const bool hasBusinesses = businesses.empty() || addRows(rows, businesses, progress);
    return hasPlaces && hasBusinesses ? Edition{rows.size(), placesOf(rows)} : Edition();
}

} // namespace ZipDict
