#include "ydicaddress_p.h"

namespace {

enum { CodeDigits = 7, CodeRoom = 8 };

void removeCandidate(uint32_t code, uint8_t match, ydic_search *search)
{
    for (int i = 0; i < search->candCount; ++i) {
        if (search->candCode[i] == code && search->candMatch[i] == match &&
            search->candDrop[i] == search->dropMark) {
            search->candMatch[i] = 0;
            return;
        }
    }
}

/* A match that needed a character of the dictionary's text dropped counts for less. */
int worth(const ydic_search *search, int candidate)
{
    return search->candMatch[candidate] - search->candDrop[candidate];
}

bool isBeaten(const ydic_search *search, int candidate)
{
    for (int other = 0; other < search->candCount; ++other) {
        if (worth(search, other) > worth(search, candidate))
            return true;
    }
    return false;
}

void removeBeaten(ydic_search *search)
{
    for (int i = 0; i < search->candCount; ++i) {
        if (search->candDrop[i] != 0 && isBeaten(search, i))
            search->candMatch[i] = 0;
    }
}

/* Of equal codes the longest match stays, of equal matches the first. */
void removeRepeated(ydic_search *search)
{
    for (int i = 0; i < search->candCount; ++i) {
        for (int j = i + 1; j < search->candCount; ++j) {
            if (search->candCode[i] != search->candCode[j])
                continue;
            const bool isLaterBetter = search->candMatch[j] > search->candMatch[i];
            search->candMatch[isLaterBetter ? i : j] = 0;
        }
    }
}

void swapBytes(uint8_t *first, uint8_t *second)
{
    const uint8_t kept = *first;
    *first = *second;
    *second = kept;
}

void swapWithPrevious(ydic_search *search, int candidate)
{
    const uint32_t code = search->candCode[candidate];
    search->candCode[candidate] = search->candCode[candidate - 1];
    search->candCode[candidate - 1] = code;
    swapBytes(&search->candMatch[candidate], &search->candMatch[candidate - 1]);
    swapBytes(&search->candDrop[candidate], &search->candDrop[candidate - 1]);
}

/* Only removed candidates move; callers rely on the others standing as in the dictionary apart from that. */
void moveRemoved(ydic_search *search)
{
    for (int i = 0; i < search->candCount - 1; ++i) {
        for (int j = search->candCount - 1; j > i; --j) {
            if (search->candMatch[j] == 0 && search->candCode[j - 1] > search->candCode[j])
                swapWithPrevious(search, j);
        }
    }
}

int greatestMatch(const ydic_search *search)
{
    int greatest = 0;
    for (int i = 0; i < search->candCount; ++i) {
        if (search->candMatch[i] > greatest)
            greatest = search->candMatch[i];
    }
    return greatest;
}

void writeCode(char *result, uint32_t code)
{
    for (int i = CodeDigits - 1; i >= 0; --i) {
        result[i] = static_cast<char>('0' + code % 10);
        code /= 10;
    }
    result[CodeDigits] = 0;
}

} // namespace

void zip_store(uint32_t code, uint8_t match, ydic_search *search, uint8_t cancels)
{
    if (cancels) {
        removeCandidate(code, match, search);
        return;
    }
    if (search->candCount >= YDIC_CANDIDATES)
        return;
    const int16_t last = search->candCount++;
    search->candCode[last] = code;
    search->candMatch[last] = match;
    search->candDrop[last] = static_cast<uint8_t>(search->dropMark);
}

int set_kouho(uint32_t max, char *result, ydic_search *search)
{
    removeBeaten(search);
    removeRepeated(search);
    moveRemoved(search);
    const int greatest = greatestMatch(search);
    if (greatest == 0)
        return 0;
    uint32_t count = 0;
    for (int i = 0; i < search->candCount && count < max; ++i) {
        if (search->candMatch[i] == greatest)
            writeCode(result + size_t{CodeRoom} * count++, search->candCode[i]);
    }
    return static_cast<int>(count);
}

int stncmp(const char *first, const char *second, int count)
{
    for (int i = 0; i < count; ++i) {
        const int difference = static_cast<unsigned char>(first[i]) - static_cast<unsigned char>(second[i]);
        if (difference != 0)
            return difference;
    }
    return 0;
}

int stncmp2(const char *first, const char *second, int count)
{
    int equal = 0;
    while (equal < count && first[equal] == second[equal])
        ++equal;
    return equal / 2;
}
