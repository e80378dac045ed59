#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

constexpr quint32 MaximumOrdinal = 0x7FFFFFFF;
constexpr int SingleKeyLength = 7; // a key of six bytes and the final 0
constexpr int OperatorOffset = 5;
constexpr quint8 TextDescending = 0x81;
constexpr quint8 PlainDescending = 0x83;
constexpr char CategoryTerm[] = "CTGR\xFE\x92\x0C";
constexpr int CategoryTermLength = 7;

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

} // namespace

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

QByteArray KyPDataManagerPrivate::indexPath(const char *index) const
{
    if (index)
        return index;
    return currentIndex ? QByteArray(boxDir) + currentIndex->fileName : QByteArray();
}

} // namespace KyPDtm
