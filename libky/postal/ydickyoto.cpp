#include "ydictext_p.h"

namespace {

enum { WardAt = 3, ShortWardEnd = 5, LongWardEnd = 6, NoCut = -1 };

bool isOneOf(uint16_t character, uint16_t first, uint16_t second)
{
    return character == first || character == second;
}

bool isDirection(uint16_t character)
{
    return isOneOf(character, Jis::East, Jis::West) || isOneOf(character, Jis::South, Jis::North);
}

bool beginsWithKyoto(const ydic_text *text)
{
    return text->length >= 6 && text->at[0] == Jis::Kyo && text->at[1] == Jis::To && text->at[2] == Jis::Shi;
}

/* Wards whose places have no streets in front. */
bool isWardWithoutStreets(const ydic_text *text)
{
    const uint16_t first = text->at[WardAt];
    const uint16_t second = text->at[WardAt + 1];
    if (text->at[WardAt + 2] != Jis::Ku)
        return false;
    return (second == Jis::Kyo && isOneOf(first, Jis::Right, Jis::West)) ||
           (first == Jis::Mountain && second == Jis::Shina) || (first == Jis::Fushi && second == Jis::Mi);
}

/* 上る, 下る, 入る */
bool isGoing(const uint16_t *at)
{
    return isOneOf(at[0], Jis::HiraganaRu, Jis::KatakanaRu) &&
           (at[-1] == Jis::In || isOneOf(at[-1], Jis::Up, Jis::Down));
}

/* 東裏, 東側; but it belongs to the name of the place in 東側町 or 町東側. */
bool isBeside(const uint16_t *at)
{
    if (!isDirection(at[-1]) || !isOneOf(at[0], Jis::Behind, Jis::Side))
        return false;
    const bool isOfName = at[1] == 0 || at[1] == Jis::Machi || (at[1] == Jis::Tsuji && at[2] == Jis::Machi) ||
                          at[-2] == Jis::Machi;
    return !isOfName;
}

/* 東入. Written 東入る it was seen at its る, as the walk goes backwards. */
bool isEntering(const uint16_t *at)
{
    return isDirection(at[-1]) && at[0] == Jis::In;
}

/* 筋目 */
bool isCrossing(const uint16_t *at)
{
    return at[-1] == Jis::Suji && at[0] == Jis::Me;
}

/* The last street word is the one in front of the place. */
int streetEnd(const ydic_text *text, int wardEnd)
{
    for (int position = text->length - 1; position > wardEnd + 1; --position) {
        const uint16_t *at = text->at + position;
        if (isGoing(at) || isEntering(at) || isBeside(at) || isCrossing(at))
            return position + 1;
    }
    return NoCut;
}

bool hasTownFrom(const ydic_text *text, int position)
{
    for (; position < text->length; ++position) {
        if (text->at[position] == Jis::Machi)
            return true;
    }
    return false;
}

/* A block of the street, as in 上る二丁目, goes with it; but 二丁目 alone is the place. */
int blockEnd(const ydic_text *text, int cut)
{
    const uint16_t *at = text->at + cut;
    if (at[1] != Jis::Cho)
        return cut;
    if (at[2] == Jis::Me)
        return hasTownFrom(text, cut + 3) ? cut + 3 : cut;
    return at[2] == Jis::Machi ? cut : cut + 2;
}

} // namespace

bool ydic_dropStreet(ydic_text *text)
{
    if (!beginsWithKyoto(text) || isWardWithoutStreets(text))
        return false;
    const int wardEnd = text->at[WardAt + 1] == Jis::Ku ? ShortWardEnd : LongWardEnd;
    const int cut = streetEnd(text, wardEnd);
    if (cut == NoCut)
        return false;
    ydic_remove(text, wardEnd, blockEnd(text, cut) - wardEnd);
    return true;
}
