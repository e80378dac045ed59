#include "boxcreation.h"
#include "folderlock_p.h"
#include "japanesetext.h"
#include "kypdatamanager.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "pdtm.h"
#include <cstring>
#include <QDebug>
#include <QFileInfo>
#include <vector>

namespace KyPDtm {

namespace {

/** Results of createBoxFile(). */
enum CreateBoxResult { BoxReady = 0, BoxOutOfResources = 1, BoxIsWrong = 2 };

/** File tests give these two for a box that is fit for use all the same. */
enum UsableStatus : PdtmStatus { Usable = 177, UsableToo = 178 };

constexpr int CheckLevel = 3;
constexpr int KindFromDescription = 17;
constexpr uint32_t LastOrdinal = 0x7FFFFFFF;
constexpr int PathRoom = 256;
constexpr int SortExpressionRoom = 50;

bool isOutOfResources(PdtmStatus status)
{
    return status == PdtmTooShort || status == PdtmOutOfSpace;
}

/** Length in bytes of the longest prefix of @p text, UTF-8, that fits and ends with a whole character. */
size_t wholeCharacters(const QByteArray &text, size_t room)
{
    auto length = static_cast<size_t>(text.size());
    if (length <= room)
        return length;
    length = room;
    while (length > 0 && (static_cast<unsigned char>(text[static_cast<qsizetype>(length)]) & 0xC0) == 0x80)
        --length;
    return length;
}

ITEMDATA declaration(const KyPDataManagerItem &item)
{
    ITEMDATA data = {};
    data.type = item.type;
    data.kind = static_cast<uint8_t>(item.kind);
    std::memcpy(data.code, item.code, sizeof data.code);
    const QByteArray label = item.label.toUtf8();
    std::memcpy(data.label, label.constData(), wholeCharacters(label, sizeof data.label - 1));
    return data;
}

std::vector<ITEMDATA> declarations(const KyPDataManagerItemInfo &items)
{
    std::vector<ITEMDATA> result;
    for (const KyPDataManagerItem &item : items.entries())
        result.push_back(declaration(item));
    return result;
}

int makeBox(const char *boxFile, unsigned long appId)
{
    const PdtmStatus status = _BoxCreate(boxFile, static_cast<uint32_t>(appId));
    if (isOutOfResources(status))
        return BoxOutOfResources;
    // An index that is left from a former box is worthless.
    DeleteFamilyIndex(boxFile);
    return status == PdtmOk ? BoxReady : BoxIsWrong;
}

int appendItems(const char *boxFile, const ITEMDATA *items, int count)
{
    uint32_t added = 0;
    const PdtmStatus status = _BoxItemAppend(boxFile, items, count, &added);
    if (status == PdtmOk) {
        if (added != 0) // the indexes don't know the new items
            DeleteFamilyIndex(boxFile);
        return BoxReady;
    }
    qDebug("error in item append.%x", status);
    DeleteFamilyIndex(boxFile);
    return isOutOfResources(status) ? BoxOutOfResources : BoxIsWrong;
}

/** The box that fills an index, open for as long as that takes. */
class OpenBox
{
public:
    explicit OpenBox(const char *path) : m_handle(_BoxOpen(path)) {}
    ~OpenBox()
    {
        if (m_handle != 0)
            _BoxClose(m_handle);
    }
    [[nodiscard]] uint32_t handle() const { return m_handle; }

private:
    Q_DISABLE_COPY_MOVE(OpenBox)
    const uint32_t m_handle;
};

struct Expression
{
    const char *bytes;
    int length;
};

/** An index that is being made. Each step gives false when the index can't be made. */
class IndexMaker
{
public:
    IndexMaker(const char *indexFile, const char *parentIndex, Expression search, Expression sort)
        : m_index(indexFile), m_parent(parentIndex), m_search(search), m_sort(sort)
    {
    }

    enum Finding { Fit, ToBeMade, Failed };

    [[nodiscard]] Finding examine() const
    {
        switch (_DTMFileCheckLevel(m_index, CheckLevel)) {
        case PdtmTooShort:
            return Failed;
        case PdtmMissing:
            return ToBeMade;
        case PdtmOk:
        case Usable:
            if (hasSameExpressions())
                return Fit;
            break;
        case PdtmOtherLanguage:
            qDebug("%s has different language code", m_index);
            break;
        default:
            break;
        }
        _IndexDelete(m_index);
        return ToBeMade;
    }

    [[nodiscard]] Finding create() const
    {
        switch (_IndexCreate(m_index, KindFromDescription)) {
        case PdtmOk:
            return ToBeMade;
        case PdtmExists:
            return hasSameExpressions() ? Fit : overwrite();
        default:
            return Failed;
        }
    }

    [[nodiscard]] bool make(const char *boxFile) const
    {
        if (!writeBoxName(boxFile))
            return false;
        const OpenBox box(boxFile);
        return fill(box.handle()) && sort(box.handle());
    }

private:
    [[nodiscard]] bool hasSameExpressions() const
    {
        return isFinished() && hasSameOrder() && isSearchExprsSame(m_index, m_search.bytes, m_search.length);
    }

    /** Every filled index has a sort expression, if an empty one. One without was left by a killed process.
     */
    [[nodiscard]] bool isFinished() const
    {
        char expression[PdtmInfoRoom];
        uint16_t size = sizeof expression;
        return _IndexInfoRead(m_index, InfoSortExpression, expression, &size) == PdtmOk;
    }

    [[nodiscard]] bool hasSameOrder() const
    {
        char inherited[PdtmInfoRoom];
        uint16_t size = sizeof inherited;
        // A subset with no order of its own has taken over its parent's.
        if (m_sort.length == 0 && m_search.length != 0 &&
            _IndexInfoRead(m_parent, InfoSortExpression, inherited, &size) == PdtmOk)
            return isSortExprsSame(m_index, inherited, size);
        return isSortExprsSame(m_index, m_sort.bytes, m_sort.length);
    }

    /** Makes an existing index anew, so that none of its former expressions stays behind. */
    [[nodiscard]] Finding overwrite() const
    {
        _IndexDelete(m_index);
        const PdtmStatus status = _IndexCreate(m_index, KindFromDescription);
        return status == PdtmOk || status == PdtmExists ? ToBeMade : Failed;
    }

    [[nodiscard]] bool writeBoxName(const char *boxFile) const
    {
        const char *baseName = DtmGetBaseNamePtr(boxFile);
        if (baseName == nullptr) {
            qDebug("invalid box filename %s", boxFile);
            return false;
        }
        const auto length = static_cast<uint16_t>(std::strlen(baseName) + 1);
        return _IndexInfoWrite(m_index, InfoBoxName, baseName, length) == PdtmOk;
    }

    [[nodiscard]] bool writeExpression(int id, Expression expression) const
    {
        if (expression.length < 0 || expression.length > PdtmInfoRoom)
            return false;
        return writeInfo(id, expression.bytes, static_cast<uint16_t>(expression.length));
    }

    [[nodiscard]] bool writeInfo(int id, const char *bytes, uint16_t length) const
    {
        const PdtmStatus status = _IndexInfoWrite(m_index, id, bytes, length);
        return status == PdtmOk || status == PdtmNone;
    }

    [[nodiscard]] bool fill(uint32_t box) const
    {
        if (m_search.length == 0)
            return isFilled(_IndexUnGroup(m_index, box));
        constexpr char isSubset = 1;
        return writeExpression(InfoSearchExpression, m_search) && writeInfo(InfoSubset, &isSubset, 1) &&
               isFilled(_IndexGroup(m_parent, m_index, box));
    }

    [[nodiscard]] bool isFilled(PdtmStatus status) const
    {
        switch (status) {
        case PdtmOk:
        case PdtmNone:
        case PdtmNothingToSort:
            return true;
        case PdtmTooShort:
        case PdtmOutOfSpace:
        case PdtmGroupFailed:
            qDebug("error in IndexGroup or IndexUnGroup %s", m_index);
            return false;
        default:
            qDebug("fatal error in IndexGroup or IndexUnGroup %s", m_index);
            return false;
        }
    }

    [[nodiscard]] bool sort(uint32_t box) const
    {
        if (m_sort.length == 0)
            return true;
        if (!writeExpression(InfoSortExpression, m_sort))
            return false;
        const PdtmStatus status = _IndexSort(m_index, box);
        return status == PdtmOk || status == PdtmNothingToSort;
    }

    const char *const m_index;
    const char *const m_parent;
    const Expression m_search;
    const Expression m_sort;
};

/** The folder of a box in the file system. */
QString folderOf(const char *boxFile)
{
    char path[4096];
    return FileGetRealPath(path, boxFile) == PdtmOk ? QFileInfo(QFile::decodeName(path)).path() : QString();
}

bool isInfoSame(const char *index, int id, const void *expression, int length)
{
    char stored[PdtmInfoRoom] = {};
    uint16_t size = sizeof stored;
    if (_IndexInfoRead(index, id, stored, &size) != PdtmOk)
        return length == 0;
    return size == length && (length == 0 || std::memcmp(stored, expression, size) == 0);
}

} // namespace

int createBoxFile(const char *boxFile, unsigned long appId, ITEMDATA *items, int count)
{
    const PdtmStatus status = _DTMFileCheckAppliID(boxFile, CheckLevel, static_cast<uint32_t>(appId));
    switch (status) {
    case PdtmTooShort:
        return BoxOutOfResources;
    case PdtmMissing:
        if (const int result = makeBox(boxFile, appId); result != BoxReady)
            return result;
        break;
    case PdtmOk:
    case Usable:
    case UsableToo:
        break;
    default:
        qDebug("%s is incorrect box file %x.", boxFile, status);
        DeleteFamilyIndex(boxFile);
        return BoxIsWrong;
    }
    return appendItems(boxFile, items, count);
}

int createMIdxFile(const char *indexFile, const char *boxFile, const char *searchExp, int searchLength,
                   const char *sortExp, int sortLength, bool noCheck, const char *parentIndex)
{
    const IndexMaker index(indexFile, parentIndex, {searchExp, searchLength}, {sortExp, sortLength});
    IndexMaker::Finding finding = noCheck ? IndexMaker::ToBeMade : index.examine();
    if (finding == IndexMaker::ToBeMade)
        finding = index.create();
    if (finding == IndexMaker::Fit || (finding == IndexMaker::ToBeMade && index.make(boxFile)))
        return 0;
    _IndexDelete(indexFile);
    return 1;
}

void DeleteFamilyIndex(const char *boxFile)
{
    char name[PathRoom];
    uint32_t permanent = 0;
    uint32_t ordinal = 1;
    while (ordinal < LastOrdinal &&
           _GetIndexName(boxFile, ordinal, name, sizeof name, &permanent) == PdtmOk) {
        if (_IndexDelete(name) != PdtmOk)
            ++ordinal; // otherwise the next index has moved into this place
    }
}

bool isSortExprsSame(const char *index, const void *expression, int length)
{
    return isInfoSame(index, InfoSortExpression, expression, length);
}

bool isSearchExprsSame(const char *index, const void *expression, int length)
{
    return isInfoSame(index, InfoSearchExpression, expression, length);
}

void GetFullPathName(unsigned char *dst, const char *dir, const char *name)
{
    const QByteArray path = QByteArray(dir) + name;
    std::memcpy(dst, path.constData(), static_cast<size_t>(path.size()) + 1);
}

QByteArray SjisString(const QString &text)
{
    return JapaneseText::toSjis(text);
}

bool KyPDataManager::createFile(const char *boxFile, const char *indexFile, unsigned long appId, bool noCheck,
                                const KyPDataManagerItemInfo &items, const char *sortExp, int sortLength,
                                const KyPDataManagerIndexInfo &indexes)
{
    InitLanguageEnvironment();
    // Of two applications that start at once each would take the other's half-made index for a broken one.
    const FolderLock lock(folderOf(boxFile));
    std::vector<ITEMDATA> data = declarations(items);
    if (createBoxFile(boxFile, appId, data.data(), static_cast<int>(data.size())) != BoxReady)
        return true;
    if (createMIdxFile(indexFile, boxFile, nullptr, 0, sortExp, sortLength, noCheck, nullptr) != 0)
        return true;
    for (const KyPDataManagerIndexEntry &entry : indexes.entries()) {
        // One index that can't be made keeps none of the others from being made.
        static_cast<void>(createMIdxFile(entry.indexFile, boxFile, entry.searchExp,
                                         static_cast<int>(entry.searchLength), entry.sortExp,
                                         static_cast<int>(entry.sortLength), noCheck, indexFile));
    }
    return true;
}

bool KyPDataManager::createFile(const char *boxFile, const char *indexFile, unsigned long appId, bool noCheck,
                                const KyPDataManagerItemInfo &items, const KyPDataManagerSortKey &keys,
                                const KyPDataManagerIndexInfo &indexes)
{
    char sortExp[SortExpressionRoom];
    const unsigned long length = keys.createSortExp(sortExp, sizeof sortExp);
    return createFile(boxFile, indexFile, appId, noCheck, items, sortExp, static_cast<int>(length), indexes);
}

} // namespace KyPDtm
