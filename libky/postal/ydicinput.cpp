#include "ydicaddress_p.h"
#include "ydictables_p.h"
#include "ydictext_p.h"

#include <string.h>

namespace {

enum { HeadLength = 8, NumberAt = 8 };

/** Rows of the prefectures of a kind, and the bytes that tell them apart. */
struct Kind
{
    int first;
    int end;
    int compared;
};

constexpr Kind Kinds[] = {{0, 40, 4}, {40, 43, 6}, {43, 45, 4}, {45, 46, 4}, {46, 47, 4}};

int differenceTo(int row, const char *head, int count)
{
    return stncmp(head, reinterpret_cast<const char *>(Tdfk_dat[row]), count);
}

/* -1 when there is none. */
int bisected(const Kind &kind, const char *head)
{
    int low = kind.first;
    int high = kind.end;
    while (low < high) {
        const int middle = (low + high) / 2;
        const int difference = differenceTo(middle, head, kind.compared);
        if (difference == 0)
            return middle;
        if (difference > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return -1;
}

/* -1 when there is none. */
int walked(const Kind &kind, const char *head)
{
    for (int row = kind.first; row < kind.end; ++row) {
        if (differenceTo(row, head, kind.compared) == 0)
            return row;
    }
    return -1;
}

/** Where an ending stands, in characters, and the kind of the names that have it there. */
struct Ending
{
    uint16_t character;
    int position;
    int kind;
};

constexpr Ending Endings[] = {{Jis::Ken, 2, TDFK_KEN_3},
                              {Jis::To, 2, TDFK_TO},
                              {Jis::Fu, 2, TDFK_FU},
                              {Jis::Do, 2, TDFK_DO},
                              {Jis::Ken, 3, TDFK_KEN_4}};

/* Without its high bit; 0 ends the address. */
char byteOf(char byte)
{
    return static_cast<char>(byte & 0x7F);
}

size_t lengthOf(const char *address)
{
    size_t length = 0;
    while (byteOf(address[length]))
        ++length;
    return length;
}

void copyBytes(char *to, const char *from, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        to[i] = byteOf(from[i]);
}

/* Only the first ending that fits is looked up. */
size_t prefectureBytes(const char *head, ydic_search *search)
{
    for (const Ending &ending : Endings) {
        if (ydic_character(head, ending.position) != ending.character)
            continue;
        return check_tdfk(head, ending.kind, search) ? 2 * static_cast<size_t>(ending.position + 1) : 0;
    }
    return 0;
}

} // namespace

int check_tdfk(const char *head, int kind, ydic_search *search)
{
    if (kind < TDFK_KEN_3 || kind > TDFK_TO)
        return 0;
    const int row = kind == TDFK_KEN_3 ? bisected(Kinds[kind], head) : walked(Kinds[kind], head);
    if (row < 0)
        return 0;
    search->prefecture = Tdfk_dat[row][NumberAt];
    return 1;
}

int set_moji(const char *address, ydic_search *search)
{
    const size_t length = lengthOf(address);
    if (length % 2 == 1)
        return YDIC_BAD_INPUT;
    size_t skipped = 0;
    if (length >= HeadLength) {
        char head[HeadLength];
        copyBytes(head, address, HeadLength);
        skipped = prefectureBytes(head, search);
    }
    constexpr size_t Longest = YDIC_QUERY_LENGTH;
    const size_t left = length - skipped;
    memset(search->query, 0, sizeof search->query);
    copyBytes(search->query, address + skipped, left < Longest ? left : Longest);
    return 0;
}
