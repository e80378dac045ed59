#include "environment.h"
#include "indexaccess.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

/** Operations that make, describe and fill indexes. */
namespace pdtm {

namespace {

constexpr int PlainKind = 17;
constexpr int CategoryKind = 18;
constexpr int CopyWithExpression = 2;

IndexRegistry &registry()
{
    return IndexRegistry::instance();
}

bool fileExists(const std::string &path)
{
    return access(path.c_str(), F_OK) == 0;
}

/** Canonical path for an index that is about to be made. */
PdtmStatus newPath(const char *path, std::string &canonical)
{
    const std::string real = realPathOfNew(path);
    if (real.empty() || isCompanionOfBox(real)) {
        return PdtmBadArgument;
    }
    canonical = indexPath(real);
    return fileExists(canonical) ? PdtmExists : PdtmOk;
}

PdtmStatus make(std::string path, IndexDefinition definition, IndexOrder order, uint64_t counter)
{
    auto index = std::make_unique<Index>(std::move(path));
    const PdtmStatus status = index->replace(std::move(definition), std::move(order), counter);
    if (status == PdtmOk) {
        registry().adopt(std::move(index));
    }
    return status;
}

std::string textOf(const void *bytes, size_t size)
{
    return size > 0 ? std::string(static_cast<const char *>(bytes), size) : std::string();
}

/** The place of an information block that may be missing; null for the name of the box and unknown ids. */
std::optional<std::string> *optionalInfo(IndexDefinition &definition, int id)
{
    switch (id) {
    case InfoSortExpression:
        return &definition.sortExpression;
    case InfoSearchExpression:
        return &definition.searchExpression;
    case InfoSubset:
        return &definition.subset;
    default:
        return nullptr;
    }
}

bool isInfoId(int id)
{
    return id == InfoBoxName || id == InfoSortExpression || id == InfoSearchExpression || id == InfoSubset;
}

/** An information block as it is read; nothing when it isn't there. */
std::optional<std::string> infoOf(IndexDefinition definition, int id)
{
    if (id == InfoBoxName) {
        return definition.boxName.empty() ? std::nullopt : std::optional(definition.boxName);
    }
    std::optional<std::string> info = *optionalInfo(definition, id);
    if (!info && id == InfoSortExpression && definition.filled) {
        return std::string();
    }
    return info;
}

PdtmStatus readInfo(const char *path, int id, void *buffer, uint16_t *size)
{
    const std::string real = path != nullptr ? realPath(path) : std::string();
    if (real.empty() || size == nullptr || (buffer == nullptr && *size > 0) || !isInfoId(id)) {
        return PdtmBadArgument;
    }
    // The file always has the definition of today, whichever process wrote it.
    IndexFileReader reader;
    const PdtmStatus status = reader.open(real);
    if (status != PdtmOk) {
        return status;
    }
    const std::optional<std::string> info = infoOf(reader.definition(), id);
    if (!info) {
        return PdtmNone;
    }
    const uint16_t room = *size;
    *size = static_cast<uint16_t>(info->size());
    if (info->size() > room) {
        return PdtmTooShort;
    }
    std::copy(info->begin(), info->end(), static_cast<char *>(buffer));
    return PdtmOk;
}

bool isWellFormed(int id, const std::string &info)
{
    switch (id) {
    case InfoBoxName:
        return info.size() > 1 && info.find('\0') == info.size() - 1 && info.find('/') == std::string::npos;
    case InfoSortExpression:
        return SortExpression::parse(bytesOf(info)).has_value();
    case InfoSearchExpression:
        return SearchExpression::parse(bytesOf(info)).has_value();
    default:
        return info == "\1";
    }
}

PdtmStatus writeInfo(const char *path, int id, const void *buffer, uint16_t length, bool checked)
{
    if (!isInfoId(id) || (buffer == nullptr && length > 0)) {
        return PdtmBadArgument;
    }
    if (length > (id == InfoBoxName ? MaximumNameInfo : size_t{PdtmInfoRoom})) {
        return PdtmTooShort;
    }
    const std::string info = textOf(buffer, length);
    if (checked && !isWellFormed(id, info)) {
        return PdtmBadArgument;
    }
    Index *index = nullptr;
    PdtmStatus status = registry().edit(path, index);
    if (status != PdtmOk) {
        return status;
    }
    IndexDefinition definition = index->definition();
    if (id == InfoBoxName) {
        definition.boxName = info;
    } else {
        *optionalInfo(definition, id) = info;
    }
    status = index->replaceDefinition(std::move(definition));
    if (status == PdtmOk && id == InfoBoxName) {
        registry().join(*index);
    }
    return status;
}

/** A database is never deleted as an index, and one that is in use not even looked at. */
bool isDatabase(const std::string &path)
{
    static constexpr char Magic[] = "SQLite format 3";
    if (isDatabaseInUse(path)) {
        return true;
    }
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return false;
    }
    char head[sizeof Magic] = {};
    const bool same = read(file, head, sizeof head) == sizeof head && memcmp(head, Magic, sizeof Magic) == 0;
    close(file);
    return same;
}

PdtmStatus deleteIndex(const char *path)
{
    const std::string real = path != nullptr ? realPath(path) : std::string();
    if (real.empty() || isCompanionOfBox(real) || isDatabase(real)) {
        return PdtmBadArgument;
    }
    const int error = unlink(real.c_str()) == 0 ? 0 : errno;
    if (error == 0 || error == ENOENT) {
        registry().forget(indexPath(real));
    }
    if (error == EISDIR) {
        return PdtmBadArgument;
    }
    return error == 0 ? PdtmStatus{PdtmOk} : statusOfWriteError(error);
}

PdtmStatus copyIndex(const char *source, const char *destination, const std::string &expression)
{
    std::string path;
    Index *original = nullptr;
    PdtmStatus status = newPath(destination, path);
    if (status == PdtmOk) {
        status = registry().edit(source, original);
    }
    if (status != PdtmOk) {
        return status;
    }
    if (!SortExpression::parse(bytesOf(expression))) {
        return PdtmBadArgument;
    }
    if (const auto box = BoxFile::ifOpen(directoryPart(original->path()) + original->definition().box())) {
        static_cast<void>(original->ensureKeys(*box));
    } else if (!original->order().hasKeys()) {
        static_cast<void>(original->loadKeys());
    }
    IndexDefinition definition = original->definition();
    definition.sortExpression = expression;
    return make(std::move(path), std::move(definition), original->order(), original->counter());
}

PdtmStatus resultOf(PdtmStatus written, const Index &index)
{
    return written == PdtmOk && index.order().count() == 0 ? PdtmStatus{PdtmNothingToSort} : written;
}

/** Orders the accepted cards of the box by the expression of the definition, and writes the index. */
PdtmStatus fill(Index &index, BoxFile &box, IndexDefinition definition, const Acceptance &accepts)
{
    const uint64_t counter = box.changeCounter();
    std::optional<IndexOrder> order = buildOrder(box, definition, accepts);
    if (!order) {
        return PdtmIoError;
    }
    const PdtmStatus written = index.replace(std::move(definition), std::move(*order), counter);
    return resultOf(written, index);
}

/** The index to be filled and its box. */
PdtmStatus indexAndBox(const char *path, uint32_t handle, Index *&index, std::shared_ptr<BoxFile> &box)
{
    const PdtmStatus status = registry().edit(path, index);
    return status == PdtmOk ? boxOf(handle, *index, box) : status;
}

/** Sets the order of the definition's own sort expression; false when that is malformed. */
bool orderAsDefined(IndexDefinition &definition)
{
    const std::string expression = definition.sortExpression.value_or(std::string());
    if (!SortExpression::parse(bytesOf(expression))) {
        return false;
    }
    setOrder(definition, expression);
    return true;
}

PdtmStatus sortIndex(const char *path, uint32_t handle)
{
    Index *index = nullptr;
    std::shared_ptr<BoxFile> box;
    const PdtmStatus status = indexAndBox(path, handle, index, box);
    if (status != PdtmOk) {
        return status;
    }
    IndexDefinition definition = index->definition();
    if (!orderAsDefined(definition)) {
        return PdtmBadArgument;
    }
    return fill(*index, *box, std::move(definition),
                [index](CardId card, RecordView) { return index->order().contains(card); });
}

/** Prepares the definition of a group or ungroup; false when an expression is malformed. */
bool prepare(IndexDefinition &definition, const BoxFile &box)
{
    if (!orderAsDefined(definition)) {
        return false;
    }
    definition.filled = true;
    if (definition.boxName.empty()) {
        definition.boxName = box.path().substr(directoryPart(box.path()).size()) + '\0';
    }
    return true;
}

PdtmStatus fillAndJoin(Index &index, BoxFile &box, IndexDefinition definition, const Acceptance &accepts)
{
    const PdtmStatus status = fill(index, box, std::move(definition), accepts);
    registry().join(index);
    return status;
}

PdtmStatus ungroup(const char *path, uint32_t handle)
{
    Index *index = nullptr;
    std::shared_ptr<BoxFile> box;
    const PdtmStatus status = indexAndBox(path, handle, index, box);
    if (status != PdtmOk) {
        return status;
    }
    IndexDefinition definition = index->definition();
    definition.condition.clear();
    if (!prepare(definition, *box)) {
        return PdtmGroupFailed;
    }
    return fillAndJoin(*index, *box, std::move(definition), [](CardId, RecordView) { return true; });
}

/** Gives the definition its parent's condition and its own, and a sort expression if it has none. */
std::optional<SearchExpression> inherit(IndexDefinition &definition, const IndexDefinition &parent)
{
    const std::string own = definition.searchExpression.value_or(std::string());
    std::optional<SearchExpression> term = SearchExpression::parse(bytesOf(own));
    definition.condition = parent.condition;
    if (term && !term->isEmpty()) {
        definition.condition.push_back(own);
    }
    if (definition.sortExpression.value_or(std::string()).empty()) {
        definition.sortExpression = parent.sortExpression;
    }
    return term;
}

PdtmStatus group(const char *parentPath, const char *path, uint32_t handle)
{
    Index *parent = nullptr;
    Index *index = nullptr;
    std::shared_ptr<BoxFile> box;
    const PdtmStatus status = indexAndBox(path, handle, index, box);
    if (status != PdtmOk) {
        return status;
    }
    std::shared_ptr<BoxFile> parentBox;
    if (registry().edit(parentPath, parent) != PdtmOk || boxOf(handle, *parent, parentBox) != PdtmOk) {
        return PdtmGroupFailed;
    }
    IndexDefinition definition = index->definition();
    const std::optional<SearchExpression> term = inherit(definition, parent->definition());
    if (!term || !prepare(definition, *box)) {
        return PdtmGroupFailed;
    }
    const Schema &schema = box->schema();
    return fillAndJoin(*index, *box, std::move(definition), [&](CardId card, RecordView record) {
        return parent->order().contains(card) && term->matches(schema, record);
    });
}

PdtmStatus indexName(const char *boxPath, uint32_t ordinal, char *path, uint32_t room, uint32_t *permanent)
{
    if (boxPath == nullptr || path == nullptr || ordinal == 0) {
        return PdtmBadArgument;
    }
    const std::string real = realPath(boxPath);
    if (real.empty()) {
        return PdtmBadArgument;
    }
    const std::string folder = directoryPart(real);
    const std::vector<std::string> names = familyNames(folder, real.substr(folder.size()));
    if (ordinal > names.size()) {
        return PdtmNone;
    }
    const std::string &name = names[ordinal - 1];
    const std::string result = directoryPart(boxPath) + name;
    if (result.size() + 1 > room) {
        return PdtmTooShort;
    }
    memcpy(path, result.c_str(), result.size() + 1);
    if (permanent != nullptr) {
        *permanent = isPermanentName(name) ? 1 : 0;
    }
    return PdtmOk;
}

} // namespace

} // namespace pdtm

using namespace pdtm;

PdtmStatus _GetIndexName(const char *boxPath, uint32_t ordinal, char *path, uint32_t room,
                         uint32_t *permanent)
{
    return guarded([&] { return indexName(boxPath, ordinal, path, room, permanent); });
}

PdtmStatus _IndexCreate(const char *path, int kind)
{
    return guarded([&]() -> PdtmStatus {
        if (kind != PlainKind && kind != CategoryKind) {
            return PdtmBadArgument;
        }
        std::string canonical;
        const PdtmStatus status = newPath(path, canonical);
        if (status != PdtmOk) {
            return status;
        }
        IndexDefinition definition;
        definition.kind = static_cast<uint8_t>(kind);
        definition.language = language();
        return make(std::move(canonical), std::move(definition), IndexOrder(), 0);
    });
}

PdtmStatus _IndexDelete(const char *path)
{
    return guarded([&] { return deleteIndex(path); });
}

PdtmStatus _IndexCopy(const char *source, const char *destination, int kind, const void *sortExpression,
                      int length)
{
    return guarded([&]() -> PdtmStatus {
        if (kind != CopyWithExpression || length < 0 || (sortExpression == nullptr && length > 0)) {
            return PdtmBadArgument;
        }
        if (length > PdtmInfoRoom) {
            return PdtmTooShort;
        }
        return copyIndex(source, destination, textOf(sortExpression, static_cast<size_t>(length)));
    });
}

PdtmStatus _IndexInfoRead(const char *path, int id, void *buffer, uint16_t *size)
{
    return guarded([&] { return readInfo(path, id, buffer, size); });
}

PdtmStatus _IndexInfoWrite(const char *path, int id, const void *buffer, uint16_t length)
{
    return guarded([&] { return writeInfo(path, id, buffer, length, false); });
}

PdtmStatus _IndexInfoWriteWithCheck(const char *path, int id, const void *buffer, uint16_t length)
{
    return guarded([&] { return writeInfo(path, id, buffer, length, true); });
}

PdtmStatus _IndexSort(const char *path, uint32_t handle)
{
    return guarded([&] { return sortIndex(path, handle); });
}

PdtmStatus _IndexGroup(const char *parent, const char *path, uint32_t handle)
{
    return guarded([&] { return group(parent, path, handle); });
}

PdtmStatus _IndexUnGroup(const char *path, uint32_t handle)
{
    return guarded([&] { return ungroup(path, handle); });
}
