#include "csvreader.h"

#include <algorithm>

namespace ZipDict {

bool CsvReader::isAtEndOfLine() const
{
    return m_at == m_bytes.size() || m_bytes[m_at] == '\n' || m_bytes[m_at] == '\r';
}

/* CR, LF or both. */
void CsvReader::passEndOfLine()
{
    if (m_at == m_bytes.size())
        return;
    m_at += m_bytes.substr(m_at, 2) == "\r\n" ? 2 : 1;
    ++m_line;
}

void CsvReader::passEmptyLines()
{
    while (m_at < m_bytes.size() && isAtEndOfLine())
        passEndOfLine();
}

void CsvReader::passLine()
{
    m_at = std::min(m_bytes.find_first_of("\r\n", m_at), m_bytes.size());
    passEndOfLine();
}

/* From behind the opening quotation mark to behind the closing one. */
bool CsvReader::readQuoted(std::string &field, size_t limit)
{
    while (m_at < limit) {
        if (m_bytes[m_at] == '"') {
            ++m_at;
            if (m_at == limit || m_bytes[m_at] != '"')
                return true;
        } else if (isAtEndOfLine()) {
            field += '\n';
            passEndOfLine();
            continue;
        }
        field += m_bytes[m_at++];
    }
    return false;
}

bool CsvReader::readFields(std::vector<std::string> &fields)
{
    const size_t limit = m_at + std::min(MaximumRecordSize, m_bytes.size() - m_at);
    while (true) {
        std::string &field = fields.emplace_back();
        if (m_at < limit && m_bytes[m_at] == '"') {
            ++m_at;
            if (!readQuoted(field, limit))
                return false;
        } else {
            const size_t end = std::min(m_bytes.find_first_of(",\r\n", m_at), m_bytes.size());
            if (end > limit)
                return false;
            field = m_bytes.substr(m_at, end - m_at);
            m_at = end;
        }
        if (isAtEndOfLine())
            break;
        if (m_bytes[m_at] != ',')
            return false;
        ++m_at;
    }
    passEndOfLine();
    return true;
}

bool CsvReader::readRecord(CsvRecord &record)
{
    passEmptyLines();
    if (m_at == m_bytes.size())
        return false;
    const size_t start = m_at;
    record.line = m_line;
    record.fields.clear();
    record.isWhole = readFields(record.fields);
    if (!record.isWhole) {
        record.fields.clear();
        m_at = start;
        m_line = record.line;
        passLine();
    }
    return true;
}

} // namespace ZipDict
