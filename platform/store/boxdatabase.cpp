#include "boxdatabase.h"

#include "filesystem.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <unistd.h>
#include <vector>

namespace pdtm {

namespace {

constexpr int64_t ApplicationMagic = 0x50445442; // "PDTB"
constexpr int64_t FormatVersion = 1;
constexpr int BusyMilliseconds = 100; // SQLite's own short locks: recovery, the end of a connection
constexpr uint64_t LeastFreeSpace = 64 << 10;
constexpr int64_t LargestCounter = INT64_MAX / 2; // it has to rise
constexpr int64_t SmallestFile = 512;
constexpr uint64_t FrameHeaderSize = 24;

struct TableDefinition
{
    std::string_view name;
    const char *sql;
};

constexpr TableDefinition Tables[] = {
    {"box", "CREATE TABLE box(application_id INTEGER NOT NULL, sync_id INTEGER NOT NULL, "
            "language TEXT NOT NULL, next_card INTEGER NOT NULL, counter INTEGER NOT NULL, "
            "birth INTEGER NOT NULL)"},
    {"items", "CREATE TABLE items(storage INTEGER PRIMARY KEY, code TEXT NOT NULL, type INTEGER NOT NULL, "
              "kind INTEGER NOT NULL, label TEXT NOT NULL)"},
    {"cards", "CREATE TABLE cards(id INTEGER PRIMARY KEY, data BLOB NOT NULL)"},
};

// The pages of a box of some thousand cards stay in memory, so that what was read once is changed without
// reading it again. An action keeps the pages that it changes in memory up to 64 MB, so that each is written
// once. (The number is one of pages; a multiple of 256 would mean no limit.)
constexpr const char *ConnectionSettings = "PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON; "
                                           "PRAGMA synchronous=FULL; PRAGMA journal_size_limit=8388608; "
                                           "PRAGMA cache_size=-8192; PRAGMA cache_spill=16383";

bool isFirstOf(Statement &statement, sqlite3 *connection)
{
    return statement.on(connection).step() == SQLITE_ROW;
}

/** A file name as part of a `file:` URI. */
std::string asUri(const std::string &path)
{
    constexpr char Digits[] = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) || character == '/' || character == '.' || character == '-') {
            uri += character;
        } else {
            uri += {'%', Digits[byte >> 4], Digits[byte & 15]};
        }
    }
    return uri;
}

std::string temporaryFolder()
{
    const char *place = std::getenv("TMPDIR");
    std::string folder = std::string(place && *place ? place : "/tmp") + "/pdtm.XXXXXX";
    return mkdtemp(folder.data()) ? folder : std::string();
}

} // namespace

struct BoxDatabase::Statements
{
    Statement begin{"BEGIN IMMEDIATE"};
    Statement commit{"COMMIT"};
    Statement readCounter{"SELECT counter FROM box WHERE rowid = 1"};
    Statement readState{
        "SELECT application_id, sync_id, next_card, counter, language, birth FROM box WHERE rowid = 1"};
    Statement writeState{"UPDATE box SET sync_id = ?, next_card = ?, counter = ? WHERE rowid = 1"};
    Statement readCard{"SELECT data FROM cards WHERE id = ?"};
    Statement writeCard{"REPLACE INTO cards(id, data) VALUES(?, ?)"};
    Statement deleteCard{"DELETE FROM cards WHERE id = ?"};
    Statement cardIds{"SELECT id FROM cards WHERE id BETWEEN ? AND ? ORDER BY id"};
    Statement freePages{"PRAGMA freelist_count"};
    Statement pages{"PRAGMA page_count"};
    Statement pageSize{"PRAGMA page_size"};
};

BoxDatabase::BoxDatabase() = default;

BoxDatabase::~BoxDatabase()
{
    close(false);
}

PdtmStatus BoxDatabase::statusOf(int result) const
{
    switch (result & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return PdtmOk;
    case SQLITE_FULL:
        return PdtmOutOfSpace;
    case SQLITE_NOMEM:
    case SQLITE_TOOBIG:
        return PdtmTooShort;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return PdtmBusy;
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return PdtmReadOnly;
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
        // SQLite tells a full volume from another failure only where it writes the log itself.
        return freeSpace(folderOf(m_path)) < LeastFreeSpace ? PdtmOutOfSpace : PdtmIoError;
    default: // SQLITE_CORRUPT, SQLITE_NOTADB; the statements are fixed, so any other comes from a damaged
             // file
        return PdtmDamaged;
    }
}

PdtmStatus BoxDatabase::run(Statement &statement)
{
    int result = SQLITE_ROW;
    while (result == SQLITE_ROW)
        result = statement.step();
    const PdtmStatus status = statusOf(result);
    statement.reset();
    return status;
}

PdtmStatus BoxDatabase::execute(const char *sql)
{
    return statusOf(sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr));
}

PdtmStatus BoxDatabase::openConnection(const std::string &uri, int flags)
{
    const int result =
        sqlite3_open_v2(uri.c_str(), &m_connection,
                        flags | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE, nullptr);
    if (!m_connection)
        return PdtmTooShort;
    sqlite3_extended_result_codes(m_connection, 1);
    sqlite3_busy_timeout(m_connection, BusyMilliseconds);
    sqlite3_limit(m_connection, SQLITE_LIMIT_LENGTH, LargestRow);
    sqlite3_limit(m_connection, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    m_statements = std::make_unique<Statements>();
    return result == SQLITE_OK ? execute(ConnectionSettings) : statusOf(result);
}

void BoxDatabase::close(bool tidy)
{
    if (!m_connection)
        return;
    m_statements.reset();
    // SQLite removes the write-ahead file by its name: that is ours only while the box still stands under
    // its.
    const auto file = fileIdentity(m_path);
    const bool isOurs = file && file->device == m_device && file->inode == m_inode;
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, tidy && isOurs && !m_readOnly ? 0 : 1,
                      nullptr);
    sqlite3_close_v2(m_connection);
    m_connection = nullptr;
    m_readOnly = false;
}

void BoxDatabase::abandon()
{
    static_cast<void>(m_statements.release());
    m_connection = nullptr;
}

PdtmStatus BoxDatabase::create(const std::string &path, const BoxState &state)
{
    BoxDatabase box;
    box.m_path = path;
    PdtmStatus status = box.openConnection(asUri(path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (status == PdtmOk)
        status =
            box.execute("PRAGMA page_size=4096; PRAGMA encoding='UTF-8'; PRAGMA auto_vacuum=INCREMENTAL; "
                        "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; BEGIN IMMEDIATE");
    for (const TableDefinition &table : Tables) {
        if (status == PdtmOk)
            status = box.execute(table.sql);
    }
    const std::string identity = "PRAGMA application_id=" + std::to_string(ApplicationMagic) +
                                 "; PRAGMA user_version=" + std::to_string(FormatVersion);
    if (status == PdtmOk)
        status = box.execute(identity.c_str());
    if (status == PdtmOk) {
        Statement insert(
            "INSERT INTO box(rowid, application_id, sync_id, next_card, counter, language, birth) "
            "VALUES(1, ?, ?, ?, ?, ?, ?)");
        insert.on(box.m_connection)
            .bind(1, state.applicationId)
            .bind(2, state.syncId)
            .bind(3, state.nextCard);
        status = box.run(
            insert.bind(4, static_cast<int64_t>(state.counter)).bind(5, state.language).bind(6, state.birth));
    }
    if (status == PdtmOk)
        status = box.execute("COMMIT; PRAGMA journal_mode=WAL");
    if (const auto file = fileIdentity(path)) {
        box.m_device = file->device;
        box.m_inode = file->inode;
    }
    box.close(true);
    return status == PdtmOk ? synchroniseFile(path) : status;
}

PdtmStatus BoxDatabase::open(const std::string &path)
{
    const auto file = fileIdentity(path);
    if (!file)
        return PdtmMissing;
    if (!file->isRegular || file->size < SmallestFile)
        return PdtmDamaged;
    m_path = path;
    m_device = file->device;
    m_inode = file->inode;
    PdtmStatus status =
        canWriteFolder(path) && access(path.c_str(), W_OK) == 0 ? connect(path) : connectReadOnly(path);
    if (status == PdtmOk)
        status = verify();
    if (status != PdtmOk)
        close(false);
    return status;
}

PdtmStatus BoxDatabase::connect(const std::string &path)
{
    m_readOnly = false;
    return openConnection(asUri(path), SQLITE_OPEN_READWRITE);
}

PdtmStatus BoxDatabase::connectReadOnly(const std::string &path)
{
    const auto log = fileIdentity(path + "-wal");
    const PdtmStatus status = log && log->size > 0
                                  ? connectToCopy(path)
                                  : openConnection(asUri(path) + "?immutable=1", SQLITE_OPEN_READONLY);
    m_readOnly = true;
    return status;
}

PdtmStatus BoxDatabase::connectToCopy(const std::string &path)
{
    const std::string folder = temporaryFolder();
    if (folder.empty())
        return PdtmIoError;
    const std::string copy = folder + "/box";
    PdtmStatus status = copyFile(path, copy);
    if (status == PdtmOk)
        status = copyFile(path + "-wal", copy + "-wal");
    if (status == PdtmOk)
        status = openConnection(asUri(copy), SQLITE_OPEN_READWRITE);
    uint64_t counter = 0;
    if (status == PdtmOk)
        status = readCounter(counter); // opens the other files before their names go
    for (const char *ending : {"", "-wal", "-shm"})
        unlink((copy + ending).c_str());
    rmdir(folder.c_str());
    return status;
}

PdtmStatus BoxDatabase::readNumber(const char *pragma, uint64_t &number)
{
    Statement statement(pragma);
    const int result = statement.on(m_connection).step();
    if (result == SQLITE_ROW)
        number = static_cast<uint64_t>(statement.number(0));
    return result == SQLITE_DONE ? PdtmStatus(PdtmDamaged) : statusOf(result);
}

PdtmStatus BoxDatabase::verify()
{
    constexpr std::pair<const char *, uint64_t> Expected[] = {
        {"PRAGMA application_id", ApplicationMagic},
        {"PRAGMA user_version", FormatVersion},
        {"PRAGMA auto_vacuum", 2},
    };
    for (const auto &[pragma, expected] : Expected) {
        uint64_t number = 0;
        if (const PdtmStatus status = readNumber(pragma, number); status != PdtmOk)
            return status;
        if (number != expected)
            return PdtmDamaged;
    }
    if (const PdtmStatus status = verifyFile(); status != PdtmOk)
        return status;
    if (const PdtmStatus status = verifyTables(); status != PdtmOk)
        return status;
    BoxState state;
    if (const PdtmStatus status = readState(state); status != PdtmOk)
        return status;
    Schema schema;
    return readSchema(schema);
}

PdtmStatus BoxDatabase::verifyFile()
{
    uint64_t pages = 0;
    uint64_t pageSize = 0;
    uint64_t freePages = 0;
    if (readNumber("PRAGMA page_count", pages) || readNumber("PRAGMA page_size", pageSize) ||
        readNumber("PRAGMA freelist_count", freePages) || freePages >= pages)
        return PdtmDamaged;
    if (m_readOnly)
        return PdtmOk;
    Statement journalMode("PRAGMA journal_mode");
    if (!isFirstOf(journalMode, m_connection) || journalMode.text(0) != "wal" ||
        sqlite3_db_readonly(m_connection, "main") != 0)
        return PdtmDamaged;
    const auto file = fileIdentity(m_path);
    const auto log = fileIdentity(m_path + "-wal");
    const bool isLogEmpty = !log || log->size == 0;
    return isLogEmpty && file && static_cast<uint64_t>(file->size) < pages * pageSize ? PdtmDamaged : PdtmOk;
}

PdtmStatus BoxDatabase::verifyTables()
{
    Statement statement("SELECT name, sql FROM sqlite_schema "
                        "WHERE NOT (type = 'table' AND name LIKE 'sqlite!_stat%' ESCAPE '!')");
    statement.on(m_connection);
    size_t found = 0;
    int result = SQLITE_OK;
    while ((result = statement.step()) == SQLITE_ROW) {
        const std::string_view name = statement.text(0);
        const std::string_view sql = statement.text(1);
        if (std::ranges::none_of(Tables,
                                 [&](const auto &table) { return table.name == name && table.sql == sql; }))
            return PdtmDamaged;
        ++found;
    }
    return result == SQLITE_DONE && found != std::size(Tables) ? PdtmStatus(PdtmDamaged) : statusOf(result);
}

PdtmStatus BoxDatabase::readCounter(uint64_t &counter)
{
    Statement &statement = m_statements->readCounter.on(m_connection);
    const ResetAtEnd reset(statement);
    const int result = statement.step();
    if (result == SQLITE_ROW)
        counter = static_cast<uint64_t>(statement.number(0));
    return result == SQLITE_DONE ? PdtmStatus(PdtmDamaged) : statusOf(result);
}

PdtmStatus BoxDatabase::readState(BoxState &state)
{
    Statement &statement = m_statements->readState.on(m_connection);
    const ResetAtEnd reset(statement);
    const int result = statement.step();
    if (result != SQLITE_ROW)
        return result == SQLITE_DONE ? PdtmStatus(PdtmDamaged) : statusOf(result);
    const int64_t nextCard = statement.number(2);
    const int64_t counter = statement.number(3);
    if (nextCard < 1 || nextCard > PdtmFirstReservedCard || counter < 1 || counter > LargestCounter)
        return PdtmDamaged;
    state.applicationId = static_cast<uint32_t>(statement.number(0));
    state.syncId = static_cast<uint32_t>(statement.number(1));
    state.nextCard = static_cast<uint32_t>(nextCard);
    state.counter = static_cast<uint64_t>(counter);
    state.language = statement.text(4);
    state.birth = statement.number(5);
    return PdtmOk;
}

PdtmStatus BoxDatabase::writeState(const BoxState &state)
{
    Statement &statement = m_statements->writeState.on(m_connection);
    statement.bind(1, state.syncId).bind(2, state.nextCard).bind(3, static_cast<int64_t>(state.counter));
    return run(statement);
}

PdtmStatus BoxDatabase::readSchema(Schema &schema)
{
    Statement statement("SELECT storage, code, type, kind, label FROM items ORDER BY storage");
    statement.on(m_connection);
    int result = SQLITE_OK;
    while ((result = statement.step()) == SQLITE_ROW) {
        const std::string_view code = statement.text(1);
        ItemDescription item;
        item.storage = static_cast<StorageId>(schema.declaredCount() + 1);
        item.type = static_cast<uint8_t>(statement.number(2));
        item.kind = static_cast<uint8_t>(statement.number(3));
        item.label = statement.text(4);
        if (code.size() != item.code.size() || statement.number(0) != item.storage)
            return PdtmDamaged;
        std::ranges::copy(code, item.code.begin());
        if (!schema.add(item))
            return PdtmDamaged;
    }
    return statusOf(result);
}

PdtmStatus BoxDatabase::addItem(const ItemDescription &item)
{
    Statement statement("INSERT INTO items(storage, code, type, kind, label) VALUES(?, ?, ?, ?, ?)");
    statement.on(m_connection).bind(1, item.storage);
    statement.bind(2, std::string_view(item.code.data(), item.code.size()));
    statement.bind(3, item.type).bind(4, item.kind).bind(5, item.label);
    return run(statement);
}

PdtmStatus BoxDatabase::readCard(CardId card, std::string &packed)
{
    Statement &statement = m_statements->readCard.on(m_connection).bind(1, card);
    const ResetAtEnd reset(statement);
    const int result = statement.step();
    if (result == SQLITE_DONE)
        return PdtmNoSuchCard;
    if (result != SQLITE_ROW)
        return statusOf(result);
    const Bytes data = statement.bytes(0);
    packed.assign(reinterpret_cast<const char *>(data.data()), data.size());
    return PdtmOk;
}

PdtmStatus BoxDatabase::writeCard(CardId card, Bytes packed)
{
    return run(m_statements->writeCard.on(m_connection).bind(1, card).bind(2, packed));
}

PdtmStatus BoxDatabase::deleteCard(CardId card)
{
    return run(m_statements->deleteCard.on(m_connection).bind(1, card));
}

PdtmStatus BoxDatabase::forEachCard(CardId first, CardId last,
                                    const std::function<bool(CardId, RecordView)> &visit)
{
    Statement statement("SELECT id, data FROM cards WHERE id BETWEEN ? AND ? ORDER BY id");
    statement.on(m_connection).bind(1, first).bind(2, last);
    int64_t previous = int64_t(first) - 1;
    int result = SQLITE_OK;
    while ((result = statement.step()) == SQLITE_ROW) {
        const int64_t card = statement.number(0);
        if (card <= previous || card > last)
            return PdtmDamaged;
        previous = card;
        if (!visit(static_cast<CardId>(card), RecordView(statement.bytes(1))))
            return PdtmOk;
    }
    return statusOf(result);
}

PdtmStatus BoxDatabase::firstFreeCard(CardId first, CardId last, CardId &card)
{
    Statement &statement = m_statements->cardIds.on(m_connection).bind(1, first).bind(2, last);
    const ResetAtEnd reset(statement);
    int64_t candidate = first;
    int result = SQLITE_OK;
    while ((result = statement.step()) == SQLITE_ROW && statement.number(0) == candidate)
        ++candidate;
    if (const PdtmStatus status = statusOf(result); status != PdtmOk)
        return status;
    if (candidate > last)
        return PdtmOutOfSpace;
    card = static_cast<CardId>(candidate);
    return PdtmOk;
}

uint64_t BoxDatabase::fileSize()
{
    uint64_t pages = 0;
    uint64_t pageSize = 0;
    const bool isRead = !readNumber("PRAGMA page_count", pages) && !readNumber("PRAGMA page_size", pageSize);
    return isRead ? pages * pageSize : UINT64_MAX;
}

PdtmStatus BoxDatabase::begin()
{
    return run(m_statements->begin.on(m_connection));
}

PdtmStatus BoxDatabase::commit()
{
    return run(m_statements->commit.on(m_connection));
}

void BoxDatabase::rollback()
{
    if (!sqlite3_get_autocommit(m_connection))
        sqlite3_exec(m_connection, "ROLLBACK", nullptr, nullptr, nullptr);
}

void BoxDatabase::setSynchronised(bool synchronised)
{
    // A checkpoint without synchronisation could harm the box; there is none then.
    const char *setting = synchronised ? "PRAGMA synchronous=FULL; PRAGMA wal_autocheckpoint=1000"
                                       : "PRAGMA synchronous=OFF; PRAGMA wal_autocheckpoint=0";
    sqlite3_exec(m_connection, setting, nullptr, nullptr, nullptr);
}

PdtmStatus BoxDatabase::garbageSize(uint64_t &bytes)
{
    uint64_t factor = 1;
    for (Statement *statement : {&m_statements->freePages, &m_statements->pageSize}) {
        const ResetAtEnd reset(*statement);
        const int result = statement->on(m_connection).step();
        if (result != SQLITE_ROW)
            return result == SQLITE_DONE ? PdtmStatus(PdtmDamaged) : statusOf(result);
        factor *= static_cast<uint64_t>(statement->number(0));
    }
    bytes = factor;
    return PdtmOk;
}

PdtmStatus BoxDatabase::collectGarbage()
{
    if (const PdtmStatus status = execute("PRAGMA incremental_vacuum"); status != PdtmOk)
        return status;
    const PdtmStatus status = emptyLog();
    return status == PdtmBusy ? PdtmStatus(PdtmOk) : status; // a reader elsewhere: the file shrinks later
}

PdtmStatus BoxDatabase::emptyLog()
{
    return statusOf(
        sqlite3_wal_checkpoint_v2(m_connection, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr));
}

PdtmStatus BoxDatabase::bulkChangeSize(uint64_t &bytes)
{
    uint64_t pages = 0;
    uint64_t pageSize = 0;
    if (const PdtmStatus status = readNumber("PRAGMA page_count", pages); status != PdtmOk)
        return status;
    if (const PdtmStatus status = readNumber("PRAGMA page_size", pageSize); status != PdtmOk)
        return status;
    bytes = 2 * pages * (pageSize + FrameHeaderSize);
    return PdtmOk;
}

PdtmStatus BoxDatabase::checkThoroughly()
{
    Statement check("PRAGMA quick_check(1)");
    if (!isFirstOf(check, m_connection) || check.text(0) != "ok")
        return PdtmDamaged;
    check.reset();
    bool isValid = true;
    const PdtmStatus status = forEachCard(1, UINT16_MAX, [&](CardId, RecordView record) {
        isValid = record.isValid();
        return isValid;
    });
    return isValid ? status : PdtmStatus(PdtmDamaged);
}

} // namespace pdtm
