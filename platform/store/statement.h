#ifndef PDTM_STATEMENT_H
#define PDTM_STATEMENT_H

#include <cstdint>
#include <span>
#include <sqlite3.h>
#include <string_view>

namespace pdtm {

/** A prepared statement. It is compiled at its first use and belongs to one connection. */
class Statement
{
public:
    explicit Statement(const char *sql) : m_sql(sql) {}
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    /** Compiles it; later calls do nothing. The result of a failure is given by step(), too. */
    Statement &on(sqlite3 *connection)
    {
        if (!m_statement)
            m_result =
                sqlite3_prepare_v3(connection, m_sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr);
        return *this;
    }
    Statement &bind(int place, int64_t value)
    {
        sqlite3_bind_int64(m_statement, place, value);
        return *this;
    }
    /** The bytes are not copied: they stay until the statement is reset. */
    Statement &bind(int place, std::span<const uint8_t> bytes)
    {
        sqlite3_bind_blob64(m_statement, place, bytes.empty() ? static_cast<const void *>("") : bytes.data(),
                            bytes.size(), SQLITE_STATIC);
        return *this;
    }
    Statement &bind(int place, std::string_view text)
    {
        sqlite3_bind_text64(m_statement, place, text.empty() ? "" : text.data(), text.size(), SQLITE_STATIC,
                            SQLITE_UTF8);
        return *this;
    }

    /** SQLITE_ROW, SQLITE_DONE or an error. */
    int step() { return m_statement ? sqlite3_step(m_statement) : m_result; }
    void reset()
    {
        if (m_statement)
            sqlite3_reset(m_statement);
    }

    [[nodiscard]] int type(int column) const { return sqlite3_column_type(m_statement, column); }
    [[nodiscard]] int64_t number(int column) const { return sqlite3_column_int64(m_statement, column); }
    [[nodiscard]] std::span<const uint8_t> bytes(int column) const
    {
        const void *data = sqlite3_column_blob(m_statement, column);
        const int size = sqlite3_column_bytes(m_statement, column);
        return {static_cast<const uint8_t *>(data), data ? static_cast<size_t>(size) : 0};
    }
    [[nodiscard]] std::string_view text(int column) const
    {
        const unsigned char *data = sqlite3_column_text(m_statement, column);
        const int size = sqlite3_column_bytes(m_statement, column);
        return {reinterpret_cast<const char *>(data), data ? static_cast<size_t>(size) : 0};
    }

private:
    const char *m_sql;
    sqlite3_stmt *m_statement = nullptr;
    int m_result = SQLITE_OK;
};

/** Resets a statement at the end of a block, so that no read transaction outlives it. */
class ResetAtEnd
{
public:
    explicit ResetAtEnd(Statement &statement) : m_statement(statement) {}
    ~ResetAtEnd() { m_statement.reset(); }
    ResetAtEnd(const ResetAtEnd &) = delete;
    ResetAtEnd &operator=(const ResetAtEnd &) = delete;

private:
    Statement &m_statement;
};

} // namespace pdtm

#endif
