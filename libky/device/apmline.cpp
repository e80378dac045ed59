#include "apmline_p.h"
#include <algorithm>
#include <limits>

namespace {

constexpr qint64 Biggest = std::numeric_limits<int>::max();
constexpr int NoDigit = 99;

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return NoDigit;
}

/** Takes bytes from the front. The calls that take something are false, and change no value, when it isn't
 * there. */
class Scanner
{
public:
    explicit Scanner(QByteArrayView bytes) : m_rest(bytes) {}

    void skipBlanks()
    {
        while (!m_rest.isEmpty() && isBlank(m_rest.front()))
            m_rest = m_rest.sliced(1);
    }

    /** Everything up to a space: line ends are part of it. */
    bool skipWord()
    {
        const qsizetype space = m_rest.indexOf(' ');
        const qsizetype length = space < 0 ? m_rest.size() : space;
        m_rest = m_rest.sliced(length);
        return length > 0;
    }

    bool skip(char c)
    {
        const bool isThere = startsWith(c);
        if (isThere)
            m_rest = m_rest.sliced(1);
        return isThere;
    }

    bool readByte(char *value)
    {
        skipBlanks();
        if (m_rest.isEmpty())
            return false;
        *value = m_rest.front();
        return skip(*value);
    }

    /** A number with blanks and a sign in front. @param base 10, 16, or 0 for what the number itself tells by
     * "0x" or "0" */
    bool readNumber(int base, int *value)
    {
        skipBlanks();
        const bool isNegative = skip('-');
        if (!isNegative)
            skip('+');
        qint64 number = 0;
        if (!readDigits(skipPrefix(base), &number))
            return false;
        *value = int(isNegative ? -number : number);
        return true;
    }

private:
    bool startsWith(char c) const { return !m_rest.isEmpty() && m_rest.front() == c; }

    /** @return the base that the digits have */
    int skipPrefix(int base)
    {
        const bool hasMark = m_rest.size() >= 2 && m_rest[0] == '0' && (m_rest[1] == 'x' || m_rest[1] == 'X');
        if (hasMark && base != 10) {
            m_rest = m_rest.sliced(2);
            return 16;
        }
        if (base != 0)
            return base;
        return startsWith('0') ? 8 : 10;
    }

    bool readDigits(int base, qint64 *value)
    {
        const qsizetype before = m_rest.size();
        while (!m_rest.isEmpty() && digitOf(m_rest.front()) < base) {
            *value = std::min(*value * base + digitOf(m_rest.front()), Biggest);
            m_rest = m_rest.sliced(1);
        }
        return m_rest.size() < before;
    }

    QByteArrayView m_rest;
};

/** Driver version and BIOS version. */
bool skipVersions(Scanner &scanner)
{
    int ignored = 0;
    return scanner.skipWord() && scanner.readNumber(10, &ignored) && scanner.skip('.') &&
           scanner.readNumber(10, &ignored);
}

bool readMarkedHex(Scanner &scanner, int *value)
{
    scanner.skipBlanks();
    return scanner.skip('0') && scanner.skip('x') && scanner.readNumber(16, value);
}

bool readStates(Scanner &scanner, ApmLine *line)
{
    int ignored = 0;
    return readMarkedHex(scanner, &ignored) && readMarkedHex(scanner, &line->mainsState) &&
           readMarkedHex(scanner, &line->batteryState) && readMarkedHex(scanner, &ignored);
}

bool readPercent(Scanner &scanner, ApmLine *line)
{
    if (!scanner.readNumber(10, &line->percent))
        return false;
    scanner.skipBlanks();
    return scanner.skip('%');
}

} // namespace

ApmLine ApmLine::parse(QByteArrayView bytes)
{
    ApmLine line;
    Scanner scanner(bytes);
    if (skipVersions(scanner) && readStates(scanner, &line) && readPercent(scanner, &line) &&
        scanner.readNumber(0, &line.time))
        scanner.readByte(&line.unit);
    return line;
}

int ApmLine::seconds() const
{
    constexpr qint64 Minute = 60;
    if (unit == 's')
        return time;
    return unit == 'm' ? int(std::clamp(time * Minute, -Biggest, Biggest)) : -1;
}
