#ifndef FINDINGS_H
#define FINDINGS_H

#include <cstdint>
#include <string>
#include <vector>

namespace ZipDict {

/** Lines that say what is wrong with a file and where. The first hundred are kept, the others counted. */
class Findings
{
public:
    __attribute__((format(printf, 3, 4))) void add(uint64_t offset, const char *format, ...);

    [[nodiscard]] bool isEmpty() const { return m_lines.empty(); }
    [[nodiscard]] std::vector<std::string> lines() const;

private:
    std::vector<std::string> m_lines;
    size_t m_more = 0;
};

} // namespace ZipDict

#endif
