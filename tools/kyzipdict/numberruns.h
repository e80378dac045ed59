#ifndef NUMBERRUNS_H
#define NUMBERRUNS_H

#include "textencoder.h"

namespace ZipDict {

/** The codes that exist, for the way from one to the next. */
struct NumberRuns
{
    Bytes index;
    Bytes runs;
    std::vector<std::string> errors;
};

/** @param codes sorted */
[[nodiscard]] NumberRuns writeNumberRuns(const std::vector<uint32_t> &codes);

} // namespace ZipDict

#endif
