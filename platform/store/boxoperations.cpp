// The operations on boxes, of the C interface.
#include "boxregistry.h"
#include "environment.h"
#include "filesystem.h"
#include "guarded.h"
#include "indexfamily.h"
#include "indexfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/random.h>
#include <unistd.h>

using namespace pdtm;
using namespace std::string_view_literals;

namespace {

constexpr uint8_t HighestMode = 1;
constexpr int ThoroughLevel = 255;
constexpr size_t LongestLabel = 37;
constexpr std::string_view SqliteMagic = "SQLite format 3\0"sv;
constexpr const char *BoxCompanions[] = {"-wal", "-shm", "-journal"};

PdtmStatus removeFile(const std::string &path)
{
    return unlink(path.c_str()) == 0 ? PdtmStatus(PdtmOk) : statusOfError(errno);
}

/** What an earlier box of the name may have left: a write-ahead file would be taken for the new box's. */
void removeCompanions(const std::string &path)
{
    for (const char *ending : BoxCompanions)
        unlink((path + ending).c_str());
}

BoxState newBoxState(uint32_t applicationId)
{
    BoxState state;
    state.applicationId = applicationId;
    state.syncId = 1;
    state.language = language();
    if (getrandom(&state.birth, sizeof state.birth, GRND_NONBLOCK) != sizeof state.birth)
        state.birth = getpid();
    return state;
}

/** Writes NAME.new and gives it its name when it is whole. */
PdtmStatus makeBox(const std::string &path, uint32_t applicationId)
{
    const std::string unfinished = path + ".new";
    unlink(unfinished.c_str());
    removeCompanions(unfinished);
    PdtmStatus status = BoxDatabase::create(unfinished, newBoxState(applicationId));
    if (status == PdtmOk) {
        removeCompanions(path);
        status = renameToNew(unfinished, path);
    }
    if (status != PdtmOk) {
        unlink(unfinished.c_str());
        removeCompanions(unfinished);
        return status;
    }
    return synchroniseFolder(folderOf(path));
}

ItemDescription describe(const ITEMDATA &data)
{
    ItemDescription item;
    item.type = data.type;
    item.kind = data.kind;
    std::memcpy(item.code.data(), data.code, item.code.size());
    item.label.assign(data.label, strnlen(data.label, LongestLabel));
    return item;
}

/** The items of an array that a schema lacks, with their storage numbers. */
PdtmStatus missingItems(const Schema &schema, const ITEMDATA *items, int count,
                        std::vector<ItemDescription> &missing)
{
    Schema grown = schema;
    for (int i = 0; i < count; ++i) {
        ItemDescription item = describe(items[i]);
        if (!isKnownItemType(item.type))
            return PdtmBadArgument;
        if (grown.find(item.code.data()))
            continue;
        item.storage = static_cast<StorageId>(grown.declaredCount() + 1);
        if (grown.declaredCount() >= MaximumDeclaredItems || !grown.add(item))
            return PdtmTooShort;
        missing.push_back(item);
    }
    return PdtmOk;
}

/** Runs something that needs the lock of a box which nobody has in mode 0. */
template <typename Work> PdtmStatus whileHeld(const BorrowedBox &box, Work work)
{
    if (const PdtmStatus status = box->hold(); status != PdtmOk)
        return status;
    const PdtmStatus status = guarded(work);
    BoxRegistry::instance().release(*box);
    return status;
}

/** A file that begins as SQLite's do. It is read only when this process has no box open there: closing the
 * descriptor would drop SQLite's locks. */
bool looksLikeBox(const std::string &path)
{
    if (BoxFile::ifOpen(path))
        return true;
    BoxRegistry::instance().forget(path);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char magic[SqliteMagic.size()] = {};
    const bool isRead = file >= 0 && read(file, magic, sizeof magic) == static_cast<ssize_t>(sizeof magic);
    if (file >= 0)
        close(file);
    return isRead && std::string_view(magic, sizeof magic) == SqliteMagic;
}

/** A box that can't be read for another reason than these is no box for its user. */
PdtmStatus fileTestStatus(PdtmStatus status)
{
    const bool isListed = status == PdtmOk || status == PdtmMissing || status == PdtmTooShort;
    return isListed ? status : PdtmStatus(PdtmDamaged);
}

/** Locks the box for being made or removed. */
PdtmStatus lockFolderEntry(BoxLock &lock, const std::string &real)
{
    return canWriteFolder(real) ? lock.acquire(real) : PdtmStatus(PdtmReadOnly);
}

PdtmStatus createBox(const char *path, uint32_t applicationId)
{
    const std::string real = realPathOfNew(path);
    if (real.empty())
        return PdtmBadArgument;
    if (fileIdentity(real))
        return PdtmExists;
    if (!fileIdentity(folderOf(real)))
        return PdtmMissing;
    BoxLock lock;
    if (const PdtmStatus status = lockFolderEntry(lock, real); status != PdtmOk)
        return status;
    const PdtmStatus status = fileIdentity(real) ? PdtmStatus(PdtmExists) : makeBox(real, applicationId);
    if (status == PdtmOk)
        family::boxDeleted(canonicalPath(real));
    return status;
}

PdtmStatus deleteBox(const char *path)
{
    const std::string real = canonicalPath(realPath(path));
    if (real.empty())
        return PdtmBadArgument;
    if (!fileIdentity(real))
        return PdtmMissing;
    BoxLock lock;
    if (const PdtmStatus status = lockFolderEntry(lock, real); status != PdtmOk)
        return status;
    BoxRegistry::instance().forget(real);
    const PdtmStatus status = removeFile(real);
    if (status == PdtmOk) {
        BoxRegistry::instance().markDeleted(real);
        removeCompanions(real);
        family::boxDeleted(real);
    }
    return status;
}

PdtmStatus collectGarbage(const char *path)
{
    const std::string real = realPath(path);
    if (real.empty())
        return PdtmBadArgument;
    const BorrowedBox box(real);
    if (box.status() != PdtmOk)
        return box.status();
    return whileHeld(box, [&] { return box->database().collectGarbage(); });
}

PdtmStatus readGarbageSize(const char *path, uint32_t *size)
{
    const std::string real = realPath(path);
    if (real.empty() || !size)
        return PdtmBadArgument;
    const BorrowedBox box(real);
    if (box.status() != PdtmOk)
        return box.status();
    uint64_t bytes = 0;
    const PdtmStatus status = box->garbageSize(bytes);
    if (status == PdtmOk)
        *size = static_cast<uint32_t>(std::min<uint64_t>(bytes, UINT32_MAX));
    return status;
}

PdtmStatus appendItems(const char *path, const ITEMDATA *items, int count, uint32_t *added)
{
    const std::string real = realPath(path);
    if (real.empty() || count < 0 || (count > 0 && !items))
        return PdtmBadArgument;
    if (added)
        *added = 0;
    const BorrowedBox box(real);
    if (box.status() != PdtmOk)
        return box.status();
    std::vector<ItemDescription> missing;
    if (const PdtmStatus status = missingItems(box->schema(), items, count, missing); status != PdtmOk)
        return status;
    if (missing.empty())
        return PdtmOk;
    const PdtmStatus status = whileHeld(box, [&] {
        missing.clear(); // another process may have added some meanwhile
        const PdtmStatus found = missingItems(box->schema(), items, count, missing);
        return found == PdtmOk && !missing.empty() ? box->addItems(missing) : found;
    });
    if (status == PdtmOk && added)
        *added = missing.empty() ? 0 : 1;
    return status;
}

PdtmStatus readItemDescription(uint32_t handle, const char *code, void *buffer, uint16_t *size)
{
    const OpenHandle *open = BoxRegistry::instance().find(handle);
    if (!open || !code || !buffer || !size)
        return PdtmBadArgument;
    if (*size < sizeof(ITEMDATA))
        return PdtmTooShort;
    if (const PdtmStatus status = open->box->refresh(); status != PdtmOk)
        return status;
    const ItemDescription *item = open->box->item(code);
    if (!item)
        return PdtmNoSuchItem;
    ITEMDATA data{};
    data.type = item->type;
    data.kind = item->kind;
    std::memcpy(data.code, item->code.data(), sizeof data.code);
    item->label.copy(data.label, LongestLabel);
    std::memcpy(buffer, &data, sizeof data);
    *size = sizeof data;
    return PdtmOk;
}

PdtmStatus checkApplication(const char *path, uint32_t applicationId)
{
    const std::string real = realPath(path);
    if (real.empty())
        return PdtmBadArgument;
    const BorrowedBox box(real);
    if (box.status() != PdtmOk)
        return fileTestStatus(box.status());
    return box->state().applicationId == applicationId ? PdtmOk : PdtmWrongApplication;
}

PdtmStatus checkFile(const char *path, int level)
{
    const std::string real = realPath(path);
    if (real.empty())
        return PdtmBadArgument;
    if (!fileIdentity(real))
        return PdtmMissing;
    if (!looksLikeBox(real))
        return checkIndexFile(real);
    const BorrowedBox box(real);
    if (box.status() != PdtmOk)
        return fileTestStatus(box.status());
    if (box->state().language != language())
        return PdtmOtherLanguage;
    return level == ThoroughLevel ? fileTestStatus(box->database().checkThoroughly()) : PdtmStatus(PdtmOk);
}

uint32_t openBox(const char *path, OpenMode mode)
{
    uint32_t handle = 0;
    const PdtmStatus status = guarded([&]() -> PdtmStatus {
        const std::string real = realPath(path);
        return real.empty() ? PdtmStatus(PdtmBadArgument) : BoxRegistry::instance().open(real, mode, handle);
    });
    return status == PdtmOk ? handle : 0;
}

} // namespace

PdtmStatus _BoxCreate(const char *path, uint32_t applicationId)
{
    return guarded([&] { return createBox(path, applicationId); });
}

PdtmStatus _BoxDelete(const char *path)
{
    return guarded([&] { return deleteBox(path); });
}

uint32_t _BoxOpen(const char *path)
{
    return openBox(path, OpenMode::Brief);
}

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    return mode <= HighestMode ? openBox(path, static_cast<OpenMode>(mode)) : 0;
}

PdtmStatus _BoxClose(uint32_t handle)
{
    return guarded([&] { return BoxRegistry::instance().close(handle); });
}

PdtmStatus _BoxCloseEx(uint32_t handle, int)
{
    return guarded([&] { return BoxRegistry::instance().close(handle); });
}

PdtmStatus _BoxGarbageCollect(const char *path)
{
    return guarded([&] { return collectGarbage(path); });
}

PdtmStatus _GetBoxGarbageSize(const char *path, uint32_t *size)
{
    return guarded([&] { return readGarbageSize(path, size); });
}

PdtmStatus _BoxItemAppend(const char *path, const ITEMDATA *items, int count, uint32_t *added)
{
    return guarded([&] { return appendItems(path, items, count, added); });
}

PdtmStatus _BoxItemReadHeap(uint32_t handle, const char *code, void *buffer, uint16_t *size)
{
    return guarded([&] { return readItemDescription(handle, code, buffer, size); });
}

PdtmStatus _DTMFileCheckAppliID(const char *path, int, uint32_t applicationId)
{
    return guarded([&] { return checkApplication(path, applicationId); });
}

PdtmStatus _DTMFileCheckLevel(const char *path, int level)
{
    return guarded([&] { return checkFile(path, level); });
}

PdtmStatus CheckFINFO(void)
{
    return language().empty() ? PdtmDamaged : PdtmOk;
}

int DtmIsEnoughStorageForOperation(uint32_t handle, int)
{
    const OpenHandle *open = BoxRegistry::instance().find(handle);
    uint64_t needed = 0;
    if (!open || open->box->database().bulkChangeSize(needed) != PdtmOk)
        return 0;
    return freeSpace(open->box->path()) >= needed ? 1 : 0;
}
