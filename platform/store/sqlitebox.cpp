#include "sqlitebox.h"

#include "filesystem.h"
#include "guarded.h"
#include "indexfamily.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <sys/stat.h>

namespace pdtm {

namespace {

/** A counter that no earlier session can have given out, not even one that ended without a commit. */
uint64_t sessionCounter()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return microseconds > 0 ? static_cast<uint64_t>(microseconds) : 1;
}

} // namespace

SqliteBox::SqliteBox(std::string path) : m_path(std::move(path)) {}

SqliteBox::~SqliteBox()
{
    m_database.close(isHeld());
}

PdtmStatus SqliteBox::open(const std::string &path, std::shared_ptr<SqliteBox> &box)
{
    std::shared_ptr<SqliteBox> made(new SqliteBox(path));
    if (const PdtmStatus status = made->m_database.open(path); status != PdtmOk)
        return status;
    if (const PdtmStatus status = made->load(); status != PdtmOk)
        return status;
    if (const auto file = fileIdentity(path)) {
        made->m_device = file->device;
        made->m_inode = file->inode;
    }
    made->m_scratch = &scratchCardsOf(path, made->m_state.birth);
    box = std::move(made);
    return PdtmOk;
}

PdtmStatus SqliteBox::load()
{
    if (const PdtmStatus status = m_database.readState(m_state); status != PdtmOk)
        return status;
    if (m_schemaCounter == m_state.counter)
        return PdtmOk;
    Schema schema;
    const PdtmStatus status = m_database.readSchema(schema);
    if (status == PdtmOk) {
        setSchema(std::move(schema));
        m_schemaCounter = m_state.counter;
    }
    return status;
}

void SqliteBox::setSchema(Schema schema)
{
    m_schema = std::move(schema);
    m_codes.fill({});
}

SqliteBox::FileLook SqliteBox::lookAt(const std::string &path)
{
    struct stat information;
    if (stat(path.c_str(), &information) != 0)
        return {};
    return {information.st_size, information.st_mtim.tv_sec, information.st_mtim.tv_nsec};
}

void SqliteBox::rest()
{
    m_restingBox = lookAt(m_path);
    m_restingLog = lookAt(m_path + "-wal");
}

bool SqliteBox::isUntouched() const
{
    return isSameFile(m_path) && lookAt(m_path) == m_restingBox && lookAt(m_path + "-wal") == m_restingLog;
}

bool SqliteBox::isSameFile(const std::string &realPath) const
{
    const auto file = fileIdentity(realPath);
    return file && file->device == m_device && file->inode == m_inode;
}

const ItemDescription *SqliteBox::item(const char *code)
{
    ItemCode wanted;
    std::memcpy(wanted.data(), code, wanted.size());
    uint32_t hash = 0;
    std::memcpy(&hash, code, sizeof hash);
    CodeSlot &slot = m_codes[(hash * 2654435761U) >> 24];
    if (!slot.item || slot.code != wanted)
        slot = {wanted, m_schema.find(code)};
    return slot.item;
}

uint64_t SqliteBox::changeCounter()
{
    if (isHeld())
        return m_state.counter;
    uint64_t counter = 0;
    const bool isRead = m_database.readCounter(counter) == PdtmOk;
    const bool isKnown = isRead && (counter == m_schemaCounter || reload() == PdtmOk);
    return isKnown ? counter : 0;
}

/** load() for callers that must not fail otherwise. */
PdtmStatus SqliteBox::reload()
{
    return guarded([this] { return load(); });
}

PdtmStatus SqliteBox::readCard(CardId card, RecordView &record)
{
    if (isScratchCard(card)) {
        const auto found = m_scratch->find(card);
        if (found == m_scratch->end())
            return PdtmNoSuchCard;
        record = RecordView(bytesOf(found->second));
        return PdtmOk;
    }
    if (isHeld())
        return readCachedCard(card, record);
    const PdtmStatus status = m_database.readCard(card, m_record);
    record = RecordView(bytesOf(m_record));
    return status;
}

PdtmStatus SqliteBox::readCachedCard(CardId card, RecordView &record)
{
    PdtmStatus status = m_cache.find(card, record);
    if (status != PdtmNone)
        return status;
    if (m_cache.countMiss()) {
        m_cache.load(m_database);
        status = m_cache.find(card, record);
        if (status != PdtmNone)
            return status;
    }
    status = m_database.readCard(card, m_record);
    if (status != PdtmOk)
        return status;
    m_cache.put(card, bytesOf(m_record));
    return m_cache.find(card, record);
}

bool SqliteBox::forEachCard(const std::function<bool(CardId, RecordView)> &visit)
{
    if (isHeld())
        m_cache.load(m_database);
    if (!isHeld() || !m_cache.isLoaded())
        return m_database.forEachCard(1, PdtmLastOrdinaryCard, visit) == PdtmOk;
    m_cache.forEach(visit);
    return true;
}

PdtmStatus SqliteBox::hold()
{
    if (m_database.isReadOnly())
        return PdtmReadOnly;
    if (const PdtmStatus status = m_lock.acquire(m_path); status != PdtmOk)
        return status;
    const PdtmStatus status = guarded([this] { return takeOver(); });
    if (status != PdtmOk)
        m_lock.release();
    return status;
}

/** Reads what the holder keeps in memory. */
PdtmStatus SqliteBox::takeOver()
{
    if (const PdtmStatus status = load(); status != PdtmOk)
        return status;
    m_storedScratch.clear();
    const auto keep = [this](CardId card, RecordView) {
        m_storedScratch.insert(card);
        return true;
    };
    const PdtmStatus status = m_database.forEachCard(PdtmFirstReservedCard, UINT16_MAX, keep);
    if (status != PdtmOk)
        return status;
    if (m_cacheCounter != m_state.counter)
        m_cache.clear();
    m_lastCounter = std::max({m_lastCounter, m_state.counter, sessionCounter()});
    m_memoryChanged = false;
    m_committed = false;
    return PdtmOk;
}

void SqliteBox::endActions()
{
    if (m_actionDepth > 0)
        abandonAction(0, PdtmIoError);
}

void SqliteBox::abandonAction(int depth, PdtmStatus reason)
{
    m_actionDepth = depth;
    // The roll-back itself comes first and needs no memory; indexes that aren't told notice by the counter.
    static_cast<void>(guarded([&] {
        undo(reason);
        return PdtmStatus(PdtmOk);
    }));
}

void SqliteBox::release(bool closing)
{
    // After a close the box file alone is whole, so that it can be copied and moved.
    if (m_committed && !closing && m_database.emptyLog() == PdtmOk)
        m_committed = false;
    flushMemory(m_committed || closing);
    m_cacheCounter = m_state.counter;
    m_schemaCounter = m_state.counter;
    if (closing)
        m_database.close(true);
    m_lock.release();
}

void SqliteBox::shutDown()
{
    if (!m_database.isOpen())
        return;
    m_database.rollback();
    const bool mayTidy =
        isHeld() || (!m_database.isReadOnly() && isSameFile(m_path) && m_lock.acquire(m_path) == PdtmOk);
    m_database.close(mayTidy);
    m_lock.release();
}

} // namespace pdtm
