#include "ydicaddress_p.h"
#include "ydicbytes_p.h"
#include "ydictables_p.h"
#include "ydictext_p.h"

#include <string.h>

namespace {

void setFlags(ydic_search *search, uint8_t flags)
{
    search->flags = static_cast<uint8_t>(search->flags | flags);
}

/* Up to the end of the address, or to half a character. */
ydic_text textOf(const char *query)
{
    ydic_text text = {};
    while (2 * text.length < YDIC_QUERY_LENGTH) {
        const char *at = query + ydic_bytes(text.length);
        if (at[0] == 0 || at[1] == 0)
            break;
        text.at[text.length++] = ydic_character(at, 0);
    }
    return text;
}

void writeQuery(ydic_search *search, const ydic_text *text)
{
    memset(search->query, 0, sizeof search->query);
    for (int i = 0; i < text->length; ++i)
        ydic_setCharacter(search->query, i, text->at[i]);
    search->queryLen = static_cast<int16_t>(text->length);
}

/* 番地 says no more than 番. */
void shortenBanchi(ydic_text *text, ydic_search *search)
{
    for (int i = 1; i < text->length; ++i) {
        if (text->at[i - 1] != Jis::Ban || text->at[i] != Jis::Chi)
            continue;
        ydic_remove(text, i, 1);
        setFlags(search, YDIC_REMOVED);
    }
}

/* 大字, 小字 */
void dropSections(ydic_text *text, ydic_search *search)
{
    int i = 1;
    while (i < text->length) {
        const uint16_t before = text->at[i - 1];
        if (text->at[i] != Jis::Aza || (before != Jis::Great && before != Jis::Small)) {
            ++i;
            continue;
        }
        ydic_remove(text, i - 1, 2);
        setFlags(search, YDIC_REMOVED);
        i = i > 1 ? i - 1 : 1;
    }
}

/* 字 alone; but 文字, 万字 and 十字 are names. */
void dropAza(ydic_text *text, ydic_search *search)
{
    int i = 1;
    while (i < text->length) {
        const uint16_t before = text->at[i - 1];
        const bool isName = before == Jis::Writing || before == Jis::TenThousand || before == Jis::Ten;
        if (text->at[i] != Jis::Aza || isName) {
            ++i;
            continue;
        }
        ydic_remove(text, i, 1);
        setFlags(search, YDIC_REMOVED);
    }
}

void findToori(const ydic_text *text, ydic_search *search)
{
    search->afterToori = 0;
    for (int i = 1; i < text->length; ++i) {
        if (text->at[i] != Jis::Toori)
            continue;
        search->afterToori = static_cast<int16_t>(i + 1);
        setFlags(search, YDIC_HAS_VARIANT);
    }
}

/* The form that stands for all members of a class. */
uint16_t classForm(uint16_t value)
{
    switch (value) {
    case YDIC_CLASS_KE:
        return Jis::KatakanaKe;
    case YDIC_CLASS_TSU:
        return Jis::KatakanaTsu;
    case YDIC_CLASS_NO:
        return Jis::KatakanaNo;
    case YDIC_CLASS_SWORD:
        return Jis::Sword;
    default:
        return Jis::Rabbit;
    }
}

/** Puts the standard form in a character's place. @return its charInfo */
uint16_t standardise(uint16_t *character, ydic_search *search)
{
    char bytes[2];
    ydic_setCharacter(bytes, 0, *character);
    uint16_t row = 0;
    uint16_t value = 0;
    if (!ydic_variant(bytes, &row, &value))
        return 0;
    setFlags(search, YDIC_HAS_VARIANT);
    if (value >= YDIC_CLASS_RABBIT) {
        *character = classForm(value);
        return value;
    }
    if (value >= YDIC_STANDARD)
        return value;
    *character = ydic_u16(Yuragi_dat[value]);
    return row;
}

uint16_t infoOf(uint16_t *character, ydic_search *search)
{
    if (*character == Jis::Ten) {
        setFlags(search, YDIC_HAS_VARIANT | YDIC_TWO_DIGITS);
        return YDIC_TEN;
    }
    return *character == Jis::Zero ? uint16_t{YDIC_ZERO} : standardise(character, search);
}

void standardiseAll(ydic_text *text, const ydic_ten *ten, ydic_search *search)
{
    memset(search->charInfo, 0, sizeof search->charInfo);
    for (int i = 0; i < text->length; ++i)
        search->charInfo[i] = infoOf(&text->at[i], search);
    if (ten->position > 0)
        search->charInfo[ten->position] = ten->info;
}

bool isTen(uint16_t info)
{
    return info >= YDIC_ZERO && info <= YDIC_TEN_12;
}

/* Two numerals are one number when a third follows, or what a number ends with. */
bool endsNumber(const ydic_text *text, const ydic_search *search, int position)
{
    const uint16_t character = text->at[position];
    return ydic_isNumeral(search->charInfo[position]) || character == 0 || character == Jis::Cho ||
           character == Jis::Ban;
}

/* Whether a character and the next are parts of one number. */
bool isInsideNumber(const ydic_text *text, const ydic_search *search, int position)
{
    const uint16_t a = search->charInfo[position];
    const uint16_t b = search->charInfo[position + 1];
    if (ydic_isDigit(a))
        return ydic_isDigit(b) || isTen(b);
    if (ydic_isNumeral(a))
        return isTen(b) || (ydic_isNumeral(b) && endsNumber(text, search, position + 2));
    if (a == YDIC_TEN)
        return ydic_isDigit(b) || ydic_isNumeral(b);
    if (a == YDIC_ZERO)
        return ydic_isDigit(b) || b == YDIC_ZERO;
    return a == YDIC_TEN_12 || a == YDIC_TEN_23;
}

/* A match that ended inside a number would split it. */
void findNoEnd(const ydic_text *text, ydic_search *search)
{
    memset(search->noEnd, 0, sizeof search->noEnd);
    for (int i = 0; i < text->length; ++i)
        search->noEnd[i + 1] = isInsideNumber(text, search, i);
}

bool isSeparator(uint16_t character)
{
    switch (character) {
    case Jis::KatakanaNo:
    case Jis::Minus:
    case Jis::LongVowel:
    case Jis::Dash:
    case Jis::Hyphen:
        return true;
    default:
        return false;
    }
}

bool mayEndNumber(uint16_t info)
{
    return ydic_isDigit(info) || ydic_isNumeral(info) || info == YDIC_TEN_10 || info == YDIC_TEN_20 ||
           info == YDIC_TEN;
}

bool mayBeginNumber(uint16_t info)
{
    return ydic_isDigit(info) || ydic_isNumeral(info) || info == YDIC_TEN || info == YDIC_TEN_12 ||
           info == YDIC_TEN_10;
}

/* At most two, as in 3−5−1. */
void findSeparators(ydic_text *text, ydic_search *search)
{
    search->sepPos1 = 0;
    search->sepPos2 = 0;
    for (int i = 1; i < text->length - 1 && search->sepPos2 == 0; ++i) {
        if (!isSeparator(text->at[i]) || !mayEndNumber(search->charInfo[i - 1]) ||
            !mayBeginNumber(search->charInfo[i + 1]))
            continue;
        text->at[i] = Jis::KatakanaNo;
        (search->sepPos1 == 0 ? search->sepPos1 : search->sepPos2) = static_cast<uint8_t>(i);
    }
}

} // namespace

void ydic_remove(ydic_text *text, int position, int count)
{
    text->length -= count;
    for (int i = position; i < text->length; ++i)
        text->at[i] = text->at[i + count];
    for (int i = text->length; i < text->length + count; ++i)
        text->at[i] = 0;
}

void yuragi_check(ydic_search *search)
{
    ydic_text text = textOf(search->query);
    shortenBanchi(&text, search);
    dropSections(&text, search);
    dropAza(&text, search);
    if (ydic_dropStreet(&text))
        setFlags(search, YDIC_KYOTO_CUT);
    const ydic_ten ten = ydic_writeTens(&text, &search->flags);
    findToori(&text, search);
    standardiseAll(&text, &ten, search);
    findNoEnd(&text, search);
    findSeparators(&text, search);
    writeQuery(search, &text);
}
