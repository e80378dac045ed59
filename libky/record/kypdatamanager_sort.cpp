#include "kypdatamanager.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr int CopyWithExpression = 2;
constexpr int CodeLength = 4;

/** The item that a sort runs on: that of the pronunciation, where the box declares one. */
quint8 orderingItem(const PioExtBoxInfo *info, int item)
{
    const auto pronunciation = quint8(_PioExtGetYomiPairItemNo(info, quint32(item)));
    return pronunciation ? pronunciation : quint8(item);
}

const quint8 *bytesOf(const QByteArray &expression)
{
    return reinterpret_cast<const quint8 *>(expression.constData());
}

QByteArray expressionOf(const PIOIDXINFO &row)
{
    return QByteArray(reinterpret_cast<const char *>(row.sortExp), row.sortExpLength);
}

/** True for a row that was sorted by exactly this expression, and not by an item. */
bool holds(const PIOIDXINFO &row, const QByteArray &expression)
{
    return row.sortItem == 0 && expressionOf(row) == expression;
}

/** The first plain row that serves an order, null when there is none. */
template <typename Order> PIOIDXINFO *plainRow(KyPDataManagerPrivate &d, Order isWanted)
{
    for (PIOIDXINFO &row : d.indexes) {
        if (row.isPlain() && isWanted(row))
            return &row;
    }
    return nullptr;
}

/** Sort expression for an item, empty when there can't be one. */
QByteArray conditionFor(const KyPDataManagerPrivate &d, quint8 item, bool ascending)
{
    quint8 condition[PdtmInfoRoom];
    const int length = d.createSortCond(item, condition, ascending);
    return length < 0 ? QByteArray() : QByteArray(reinterpret_cast<const char *>(condition), length);
}

/** The expression with the second key of the box behind it, in place of the terminator if it has one: behind
 * a 0 byte nothing counts. Empty when the box can't give that key. */
QByteArray withSecondKey(const KyPDataManagerPrivate &d, const QByteArray &expression)
{
    const SecondKey second = d.secondKeyOfBox(d.ascendent);
    if (!second.item)
        return expression;
    quint8 key[PdtmInfoRoom];
    const int length = PioSetSortCond(key, d.extBoxInfo, second.item, second.ascending);
    if (length <= 0)
        return QByteArray();
    const QByteArray keys = expression.endsWith('\0') ? expression.chopped(1) : expression;
    return keys + QByteArray(reinterpret_cast<const char *>(key), length);
}

/** Sorts the current index in its place. */
bool sortInPlace(KyPDataManagerPrivate &d, quint8 item, const QByteArray &expression)
{
    if (!d.sortIndexOf(d.currentIndex, bytesOf(expression), int(expression.size())))
        return false;
    d.currentIndex->keepOrder(item, bytesOf(expression), int(expression.size()), true);
    return true;
}

/** Makes the file of a new index with all cards of the master. An index with no card is a failure too. */
bool copyMaster(KyPDataManagerPrivate &d, const PIOIDXINFO *row, const QByteArray &expression)
{
    const QByteArray path = d.rowPath(row);
    d.lastError = _IndexCopy(d.rowPath(d.masterIndex).constData(), path.constData(), CopyWithExpression,
                             expression.constData(), int(expression.size()));
    if (d.lastError == PdtmOk)
        d.lastError = _IndexSort(path.constData(), d.boxHandle);
    return d.lastError == PdtmOk;
}

/** Makes a new index current. */
bool sortIntoNewIndex(KyPDataManagerPrivate &d, quint8 item, const QByteArray &expression)
{
    // A box that is closed can't fill an index: none has to make room for it.
    PIOIDXINFO *row = d.boxHandle ? d.takeRow() : nullptr;
    if (!row || !copyMaster(d, row, expression))
        return d.abandon(row);
    row->inUse = true;
    row->indexAge = NewIndexAge;
    row->keepOrder(item, bytesOf(expression), int(expression.size()), true);
    d.makeCurrent(row);
    return true;
}

/** Brings the view into the ascending order of an item. */
bool sortByItem(KyPDataManagerPrivate &d, quint8 item)
{
    const bool isSubset = d.currentIndex->isSubset();
    if (!isSubset) {
        if (PIOIDXINFO *row = plainRow(d, [=](const PIOIDXINFO &r) { return r.sortItem == item; })) {
            d.makeCurrent(row);
            return true;
        }
    }
    const QByteArray condition = conditionFor(d, item, true);
    if (condition.isEmpty())
        return false;
    return isSubset ? sortInPlace(d, item, condition) : sortIntoNewIndex(d, item, condition);
}

/** Brings a view of all cards into the order of an expression. */
bool sortByExpression(KyPDataManagerPrivate &d, const QByteArray &expression)
{
    PIOIDXINFO *row = plainRow(d, [&](const PIOIDXINFO &r) { return holds(r, expression); });
    if (!row)
        return sortIntoNewIndex(d, 0, expression);
    d.makeCurrent(row);
    return true;
}

/** Gives the current index, a subset, the order of the master. */
bool sortAsMaster(KyPDataManagerPrivate &d)
{
    const PIOIDXINFO &master = *d.masterIndex;
    const QByteArray expression =
        master.sortItem ? conditionFor(d, master.sortItem, master.ascending) : expressionOf(master);
    if (master.sortItem && expression.isEmpty())
        return false;
    if (!d.sortIndexOf(d.currentIndex, bytesOf(expression), int(expression.size())))
        return false;
    d.currentIndex->keepOrder(master.sortItem, master.sortExp, master.sortExpLength, master.ascending);
    return true;
}

PIOIDXINFO *rowNamed(KyPDataManagerPrivate &d, const char *indexName)
{
    for (PIOIDXINFO &row : d.indexes) {
        if (row.inUse && qstrcmp(row.fileName, indexName) == 0)
            return &row;
    }
    return nullptr;
}

void dropTemporaryRows(KyPDataManagerPrivate &d)
{
    for (PIOIDXINFO &row : d.indexes) {
        if (row.inUse && !row.sticky)
            d.dropRow(&row);
    }
}

/** Sorts the view as another index is sorted. */
void showOrderOf(KyPDataManager &manager, const PIOIDXINFO &row)
{
    const bool ascending = manager.ascendent();
    if (row.sortItem)
        manager.sort(row.sortItem, ascending);
    else if (row.sortExpLength)
        manager.sort(expressionOf(row).constData(), row.sortExpLength, ascending);
    else
        qDebug("setCurrentIndex previous index was not sorted?");
}

QByteArray codeOfItem(const KyPDataManagerPrivate &d, quint8 item)
{
    return QByteArray(d.extBoxInfo->items[item - 1].code, CodeLength);
}

QByteArray orderInWords(const KyPDataManagerPrivate &d, const PIOIDXINFO &row)
{
    if (row.sortItem)
        return codeOfItem(d, row.sortItem);
    return row.sortExpLength ? "special" : "none";
}

void dumpOrder(const char *format, const KyPDataManagerPrivate &d, const PIOIDXINFO &row)
{
    const QString line = QString::asprintf(format, orderInWords(d, row).constData(),
                                           row.ascending ? "ascendent" : "disascendent");
    qDebug("%s", qPrintable(line));
}

} // namespace

bool KyPDataManager::sort(int item, bool ascending)
{
    if (!d->currentIndex || item < 1 || item > d->extBoxInfo->itemCount)
        return false;
    const quint8 key = orderingItem(d->extBoxInfo, item);
    // Only here the direction that is built into the index counts, so that asking again for the order of an
    // index that runs backwards shows it forwards. One that a sort comes back to is walked as it stands.
    if (d->currentIndex->sortItem == key) {
        d->ascendent = ascending == d->currentIndex->ascending;
        return true;
    }
    if (!sortByItem(*d, key))
        return false;
    d->ascendent = ascending;
    return true;
}

bool KyPDataManager::sort(const char *code, bool ascending)
{
    return sort(nameToItemId(code), ascending);
}

bool KyPDataManager::sort(const char *expression, int length, bool ascending)
{
    if (!d->currentIndex || !expression || length < 1 || length > PdtmInfoRoom)
        return false;
    const QByteArray given(expression, length);
    const QByteArray extended = withSecondKey(*d, given);
    if (extended.isEmpty() || extended.size() > PdtmInfoRoom)
        return false;
    const bool isShown = holds(*d->currentIndex, extended);
    const bool isResorted = !isShown && d->currentIndex->isSubset();
    const bool done = isShown || (isResorted ? sortInPlace(*d, 0, extended) : sortByExpression(*d, given));
    if (done)
        d->ascendent = ascending;
    // Meant: callers tell by the false that the cards of their subset now come in another order.
    return isResorted ? !done : done;
}

void KyPDataManager::sort(bool ascending)
{
    if (!d->currentIndex)
        return;
    if (d->currentIndex != d->masterIndex) {
        if (!d->currentIndex->isSubset())
            d->makeCurrent(d->masterIndex);
        else if (!sortAsMaster(*d))
            return;
    }
    d->ascendent = ascending;
}

bool KyPDataManager::setCurrentIndex(const char *indexName, bool makeMaster)
{
    PIOIDXINFO *row = d->currentIndex ? rowNamed(*d, indexName) : nullptr;
    if (!row) {
        qDebug("failed for setCurrentIdx %s", indexName ? indexName : "");
        return false;
    }
    if (makeMaster && !row->sticky) {
        qDebug("only sticky index file can be the Master. %s", indexName);
        return false;
    }
    if (row == d->currentIndex) {
        qDebug("this index is already current index. %s", indexName);
        return true;
    }
    const PIOIDXINFO previous = *d->currentIndex; // its row may go
    d->makeCurrent(row);
    if (makeMaster) {
        d->masterIndex = row;
        dropTemporaryRows(*d);
    }
    showOrderOf(*this, previous);
    return true;
}

QString KyPDataManager::current1stSortKey() const
{
    const PIOIDXINFO *row = d->currentIndex;
    if (!row || (!row->sortItem && row->sortExpLength <= CodeLength))
        return QString();
    return QString::fromLatin1(row->sortItem ? codeOfItem(*d, row->sortItem)
                                             : expressionOf(*row).left(CodeLength));
}

void KyPDataManager::dumpIndexStatus() const
{
    qDebug("dumpIndexStatus: -----------------------------");
    if (d->currentIndex) {
        qDebug("\tcurrentIdx %s %d", d->currentIndex->fileName, d->ascendent);
        dumpOrder("\t  sorted by %s %s", *d, *d->currentIndex);
    }
    for (const PIOIDXINFO &row : d->indexes) {
        if (!row.inUse)
            continue;
        qDebug("\t\t%s", row.fileName);
        qDebug("\t\t  %s %s %s", row.sticky ? "sticky" : "temporary", row.categoryId ? "category" : "",
               row.filtered ? "filter" : "");
        dumpOrder("\t\t  sorted by %s %s", *d, row);
    }
}

} // namespace KyPDtm
