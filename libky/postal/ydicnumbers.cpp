#include "ydictext_p.h"

namespace {

/** Bytes that an address may have when a character has been added. */
enum { LongestWithTen = 79 };

bool isDigit(uint16_t character)
{
    return character >= Jis::Zero && character <= Jis::Nine;
}

bool beginsNumber(uint16_t character)
{
    return isDigit(character) && character != Jis::Zero;
}

int digitsAt(const ydic_text *text, int position)
{
    int count = 0;
    while (isDigit(text->at[position + count]))
        ++count;
    return count;
}

/* 23 becomes 2十3. */
bool insertTen(ydic_text *text, int position)
{
    if (2 * (text->length + 1) > LongestWithTen)
        return false;
    for (int i = text->length; i > position; --i)
        text->at[i] = text->at[i - 1];
    text->at[position] = Jis::Ten;
    ++text->length;
    return true;
}

/** Rewrites the two digits at a position. @return false when there is no room for it */
bool writeTen(ydic_text *text, int position, ydic_ten *ten, uint8_t *flags)
{
    const bool isTeen = text->at[position] == Jis::One;
    const bool isRound = text->at[position + 1] == Jis::Zero;
    uint8_t change = 0;
    if (isTeen && isRound) {
        text->at[position] = Jis::Ten;
        ydic_remove(text, position + 1, 1);
        *ten = {position, YDIC_TEN_10};
        change = YDIC_TEN_SHORTENED;
    } else if (isTeen) {
        text->at[position] = Jis::Ten;
        *ten = {position, YDIC_TEN_12};
    } else if (isRound) {
        text->at[position + 1] = Jis::Ten;
        *ten = {position + 1, YDIC_TEN_20};
    } else {
        if (!insertTen(text, position + 1))
            return false;
        *ten = {position + 1, YDIC_TEN_23};
        change = YDIC_TEN_INSERTED;
    }
    *flags = static_cast<uint8_t>(*flags | YDIC_HAS_VARIANT | YDIC_TWO_DIGITS | change);
    return true;
}

} // namespace

ydic_ten ydic_writeTens(ydic_text *text, uint8_t *flags)
{
    ydic_ten ten = {0, 0};
    int position = 0;
    while (position + 1 < text->length) {
        const int digits = beginsNumber(text->at[position]) ? digitsAt(text, position) : 0;
        if (digits == 2 && !writeTen(text, position, &ten, flags))
            return ten;
        position += digits > 2 ? digits : 1;
    }
    return ten;
}
