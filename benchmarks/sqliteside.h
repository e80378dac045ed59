#ifndef BENCHMARKS_SQLITESIDE_H
#define BENCHMARKS_SQLITESIDE_H

#include "contacts.h"

#include <map>
#include <memory>
#include <sqlite3.h>

/** Plain SQLite: one row a contact, a column an item, the journal and synchronisation settings of a box. */
class SqliteSide
{
public:
    enum class Settings { Default, Tuned };

    explicit SqliteSide(const std::string &path, Settings settings = Settings::Default);

    void createTable();
    /** The SQL indexes that stand beside the four of the store. */
    void createIndexes();
    /** What a list shows, its key last, as an SQL view; and SQL indexes by reading and by company that have
     * all of it, so that no contact is looked up. With indexes of one item each a list is slower than with
     * none. */
    void createList();
    void load(const std::vector<Contact> &contacts);
    [[nodiscard]] int64_t fileSize();

    void add(const Contact &contact);
    void changePhone(int id, const std::string &phone, const Contact &modified);
    /** Keeps one read transaction open, so that a SELECT has no lock to take. */
    void beginReading();
    /** Bytes of a text item, read with a prepared SELECT. */
    size_t readItem(int id, int item);
    /** Walks all contacts by their reading over an SQL index; bytes of three items. */
    size_t walk();
    /** All ids by reading, ordered by ICU. */
    std::vector<int> orderByReading();
    /** The same by company. */
    std::vector<int> orderByCompany();
    /** Id and name of each contact of a category by reading, ordered by ICU; bytes of the names. */
    size_t namesOfCategory(int category);
    /** Number of contacts with @p text in any of their texts. */
    int countContaining(const std::string &text);
    void deleteCategory(int category);
    /** Takes a category from all contacts that have it. */
    void clearCategory(int category);
    /** Takes the write-ahead file over and empties it, as after a quiet moment. */
    void emptyLog();
    /** The same as an SQL index that is kept. */
    void indexByReading();

private:
    struct Close
    {
        void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    void execute(const std::string &sql);
    sqlite3_stmt *prepared(const std::string &sql);
    std::vector<int> idsOf(const std::string &sql);
    void changeCategory(const std::string &sql, int category);
    void step(sqlite3_stmt *statement, int expected);
    static void bindContact(sqlite3_stmt *statement, const Contact &contact);

    std::unique_ptr<sqlite3, Close> m_database;
    std::map<std::string, std::unique_ptr<sqlite3_stmt, Close>> m_statements;
    std::array<sqlite3_stmt *, TextItems.size()> m_readers{};
};

#endif
