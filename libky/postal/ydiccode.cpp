#include "ydiccode_p.h"

#include "ydicbuffer_p.h"
#include "ydicbytes_p.h"

#include <algorithm>

namespace {

/* No slice is longer, whatever the header of a damaged file says. */
constexpr uint32_t LongestSlice = UINT16_MAX + YDIC_LEVEL2_ENTRY + 1;

/** What a search reads into. */
struct Buffers
{
    YdicBuffer ask1ji;
    YdicBuffer level1;
    YdicBuffer slice;
    YdicBuffer chunks;
};

bool allocateBuffers(Buffers &buffers, const ydic_fields &fields)
{
    return (buffers.ask1ji = ydic_allocate(YDIC_ASK1JI_LENGTH)) &&
           (buffers.level1 = ydic_allocate(YDIC_LEVEL1_LENGTH)) &&
           (buffers.slice = ydic_allocate(std::min(fields.sliceLimit, LongestSlice))) &&
           (buffers.chunks = ydic_allocate(YDIC_CHUNK_LENGTH));
}

ydic_range sliceOf(uint8_t first2, const uint8_t *level1)
{
    const uint8_t *entry = level1 + size_t{YDIC_LEVEL1_ENTRY} * first2;
    return {ydic_u16(entry + 1), ydic_u16(entry + YDIC_LEVEL1_ENTRY + 1)};
}

ydic_range chunksOf(const ydic_range &entries, const uint8_t *slice)
{
    ydic_entry first;
    ydic_entry behind;
    ydic_2idxGet(entries.start, &first, slice);
    ydic_2idxGet(entries.end, &behind, slice);
    return {first.offset, behind.offset};
}

const char *ask1jiOf(const Buffers &buffers)
{
    return reinterpret_cast<const char *>(buffers.ask1ji.get());
}

int searchSlice(const ydic_key &key, ydic_state &state, char *result, FILE *file, const ydic_fields &fields,
                const Buffers &buffers, uint8_t *found)
{
    ydic_range entries = sliceOf(key.first2, buffers.level1.get());
    if (entries.start == entries.end)
        return 0;
    if (ydic_2idxRead(file, &entries, &fields, buffers.slice.get()) < 0)
        return YDIC_NOT_READ;
    if (!ydic_2idxSch(&entries, &key, buffers.slice.get()))
        return 0;
    const ydic_range chunks = chunksOf(entries, buffers.slice.get());
    if (ydic_read(file, &chunks, &fields, buffers.chunks.get()) < 0)
        return YDIC_NOT_READ;
    const int count = ydic_sch(result, &chunks, &entries, &key, &state, ask1jiOf(buffers),
                               buffers.level1.get(), buffers.slice.get(), buffers.chunks.get(), found);
    return count > 1 ? ydic_uniq(result, &state) : count;
}

int searchFile(const char *code, uint32_t max, char *result, FILE *file, uint8_t *found)
{
    ydic_fields fields;
    uint8_t scratch[YDIC_SCRATCH_LENGTH];
    if (header_Read(file, &fields, scratch) < 0)
        return YDIC_NOT_READ;
    Buffers buffers;
    if (!allocateBuffers(buffers, fields))
        return YDIC_NO_MEMORY;
    if (ask1ji_tblRead(file, reinterpret_cast<char *>(buffers.ask1ji.get())) < 0 ||
        ydic_1idxRead(file, &fields, buffers.level1.get()) < 0)
        return YDIC_NOT_READ;
    ydic_key key;
    if (zipCode_Check(code, &key) < 0)
        return YDIC_BAD_INPUT;
    ydic_state state = {std::min(max, uint32_t{YDIC_MOST_RESULTS}), 0, 0};
    return searchSlice(key, state, result, file, fields, buffers, found);
}

} // namespace

int zipCode_Check(const char *code, ydic_key *key)
{
    constexpr int LongestCode = 8;
    constexpr int Digits = 7;
    constexpr int HyphenAt = 3;
    uint32_t number = 0;
    int digits = 0;
    int at = 0;
    for (; at < LongestCode && code[at] != '\0'; ++at) {
        if (code[at] == '-' && at == HyphenAt)
            continue;
        if (code[at] < '0' || code[at] > '9')
            return -1;
        number = number * 10 + static_cast<uint32_t>(code[at] - '0');
        ++digits;
    }
    if (digits != Digits || code[at] != '\0')
        return -1;
    *key = {static_cast<uint8_t>(number / 100000), static_cast<uint16_t>(number / 100 % 1000),
            static_cast<uint8_t>(number % 100)};
    return 1;
}

uint32_t ydic_number(const ydic_key *key)
{
    return key->first2 * 100000U + key->mid3 * 100U + key->last2;
}

int Zip2AdrSearch(const char *code, uint32_t max, char *result, ydic_info *info)
{
    if (max > 0)
        *result = '\0';
    uint8_t found = 0;
    if (info->hasPatch) {
        const int count = Zip2AdrSearchBody(code, max, result, info->patchFile, &found);
        if (found || count < 0)
            return count;
    }
    return Zip2AdrSearchBody(code, max, result, info->dictFile, &found);
}

int Zip2AdrSearchBody(const char *code, uint32_t max, char *result, FILE *file, uint8_t *found)
{
    *found = 0;
    const int count = searchFile(code, max, result, file, found);
    if (count <= 0 && max > 0)
        *result = '\0'; // damage may show behind the first results
    return count;
}

int ydic_readFrom(FILE *file, uint32_t base, uint32_t offset, uint32_t count, void *buffer)
{
    return offset <= UINT32_MAX - base && ydic_readAt(file, base + offset, count, buffer);
}

int ydic_1idxRead(FILE *file, const ydic_fields *fields, uint8_t *level1)
{
    return ydic_readAt(file, fields->codeIndex1, YDIC_LEVEL1_LENGTH, level1) ? 1 : -1;
}

int ydic_2idxRead(FILE *file, const ydic_range *range, const ydic_fields *fields, uint8_t *slice)
{
    if (range->end < range->start)
        return -1;
    const uint32_t count = range->end - range->start + YDIC_LEVEL2_ENTRY;
    if (count >= std::min(fields->sliceLimit, LongestSlice) ||
        !ydic_readFrom(file, fields->baseA, range->start, count, slice))
        return -1;
    slice[count] = 0;
    return 1;
}

void ydic_2idxGet(uint32_t offset, ydic_entry *entry, const uint8_t *slice)
{
    const uint8_t *at = slice + offset;
    *entry = {ydic_u16(at), ydic_u24(at + 2), at[5]};
}

int ydic_2idxSch(ydic_range *range, const ydic_key *key, const uint8_t *slice)
{
    const uint32_t length = range->end - range->start;
    bool isFound = false;
    uint8_t bestLast2 = 0;
    uint32_t start = 0;
    uint32_t at = 0;
    for (; at + YDIC_LEVEL2_ENTRY <= length; at += YDIC_LEVEL2_ENTRY) {
        ydic_entry entry;
        ydic_2idxGet(at, &entry, slice);
        if (entry.mid3 < key->mid3)
            continue;
        if (entry.mid3 > key->mid3 || entry.last2 > key->last2)
            break;
        if (!isFound || entry.last2 > bestLast2) {
            isFound = true;
            bestLast2 = entry.last2;
            start = at;
        }
    }
    if (isFound)
        *range = {start, at};
    return isFound ? 1 : 0;
}

int ydic_read(FILE *file, const ydic_range *chunks, const ydic_fields *fields, uint8_t *buffer)
{
    if (chunks->end < chunks->start || chunks->end - chunks->start >= YDIC_CHUNK_LENGTH)
        return -1;
    const uint32_t count = chunks->end - chunks->start;
    if (!ydic_readFrom(file, fields->baseB, chunks->start, count, buffer))
        return -1;
    buffer[count] = 0;
    return 1;
}
