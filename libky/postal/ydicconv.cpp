#include "ydicaddress_p.h"
#include "ydictables_p.h"
#include "ydictext_p.h"

namespace {

enum { MODE_KEY = 0, MODE_WORK = 1 };

constexpr uint16_t Prefecture_Hokkaido = 1;

/** A text of the dictionary that is read beside the query, and written as the query has it. */
struct Walk
{
    ydic_text from;
    char *to;
    int read;
    int written;
    int position;  // in the query
    int missingRi; // where an り of the query has to be inserted, 0 if nowhere
    uint8_t mode;
    ydic_search *search;
};

ydic_text textOf(const char *text, int length)
{
    ydic_text characters = {};
    characters.length = length;
    for (int i = 0; i < length; ++i)
        characters.at[i] = ydic_character(text, i);
    return characters;
}

/** Where a separator of the query lies in a text, negative when it isn't there. */
int separatorIn(const ydic_text &text, uint8_t separator, const ydic_search *search)
{
    const int at = separator - search->consumed;
    return separator != 0 && at < text.length ? at : -1;
}

/** 丁目, 番 and the like become ノ, which the query has there. */
void writeFirstSeparator(ydic_text *text, int at)
{
    const uint16_t character = text->at[at];
    if (character == Jis::Cho && text->at[at + 1] == Jis::Me)
        ydic_remove(text, at + 1, 1);
    if (character == Jis::Cho || character == Jis::Ban || character == Jis::Minus ||
        character == Jis::HiraganaNo || character == Jis::KanjiNo)
        text->at[at] = Jis::KatakanaNo;
}

/** As above, but for 丁目, which comes first in an address, and 之. */
void writeSecondSeparator(ydic_text *text, int at)
{
    const uint16_t character = text->at[at];
    if (character == Jis::Ban || character == Jis::Minus || character == Jis::HiraganaNo)
        text->at[at] = Jis::KatakanaNo;
}

void writeSeparators(ydic_text *text, const ydic_search *search)
{
    if (const int first = separatorIn(*text, search->sepPos1, search); first >= 0)
        writeFirstSeparator(text, first);
    if (const int second = separatorIn(*text, search->sepPos2, search); second >= 0)
        writeSecondSeparator(text, second);
}

/** The standard form of a character that is the variant of a row, else 0. */
uint16_t standardForm(uint16_t character, unsigned row)
{
    if (row >= YDIC_VARIANT_ROWS || ydic_u16(Yuragi_dat[row]) != character)
        return 0;
    const unsigned standard = Yuragi_dat[row][2] | unsigned{Yuragi_dat[row][3]} << 8;
    return standard < YDIC_VARIANT_ROWS ? ydic_u16(Yuragi_dat[standard]) : uint16_t{0};
}

bool isInClass(uint16_t character, uint16_t information)
{
    char bytes[2];
    ydic_setCharacter(bytes, 0, character);
    uint16_t row = 0;
    uint16_t value = 0;
    return ydic_variant(bytes, &row, &value) && value == information;
}

bool queryEnds(const Walk &walk)
{
    return walk.position >= walk.search->queryLen;
}

/** What the query has here, 0 behind its end. */
uint16_t queryCharacter(const Walk &walk)
{
    return queryEnds(walk) ? uint16_t{0} : ydic_character(walk.search->query, walk.position);
}

/** A character as the query writes it, 0 when the query has another here. */
uint16_t formInQuery(uint16_t character, const Walk &walk)
{
    const uint16_t information = walk.search->charInfo[walk.position];
    const uint16_t here = queryCharacter(walk);
    if (information >= YDIC_CLASS_RABBIT && isInClass(character, information))
        return here;
    if (information != 0 && information < YDIC_ZERO) {
        const unsigned row = information & 0x7FFFU;
        // In a key １ to ８ aren't 一 to 八, but ９ is 九: the rows that are left alone end one too early,
        // and names in dictionaries are spelt for that.
        const bool isLeftAlone = walk.mode == MODE_KEY && row <= 8;
        const uint16_t standard = isLeftAlone ? uint16_t{0} : standardForm(character, row);
        if (standard != 0)
            return standard;
    }
    return character == here ? here : uint16_t{0};
}

void write(Walk *walk, uint16_t character)
{
    ydic_setCharacter(walk->to, walk->written++, character);
    ++walk->read;
    ++walk->position;
}

bool isLast(const Walk &walk)
{
    return walk.read == walk.from.length - 1;
}

/** Behind 通, which may be written 通り. */
bool takeRi(Walk *walk, uint16_t character)
{
    if (character == Jis::HiraganaRi) {
        ++walk->read;
        return true;
    }
    if (queryCharacter(*walk) != Jis::HiraganaRi)
        return false;
    walk->missingRi = walk->written;
    ++walk->position;
    return true;
}

bool isNumber(uint16_t information)
{
    return ydic_isDigit(information) || ydic_isNumeral(information) || information == YDIC_TEN_10 ||
           information == YDIC_TEN_12 || information == YDIC_TEN;
}

/** Whether the query may do without the last character: 町 or 番. */
bool isLastOptional(uint16_t character, const Walk &walk)
{
    if (character == Jis::Ban)
        return queryEnds(walk);
    return character == Jis::Machi &&
           (queryEnds(walk) || walk.from.length > 2 || isNumber(walk.search->charInfo[walk.position]));
}

bool dropLast(Walk *walk, int16_t mark)
{
    ++walk->read;
    walk->search->dropMark = mark;
    return true;
}

bool isNumberBefore(const Walk &walk)
{
    if (walk.position == 0)
        return false;
    const uint16_t information = walk.search->charInfo[walk.position - 1];
    return isNumber(information) || information == YDIC_TEN_20;
}

bool joinsNumbers(uint16_t character)
{
    switch (character) {
    case Jis::Minus:
    case Jis::LongVowel:
    case Jis::Dash:
    case Jis::Hyphen:
    case Jis::HiraganaNo:
    case Jis::KatakanaNo:
        return true;
    default:
        return false;
    }
}

bool isDirection(uint16_t character)
{
    return character == Jis::East || character == Jis::West || character == Jis::South ||
           character == Jis::North;
}

/** 条 of addresses such as 南一条西二丁目, which may be left out behind its number. */
bool takeJo(Walk *walk)
{
    if (!isNumberBefore(*walk))
        return false;
    if (isLast(*walk) && queryEnds(*walk))
        return dropLast(walk, 2);
    const bool isLeftOut =
        isLast(*walk) ? joinsNumbers(queryCharacter(*walk)) : isDirection(walk->from.at[walk->read + 1]);
    ++walk->read;
    return isLeftOut;
}

/** @return false when the query has another character */
bool takeCharacter(Walk *walk)
{
    const uint16_t character = walk->from.at[walk->read];
    if (const uint16_t form = formInQuery(character, *walk)) {
        write(walk, form);
        return true;
    }
    if (walk->search->afterToori != 0 && walk->position == walk->search->afterToori)
        return takeRi(walk, character);
    if (isLast(*walk) && isLastOptional(character, *walk))
        return dropLast(walk, 1);
    return walk->search->groupPrefecture == Prefecture_Hokkaido && character == Jis::Jo && takeJo(walk);
}

/** There is room: each character that was written, and this one, stands for one of the query. */
void insertRi(Walk *walk)
{
    for (int i = walk->written++; i > walk->missingRi; --i)
        ydic_setCharacter(walk->to, i, ydic_character(walk->to, i - 1));
    ydic_setCharacter(walk->to, walk->missingRi, Jis::HiraganaRi);
}

} // namespace

int yuragi_conv(char *text, int16_t *length, uint8_t mode, ydic_search *search)
{
    if (*length < 0 || 2 * *length > YDIC_WORK_LENGTH)
        return -1;
    Walk walk = {textOf(text, *length), text, 0, 0, search->consumed, 0, mode, search};
    uint8_t changes = 0; // the flags tell of the query alone
    if (mode == MODE_WORK && (search->flags & YDIC_TWO_DIGITS))
        ydic_writeTens(&walk.from, &changes);
    writeSeparators(&walk.from, search);
    while (walk.read < walk.from.length) {
        if (!takeCharacter(&walk))
            return -1;
    }
    if (walk.missingRi != 0)
        insertRi(&walk);
    text[ydic_bytes(walk.written)] = '\0';
    *length = static_cast<int16_t>(walk.written);
    return 0;
}
