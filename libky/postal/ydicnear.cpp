#include "ydiccode_p.h"

#include "ydicbuffer_p.h"
#include "ydicbytes_p.h"

#include <string.h>

namespace {

constexpr uint32_t NumberIndexLength = (YDIC_PREFIXES + 1) * 2;
constexpr uint32_t MostOffset = 0xFFFFFF; // no part of a good file is larger

/** Consecutive codes. Signed: a damaged run may have none. */
struct Run
{
    int32_t first;
    int32_t last;
};

/** A number that is looked for in the table of runs. */
struct Walk
{
    uint8_t first2;
    int32_t number;
    char *near;
    bool isForward;
    FILE *file;
    const ydic_fields *fields;
    const uint8_t *index;
};

int32_t firstRunOf(int prefix, const uint8_t *index)
{
    return ydic_u16(index + 2 * static_cast<size_t>(prefix));
}

int32_t runCount(const uint8_t *index)
{
    return firstRunOf(YDIC_PREFIXES, index);
}

/* YDIC_NEAR_FOUND, -1, or outside of the table YDIC_NEAR_NONE. */
int readRun(const Walk &walk, int32_t at, Run &run)
{
    if (at < 0 || at >= runCount(walk.index))
        return ydic_nearNone(walk.near);
    uint8_t bytes[YDIC_RUN];
    const auto offset = static_cast<uint32_t>(at) * YDIC_RUN;
    if (!ydic_readFrom(walk.file, walk.fields->numberRuns, offset, sizeof bytes, bytes))
        return -1;
    run.first = static_cast<int32_t>(ydic_u24(bytes));
    run.last = run.first + bytes[3] - 1;
    return YDIC_NEAR_FOUND;
}

int answer(const Walk &walk, int32_t number)
{
    return ydic_nearAnswer(static_cast<uint32_t>(number), walk.near);
}

int answerFirstOf(const Walk &walk, int32_t at)
{
    Run run;
    const int read = readRun(walk, at, run);
    return read == YDIC_NEAR_FOUND ? answer(walk, run.first) : read;
}

int answerLastOf(const Walk &walk, int32_t at)
{
    Run run;
    const int read = readRun(walk, at, run);
    return read == YDIC_NEAR_FOUND ? answer(walk, run.last) : read;
}

int nextPrefix(const Walk &walk)
{
    return top_numSch(walk.first2, walk.near, walk.file, walk.fields, walk.index);
}

int previousPrefix(const Walk &walk)
{
    return bottom_numSch(walk.first2, walk.near, walk.file, walk.fields, walk.index);
}

/* The number isn't behind the first run of its prefix. YDIC_NEAR_UNDECIDED: its neighbour is in another run
 * of the prefix. */
int nearInFirstRun(const Walk &walk, const Run &run)
{
    if (walk.number < run.first)
        return walk.isForward ? answer(walk, run.first) : previousPrefix(walk);
    if (walk.isForward)
        return walk.number < run.last ? answer(walk, walk.number + 1) : YDIC_NEAR_UNDECIDED;
    return walk.number == run.first ? previousPrefix(walk) : answer(walk, walk.number - 1);
}

/* The same for the last run, whatever lies before it. */
int nearInLastRun(const Walk &walk, const Run &run)
{
    if (walk.number > run.last)
        return walk.isForward ? nextPrefix(walk) : answer(walk, run.last);
    if (walk.number < run.first)
        return YDIC_NEAR_UNDECIDED;
    if (walk.isForward)
        return walk.number == run.last ? nextPrefix(walk) : answer(walk, walk.number + 1);
    return walk.number > run.first ? answer(walk, walk.number - 1) : YDIC_NEAR_UNDECIDED;
}

/* Moves low to the run that has the number, else to the first one behind it. */
int findRun(const Walk &walk, int32_t &low, int32_t high)
{
    while (low < high) {
        const int32_t middle = (low + high) / 2;
        Run run;
        const int read = readRun(walk, middle, run);
        if (read != YDIC_NEAR_FOUND)
            return read;
        if (run.last < walk.number && run.first != walk.number)
            low = middle + 1;
        else if (run.first > walk.number)
            high = middle;
        else
            low = high = middle;
    }
    return YDIC_NEAR_FOUND;
}

/* Whether the number lies in the run shows in the run itself: in a prefix of a single run nothing was
 * searched, and taking its last number for a gap would make it its own neighbour. */
int nearOfRun(const Walk &walk, int32_t at)
{
    Run run;
    const int read = readRun(walk, at, run);
    if (read != YDIC_NEAR_FOUND)
        return read;
    if (!walk.isForward) {
        const bool isInside = run.first < walk.number && walk.number <= run.last;
        return isInside ? answer(walk, walk.number - 1) : answerLastOf(walk, at - 1);
    }
    if (walk.number < run.first)
        return answer(walk, run.first);
    return walk.number < run.last ? answer(walk, walk.number + 1) : answerFirstOf(walk, at + 1);
}

bool isUsableNumberIndex(const ydic_fields &fields)
{
    return fields.numberIndexSize >= NumberIndexLength && fields.numberIndexSize <= MostOffset;
}

/* YDIC_NEAR_FOUND, YDIC_NEAR_NONE, or the failure of the search. */
int nearInDictionary(const ydic_key &key, uint8_t direction, char *near, FILE *file, uint8_t *scratch)
{
    ydic_fields fields;
    if (header_Read(file, &fields, scratch) < 0 || !isUsableNumberIndex(fields))
        return YDIC_NOT_READ;
    const YdicBuffer index = ydic_allocate(fields.numberIndexSize);
    if (!index)
        return YDIC_NO_MEMORY;
    if (numsch_1idxRead(file, &fields, index.get()) < 0)
        return YDIC_NOT_READ;
    const int result =
        near_numberSch(key.first2, ydic_number(&key), near, direction, file, &fields, index.get());
    return result < 0 ? YDIC_NOT_READ : result;
}

int nearInPatch(const ydic_key &key, uint8_t direction, char *near, FILE *file, uint8_t *scratch)
{
    ydic_fields fields;
    if (header_Read(file, &fields, scratch) < 0)
        return YDIC_NOT_READ;
    const int result = near_numberSchPch(ydic_number(&key), near, direction, file, &fields);
    return result < 0 ? YDIC_NOT_READ : result;
}

/* The patch says that the code exists, so a record of the patch that shows nothing doesn't hide it here. */
int searchPatchFirst(const char *code, uint32_t max, char *result, ydic_info *info)
{
    uint8_t found = 0;
    const int count = Zip2AdrSearchBody(code, max, result, info->patchFile, &found);
    return count == 0 ? Zip2AdrSearchBody(code, max, result, info->dictFile, &found) : count;
}

} // namespace

int Zip2AdrSearchNP(const char *code, uint32_t max, uint8_t direction, char *near, char *result,
                    ydic_info *info)
{
    ydic_nearNone(near);
    if (max > 0)
        *result = '\0';
    ydic_key key;
    if (zipCode_Check(code, &key) < 0)
        return YDIC_BAD_INPUT;
    const YdicBuffer scratch = ydic_allocate(YDIC_SCRATCH_LENGTH);
    if (!scratch)
        return YDIC_NO_MEMORY;
    if (info->hasPatch) {
        const int inPatch = nearInPatch(key, direction, near, info->patchFile, scratch.get());
        if (inPatch == YDIC_NEAR_FOUND)
            return searchPatchFirst(near, max, result, info);
        if (inPatch != YDIC_NEAR_UNDECIDED)
            return inPatch;
    }
    const int inDictionary = nearInDictionary(key, direction, near, info->dictFile, scratch.get());
    return inDictionary == YDIC_NEAR_FOUND ? Zip2AdrSearch(near, max, result, info) : inDictionary;
}

int numsch_1idxRead(FILE *file, const ydic_fields *fields, uint8_t *index)
{
    return ydic_readAt(file, fields->numberIndex, fields->numberIndexSize, index) ? 1 : -1;
}

int near_numberSch(uint8_t first2, uint32_t number, char *near, uint8_t direction, FILE *file,
                   const ydic_fields *fields, const uint8_t *index)
{
    const Walk walk = {first2, static_cast<int32_t>(number), near, direction == YDIC_NEXT, file, fields,
                       index};
    int32_t first = firstRunOf(first2, index);
    const int32_t last = firstRunOf(first2 + 1, index) - 1;
    Run run;
    int result = readRun(walk, first, run);
    if (result != YDIC_NEAR_FOUND)
        return result;
    if (walk.number <= run.last || walk.number == run.first) {
        result = nearInFirstRun(walk, run);
    } else {
        result = readRun(walk, last, run);
        if (result == YDIC_NEAR_FOUND)
            result = nearInLastRun(walk, run);
    }
    if (result != YDIC_NEAR_UNDECIDED)
        return result;
    result = findRun(walk, first, last);
    return result == YDIC_NEAR_FOUND ? nearOfRun(walk, first) : result;
}

int bottom_numSch(uint8_t first2, char *near, FILE *file, const ydic_fields *fields, const uint8_t *index)
{
    const Walk walk = {first2, 0, near, false, file, fields, index};
    return first2 == 0 ? ydic_nearNone(near) : answerLastOf(walk, firstRunOf(first2, index) - 1);
}

int top_numSch(uint8_t first2, char *near, FILE *file, const ydic_fields *fields, const uint8_t *index)
{
    const Walk walk = {first2, 0, near, true, file, fields, index};
    return first2 >= YDIC_PREFIXES - 1 ? ydic_nearNone(near)
                                       : answerFirstOf(walk, firstRunOf(first2 + 1, index));
}

int ydic_nearAnswer(uint32_t number, char *near)
{
    if (number > YDIC_LAST_CODE) {
        ydic_nearNone(near);
        return -1;
    }
    int2ascii(number, near);
    return YDIC_NEAR_FOUND;
}

int ydic_nearNone(char *near)
{
    memset(near, 0, YDIC_CODE_LENGTH);
    return YDIC_NEAR_NONE;
}

void int2ascii(uint32_t number, char *buffer)
{
    buffer[YDIC_CODE_LENGTH - 1] = '\0';
    for (int at = YDIC_CODE_LENGTH - 2; at >= 0; --at, number /= 10)
        buffer[at] = static_cast<char>('0' + number % 10);
}
