#include "boxcreation.h"
#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr int NoCategory = 0;
constexpr int FirstCategory = 1;
constexpr int LastCategory = 245;
constexpr int CategoryKind = 18;
constexpr int CategoryExpressionLength = CategoryTermLength + 2; // the id and the final 0

void copyOrder(const PIOIDXINFO &from, PIOIDXINFO *to)
{
    to->keepOrder(from.sortItem, from.sortExp, from.sortExpLength, from.ascending);
}

/** Rows that are read from a file have no expression beside their item. */
bool haveSameOrder(const PIOIDXINFO &row, const PIOIDXINFO &view)
{
    if (row.sortItem != view.sortItem)
        return false;
    return view.sortItem || (row.sortExpLength == view.sortExpLength &&
                             memcmp(row.sortExp, view.sortExp, view.sortExpLength) == 0);
}

} // namespace

bool FilerCheckCategoryId(int category)
{
    return (category >= FirstCategory && category <= LastCategory) || category == UnfiledCategoryId;
}

void GetCategory_FilterInfo(unsigned char *dst, unsigned char id, unsigned short *length)
{
    if (!FilerCheckCategoryId(id))
        return;
    memcpy(dst, CategoryTerm, CategoryTermLength);
    dst[CategoryTermLength] = id;
    dst[CategoryTermLength + 1] = 0;
    *length = CategoryExpressionLength;
}

PIOIDXINFO *KyPDataManagerPrivate::categoryRow(int category)
{
    for (PIOIDXINFO &row : indexes) {
        if (row.inUse && row.categoryId == category)
            return &row;
    }
    return nullptr;
}

bool KyPDataManagerPrivate::takeOrder(PIOIDXINFO *row, const PIOIDXINFO &view)
{
    if (haveSameOrder(*row, view))
        return true;
    PIOIDXINFO order = view;
    if (view.sortItem) {
        const int length = createSortCond(view.sortItem, order.sortExp, view.ascending);
        if (length < 0)
            return false;
        order.sortExpLength = quint8(length);
    }
    if (!sortIndexOf(row, order.sortExp, order.sortExpLength))
        return false;
    copyOrder(order, row);
    return true;
}

bool KyPDataManagerPrivate::describeCategory(const QByteArray &path, int category)
{
    quint8 expression[CategoryExpressionLength];
    quint16 length = 0;
    GetCategory_FilterInfo(expression, quint8(category), &length);
    constexpr quint8 isSubset = 1;
    const auto write = [&](int id, const void *bytes, size_t size) {
        lastError = _IndexInfoWriteWithCheck(path.constData(), id, bytes, quint16(size));
        return lastError == PdtmOk;
    };
    lastError = _IndexCreate(path.constData(), CategoryKind);
    return lastError == PdtmOk && write(InfoBoxName, boxName, strlen(boxName) + 1) &&
           write(InfoSearchExpression, expression, length) && write(InfoSubset, &isSubset, sizeof isSubset);
}

bool KyPDataManagerPrivate::groupCategory(const QByteArray &path)
{
    lastError = _IndexGroup(rowPath(masterIndex).constData(), path.constData(), boxHandle);
    if (lastError == PdtmOk || lastError == PdtmNothingToSort)
        return true;
    qDebug("index group err %x", lastError);
    return false;
}

bool KyPDataManagerPrivate::fillCategory(PIOIDXINFO *row, int category, const PIOIDXINFO &view)
{
    const QByteArray path = rowPath(row);
    if (!describeCategory(path, category) || !groupCategory(path))
        return false;
    copyOrder(*masterIndex, row); // the store gave it that order
    row->inUse = true;
    row->categoryId = quint8(category);
    row->indexAge = NewIndexAge;
    if (view.sortItem && view.sortItem != row->sortItem)
        qDebug("required sort");
    return takeOrder(row, view);
}

bool KyPDataManagerPrivate::buildCategory(int category, PIOIDXINFO *former)
{
    const PIOIDXINFO view = *currentIndex; // it may be the one that makes room
    // A closed box fails before any index has made room in vain.
    PIOIDXINFO *row = boxHandle ? takeRow() : nullptr;
    if (!row || !fillCategory(row, category, view))
        return abandon(row);
    if (former && former != row && !former->sticky)
        dropRow(former);
    makeCurrent(row);
    return true;
}

bool KyPDataManager::enableFilter(int category)
{
    if (!d->currentIndex || (category != NoCategory && !FilerCheckCategoryId(category)))
        return false;
    // The cards with no category change with every edit, and a view inside a view is never the same twice.
    const bool reuses = category != UnfiledCategoryId && d->masterIndex->isPlain();
    if (reuses && d->currentIndex->categoryId == category)
        return true;
    PIOIDXINFO *found = d->categoryRow(category);
    if (!reuses || !found)
        return category != NoCategory && d->buildCategory(category, found);
    // No category is the first index without one. It is brought into the order of the view like any other.
    if (!d->takeOrder(found, *d->currentIndex))
        return false;
    d->makeCurrent(found);
    return true;
}

bool KyPDataManagerPrivate::abandon(PIOIDXINFO *row)
{
    if (row)
        dropRow(row);
    if (!currentIndex->inUse)
        makeCurrent(masterIndex);
    return false;
}

void KyPDataManagerPrivate::dropCurrent()
{
    if (currentIndex != masterIndex)
        dropRow(currentIndex);
}

bool KyPDataManager::disableFilter(bool discard)
{
    if (!d->currentIndex)
        return false;
    if (!d->currentIndex->categoryId) {
        qDebug("KyPDataManager::disableFilter already filter is disabled");
        if (d->currentIndex == d->masterIndex)
            return true;
    }
    const PIOIDXINFO view = *d->currentIndex;
    if (discard)
        d->dropCurrent();
    d->makeCurrent(d->masterIndex);
    if (view.sortItem)
        return sort(view.sortItem, d->ascendent);
    if (view.sortExpLength)
        return sort(reinterpret_cast<const char *>(view.sortExp), view.sortExpLength, d->ascendent);
    return true;
}

PIOIDXINFO *KyPDataManagerPrivate::parentRow(int parent) const
{
    switch (parent) {
    case KyPDataManager::FilterCurrent:
        return currentIndex;
    case KyPDataManager::FilterMaster:
        return masterIndex;
    case KyPDataManager::FilterResume:
        return resumeIndex;
    default:
        return nullptr;
    }
}

void KyPDataManagerPrivate::enterFilter(PIOIDXINFO *row, bool keepResume)
{
    if (keepResume)
        resumeIndex = currentIndex;
    else if (currentIndex->filtered && currentIndex != row) // it may have made room for the row
        dropCurrent();
    makeCurrent(row);
}

bool KyPDataManager::filter(const char *searchExp, unsigned long searchLen, const char *sortExp,
                            unsigned long sortLen, FilterFor parent, bool keepResume)
{
    const PIOIDXINFO *parentRow = d->parentRow(parent);
    if (!d->boxHandle || !parentRow || searchLen > PdtmInfoRoom || sortLen > PdtmInfoRoom)
        return false;
    // An index that is chosen from, or gone back to, can't make room for the one that needs it.
    PIOIDXINFO *row = d->takeRow(keepResume ? d->currentIndex : parentRow);
    if (!row || createMIdxFile(d->rowPath(row).constData(), d->boxPath().constData(), searchExp, int(searchLen),
                               sortExp, int(sortLen), true, d->rowPath(parentRow).constData()) != 0)
        return d->abandon(row);
    row->inUse = true;
    row->filtered = true;
    row->ascending = true;
    row->indexAge = NewIndexAge;
    row->sortExpLength = quint8(sortLen);
    if (sortLen)
        memcpy(row->sortExp, sortExp, sortLen);
    d->enterFilter(row, keepResume);
    return true;
}

bool KyPDataManager::unfilter(bool toResume)
{
    if (!isFiltered())
        return false;
    d->dropCurrent();
    d->makeCurrent(toResume && d->resumeIndex ? d->resumeIndex : d->masterIndex);
    killIdxResume();
    return true;
}

void KyPDataManager::killIdxResume()
{
    d->resumeIndex = nullptr;
}

bool KyPDataManager::isFiltered() const
{
    return d->currentIndex && d->currentIndex->filtered;
}

} // namespace KyPDtm
