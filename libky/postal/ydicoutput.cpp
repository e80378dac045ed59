#include "ydiccode_p.h"

#include "ydicbytes_p.h"
#include "ydictables_p.h"

#include <algorithm>
#include <string.h>

namespace {

constexpr uint8_t LastCodeByte = 99;     // a byte up to this begins a record
constexpr uint8_t LastCommonEnd = 100;   // a byte up to this ends the common text
constexpr uint8_t LastOneByteCode = 160; // what is above is half of a character

/** An address while it is written; what is behind the eightieth byte is lost. */
struct Address
{
    char *text;
    uint32_t length;
};

/** What a run of text bytes can say. */
enum class TextKind { Common, Record };

void put(Address &address, unsigned byte)
{
    // A damaged table of one-byte codes may have a NUL, which would make two results of one.
    if (byte != 0 && address.length < YDIC_ADDRESS_LENGTH)
        address.text[address.length++] = static_cast<char>(byte);
}

void putCharacter(Address &address, const char *character)
{
    put(address, static_cast<uint8_t>(character[0]));
    put(address, static_cast<uint8_t>(character[1]));
}

/* A two-digit prefix of a damaged file may lie in no prefecture. */
void putPrefecture(Address &address, uint8_t number)
{
    if (number >= YDIC_TDFK_TBL_ROWS)
        return;
    for (const char *name = Tdfk_tbl[number]; *name != '\0'; ++name)
        put(address, static_cast<uint8_t>(*name));
}

/* Position behind the text. Text to match with may follow what is shown: it is passed over. */
uint32_t putText(Address &address, const ydic_range &text, TextKind kind, const char *ask1ji,
                 const uint8_t *buffer)
{
    bool isHidden = false;
    uint32_t at = text.start;
    for (; at < text.end && buffer[at] > LastCodeByte; ++at) {
        const uint8_t byte = buffer[at];
        if (byte == YDIC_MARK_END && kind == TextKind::Record)
            return ydic_dictSkip(at, text.end, buffer);
        if (byte == YDIC_MARK_HIDDEN)
            isHidden = !isHidden;
        else if (isHidden || byte < YDIC_ASK1JI_FIRST)
            continue;
        else if (byte <= LastOneByteCode)
            putCharacter(address, ask1ji + ptrdiff_t{2} * (byte - YDIC_ASK1JI_FIRST));
        else
            put(address, byte & 0x7F);
    }
    return at;
}

/* The parts of an address that aren't the record's own. */
void putArea(Address &address, uint8_t prefecture, const ydic_range &common, const char *ask1ji,
             const uint8_t *buffer)
{
    constexpr char Solidus[] = "\x21\x3F"; // ／
    putPrefecture(address, prefecture);
    putCharacter(address, Solidus);
    putText(address, common, TextKind::Common, ask1ji, buffer);
}

/* Counts an address that shows something. */
void keep(const Address &address, ydic_state &state)
{
    if (address.length == 0)
        return;
    address.text[address.length] = '\0';
    state.bytes = static_cast<uint16_t>(state.bytes + address.length + 1);
    ++state.count;
}

bool hasRoom(const ydic_state &state)
{
    return state.count < state.max && state.count < YDIC_MOST_RESULTS;
}

ydic_range commonTextOf(uint32_t begin, uint32_t end, const uint8_t *buffer)
{
    ydic_range common = {begin, begin};
    while (common.end < end && buffer[common.end] > LastCommonEnd)
        ++common.end;
    return common;
}

/* Removes results that are there twice, but for the first ones, of which it is known that they differ. */
int removeDuplicates(char *result, const ydic_state &distinct, ydic_state &state)
{
    char *keptEnd = result + distinct.bytes;
    const char *at = keptEnd;
    int kept = distinct.count;
    for (int i = kept; i < state.count; ++i) {
        const size_t size = strlen(at) + 1;
        const char *earlier = result;
        while (earlier < keptEnd && strcmp(earlier, at) != 0)
            earlier += strlen(earlier) + 1;
        if (earlier == keptEnd) {
            memmove(keptEnd, at, size);
            keptEnd += size;
            ++kept;
        }
        at += size;
    }
    state.count = static_cast<uint16_t>(kept);
    state.bytes = static_cast<uint16_t>(keptEnd - result);
    return kept;
}

/** What ydic_sch() was called with, and what it knows. */
struct Scan
{
    char *result;
    const ydic_key *key;
    ydic_state *state;
    const char *ask1ji;
    const uint8_t *level1;
    const uint8_t *level2;
    const uint8_t *buffer;
    uint8_t *found;
    ydic_state distinct; // the state when all results were different
};

/* Near the maximum every record comes here: comparing all results anew for each would take seconds. */
bool isFull(Scan &scan)
{
    if (scan.state->count < scan.state->max)
        return false;
    removeDuplicates(scan.result, scan.distinct, *scan.state);
    scan.distinct = *scan.state;
    return scan.state->count >= scan.state->max;
}

/* False: the scan ends here. */
bool scanChunk(Scan &scan, const ydic_range &chunk)
{
    const ydic_range common = commonTextOf(chunk.start + YDIC_CHUNK_HEADER, chunk.end, scan.buffer);
    for (uint32_t position = common.end; position < chunk.end;) {
        const uint8_t last2 = scan.buffer[position];
        if (last2 > scan.key->last2)
            return false;
        if (last2 < scan.key->last2) {
            position = ydic_dictSkip(position, chunk.end, scan.buffer);
            continue;
        }
        position = ydic_output(scan.result, position, &common, scan.key, chunk.end, scan.state, scan.ask1ji,
                               scan.level1, scan.level2, scan.buffer);
        *scan.found = 1;
        if (isFull(scan))
            return false;
    }
    return true;
}

} // namespace

int ydic_sch(char *result, const ydic_range *chunks, const ydic_range *entries, const ydic_key *key,
             ydic_state *state, const char *ask1ji, const uint8_t *level1, const uint8_t *level2,
             const uint8_t *buffer, uint8_t *found)
{
    Scan scan = {result, key, state, ask1ji, level1, level2, buffer, found, {}};
    for (uint32_t at = entries->start; at < entries->end; at += YDIC_LEVEL2_ENTRY) {
        ydic_entry entry;
        ydic_entry next;
        ydic_2idxGet(at, &entry, level2);
        ydic_2idxGet(at + YDIC_LEVEL2_ENTRY, &next, level2);
        if (entry.offset < chunks->start || next.offset < entry.offset || next.offset > chunks->end)
            return YDIC_NOT_READ;
        if (!scanChunk(scan, {entry.offset - chunks->start, next.offset - chunks->start}))
            break;
    }
    return state->count;
}

uint32_t ydic_output(char *result, uint32_t position, const ydic_range *common, const ydic_key *key,
                     uint32_t end, ydic_state *state, const char *ask1ji, const uint8_t *level1,
                     const uint8_t *, const uint8_t *buffer)
{
    constexpr uint32_t MarkAndNumber = 4;
    const uint8_t mark = position + 1 < end ? buffer[position + 1] : 0;
    if (mark == YDIC_MARK_SILENT || mark == YDIC_MARK_CANCELS || !hasRoom(*state))
        return ydic_dictSkip(position, end, buffer);
    Address address = {result + state->bytes, 0};
    uint32_t text = position + 1;
    if (mark == YDIC_MARK_COMPLETE)
        text = std::min(text + MarkAndNumber, end);
    else
        putArea(address, level1[size_t{YDIC_LEVEL1_ENTRY} * key->first2], *common, ask1ji, buffer);
    const uint32_t next = mark == YDIC_MARK_WHOLE
                              ? ydic_dictSkip(position, end, buffer)
                              : putText(address, {text, end}, TextKind::Record, ask1ji, buffer);
    keep(address, *state);
    return next;
}

uint32_t ydic_dictSkip(uint32_t position, uint32_t end, const uint8_t *buffer)
{
    constexpr uint32_t NumberBytes = 3; // they may look like the code byte of a record
    for (++position; position < end && buffer[position] > LastCodeByte; ++position) {
        if (buffer[position] == YDIC_MARK_COMPLETE)
            position += NumberBytes;
    }
    return position < end ? position : end;
}

int ydic_uniq(char *result, ydic_state *state)
{
    return removeDuplicates(result, {}, *state);
}
