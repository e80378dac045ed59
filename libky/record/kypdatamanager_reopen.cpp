#include "boxcreation.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr int CopyWithExpression = 2;

/** Reads an expression of an index; its length, 0 when there is none. */
quint8 expressionOf(const QByteArray &indexPath, int id, quint8 *expression)
{
    quint16 length = PdtmInfoRoom;
    const PdtmStatus status = _IndexInfoRead(indexPath.constData(), id, expression, &length);
    return status == PdtmOk ? quint8(length) : quint8(0);
}

bool isWithoutFile(const PIOIDXINFO &row)
{
    return row.inUse && !row.fileName[0];
}

} // namespace

bool KyPDataManagerPrivate::openHandle()
{
    boxHandle = _BoxOpenRwMode(boxPath().constData(), readOnly);
    if (!boxHandle)
        return false;
    restoreWorkCard();
    loseIndexes();
    leaveGoneCategories();
    if (masterIndex)
        restoreView();
    return true;
}

bool KyPDataManagerPrivate::closeHandle()
{
    keepWorkCard();
    noteDefinitions();
    if (_BoxCloseEx(boxHandle, 1) == PdtmOk)
        boxHandle = 0;
    else
        restoreWorkCard();
    return boxHandle == 0;
}

void KyPDataManagerPrivate::noteDefinitions()
{
    for (PIOIDXINFO &row : indexes) {
        if (!row.inUse || &row == masterIndex)
            continue;
        const QByteArray path = rowPath(&row);
        row.closedSortLength = expressionOf(path, InfoSortExpression, row.closedSort);
        row.closedSearchLength = expressionOf(path, InfoSearchExpression, row.closedSearch);
    }
}

void KyPDataManagerPrivate::loseIndexes()
{
    // All managers of the box name their indexes alike: another one's may stand in this one's place.
    for (PIOIDXINFO &row : indexes) {
        if (row.inUse && &row != masterIndex && !isAsLeft(row))
            memset(row.fileName, 0, sizeof row.fileName);
    }
}

void KyPDataManagerPrivate::restoreView()
{
    remake(resumeIndex);
    remake(currentIndex);
    for (PIOIDXINFO &row : indexes) {
        if (isWithoutFile(row))
            forgetRow(&row);
    }
    if (!currentIndex->inUse)
        makeCurrent(masterIndex);
}

bool KyPDataManagerPrivate::isAsLeft(const PIOIDXINFO &row) const
{
    const QByteArray path = rowPath(&row);
    return isOfThisBox(path.constData()) && isSortExprsSame(path, row.closedSort, row.closedSortLength) &&
           isSearchExprsSame(path, row.closedSearch, row.closedSearchLength);
}

bool KyPDataManagerPrivate::isOfThisBox(const char *path) const
{
    char name[NameRoom] = {};
    quint16 length = NameRoom - 1;
    return _IndexInfoRead(path, InfoBoxName, name, &length) == PdtmOk && strcmp(name, boxName) == 0;
}

void KyPDataManagerPrivate::remake(PIOIDXINFO *row)
{
    if (!row || !isWithoutFile(*row) || readOnly)
        return;
    remake(row->parent);
    const QByteArray name = freeName();
    qstrncpy(row->fileName, name.constData(), NameRoom);
    row->sticky = false;
    if (!name.isEmpty() && !makeAsLeft(*row)) {
        _IndexDelete(rowPath(row).constData());
        row->fileName[0] = '\0';
    }
}

bool KyPDataManagerPrivate::makeAsLeft(const PIOIDXINFO &row) const
{
    const QByteArray path = rowPath(&row);
    const QByteArray parent = rowPath(row.parent ? row.parent : masterIndex);
    const auto *order = reinterpret_cast<const char *>(row.closedSort);
    if (row.closedSearchLength > 0)
        return createMIdxFile(path.constData(), boxPath().constData(),
                              reinterpret_cast<const char *>(row.closedSearch), row.closedSearchLength, order,
                              row.closedSortLength, true, parent.constData()) == 0;
    if (_IndexCopy(parent.constData(), path.constData(), CopyWithExpression, order, row.closedSortLength) !=
        PdtmOk)
        return false;
    const PdtmStatus status = _IndexSort(path.constData(), boxHandle);
    return status == PdtmOk || status == PdtmNothingToSort;
}

} // namespace KyPDtm
