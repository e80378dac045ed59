#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr char MatchAll[] = "";

} // namespace

unsigned long KyPDataManagerPrivate::step(const QByteArray &path, bool forward, unsigned long card) const
{
    quint16 position = forward ? BeforeFirst : BehindLast;
    if (card && _CardIDToIndexNo(path.constData(), quint16(card), &position) != PdtmOk)
        return 0;
    const auto move = forward ? _NextIndexNo : _PrevIndexNo;
    if (move(path.constData(), AttributeMask, AttributeValue, AttributeThird, &position) != PdtmOk)
        return 0;
    quint16 found = 0;
    return _IndexNoToCardID(path.constData(), position, &found) == PdtmOk ? found : 0;
}

void KyPDataManager::getAttrValues(unsigned char *mask, unsigned char *value, unsigned char *third)
{
    *mask = AttributeMask;
    *value = AttributeValue;
    *third = AttributeThird;
}

unsigned long KyPDataManager::cardId() const
{
    return d->currentCard;
}

unsigned long KyPDataManager::firstCard(const char *index) const
{
    const unsigned long card = nextCard(0, index);
    if (index && card)
        qDebug("firstCard result %s %d", index, int(card));
    return card;
}

unsigned long KyPDataManager::lastCard(const char *index) const
{
    return prevCard(0, index);
}

unsigned long KyPDataManager::nextCard(unsigned long card, const char *index) const
{
    return d->step(d->indexPath(index), index || d->ascendent, card);
}

unsigned long KyPDataManager::prevCard(unsigned long card, const char *index) const
{
    return d->step(d->indexPath(index), !index && !d->ascendent, card);
}

bool KyPDataManagerPrivate::moveTo(unsigned long card)
{
    if (card)
        currentCard = card;
    return card != 0;
}

bool KyPDataManager::first(const char *index)
{
    return d->moveTo(firstCard(index));
}

bool KyPDataManager::last(const char *index)
{
    return d->moveTo(lastCard(index));
}

bool KyPDataManager::next(unsigned long card, const char *index)
{
    return d->moveTo(nextCard(d->cardOf(card), index));
}

bool KyPDataManager::prev(unsigned long card, const char *index)
{
    return d->moveTo(prevCard(d->cardOf(card), index));
}

unsigned long KyPDataManager::cardIdFromNumber(unsigned long number) const
{
    if (number > BehindLast)
        return 0;
    const QByteArray path = d->indexPath(nullptr);
    quint16 position = d->ascendent ? BeforeFirst : BehindLast;
    d->lastError = _NumberToIndexNo(path.constData(), d->ascendent ? 0 : 1, AttributeMask, AttributeValue,
                                    AttributeThird, &position, quint16(number));
    quint16 card = 0;
    if (d->lastError == PdtmOk)
        d->lastError = _IndexNoToCardID(path.constData(), position, &card);
    return d->lastError == PdtmOk ? card : 0;
}

unsigned long KyPDataManager::numberFromCardId(unsigned long card) const
{
    const QByteArray path = d->indexPath(nullptr);
    quint16 position = 0;
    quint16 number = 0;
    d->lastError = _CardIDToIndexNo(path.constData(), quint16(d->cardOf(card)), &position);
    if (d->lastError == PdtmOk)
        d->lastError = _IndexNoToNumber(path.constData(), AttributeMask, AttributeValue, AttributeThird, 0,
                                        position, &number);
    if (d->lastError != PdtmOk)
        return 0;
    if (d->ascendent)
        return number;
    const int cards = count();
    return cards < 0 ? 0 : static_cast<unsigned long>(cards + 1 - number);
}

int KyPDataManager::count(const char *index) const
{
    const QByteArray path = d->indexPath(index);
    quint16 found = 0;
    quint16 cards = 0;
    const PdtmStatus status = _IndexCount(path.constData(), d->boxHandle, MatchAll, 0, AttributeMask,
                                          AttributeValue, AttributeThird, BeforeFirst, &found, &cards);
    if (status == PdtmNone)
        return 0;
    return status == PdtmOk ? cards : -1;
}

int KyPDataManager::sortItem() const
{
    return d->currentIndex ? d->currentIndex->sortItem : 0;
}

bool KyPDataManager::ascendent() const
{
    return d->ascendent;
}

unsigned long KyPDataManager::expectedCardId() const
{
    quint16 card = 0;
    return _ExpectNewCardID(d->boxHandle, &card) == PdtmOk ? card : 0;
}

unsigned long KyPDataManager::resumeCardId() const
{
    return ResumeCardId;
}

} // namespace KyPDtm
