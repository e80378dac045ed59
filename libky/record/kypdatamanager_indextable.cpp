#include "kypdatamanager_p.h"
#include <algorithm>

namespace KyPDtm {

namespace {

constexpr quint32 MaximumOrdinal = 0x7FFFFFFF;
constexpr int SingleKeyLength = 7; // a key of six bytes and the final 0
constexpr int OperatorOffset = 5;
constexpr quint8 TextDescending = 0x81;
constexpr quint8 PlainDescending = 0x83;
constexpr char TemporaryPrefix[] = "ppin";
constexpr int TemporaryPrefixLength = 4;
constexpr int BoxPartLength = 3; // characters of the box in the name of a temporary index
constexpr int DigitPosition = TemporaryPrefixLength + BoxPartLength;
constexpr int DigitCount = 1; // ten names for a box
constexpr char TemporaryExtension[] = "tdx";
constexpr quint8 OldestAge = 255;
constexpr quint32 PartnerProperty = 9;
constexpr int PartnerOffset = 2; // of the partner's code in the property

bool isPermanentName(const char *baseName)
{
    const char *dot = strchr(baseName, '.');
    return dot && (strncmp(dot + 1, "IDX", 3) == 0 || strncmp(dot + 1, "idx", 3) == 0);
}

void takeSortExpression(const quint8 *expression, quint16 length, const PioExtBoxInfo *info, PIOIDXINFO *row)
{
    row->ascending = true;
    if (length < SingleKeyLength)
        return;
    const quint8 direction = expression[OperatorOffset];
    row->ascending = direction != TextDescending && direction != PlainDescending;
    if (length == SingleKeyLength) {
        const ItemCode code(reinterpret_cast<const char *>(expression));
        row->sortItem = quint8(_PioExtGetItemNo(info, code.text));
        return;
    }
    row->sortExpLength = quint8(length);
    memcpy(row->sortExp, expression, length);
}

/** The name that temporary indexes of a box count from: `ppinKYA0.` for KYADRS.BOX. A box that is named like
 * one itself gives its own name. @param fileName of NameRoom bytes */
void nameAfterBox(const char *boxName, char *fileName)
{
    memcpy(fileName, boxName, NameRoom);
    if (strncmp(boxName, TemporaryPrefix, TemporaryPrefixLength) == 0)
        return;
    memcpy(fileName + TemporaryPrefixLength, boxName, BoxPartLength);
    memcpy(fileName, TemporaryPrefix, TemporaryPrefixLength);
    memcpy(fileName + DigitPosition, "0.", sizeof "0.");
}

} // namespace

void PIOIDXINFO::keepOrder(quint8 item, const quint8 *expression, int length, bool isAscending)
{
    sortItem = item;
    sortExpLength = quint8(length);
    std::copy_n(expression, length, sortExp);
    ascending = isAscending;
}

void KyPDataManagerPrivate::readIndexTable()
{
    indexCapacity = MaximumIndexes;
    const QByteArray box = boxPath();
    char name[NameRoom];
    quint32 permanent = 0;
    int slot = 0;
    for (quint32 ordinal = 1; slot < indexCapacity && ordinal < MaximumOrdinal;) {
        if (_GetIndexName(box.constData(), ordinal, name, NameRoom, &permanent) != PdtmOk)
            break;
        PIOIDXINFO *row = &indexes[slot];
        if (!isOwnIndex(name)) {
            ++ordinal;
        } else if (!readIndexRow(name, permanent != 0, row)) {
            // A deleted index makes room for the next one at the same ordinal.
            ordinal += _IndexDelete(name) == PdtmOk ? 0 : 1;
        } else {
            if (!masterIndex && row->sticky && !row->categoryId && !row->filtered)
                currentIndex = masterIndex = row;
            ++slot;
            ++ordinal;
        }
    }
}

bool KyPDataManagerPrivate::isOwnIndex(const char *path) const
{
    const char *base = DtmGetBaseNamePtr(path);
    if (!base)
        return false;
    const auto folderLength = size_t(base - path);
    return folderLength == strlen(boxDir) && memcmp(path, boxDir, folderLength) == 0 &&
           strncmp(base, "pplx", 4) != 0;
}

bool KyPDataManagerPrivate::readIndexRow(const char *path, bool permanent, PIOIDXINFO *row) const
{
    quint8 expression[PdtmInfoRoom];
    quint16 length = PdtmInfoRoom;
    if (_IndexInfoRead(path, InfoSortExpression, expression, &length) != PdtmOk || length > PdtmInfoRoom)
        return false;
    const char *base = DtmGetBaseNamePtr(path);
    qstrncpy(row->fileName, base, NameRoom);
    row->sticky = permanent && isPermanentName(base);
    takeSortExpression(expression, length, extBoxInfo, row);
    getIndexSearchInfo(path, row);
    row->inUse = true;
    return true;
}

void KyPDataManagerPrivate::getIndexSearchInfo(const char *path, PIOIDXINFO *row)
{
    row->categoryId = 0;
    row->filtered = false;
    quint8 expression[PdtmInfoRoom];
    quint16 length = PdtmInfoRoom;
    if (_IndexInfoRead(path, InfoSearchExpression, expression, &length) != PdtmOk ||
        length <= CategoryTermLength)
        return;
    if (memcmp(expression, CategoryTerm, CategoryTermLength) == 0)
        row->categoryId = expression[CategoryTermLength];
    else
        row->filtered = true;
}

void KyPDataManagerPrivate::makeCurrent(PIOIDXINFO *row)
{
    for (PIOIDXINFO &other : indexes) {
        if (other.inUse && !other.sticky && other.indexAge < OldestAge)
            ++other.indexAge;
    }
    currentIndex = row;
    row->indexAge = 0;
}

PIOIDXINFO *KyPDataManagerPrivate::takeRow(const PIOIDXINFO *kept)
{
    PIOIDXINFO *row = freeRow();
    if (!row) {
        row = oldestRow(kept);
        if (!row)
            return nullptr;
        dropRow(row);
    }
    const QByteArray name = freeName();
    if (name.isEmpty())
        return nullptr;
    qstrncpy(row->fileName, name.constData(), NameRoom);
    return row;
}

QByteArray KyPDataManagerPrivate::freeName()
{
    const QByteArray name = unusedName();
    return name.isEmpty() && deleteUnknownIndex() ? unusedName() : name;
}

QByteArray KyPDataManagerPrivate::unusedName() const
{
    char name[NameRoom];
    nameAfterBox(boxName, name);
    return GetNewFileName(boxDir, name, TemporaryExtension, DigitPosition, DigitCount) ? QByteArray(name)
                                                                                       : QByteArray();
}

bool KyPDataManagerPrivate::deleteUnknownIndex()
{
    if (readOnly) // it is somebody's who has the box
        return false;
    char counted[NameRoom];
    nameAfterBox(boxName, counted);
    const QByteArray box = boxPath();
    char path[NameRoom];
    quint32 permanent = 0;
    for (quint32 ordinal = 1; _GetIndexName(box.constData(), ordinal, path, NameRoom, &permanent) == PdtmOk;
         ++ordinal) {
        const char *base = DtmGetBaseNamePtr(path);
        if (!permanent && strncmp(base, counted, DigitPosition) == 0 && !isKnown(base) && isOfThisBox(path))
            return _IndexDelete(path) == PdtmOk;
    }
    return false;
}

bool KyPDataManagerPrivate::isKnown(const char *fileName) const
{
    return std::ranges::any_of(indexes, [fileName](const PIOIDXINFO &row) {
        return row.inUse && strcmp(row.fileName, fileName) == 0;
    });
}

PIOIDXINFO *KyPDataManagerPrivate::freeRow()
{
    for (int i = 0; i < indexCapacity; ++i) {
        if (!indexes[i].inUse)
            return &indexes[i];
    }
    return nullptr;
}

PIOIDXINFO *KyPDataManagerPrivate::oldestRow(const PIOIDXINFO *kept)
{
    PIOIDXINFO *oldest = nullptr;
    for (int i = 0; i < indexCapacity; ++i) {
        PIOIDXINFO *row = &indexes[i];
        if (row == resumeIndex || row == kept || row->sticky)
            continue;
        if (!oldest || row->indexAge > oldest->indexAge)
            oldest = row;
    }
    return oldest;
}

bool KyPDataManagerPrivate::abandon(PIOIDXINFO *row)
{
    if (row)
        dropRow(row);
    if (!currentIndex->inUse)
        makeCurrent(masterIndex);
    return false;
}

void KyPDataManagerPrivate::dropRow(PIOIDXINFO *row)
{
    const QByteArray path = rowPath(row);
    _IndexDelete(path.constData());
    forgetRow(row);
}

void KyPDataManagerPrivate::forgetRow(PIOIDXINFO *row)
{
    for (PIOIDXINFO &other : indexes) {
        if (other.parent == row)
            other.parent = row->parent;
    }
    if (resumeIndex == row)
        resumeIndex = nullptr;
    *row = {};
}

int KyPDataManagerPrivate::createSortCond(quint8 item, quint8 *dst, bool ascending) const
{
    int length = PioSetSortCond(dst, extBoxInfo, item, ascending);
    if (length <= 0)
        return -1;
    const SecondKey second = secondKeyOf(item, ascending);
    if (second.item) {
        const int added = PioSetSortCond(dst + length, extBoxInfo, second.item, second.ascending);
        if (added <= 0)
            return -1;
        length += added;
    }
    dst[length] = 0;
    return length + 1;
}

SecondKey KyPDataManagerPrivate::secondKeyOf(quint8 item, bool ascending) const
{
    const PioExtItem &first = extBoxInfo->items[item - 1];
    if (first.propertyKind == PartnerProperty && first.property) {
        const ItemCode partner(reinterpret_cast<const char *>(first.property + PartnerOffset));
        return {quint8(_PioExtGetItemNo(extBoxInfo, partner.text)), ascending};
    }
    const SecondKey second = secondKeyOfBox(ascending);
    return second.item == item ? SecondKey{0, ascending} : second;
}

SecondKey KyPDataManagerPrivate::secondKeyOfBox(bool ascending) const
{
    const ItemCode code(extBoxInfo->secondSortItem);
    const bool sameDirection = extBoxInfo->secondSortAscending != 0;
    return {quint8(_PioExtGetItemNo(extBoxInfo, code.text)), ascending == sameDirection};
}

bool KyPDataManagerPrivate::sortIndexOf(const PIOIDXINFO *row, const quint8 *expression, int length)
{
    const QByteArray path = rowPath(row);
    lastError = _IndexInfoWriteWithCheck(path.constData(), InfoSortExpression, expression, quint16(length));
    if (lastError != PdtmOk) {
        qDebug("index infowrite error %x", lastError);
        return false;
    }
    lastError = _IndexSort(path.constData(), boxHandle);
    if (lastError != PdtmOk && lastError != PdtmNothingToSort) {
        qDebug("sort error %x", lastError);
        return false;
    }
    return true;
}

QByteArray KyPDataManagerPrivate::rowPath(const PIOIDXINFO *row) const
{
    return QByteArray(boxDir) + row->fileName;
}

QByteArray KyPDataManagerPrivate::indexPath(const char *index) const
{
    if (index)
        return index;
    return currentIndex ? rowPath(currentIndex) : QByteArray();
}

} // namespace KyPDtm
