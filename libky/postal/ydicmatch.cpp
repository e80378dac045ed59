#include "ydicaddress_p.h"
#include "ydicbytes_p.h"
#include "ydictext_p.h"

namespace {

constexpr uint8_t LastCode = 99; // bytes above it stand in a record, the others begin one
constexpr uint32_t LastPostalCode = 9999999;
constexpr uint16_t IsComplete = 0x8000;

/** Bytes of the read buffer that are still to be looked at. */
struct Bytes
{
    const uint8_t *at;
    const uint8_t *end;
};

/** A record whose text is compared. */
struct Record
{
    uint32_t code;
    uint8_t cancels;
    bool isComplete; // a whole address, compared from the start of the query
};

bool isIn(const Bytes &bytes)
{
    return bytes.at < bytes.end;
}

bool isInRecord(const Bytes &bytes)
{
    return isIn(bytes) && *bytes.at > LastCode;
}

bool isAtText(const Bytes &bytes)
{
    return isIn(bytes) && *bytes.at >= YDIC_ASK1JI_FIRST;
}

/** Steps over a mark, if it is there. */
bool takeMark(Bytes *bytes, uint8_t mark)
{
    if (!isIn(*bytes) || *bytes->at != mark)
        return false;
    ++bytes->at;
    return true;
}

void skip(Bytes *bytes, int count)
{
    bytes->at = bytes->end - bytes->at > count ? bytes->at + count : bytes->end;
}

/** Steps to the next record of a chunk. */
void skipRecord(Bytes *bytes)
{
    while (isInRecord(*bytes)) {
        // The three bytes of the code behind this mark may look like a record.
        skip(bytes, *bytes->at == YDIC_MARK_COMPLETE ? 1 + 3 : 1);
    }
}

bool store(const Record &record, int match, ydic_search *search)
{
    if (record.code > LastPostalCode)
        return false;
    zip_store(record.code, static_cast<uint8_t>(match), search, record.cancels);
    return true;
}

/** Stores a record that was found by its text. In a chunk, such a record of code 00 is no candidate. */
bool storeText(const Record &record, int matched, ydic_search *search)
{
    return (record.isComplete || record.code % 100 != 0) && store(record, search->consumed + matched, search);
}

/** Appends to work what has room. */
void append(ydic_search *search, int *length, uint8_t byte)
{
    if (*length < YDIC_WORK_LENGTH)
        search->work[(*length)++] = static_cast<char>(byte);
}

void appendText(ydic_search *search, int *length, uint8_t byte)
{
    if (byte > 160) {
        append(search, length, byte & 0x7F);
        return;
    }
    const char *character = search->ask1ji + ydic_bytes(byte - YDIC_ASK1JI_FIRST);
    append(search, length, static_cast<uint8_t>(character[0]));
    append(search, length, static_cast<uint8_t>(character[1]));
}

/** Steps over what an address need not say. @return whether it has an end */
bool skipShownOnly(Bytes *bytes)
{
    while (isInRecord(*bytes) && *bytes->at != YDIC_MARK_SHOWN)
        ++bytes->at;
    return takeMark(bytes, YDIC_MARK_SHOWN);
}

/** Decodes the text of a record into work. @return characters */
int16_t decode(Bytes *bytes, bool isComplete, ydic_search *search)
{
    int length = 0;
    while (isInRecord(*bytes)) {
        const uint8_t byte = *bytes->at++;
        // In a complete record the second mark stays, half a character: what stands behind it can't match,
        // and such records are found by what stands before.
        if (byte == YDIC_MARK_SHOWN && skipShownOnly(bytes) && isComplete)
            append(search, &length, byte);
        else if (byte >= YDIC_ASK1JI_FIRST)
            appendText(search, &length, byte);
    }
    search->work[length] = '\0';
    return static_cast<int16_t>(length / 2);
}

/** How many characters longer than the rest of the query a text may be that normalising may shorten. */
int allowance(const ydic_search *search)
{
    int characters = search->flags & YDIC_TEN_SHORTENED ? 1 : 0;
    characters += search->afterToori ? 1 : 0;
    characters += search->sepPos1 ? 1 : 0;
    characters += search->sepPos1 && search->sepPos2 ? 1 : 0;
    return characters;
}

/** Equal characters at the start of work and of the rest of the query. */
int matching(int length, const ydic_search *search)
{
    const int left = search->queryLen - search->consumed;
    return stncmp2(search->query + ydic_bytes(search->consumed), search->work,
                   2 * (length < left ? length : left));
}

bool queryEndsAt(int position, const ydic_search *search)
{
    return position >= search->queryLen;
}

/** Whether a number begins at a position, as the query was written. */
bool numberBeginsAt(int position, bool isComplete, const ydic_search *search)
{
    const uint16_t information = search->charInfo[position];
    return information == YDIC_TEN_10 || information == YDIC_TEN_12 || information == YDIC_TEN ||
           (!isComplete && (ydic_isDigit(information) || ydic_isNumeral(information)));
}

/** Whether a text that matches but for its last character may do without it. */
bool isLastOptional(const Record &record, int length, const ydic_search *search)
{
    const int position = search->consumed + length - 1;
    const uint16_t last = ydic_character(search->work, length - 1);
    const bool ends = queryEndsAt(position, search);
    if (last == Jis::Machi)
        return ends || length > 2 || numberBeginsAt(position, record.isComplete, search);
    return last == Jis::Ban && ends;
}

/** Whether normalising may make a text match that differs at a position of the query. */
bool isWorthASecondLook(int position, const ydic_search *search)
{
    return (search->flags & YDIC_HAS_VARIANT) &&
           (search->charInfo[position] != 0 || search->afterToori != 0 || search->sepPos1 != 0 ||
            search->groupPrefecture == 1);
}

bool normalisedMatches(int16_t *length, ydic_search *search)
{
    return yuragi_conv(search->work, length, 1, search) == 0 && matching(*length, search) == *length;
}

/** Compares work, and stores the record when it fits. */
bool matchRecord(const Record &record, int16_t length, ydic_search *search)
{
    if (length > search->queryLen - search->consumed + allowance(search) + 1)
        return false;
    const int matched = matching(length, search);
    if (matched + 1 == length && isLastOptional(record, length, search)) {
        search->dropMark = 1;
        return storeText(record, matched, search);
    }
    if (matched != length &&
        (!isWorthASecondLook(search->consumed + matched, search) || !normalisedMatches(&length, search)))
        return false;
    return !search->noEnd[search->consumed + length] && storeText(record, length, search);
}

/** The next record of a chunk. @param base its code, but for the last two digits */
bool matchNext(uint32_t base, Bytes *bytes, ydic_search *search)
{
    search->dropMark = 0;
    Record record = {base + *bytes->at++, 0, false};
    record.cancels = takeMark(bytes, YDIC_MARK_CANCELS);
    takeMark(bytes, YDIC_MARK_SILENT);
    if (isIn(*bytes) && *bytes->at == YDIC_MARK_COMPLETE) {
        skipRecord(bytes);
        return false;
    }
    if (takeMark(bytes, YDIC_MARK_WHOLE)) {
        takeMark(bytes, YDIC_MARK_END);
        return store(record, search->consumed, search);
    }
    return matchRecord(record, decode(bytes, false, search), search);
}

bool matchChunk(Bytes bytes, ydic_search *search)
{
    if (bytes.end - bytes.at < YDIC_CHUNK_HEADER)
        return false;
    const uint32_t base = ydic_u24(bytes.at) * 100;
    skip(&bytes, YDIC_CHUNK_HEADER);
    while (isAtText(bytes))
        ++bytes.at;
    bool found = false;
    while (isIn(bytes) && *bytes.at <= LastCode)
        found |= matchNext(base, &bytes, search);
    return found;
}

/** Steps over the prefecture of a complete address, and the solidus behind it. */
bool skipPrefecture(Bytes *bytes)
{
    for (; bytes->end - bytes->at >= 2; ++bytes->at) {
        if (bytes->at[0] == 0xA1 && bytes->at[1] == 0xBF) { // ／
            bytes->at += 2;
            return true;
        }
    }
    return false;
}

bool matchComplete(Bytes bytes, ydic_search *search)
{
    skip(&bytes, 1); // the last two digits, which its whole code has too
    Record record = {0, takeMark(&bytes, YDIC_MARK_CANCELS), true};
    if (!takeMark(&bytes, YDIC_MARK_COMPLETE) || bytes.end - bytes.at < 3)
        return false;
    record.code = ydic_u24(bytes.at);
    skip(&bytes, 3);
    takeMark(&bytes, YDIC_MARK_SILENT);
    if (!isAtText(bytes) || !skipPrefecture(&bytes))
        return false;
    search->consumed = 0;
    search->dropMark = 0;
    return matchRecord(record, decode(&bytes, true, search), search);
}

} // namespace

int dic_knsk(uint32_t offset, uint16_t length, ydic_search *search)
{
    const uint32_t count = length & ~unsigned{IsComplete};
    if (offset > YDIC_READ_LENGTH || count > YDIC_READ_LENGTH - offset || search->consumed > search->queryLen)
        return 0;
    const auto *start = reinterpret_cast<const uint8_t *>(search->readBuf) + offset;
    const Bytes bytes = {start, start + count};
    return length & IsComplete ? matchComplete(bytes, search) : matchChunk(bytes, search);
}
