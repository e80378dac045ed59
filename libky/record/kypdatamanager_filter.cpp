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

PIOIDXINFO *categoryRow(KyPDataManagerPrivate &d, int category)
{
    for (PIOIDXINFO &row : d.indexes) {
        if (row.inUse && row.categoryId == category)
            return &row;
    }
    return nullptr;
}

void copyOrder(const PIOIDXINFO &from, PIOIDXINFO *to)
{
    to->keepOrder(from.sortItem, from.sortExp, from.sortExpLength, from.ascending);
}

/** The row whose order a new view takes over: the master where the index of the view had to be dropped. */
const PIOIDXINFO &shownRow(const KyPDataManagerPrivate &d)
{
    return d.currentIndex->inUse ? *d.currentIndex : *d.masterIndex;
}

/** The item tells all: a row that was read from a file has no expression beside it. */
bool haveSameOrder(const PIOIDXINFO &row, const PIOIDXINFO &other)
{
    if (row.sortItem || other.sortItem)
        return row.sortItem == other.sortItem;
    return row.sortExpLength == other.sortExpLength &&
           memcmp(row.sortExp, other.sortExp, row.sortExpLength) == 0;
}

/** Brings a row into the order of a view. */
bool takeOrder(KyPDataManagerPrivate &d, PIOIDXINFO *row, const PIOIDXINFO &view)
{
    if (haveSameOrder(*row, view))
        return true;
    PIOIDXINFO order = view;
    if (view.sortItem) {
        const int length = d.createSortCond(view.sortItem, order.sortExp, view.ascending);
        if (length < 0)
            return false;
        order.sortExpLength = quint8(length);
    }
    if (!d.sortIndexOf(row, order.sortExp, order.sortExpLength))
        return false;
    copyOrder(order, row);
    return true;
}

/** Makes the empty index of a category. */
bool describeCategory(KyPDataManagerPrivate &d, const QByteArray &path, int category)
{
    quint8 expression[CategoryExpressionLength];
    quint16 length = 0;
    GetCategory_FilterInfo(expression, quint8(category), &length);
    constexpr quint8 isSubset = 1;
    const auto write = [&](int id, const void *bytes, size_t size) {
        d.lastError = _IndexInfoWriteWithCheck(path.constData(), id, bytes, quint16(size));
        return d.lastError == PdtmOk;
    };
    d.lastError = _IndexCreate(path.constData(), CategoryKind);
    return d.lastError == PdtmOk && write(InfoBoxName, d.boxName, strlen(d.boxName) + 1) &&
           write(InfoSearchExpression, expression, length) && write(InfoSubset, &isSubset, sizeof isSubset);
}

/** Fills it with cards of the master, in the master's order. */
bool groupCategory(KyPDataManagerPrivate &d, const QByteArray &path)
{
    d.lastError = _IndexGroup(d.rowPath(d.masterIndex).constData(), path.constData(), d.boxHandle);
    if (d.lastError == PdtmOk || d.lastError == PdtmNothingToSort)
        return true;
    qDebug("index group err %x", d.lastError);
    return false;
}

bool fillCategory(KyPDataManagerPrivate &d, PIOIDXINFO *row, int category, const PIOIDXINFO &view)
{
    const QByteArray path = d.rowPath(row);
    if (!describeCategory(d, path, category) || !groupCategory(d, path))
        return false;
    copyOrder(*d.masterIndex, row);
    row->inUse = true;
    row->categoryId = quint8(category);
    row->indexAge = NewIndexAge;
    if (view.sortItem && view.sortItem != row->sortItem)
        qDebug("required sort");
    return takeOrder(d, row, view);
}

/** Makes a new index of a category current. @param former its index until now, null when there is none */
bool buildCategory(KyPDataManagerPrivate &d, int category, PIOIDXINFO *former)
{
    const PIOIDXINFO view = shownRow(d); // which may be the one that makes room
    // A box that is closed can't fill an index: none has to make room for it.
    PIOIDXINFO *row = d.boxHandle ? d.takeRow() : nullptr;
    if (!row || !fillCategory(d, row, category, view))
        return d.abandon(row);
    if (former && former != row && !former->sticky)
        d.dropRow(former);
    d.makeCurrent(row);
    return true;
}

/** Deletes the view that is about to be left. The master stays, even if it is a category or a search itself.
 */
void dropCurrent(KyPDataManagerPrivate &d)
{
    if (d.currentIndex != d.masterIndex)
        d.dropRow(d.currentIndex);
}

PIOIDXINFO *parentRow(const KyPDataManagerPrivate &d, KyPDataManager::FilterFor parent)
{
    switch (parent) {
    case KyPDataManager::FilterCurrent:
        return d.currentIndex;
    case KyPDataManager::FilterMaster:
        return d.masterIndex;
    case KyPDataManager::FilterResume:
        return d.resumeIndex;
    }
    return nullptr;
}

void enterFilter(KyPDataManagerPrivate &d, PIOIDXINFO *row, bool keepResume)
{
    // Its index may have made room for the row, or have been dropped before.
    const bool isLeft = d.currentIndex->inUse && d.currentIndex != row;
    if (keepResume)
        d.resumeIndex = isLeft ? d.currentIndex : nullptr;
    else if (isLeft && d.currentIndex->filtered)
        dropCurrent(d);
    d.makeCurrent(row);
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

bool KyPDataManager::enableFilter(int category)
{
    if (!d->currentIndex || (category != NoCategory && !FilerCheckCategoryId(category)))
        return false;
    // The cards of no category change with every edit, and a category of a subset depends on that subset.
    const bool canReuse = category != UnfiledCategoryId && d->masterIndex->isPlain();
    if (canReuse && d->currentIndex->inUse && d->currentIndex->categoryId == category)
        return true;
    // No category is found as the first index without one: a chooser that is cleared keeps the order it
    // shows.
    PIOIDXINFO *found = categoryRow(*d, category);
    if (!canReuse || !found)
        return category != NoCategory && buildCategory(*d, category, found);
    if (!takeOrder(*d, found, shownRow(*d)))
        return false;
    d->makeCurrent(found);
    return true;
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
        dropCurrent(*d);
    d->makeCurrent(d->masterIndex);
    // As when the user asks for that order: a master that runs backwards turns the view round.
    if (view.sortItem)
        return sort(view.sortItem, d->ascendent);
    if (view.sortExpLength)
        return sort(reinterpret_cast<const char *>(view.sortExp), view.sortExpLength, d->ascendent);
    return true;
}

bool KyPDataManager::filter(const char *searchExp, unsigned long searchLen, const char *sortExp,
                            unsigned long sortLen, FilterFor parent, bool keepResume)
{
    PIOIDXINFO *chosenFrom = parentRow(*d, parent);
    if (!d->boxHandle || !chosenFrom || !chosenFrom->inUse || searchLen > PdtmInfoRoom ||
        sortLen > PdtmInfoRoom)
        return false;
    // The index that is chosen from, or gone back to, can't make room for the one that needs it.
    PIOIDXINFO *row = d->takeRow(keepResume ? d->currentIndex : chosenFrom);
    if (!row ||
        createMIdxFile(d->rowPath(row).constData(), d->boxPath().constData(), searchExp, int(searchLen),
                       sortExp, int(sortLen), true, d->rowPath(chosenFrom).constData()) != 0)
        return d->abandon(row);
    row->inUse = true;
    row->filtered = true;
    row->parent = chosenFrom == d->masterIndex ? nullptr : chosenFrom;
    row->indexAge = NewIndexAge;
    row->keepOrder(0, reinterpret_cast<const quint8 *>(sortExp), int(sortLen), true);
    enterFilter(*d, row, keepResume);
    return true;
}

bool KyPDataManager::unfilter(bool toResume)
{
    if (!isFiltered())
        return false;
    dropCurrent(*d); // a permanent one too: it comes back when the files of the box are made sure of
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
