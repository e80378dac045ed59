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

} // namespace

Edition readEdition(const std::string &places, const std::string &businesses, const Progress &progress)
{
    Source source = readSource(places, progress);
    if (!businesses.empty()) {
        Source more = readSource(businesses, progress);
        std::ranges::move(more.rows, std::back_inserter(source.rows));
        std::ranges::move(more.problems, std::back_inserter(source.problems));
    }
    Edition edition{source.rows.size(), placesOf(source.rows, source.problems)};
    printProblems(source.problems);
    if (edition.places.empty())
        std::fprintf(stderr, "kyzipdict: %s has no places\n", places.c_str());
    return edition;
}

} // namespace ZipDict
