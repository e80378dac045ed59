#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr char AnyTextItem[] = "    ";
constexpr char Mark = '\xFE';

/** A search expression for a text. The second 0 byte is there because the store looks behind the first. */
QByteArray textExpression(const ItemCode &code, quint8 comparison, const QString &text)
{
    QByteArray expression(code.text, sizeof CardItemKey::code);
    expression += Mark;
    expression += char(comparison);
    expression += char(ItemTextUtf8);
    expression += text.toUtf8();
    return expression.append(2, '\0');
}

ItemCode searchedItem(const PioExtBoxInfo *info, const char *item)
{
    if (item && *item)
        return ItemCode(item);
    if (info && info->defaultSearchItem[0])
        return ItemCode(info->defaultSearchItem);
    return ItemCode(AnyTextItem);
}

/** Where to start behind a card; the position stays as it is for no card. */
bool findStart(KyPDataManagerPrivate &d, const QByteArray &path, unsigned long card, quint16 *position)
{
    if (!card)
        return true;
    d.lastError = _CardIDToIndexNo(path.constData(), quint16(card), position);
    return d.lastError == PdtmOk;
}

} // namespace

bool KyPDataManager::count(int *result, const char *searchExp, unsigned long startCard, unsigned char mask,
                           unsigned char value, unsigned char third, const char *index)
{
    *result = 0;
    const QByteArray path = d->indexPath(index);
    quint16 start = BeforeFirst;
    if (!findStart(*d, path, startCard, &start))
        return false;
    quint16 found = 0;
    quint16 cards = 0;
    d->lastError =
        _IndexCount(path.constData(), d->boxHandle, searchExp, 0, mask, value, third, start, &found, &cards);
    if (d->lastError != PdtmOk)
        return false;
    *result = cards;
    return true;
}

bool KyPDataManager::count(int *result, const char *searchExp, unsigned long startCard, const char *index)
{
    return count(result, searchExp, startCard, AttributeMask, AttributeValue, AttributeThird, index);
}

bool KyPDataManager::search(unsigned long *card, const char *searchExp, bool forward, unsigned char mask,
                            unsigned char value, unsigned char third, const char *index)
{
    const QByteArray path = d->indexPath(index);
    // Also in a named index: callers search the index of one view in the direction of another.
    const bool inIndexOrder = forward == d->ascendent;
    quint16 position = inIndexOrder ? BeforeFirst : BehindLast;
    if (!findStart(*d, path, *card, &position))
        return false;
    d->lastError = _IndexSearch(path.constData(), d->boxHandle, searchExp, !inIndexOrder, mask, value, third,
                                position, &position);
    if (d->lastError != PdtmOk)
        return false;
    quint16 found = 0;
    if (_IndexNoToCardID(path.constData(), position, &found) != PdtmOk)
        return false;
    *card = found;
    return true;
}

bool KyPDataManager::search(unsigned long *card, const char *searchExp, bool forward, const char *index)
{
    return search(card, searchExp, forward, AttributeMask, AttributeValue, AttributeThird, index);
}

bool KyPDataManager::search(unsigned long *card, const QString &text, const char *item, unsigned char op,
                            bool forward)
{
    const QByteArray expression = textExpression(searchedItem(d->extBoxInfo, item), op, text);
    return search(card, expression.constData(), forward);
}

} // namespace KyPDtm
