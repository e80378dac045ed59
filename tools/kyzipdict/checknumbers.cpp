#include "checkparts_p.h"
#include <algorithm>
#include <cinttypes>

namespace ZipDict {

namespace {

bool checkIndex(const DictionaryFile &file, Findings &findings)
{
    unsigned least = 0;
    for (unsigned prefix = 0; prefix <= YDIC_PREFIXES; ++prefix) {
        const uint64_t at = uint64_t{file.u32(YDIC_AT_NUMBER_INDEX)} + uint64_t{prefix} * 2;
        const unsigned run = file.u16(at);
        if (run < least) {
            findings.add(at, "the runs of prefix %02u begin at %u, those before it at %u", prefix, run,
                         least);
            return false;
        }
        least = run;
    }
    return true;
}

bool checkRun(const NumberRun &run, unsigned prefix, uint32_t least, Findings &findings)
{
    const uint32_t last = run.first + run.length - 1;
    if (run.length == 0)
        findings.add(run.at, "the run of %07" PRIu32 " is empty", run.first);
    else if (run.first < least)
        findings.add(run.at, "the run of %07" PRIu32 " stands behind %07" PRIu32, run.first, least - 1);
    else if (run.first / 100000 != prefix || last / 100000 != prefix)
        findings.add(run.at, "the run of %07" PRIu32 " to %07" PRIu32 " isn't in prefix %02u", run.first,
                     last, prefix);
    else
        return true;
    return false;
}

/* @return every code of the runs, ascending; nothing when they aren't in order */
std::vector<uint32_t> checkRuns(const DictionaryFile &file, Findings &findings)
{
    const std::vector<NumberRun> runs = file.numberRuns();
    std::vector<uint32_t> codes;
    uint32_t least = 0;
    unsigned prefix = 0;
    for (size_t i = 0; i < runs.size(); ++i) {
        const uint64_t index = file.u32(YDIC_AT_NUMBER_INDEX);
        while (prefix < YDIC_PREFIXES && file.u16(index + (uint64_t{prefix} + 1) * 2) <= i)
            ++prefix;
        if (!checkRun(runs[i], prefix, least, findings))
            return {};
        least = runs[i].first + runs[i].length;
        for (uint32_t code = runs[i].first; code < least; ++code)
            codes.push_back(code);
    }
    return codes;
}

} // namespace

void checkNumbers(const DictionaryFile &file, const CodeChunks &codes, Findings &findings)
{
    if (!checkIndex(file, findings))
        return;
    const std::vector<uint32_t> walked = checkRuns(file, findings);
    // A patch leaves the walk to the dictionary and to its change table.
    if (file.isPatch() || (walked.empty() && !file.numberRuns().empty()))
        return;
    const uint64_t runs = file.u32(YDIC_AT_NUMBER_RUNS);
    for (const uint32_t code : codes.shownCodes) {
        if (!std::ranges::binary_search(walked, code))
            findings.add(runs, "code %07" PRIu32 " is in no run", code);
    }
    for (const uint32_t code : walked) {
        if (!codes.shownCodes.contains(code))
            findings.add(runs, "code %07" PRIu32 " of a run has no address", code);
    }
}

} // namespace ZipDict
