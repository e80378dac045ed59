#include "sqliteside.h"

#include <cstdio>
#include <cstdlib>
#include <unicode/ucol.h>

namespace {

[[noreturn]] void fail(sqlite3 *database)
{
    std::fprintf(stderr, "SQLite: %s\n", sqlite3_errmsg(database));
    std::exit(2);
}

int compareByIcu(void *collator, int oneSize, const void *one, int otherSize, const void *other)
{
    UErrorCode status = U_ZERO_ERROR;
    return ucol_strcollUTF8(static_cast<UCollator *>(collator), static_cast<const char *>(one), oneSize,
                            static_cast<const char *>(other), otherSize, &status);
}

UCollator *japanese()
{
    UErrorCode status = U_ZERO_ERROR;
    static UCollator *collator = ucol_open("ja", &status);
    return collator;
}

std::string columnList(const char *between, const char *behindEach)
{
    std::string list;
    for (const char *item : TextItems)
        list += std::string(list.empty() ? "" : between) + item + behindEach;
    return list;
}

} // namespace

SqliteSide::SqliteSide(const std::string &path, Settings settings)
{
    sqlite3 *database = nullptr;
    if (sqlite3_open(path.c_str(), &database) != SQLITE_OK)
        fail(database);
    m_database.reset(database);
    execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL");
    if (settings == Settings::Tuned)
        execute("PRAGMA mmap_size=1073741824; PRAGMA cache_size=-262144");
    sqlite3_create_collation(database, "japanese", SQLITE_UTF8, japanese(), compareByIcu);
}

void SqliteSide::execute(const std::string &sql)
{
    if (sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(m_database.get());
}

sqlite3_stmt *SqliteSide::prepared(const std::string &sql)
{
    auto &statement = m_statements[sql];
    if (!statement) {
        sqlite3_stmt *made = nullptr;
        if (sqlite3_prepare_v3(m_database.get(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &made,
                               nullptr) != SQLITE_OK)
            fail(m_database.get());
        statement.reset(made);
    }
    return statement.get();
}

void SqliteSide::step(sqlite3_stmt *statement, int expected)
{
    if (sqlite3_step(statement) != expected)
        fail(m_database.get());
}

void SqliteSide::createTable()
{
    execute("CREATE TABLE contacts(id INTEGER PRIMARY KEY, " + columnList(", ", " TEXT") +
            ", CTGR INTEGER, MDTM BLOB)");
}

void SqliteSide::createIndexes()
{
    execute("CREATE INDEX byNAPR ON contacts(NAPR); CREATE INDEX byCMPN ON contacts(CMPN);"
            "CREATE INDEX byMDTM ON contacts(MDTM); CREATE INDEX byCTGR ON contacts(CTGR, NAPR)");
}

void SqliteSide::createList()
{
    execute("CREATE VIEW list AS SELECT FULL, CMPN, TEL1, NAPR, id FROM contacts;"
            "CREATE INDEX listByReading ON contacts(NAPR, FULL, CMPN, TEL1);"
            "CREATE INDEX listByCompany ON contacts(CMPN, FULL, TEL1, NAPR)");
}

void SqliteSide::bindContact(sqlite3_stmt *statement, const Contact &contact)
{
    int place = 0;
    for (const std::string &text : contact.texts)
        sqlite3_bind_text(statement, ++place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    sqlite3_bind_int(statement, ++place, contact.category);
    sqlite3_bind_blob(statement, ++place, contact.modified.data(), static_cast<int>(contact.modified.size()),
                      SQLITE_STATIC);
}

void SqliteSide::add(const Contact &contact)
{
    static const std::string sql = [] {
        std::string places = "?";
        for (size_t i = 0; i < TextItems.size() + 1; ++i)
            places += ", ?";
        return "INSERT INTO contacts(" + columnList(", ", "") + ", CTGR, MDTM) VALUES(" + places + ")";
    }();
    sqlite3_stmt *insert = prepared(sql);
    bindContact(insert, contact);
    step(insert, SQLITE_DONE);
    sqlite3_reset(insert);
}

void SqliteSide::load(const std::vector<Contact> &contacts)
{
    execute("BEGIN");
    for (const Contact &contact : contacts)
        add(contact);
    execute("COMMIT");
}

int64_t SqliteSide::fileSize()
{
    emptyLog();
    sqlite3_stmt *size = prepared("SELECT page_count * page_size FROM pragma_page_count, pragma_page_size");
    step(size, SQLITE_ROW);
    const int64_t bytes = sqlite3_column_int64(size, 0);
    sqlite3_reset(size);
    return bytes;
}

void SqliteSide::changePhone(int id, const std::string &phone, const Contact &modified)
{
    sqlite3_stmt *update = prepared("UPDATE contacts SET TEL1 = ?, MDTM = ? WHERE id = ?");
    sqlite3_bind_text(update, 1, phone.data(), static_cast<int>(phone.size()), SQLITE_STATIC);
    sqlite3_bind_blob(update, 2, modified.modified.data(), static_cast<int>(modified.modified.size()),
                      SQLITE_STATIC);
    sqlite3_bind_int(update, 3, id);
    step(update, SQLITE_DONE);
    sqlite3_reset(update);
}

void SqliteSide::beginReading()
{
    execute("BEGIN; SELECT 1 FROM contacts LIMIT 1");
}

size_t SqliteSide::readItem(int id, int item)
{
    sqlite3_stmt *&reader = m_readers[static_cast<size_t>(item)];
    if (!reader)
        reader = prepared(std::string("SELECT ") + TextItems[static_cast<size_t>(item)] +
                          " FROM contacts WHERE id = ?");
    sqlite3_bind_int(reader, 1, id);
    step(reader, SQLITE_ROW);
    const unsigned char *text = sqlite3_column_text(reader, 0);
    const auto size = static_cast<size_t>(sqlite3_column_bytes(reader, 0));
    const size_t result = text ? size : 0;
    sqlite3_reset(reader);
    return result;
}

size_t SqliteSide::walk()
{
    sqlite3_stmt *rows = prepared("SELECT FULL, TEL1, CMPN FROM contacts INDEXED BY byNAPR ORDER BY NAPR");
    size_t bytes = 0;
    while (sqlite3_step(rows) == SQLITE_ROW)
        for (int column = 0; column < 3; ++column)
            if (sqlite3_column_text(rows, column))
                bytes += static_cast<size_t>(sqlite3_column_bytes(rows, column));
    sqlite3_reset(rows);
    return bytes;
}

std::vector<int> SqliteSide::idsOf(const std::string &sql)
{
    sqlite3_stmt *rows = prepared(sql);
    std::vector<int> ids;
    while (sqlite3_step(rows) == SQLITE_ROW)
        ids.push_back(sqlite3_column_int(rows, 0));
    sqlite3_reset(rows);
    return ids;
}

std::vector<int> SqliteSide::orderByReading()
{
    return idsOf("SELECT id FROM contacts ORDER BY NAPR COLLATE japanese, id");
}

std::vector<int> SqliteSide::orderByCompany()
{
    return idsOf("SELECT id FROM contacts ORDER BY CMPN COLLATE japanese, id");
}

size_t SqliteSide::namesOfCategory(int category)
{
    sqlite3_stmt *rows =
        prepared("SELECT id, FULL FROM contacts WHERE CTGR = ? ORDER BY NAPR COLLATE japanese, id");
    sqlite3_bind_int(rows, 1, category);
    size_t bytes = 0;
    while (sqlite3_step(rows) == SQLITE_ROW)
        if (sqlite3_column_int(rows, 0) > 0 && sqlite3_column_text(rows, 1))
            bytes += static_cast<size_t>(sqlite3_column_bytes(rows, 1));
    sqlite3_reset(rows);
    return bytes;
}

int SqliteSide::countContaining(const std::string &text)
{
    static const std::string sql = "SELECT count(*) FROM contacts WHERE " + columnList(" OR ", " LIKE ?1");
    const std::string pattern = "%" + text + "%";
    sqlite3_stmt *count = prepared(sql);
    sqlite3_bind_text(count, 1, pattern.data(), static_cast<int>(pattern.size()), SQLITE_STATIC);
    step(count, SQLITE_ROW);
    const int result = sqlite3_column_int(count, 0);
    sqlite3_reset(count);
    return result;
}

void SqliteSide::changeCategory(const std::string &sql, int category)
{
    sqlite3_stmt *change = prepared(sql);
    sqlite3_bind_int(change, 1, category);
    step(change, SQLITE_DONE);
    sqlite3_reset(change);
}

void SqliteSide::deleteCategory(int category)
{
    changeCategory("DELETE FROM contacts WHERE CTGR = ?", category);
}

void SqliteSide::clearCategory(int category)
{
    changeCategory("UPDATE contacts SET CTGR = NULL WHERE CTGR = ?", category);
}

void SqliteSide::emptyLog()
{
    execute("PRAGMA wal_checkpoint(TRUNCATE)");
}

void SqliteSide::indexByReading()
{
    execute("DROP INDEX IF EXISTS byReading; CREATE INDEX byReading ON contacts(NAPR COLLATE japanese)");
}
