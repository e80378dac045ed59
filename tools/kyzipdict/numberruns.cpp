#include "numberruns.h"

#include "records.h"
#include "ydicbytes_p.h"

namespace ZipDict {

namespace {

struct Run
{
    uint32_t first = 0;
    uint32_t length = 0;
};

bool continuesRun(const Run &run, uint32_t code)
{
    return code == run.first + run.length && run.length < UINT8_MAX &&
           twoDigits(code) == twoDigits(run.first);
}

std::vector<Run> runsOf(const std::vector<uint32_t> &codes)
{
    std::vector<Run> runs;
    for (const uint32_t code : codes) {
        if (!runs.empty() && continuesRun(runs.back(), code))
            ++runs.back().length;
        else
            runs.push_back({code, 1});
    }
    return runs;
}

} // namespace

NumberRuns writeNumberRuns(const std::vector<uint32_t> &codes)
{
    const std::vector<Run> runs = runsOf(codes);
    NumberRuns written;
    if (runs.size() > UINT16_MAX)
        written.errors.emplace_back("the number index is full: too many gaps between the codes");
    size_t next = 0;
    for (uint32_t prefix = 0; prefix <= YDIC_PREFIXES; ++prefix) {
        while (next < runs.size() && twoDigits(runs[next].first) < prefix)
            ++next;
        appendBytes(written.index, numberText(static_cast<uint32_t>(next), 2));
    }
    for (const Run &run : runs) {
        appendBytes(written.runs, numberText(run.first, 3) + numberText(run.length, 1));
    }
    return written;
}

} // namespace ZipDict
