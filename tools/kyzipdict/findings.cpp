#include "findings.h"

#include <cstdarg>
#include <cstdio>

namespace ZipDict {

namespace {

constexpr size_t MostLines = 100;

} // namespace

void Findings::add(uint64_t offset, const char *format, ...)
{
    if (m_lines.size() == MostLines) {
        ++m_more;
        return;
    }
    char line[256];
    const int length =
        std::snprintf(line, sizeof line, "0x%06llx: ", static_cast<unsigned long long>(offset));
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line + length, sizeof line - static_cast<size_t>(length), format, arguments);
    va_end(arguments);
    m_lines.emplace_back(line);
}

std::vector<std::string> Findings::lines() const
{
    std::vector<std::string> lines = m_lines;
    if (m_more > 0)
        lines.push_back("and " + std::to_string(m_more) + " more");
    return lines;
}

} // namespace ZipDict
