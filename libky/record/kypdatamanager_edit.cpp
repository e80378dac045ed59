#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

/** Gives a new card its time of creation and its sync id. */
bool stampNewCard(KyPDataManager &manager)
{
    const PTimeValue now = presentTime();
    if (!manager.writeItem("CTTM", reinterpret_cast<const char *>(now.bytes), sizeof now.bytes))
        return false;
    const quint32 syncId = DtmGetSyncId(manager.boxHandle());
    return syncId && manager.writeItem("SYID", reinterpret_cast<const char *>(&syncId), sizeof syncId) &&
           DtmUpdateSyncId(manager.boxHandle()) == PdtmOk;
}

} // namespace

bool KyPDataManager::startEditCard(unsigned long card)
{
    if (d->editing) {
        d->editState = EditUnderWay;
        return false;
    }
    d->garbageAtStart = d->garbage();
    _CardDelete(d->boxHandle, WorkCardId); // what a crashed edit left
    const quint16 work = d->makeWorkCard(card);
    if (!work) {
        d->editState = EditNoWorkCard;
        return false;
    }
    d->editing = true;
    d->editModified = false;
    d->workCard = work;
    d->editSourceCard = card;
    return true;
}

quint16 KyPDataManagerPrivate::makeWorkCard(unsigned long source)
{
    quint16 work = WorkCardId;
    if (source) {
        lastError = _CardCopy(boxHandle, quint16(source), &work);
        return lastError == PdtmOk ? work : 0;
    }
    lastError = _CardCreate(boxHandle, &work);
    if (lastError != PdtmOk)
        return 0;
    const CardItemKey attribute = cardItemKey(work, ItemCode("ATTR"));
    const quint8 unmarked = 0;
    lastError = _CardWrite(boxHandle, &attribute, &unmarked, sizeof unmarked);
    if (lastError == PdtmOk)
        return work;
    _CardDelete(boxHandle, work);
    return 0;
}

bool KyPDataManager::editNewCard()
{
    return startEditCard(0);
}

bool KyPDataManager::finishEditCard(unsigned long *card)
{
    if (!d->editing) {
        d->editState = EditNotUnderWay;
        return false;
    }
    auto destination = quint16(*card);
    const bool isNew = destination == 0 || d->editSourceCard == 0;
    if ((isNew && !stampNewCard(*this)) || (d->editModified && !writeCurrentTime("MDTM", true))) {
        cancelEditCard();
        return false;
    }
    d->lastError = _CardCopy(d->boxHandle, quint16(d->workCard), &destination);
    *card = destination;
    if (d->lastError != PdtmOk)
        qDebug("finish card error %x", d->lastError);
    cancelEditCard();
    if (d->lastError != PdtmOk)
        return false;
    d->collectGarbage();
    return true;
}

bool KyPDataManager::cancelEditCard()
{
    if (!d->editing)
        return true;
    _CardDelete(d->boxHandle, quint16(d->workCard));
    d->workCard = 0;
    d->editing = false;
    d->editModified = false;
    d->editSourceCard = 0;
    return true;
}

bool KyPDataManager::beginAction()
{
    if (DtmBeginAction(d->boxHandle) != PdtmOk)
        return false;
    ++d->openActions;
    return true;
}

bool KyPDataManager::endAction()
{
    if (d->openActions == 0)
        return false;
    --d->openActions;
    d->lastError = DtmEndAction(d->boxHandle);
    if (d->lastError != PdtmOk)
        return false;
    if (d->openActions == 0 && d->collectionDue)
        d->collectGarbage();
    return true;
}

/** Ends an action in which @p status came out, which is the result and lastError when it isn't success. */
bool KyPDataManager::endActionAfter(quint16 status)
{
    const bool isEnded = endAction();
    if (status != PdtmOk)
        d->lastError = status;
    return isEnded && status == PdtmOk;
}

} // namespace KyPDtm
