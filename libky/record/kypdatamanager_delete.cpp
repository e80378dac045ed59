#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

bool KyPDataManager::deleteCard(unsigned long *card, DeleteMode mode)
{
    d->noteGarbage();
    switch (mode) {
    case DeleteSingle:
        return d->deleteOne(card);
    case DeleteVisible:
        return deleteVisible();
    case DeleteAll:
        return d->deleteAll();
    }
    return false;
}

bool KyPDataManagerPrivate::deleteOne(unsigned long *card)
{
    const unsigned long target = cardOf(*card);
    if (!target || !currentIndex)
        return false;
    const QByteArray index = indexPath(nullptr);
    unsigned long neighbour = step(index, true, target);
    if (!neighbour)
        neighbour = step(index, false, target);
    if (_CardDelete(boxHandle, quint16(target)) != PdtmOk)
        return false;
    *card = neighbour;
    collectGarbage();
    return true;
}

bool KyPDataManager::deleteVisible()
{
    constexpr int MarkAndDelete = 1;
    if (!d->currentIndex || !DtmIsEnoughStorageForOperation(d->boxHandle, MarkAndDelete) || !beginAction())
        return false;
    markVisible();
    const PdtmStatus status = _CardAllDelete(d->boxHandle, AttributeMask, AttributeMask, AttributeThird);
    if (status == PdtmOk)
        d->collectGarbage();
    return endActionAfter(status);
}

void KyPDataManager::markVisible()
{
    // writeAttribute() would end an edit; the one under way is none of this view's business.
    const bool editing = d->editing;
    const unsigned long workCard = d->workCard;
    const QByteArray index = d->indexPath(nullptr);
    unsigned long card = d->step(index, true, 0);
    while (card) {
        // Before the mark, which moves the card in a view that goes by ATTR.
        const unsigned long next = d->step(index, true, card);
        card = writeAttribute(card, AttributeMask, true) ? next : 0;
    }
    d->editing = editing;
    d->workCard = workCard;
}

bool KyPDataManagerPrivate::deleteAll()
{
    lastError = _CardAllDelete(boxHandle, 0, 0, 0);
    if (lastError != PdtmOk)
        return false;
    collectGarbage();
    return true;
}

} // namespace KyPDtm
