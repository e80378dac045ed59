#include "lookup.h"

#include "jistext.h"
#include "lookuptext.h"
#include <cstring>

namespace ZipDict {

namespace {

constexpr size_t CodeRoom = 8; // seven digits and their terminator

/** One call of the program. */
class Lookup
{
public:
    Lookup(unsigned max, ydic_info *info, FILE *out, FILE *errors)
        : m_max(max), m_info(info), m_out(out), m_errors(errors),
          m_addresses(size_t{max} * (YDIC_ADDRESS_LENGTH + 1))
    {
    }

    bool lookUpCode(const std::string &code);
    bool lookUpAddress(const std::u16string &typed);

private:
    void printAddresses(const char *code, int count, FILE *out);
    void printNextCode(const std::string &code);
    bool tellFailure(int result);

    unsigned m_max;
    ydic_info *m_info;
    FILE *m_out;
    FILE *m_errors;
    std::vector<char> m_addresses;
};

/* A search cuts a long address by its bytes, so that half a character may be at its end. */
std::string addressText(std::string_view jis)
{
    std::u16string text = fromJis(jis.substr(0, jis.size() / 2 * 2));
    if (const size_t solidus = text.find(u'／'); solidus != std::u16string::npos)
        text.erase(solidus, 1);
    return toUtf8(text);
}

void Lookup::printAddresses(const char *code, int count, FILE *out)
{
    const char *address = m_addresses.data();
    for (int i = 0; i < count; ++i) {
        std::fprintf(out, "%.3s-%s %s\n", code, code + 3, addressText(address).c_str());
        address += std::strlen(address) + 1;
    }
}

bool Lookup::tellFailure(int result)
{
    std::fputs(result == YDIC_NO_MEMORY ? "kyzipdict: there is no memory left\n"
                                        : "kyzipdict: the dictionary can't be read, or is damaged\n",
               m_errors);
    return false;
}

/* Somebody who mistyped a code sees where it would be. */
void Lookup::printNextCode(const std::string &code)
{
    std::fprintf(m_errors, "kyzipdict: there is no code %.3s-%s\n", code.c_str(), code.c_str() + 3);
    char next[CodeRoom] = {};
    const int count = Zip2AdrSearchNP(code.c_str(), 1, YDIC_NEXT, next, m_addresses.data(), m_info);
    if (count <= 0)
        return;
    std::fputs("the next one is ", m_errors);
    printAddresses(next, 1, m_errors);
}

bool Lookup::lookUpCode(const std::string &code)
{
    const int count = Zip2AdrSearch(code.c_str(), m_max, m_addresses.data(), m_info);
    if (count < 0)
        return tellFailure(count);
    if (count == 0)
        printNextCode(code);
    printAddresses(code.c_str(), count, m_out);
    return count > 0;
}

bool Lookup::lookUpAddress(const std::u16string &typed)
{
    if (isNumber(typed)) {
        std::fprintf(m_errors, "kyzipdict: %s is no postal code, which has seven digits\n",
                     toUtf8(typed).c_str());
        return false;
    }
    const std::u16string address = fullWidth(typed);
    for (const char16_t character : address) {
        if (jisOf(character) == 0) {
            std::fprintf(m_errors, "kyzipdict: %s can't be looked for: it isn't in JIS X 0208\n",
                         toUtf8({&character, 1}).c_str());
            return false;
        }
    }
    std::vector<char> codes(size_t{m_max} * CodeRoom);
    const int count = Adr2ZipSearch(toJis(address).value_or("").c_str(), m_max, codes.data(), m_info);
    if (count < 0)
        return tellFailure(count);
    if (count == 0)
        std::fprintf(m_errors, "kyzipdict: no code is found for %s\n", toUtf8(address).c_str());
    bool isFound = count > 0;
    for (int i = 0; i < count; ++i)
        isFound = lookUpCode(codes.data() + static_cast<size_t>(i) * CodeRoom) && isFound;
    return isFound;
}

std::string joined(const std::vector<std::string> &words)
{
    std::string text;
    for (const std::string &word : words)
        text += word + ' ';
    return text;
}

} // namespace

bool lookUp(const std::vector<std::string> &words, unsigned max, ydic_info *info, FILE *out, FILE *errors)
{
    const std::optional<std::u16string> text = fromUtf8(joined(words));
    if (!text) {
        std::fputs("kyzipdict: the text isn't UTF-8, or has characters that no address has\n", errors);
        return false;
    }
    Lookup lookup(max, info, out, errors);
    std::vector<std::string> codes;
    std::u16string address;
    for (const std::u16string &word : wordsOf(*text)) {
        if (const std::string code = codeOf(word); !code.empty())
            codes.push_back(code);
        else if (word != u"〒")
            address += word;
    }
    if (const std::string code = codeOf(address); !code.empty()) { // 100 0001
        codes.push_back(code);
        address.clear();
    }
    bool isFound = !codes.empty() || !address.empty();
    if (!isFound)
        std::fputs("kyzipdict: there is nothing to look up\n", errors);
    for (const std::string &code : codes)
        isFound = lookup.lookUpCode(code) && isFound;
    return (address.empty() || lookup.lookUpAddress(address)) && isFound;
}

} // namespace ZipDict
