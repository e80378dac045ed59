#include "kypdatamanager.h"
#include "kypdatamanager_p.h"
#include <QMessageBox>

namespace KyPDtm {

namespace {

constexpr unsigned long BigGarbage = 102400; // bytes
constexpr quint32 GrowthLimit = 20481;       // bytes since the edit or deletion began

quint32 garbageOf(const char *boxFile)
{
    quint32 size = 0;
    return _GetBoxGarbageSize(boxFile, &size) == PdtmOk ? size : 0;
}

} // namespace

bool IsBigGarbage(unsigned long size)
{
    return size > BigGarbage;
}

quint32 KyPDataManagerPrivate::garbage() const
{
    return garbageOf(boxPath().constData());
}

void KyPDataManagerPrivate::noteGarbage()
{
    if (!collectionDue) // else growth counts from the first edit of the action
        garbageAtStart = garbage();
}

void KyPDataManagerPrivate::collectGarbage()
{
    collectionDue = openActions > 0;
    if (collectionDue)
        return;
    const quint32 present = garbage();
    const bool hasGrown = present > garbageAtStart && present - garbageAtStart >= GrowthLimit;
    if (!IsBigGarbage(present) && !hasGrown)
        return;
    qDebug("KyPDataManager: auto garbage collection %d", int(present));
    compact();
}

void KyPDataManagerPrivate::compact()
{
    const QByteArray path = boxPath();
    const bool wasOpen = boxHandle != 0;
    // A box that can't be closed can't be compacted, and its handle must not be lost.
    if (wasOpen && _BoxClose(boxHandle) != PdtmOk)
        return;
    _BoxGarbageCollect(path.constData());
    if (wasOpen)
        boxHandle = _BoxOpenRwMode(path.constData(), readOnly);
}

bool KyPDataManager::checkGarbageAlert(const char *boxFile, QWidget *parent)
{
    if (!IsBigGarbage(garbageOf(boxFile)))
        return false;
    QMessageBox box(QMessageBox::Warning, tr("Defragmentation"),
                    tr("<p>Internal Flash has been fragmented.<p>Do you want to defragment the Internal "
                       "Flash to effectively use it?<p>&lt; Note &gt;This operation may take some time.<p>"),
                    QMessageBox::Yes | QMessageBox::No, parent);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    if (box.exec() != QMessageBox::Yes)
        return false;
    _BoxGarbageCollect(boxFile);
    return true;
}

} // namespace KyPDtm
