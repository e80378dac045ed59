#ifndef CSVREADER_H
#define CSVREADER_H

#include <string>
#include <string_view>
#include <vector>

namespace ZipDict {

/** A record of a CSV file. */
struct CsvRecord
{
    unsigned line = 0;   ///< its first line, from 1
    bool isWhole = true; ///< false: its quotation marks make no sense, and there are no fields
    std::vector<std::string> fields;
};

/** Reads comma-separated values as RFC 4180 has them. Bytes in, bytes out: neither UTF-8 nor Shift-JIS has a
 * comma, a quotation mark or a line's end inside a character. */
class CsvReader
{
public:
    static constexpr size_t MaximumRecordSize = 16384;

    /** @param bytes have to outlive the reader */
    explicit CsvReader(std::string_view bytes) : m_bytes(bytes) {}

    /** The next record; empty lines are passed over. Behind a broken record it goes on with the next line.
     * @return false at the end */
    [[nodiscard]] bool readRecord(CsvRecord &record);

    /** How many bytes have been read. */
    [[nodiscard]] size_t position() const { return m_at; }

private:
    [[nodiscard]] bool isAtEndOfLine() const;
    void passEndOfLine();
    void passEmptyLines();
    void passLine();
    [[nodiscard]] bool readFields(std::vector<std::string> &fields);
    [[nodiscard]] bool readQuoted(std::string &field, size_t limit);

    std::string_view m_bytes;
    size_t m_at = 0;
    unsigned m_line = 1;
};

} // namespace ZipDict

#endif
