#include "ydicaddress_p.h"
#include "ydicbytes_p.h"
#include "ydictext_p.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr int KeyLength = 4;     // bytes of a key of level 1
constexpr int KeyCharacters = 2; // and its characters
constexpr int GroupHead = 2;     // bytes
constexpr uint16_t IsComplete = 0x8000;
constexpr uint16_t Suffixes[] = {0, Jis::Shi, Jis::Ku, Jis::Machi, Jis::Mura};

/** A group of level 2. */
struct Group
{
    const uint8_t *at;
    uint16_t prefecture;
    bool hasKey;
    int keyLength; // characters, without the suffix
    uint16_t count;
};

/** What became of a group. */
enum class Fit { Yes, No, Unreadable };

uint8_t *readBuffer(ydic_search *search)
{
    return reinterpret_cast<uint8_t *>(search->readBuf);
}

Group groupAt(const uint8_t *at)
{
    const uint16_t head = ydic_u16(at);
    const int key = head >> 6 & 0xF;
    Group group = {};
    group.at = at;
    group.prefecture = static_cast<uint16_t>(head >> 10);
    group.hasKey = key != 0;
    group.keyLength = group.hasKey ? key - 1 : 0;
    group.count = head & 0x3F;
    return group;
}

/** Where the references of a group begin, in bytes. */
int referencesAt(const Group &group)
{
    return GroupHead + (group.hasKey ? 2 * group.keyLength + 1 : 0);
}

int lengthOf(const Group &group)
{
    return referencesAt(group) + YDIC_REFERENCE * group.count;
}

/** Whether the query has the characters of a key, or has them once the key is normalised. */
bool matchesKey(const Group &group, ydic_search *search)
{
    const int length = group.keyLength;
    const char *query = search->query + KeyLength;
    char key[YDIC_WORK_LENGTH + 3] = {};
    memcpy(key, group.at + GroupHead, ydic_bytes(length));
    const int matched = stncmp2(query, key, 2 * length);
    if (matched == length)
        return true;
    if (!(search->flags & YDIC_HAS_VARIANT) || search->charInfo[KeyCharacters + matched] == 0)
        return false;
    int16_t converted = static_cast<int16_t>(length);
    return yuragi_conv(key, &converted, 0, search) == 0 && stncmp2(query, key, 2 * length) == length;
}

/** Compares the query behind its first two characters with a group that has a key. */
Fit fitsKey(const Group &group, ydic_search *search)
{
    if (search->queryLen - KeyCharacters < group.keyLength)
        return Fit::No;
    const uint8_t suffix = group.at[referencesAt(group) - 1];
    if (suffix < 1 || suffix > 4)
        return Fit::Unreadable;
    const int suffixAt = KeyCharacters + group.keyLength;
    if (suffixAt >= search->queryLen || ydic_character(search->query, suffixAt) != Suffixes[suffix])
        return Fit::No;
    return matchesKey(group, search) ? Fit::Yes : Fit::No;
}

Fit fits(const Group &group, ydic_search *search)
{
    if (search->prefecture != 0 && search->prefecture != group.prefecture)
        return Fit::No;
    return group.hasKey ? fitsKey(group, search) : Fit::Yes;
}

ydic_group recordOf(const Group &group, const uint8_t *slice)
{
    ydic_group record = {};
    record.count = group.count;
    record.refOffset = static_cast<uint16_t>(group.at - slice + referencesAt(group));
    record.consumed = static_cast<uint16_t>(KeyCharacters + (group.hasKey ? group.keyLength + 1 : 0));
    record.prefecture = group.prefecture;
    return record;
}

uint32_t offsetOf(const uint8_t *reference)
{
    return ydic_u24(reference);
}

uint16_t lengthWordOf(const uint8_t *reference)
{
    return ydic_u16(reference + 3);
}

uint32_t endOf(const uint8_t *reference)
{
    return offsetOf(reference) + (lengthWordOf(reference) & ~unsigned{IsComplete});
}

/**
 * The references, from the first one on, that one read serves.
 * @param end receives the end of what has to be read
 * @return number of references; 0 when the first one alone is too long
 */
int batchOf(const uint8_t *references, int count, uint32_t *end)
{
    const uint32_t first = offsetOf(references);
    int batch = 0;
    *end = first;
    // A reference that lies before the first one (damage: they ascend) begins a read of its own.
    for (; batch < count; ++batch, references += YDIC_REFERENCE) {
        if (offsetOf(references) < first || endOf(references) - first > YDIC_READ_LENGTH)
            break;
        if (endOf(references) > *end)
            *end = endOf(references);
    }
    return batch;
}

void matchBatch(const uint8_t *references, int batch, const ydic_group &group, ydic_search *search)
{
    const uint32_t first = offsetOf(references);
    search->groupPrefecture = group.prefecture;
    for (int i = 0; i < batch; ++i, references += YDIC_REFERENCE) {
        search->consumed = static_cast<int16_t>(group.consumed);
        dic_knsk(offsetOf(references) - first, lengthWordOf(references), search);
    }
}

/** @return 1 when all references were looked at, 0 when one of them is too long, or a negative failure */
int matchGroup(const ydic_group &group, const uint8_t *slice, ydic_search *search, ydic_info *info)
{
    const uint8_t *references = slice + group.refOffset;
    for (int left = group.count; left > 0;) {
        uint32_t end = 0;
        const int batch = batchOf(references, left, &end);
        if (batch == 0)
            return 0;
        const uint32_t first = offsetOf(references);
        const int result =
            ReadDic(search->fields.baseA + first, end - first, search->readBuf, search->fileSel, info);
        if (result < 0)
            return result;
        matchBatch(references, batch, group, search);
        references += ptrdiff_t{YDIC_REFERENCE} * batch;
        left -= batch;
    }
    return 1;
}

int matchSlice(uint16_t start, uint16_t end, uint8_t *slice, ydic_search *search, ydic_info *info)
{
    search->consumed = KeyCharacters;
    const int groups = idx2_knsk(start, end, slice, search, info);
    int result = groups < 0 ? groups : 1;
    for (int i = 0; i < groups && result > 0; ++i)
        result = matchGroup(search->groups[i], slice, search, info);
    return result < 0 ? result : 0;
}

} // namespace

int idx1_knsk(uint16_t *start, uint16_t *end, uint8_t read, ydic_search *search, ydic_info *info)
{
    const uint32_t count = search->fields.index1Size / YDIC_ADDRESS1_ENTRY;
    if (search->queryLen < KeyCharacters || count == 0)
        return 0;
    // The entry behind the last one is read too: its offset ends the last slice.
    const uint32_t bytes = (count + 1) * YDIC_ADDRESS1_ENTRY;
    if (bytes > YDIC_READ_LENGTH)
        return YDIC_NOT_READ;
    if (read && ReadDic(search->fields.index1, bytes, search->readBuf, search->fileSel, info) < 0)
        return YDIC_NOT_READ;
    uint32_t low = 0;
    for (uint32_t high = count; low < high;) {
        const uint32_t middle = (low + high) / 2;
        const uint8_t *entry = readBuffer(search) + size_t{YDIC_ADDRESS1_ENTRY} * middle;
        const int difference = stncmp(search->query, reinterpret_cast<const char *>(entry), KeyLength);
        if (difference == 0) {
            *start = ydic_u16(entry + KeyLength);
            *end = ydic_u16(entry + YDIC_ADDRESS1_ENTRY + KeyLength);
            return 1;
        }
        if (difference > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return 0;
}

int idx2_knsk(uint16_t start, uint16_t end, uint8_t *slice, ydic_search *search, ydic_info *info)
{
    if (end <= start)
        return 0;
    const auto length = static_cast<uint32_t>(end - start);
    const int result = ReadDic(search->fields.index2 + start, length, slice, search->fileSel, info);
    if (result < 0)
        return result;
    int groups = 0;
    for (uint32_t at = 0; at < length;) {
        const uint32_t left = length - at;
        // A damaged slice is not believed at all.
        if (left < GroupHead || left < static_cast<uint32_t>(lengthOf(groupAt(slice + at))))
            return 0;
        const Group group = groupAt(slice + at);
        const Fit fit = fits(group, search);
        if (fit == Fit::Unreadable)
            return 0;
        if (fit == Fit::Yes)
            search->groups[groups++] = recordOf(group, slice);
        at += static_cast<uint32_t>(lengthOf(group));
    }
    return groups;
}

int knsk_sub(uint16_t start, uint16_t end, ydic_search *search, ydic_info *info)
{
    if (end <= start)
        return 0;
    const auto length = static_cast<size_t>(end - start);
    auto *slice = static_cast<uint8_t *>(malloc(length));
    // A group has two bytes or more.
    search->groups = static_cast<ydic_group *>(malloc((length / 2 + 1) * sizeof(ydic_group)));
    const int result =
        slice && search->groups ? matchSlice(start, end, slice, search, info) : int{YDIC_NO_MEMORY};
    free(search->groups);
    search->groups = nullptr;
    free(slice);
    return result;
}
