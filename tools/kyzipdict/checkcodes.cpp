#include "checkparts_p.h"
#include "ydic.h"
#include "ydicsearch.h"
#include "ydictables_p.h"
#include <algorithm>
#include <cinttypes>

namespace ZipDict {

namespace {

/* Entries that belong together: from @p first to before @p last. */
struct EntryRange
{
    size_t first = 0;
    size_t last = 0;
};

template <typename Same>
EntryRange rangeFrom(const std::vector<IndexEntry> &entries, size_t first, const Same &same)
{
    size_t last = first + 1;
    while (last < entries.size() && same(entries[first], entries[last]))
        ++last;
    return {first, last};
}

bool checkSlice(const DictionaryFile &file, unsigned prefix, Findings &findings)
{
    const uint64_t entry = uint64_t{file.u32(YDIC_AT_CODE_INDEX1)} + uint64_t{prefix} * YDIC_LEVEL1_ENTRY;
    const unsigned start = file.u16(entry + 1);
    const unsigned end = file.u16(entry + YDIC_LEVEL1_ENTRY + 1);
    if (end < start) {
        findings.add(entry, "the slice of prefix %02u ends at %u, before its start %u", prefix, end, start);
        return false;
    }
    const Section slice = file.sliceOf(prefix);
    if (slice.size % YDIC_LEVEL2_ENTRY != 0) {
        findings.add(entry, "the slice of prefix %02u has %" PRIu64 " bytes, which are no entries of 6",
                     prefix, slice.size);
        return false;
    }
    if (slice.size != 0 && !file.has({slice.offset, slice.size + YDIC_LEVEL2_ENTRY})) {
        findings.add(entry, "the slice of prefix %02u and the entry behind it lie outside the file", prefix);
        return false;
    }
    const uint32_t limit = file.u32(YDIC_AT_SLICE_LIMIT);
    if (slice.size != 0 && slice.size + YDIC_LEVEL2_ENTRY >= limit)
        findings.add(entry,
                     "the slice of prefix %02u and the entry behind it have %" PRIu64
                     " bytes, the limit is %" PRIu32,
                     prefix, slice.size + YDIC_LEVEL2_ENTRY, limit);
    if (const unsigned prefecture = file.prefectureOf(prefix);
        slice.size != 0 && (prefecture == 0 || prefecture > YDIC_PREFECTURES))
        findings.add(entry, "prefix %02u is of prefecture %u", prefix, prefecture);
    return true;
}

bool checkSlices(const DictionaryFile &file, Findings &findings)
{
    bool isGood = true;
    for (unsigned prefix = 0; prefix < YDIC_PREFIXES; ++prefix)
        isGood = checkSlice(file, prefix, findings) && isGood;
    return isGood;
}

bool checkEntry(const DictionaryFile &file, const IndexEntry &entry, Findings &findings)
{
    if (entry.middle > 999 || entry.last2 > 99)
        findings.add(entry.at, "entry of middle %u, last digits %u", entry.middle, entry.last2);
    else if (entry.chunk.size == 0)
        findings.add(entry.at, "the chunk of %05" PRIu32 " doesn't end behind its start", entry.fiveDigits());
    else if (!file.has(entry.chunk))
        findings.add(entry.at, "the chunk of %05" PRIu32 " lies outside the file", entry.fiveDigits());
    else
        return true;
    return false;
}

bool checkEntries(const DictionaryFile &file, const std::vector<IndexEntry> &entries, Findings &findings)
{
    bool isGood = true;
    for (size_t i = 0; i < entries.size(); ++i) {
        isGood = checkEntry(file, entries[i], findings) && isGood;
        if (i == 0 || entries[i - 1].prefix != entries[i].prefix)
            continue;
        const auto key = [](const IndexEntry &entry) { return entry.middle * 256 + entry.last2; };
        if (key(entries[i]) < key(entries[i - 1])) {
            findings.add(entries[i].at, "entry %05" PRIu32 "-%02u stands behind %05" PRIu32 "-%02u",
                         entries[i].fiveDigits(), entries[i].last2, entries[i - 1].fiveDigits(),
                         entries[i - 1].last2);
            isGood = false;
        }
    }
    return isGood;
}

/* What a search reads at once: the entries with the same smallest digits. */
void checkReadRange(const std::vector<IndexEntry> &entries, const EntryRange &range, Findings &findings)
{
    const IndexEntry &first = entries[range.first];
    const uint64_t size = entries[range.last - 1].chunk.end() - first.chunk.offset;
    if (size >= YDIC_CHUNK_LENGTH)
        findings.add(first.at, "a search for %05" PRIu32 "-%02u reads %" PRIu64 " bytes, 5119 at most fit",
                     first.fiveDigits(), first.last2, size);
}

void checkShown(const DictionaryFile &file, const Chunk &chunk, CodeChunks &codes, Findings &findings)
{
    for (const Record &record : chunk.records) {
        const uint32_t code = chunk.fiveDigits * 100 + record.code;
        if (record.isComplete)
            codes.complete.insert(record.whole);
        if (!record.isShown())
            continue;
        codes.shownCodes.insert(code);
        if (const size_t length = file.shownRecord(chunk, record).size(); length > YDIC_ADDRESS_LENGTH)
            findings.add(record.whole.offset, "record of %07" PRIu32 " shows %zu bytes, 80 at most are seen",
                         code, length);
    }
}

/* A chunk's place in the index. @param least the greatest digits in chunks before it of the same five digits
 * @param isNewRange whether a search for these digits begins here */
void checkPlace(const IndexEntry &entry, const Chunk &chunk, int least, bool isNewRange, Findings &findings)
{
    if (chunk.fiveDigits != entry.fiveDigits())
        findings.add(chunk.whole.offset, "the chunk says that it is of %05" PRIu32 ", its entry %05" PRIu32,
                     chunk.fiveDigits, entry.fiveDigits());
    if (chunk.records.empty())
        return;
    const int smallest = chunk.records.front().code;
    if (smallest != static_cast<int>(entry.last2))
        findings.add(entry.at, "the smallest digits of %05" PRIu32 " are %02d, its entry says %02u",
                     entry.fiveDigits(), smallest, entry.last2);
    else if (smallest < least || (isNewRange && smallest == least))
        findings.add(chunk.whole.offset,
                     "records of %05" PRIu32 "-%02d aren't found, %02d stands before them",
                     entry.fiveDigits(), smallest, least);
}

bool isForAddresses(const Chunk &chunk)
{
    return !std::ranges::all_of(chunk.records, &Record::isComplete);
}

/* The chunks of the same five digits. */
void checkFiveDigits(const DictionaryFile &file, const std::vector<IndexEntry> &entries,
                     const EntryRange &range, CodeChunks &codes, Findings &findings)
{
    int least = -1;
    for (size_t i = range.first; i < range.last; ++i) {
        if (entries[i].chunk.size > YDIC_READ_LENGTH)
            continue; // what no search has room for is not taken apart
        const bool isNewRange = i == range.first || entries[i - 1].last2 != entries[i].last2;
        Chunk chunk = file.chunkAt(entries[i].chunk);
        checkPlace(entries[i], chunk, least, isNewRange, findings);
        chunk.fiveDigits = entries[i].fiveDigits(); // the search never looks at the chunk's own
        checkChunk(file, chunk, findings);
        checkShown(file, chunk, codes, findings);
        for (const Record &record : chunk.records)
            least = std::max<int>(least, record.code);
        codes.whole.insert(chunk.whole);
        if (isForAddresses(chunk))
            codes.forAddresses.insert(chunk.whole);
    }
}

Section spanOf(const std::set<Section> &sections)
{
    Section all;
    for (const Section &section : sections) {
        if (all.size == 0)
            all = section;
        all.size = std::max(all.end(), section.end()) - all.offset;
    }
    return all;
}

} // namespace

bool checkCodes(const DictionaryFile &file, CodeChunks &codes, Findings &findings)
{
    if (!checkSlices(file, findings))
        return false;
    const std::vector<IndexEntry> entries = file.codeIndex();
    if (!checkEntries(file, entries, findings))
        return false;
    const auto sameFive = [](const IndexEntry &a, const IndexEntry &b) {
        return a.fiveDigits() == b.fiveDigits();
    };
    const auto sameSeven = [&](const IndexEntry &a, const IndexEntry &b) {
        return sameFive(a, b) && a.last2 == b.last2;
    };
    for (size_t first = 0; first < entries.size();) {
        const EntryRange range = rangeFrom(entries, first, sameSeven);
        checkReadRange(entries, range, findings);
        first = range.last;
    }
    for (size_t first = 0; first < entries.size();) {
        const EntryRange range = rangeFrom(entries, first, sameFive);
        checkFiveDigits(file, entries, range, codes, findings);
        first = range.last;
    }
    codes.all = spanOf(codes.whole);
    return true;
}

} // namespace ZipDict
