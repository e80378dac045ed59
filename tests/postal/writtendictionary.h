#ifndef WRITTENDICTIONARY_H
#define WRITTENDICTIONARY_H

#include "dictionarywriter.h"
#include "jistext.h"
#include "ydic.h"
#include "ydicbytes_p.h"
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

constexpr uint8_t Tokyo = 13;

/** A place of Tokyo whose address says what is shown. */
inline ZipDict::Place tokyo(uint32_t code, std::u16string_view municipality, std::u16string_view town = {})
{
    return {code, Tokyo, std::u16string(municipality), std::u16string(town), std::u16string(town), {}, false};
}

/** A number of the header. */
inline uint32_t field(const std::vector<uint8_t> &bytes, size_t at)
{
    return ydic_u32(bytes.data() + at);
}

/** A dictionary in memory, open for the searches. */
class WrittenDictionary
{
public:
    explicit WrittenDictionary(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes))
    {
        m_info.dictFile = fmemopen(m_bytes.data(), m_bytes.size(), "rb");
    }

    explicit WrittenDictionary(const std::vector<ZipDict::Place> &places)
        : WrittenDictionary(ZipDict::writeDictionary(1, places).bytes)
    {
    }

    WrittenDictionary(const WrittenDictionary &) = delete;
    WrittenDictionary &operator=(const WrittenDictionary &) = delete;

    ~WrittenDictionary()
    {
        fclose(m_info.dictFile);
        if (m_info.patchFile)
            fclose(m_info.patchFile);
    }

    void setPatch(std::vector<uint8_t> bytes)
    {
        m_patch = std::move(bytes);
        m_info.patchFile = fmemopen(m_patch.data(), m_patch.size(), "rb");
        m_info.hasPatch = 1;
    }

    [[nodiscard]] const std::vector<uint8_t> &bytes() const { return m_bytes; }

    /** The addresses of a code, or one text that tells the failure. */
    std::vector<std::u16string> addresses(uint32_t code)
    {
        return results(Zip2AdrSearch(digits(code).c_str(), Most, m_result.data(), &m_info));
    }

    std::vector<uint32_t> codes(std::u16string_view address)
    {
        const std::string jis = ZipDict::toJis(address).value_or(std::string());
        const int count = Adr2ZipSearch(jis.c_str(), Most, m_result.data(), &m_info);
        std::vector<uint32_t> found;
        for (int i = 0; i < count; ++i)
            found.push_back(static_cast<uint32_t>(std::stoul(m_result.data() + i * 8)));
        return found;
    }

    /** The neighbour of a code; -1 when there is none, or it gives no address. */
    int64_t neighbour(uint32_t code, uint8_t direction)
    {
        char near[8] = {};
        const int count =
            Zip2AdrSearchNP(digits(code).c_str(), Most, direction, near, m_result.data(), &m_info);
        return count > 0 ? std::stol(near) : -1;
    }

private:
    static constexpr uint32_t Most = 100;

    static std::string digits(uint32_t code)
    {
        char text[16] = {};
        std::snprintf(text, sizeof text, "%07u", code);
        return text;
    }

    std::vector<std::u16string> results(int count)
    {
        if (count < 0)
            return {u"failure"};
        std::vector<std::u16string> found;
        const char *at = m_result.data();
        for (int i = 0; i < count; ++i, at += std::strlen(at) + 1)
            found.push_back(ZipDict::fromJis(at));
        return found;
    }

    std::vector<uint8_t> m_bytes;
    std::vector<uint8_t> m_patch;
    ydic_info m_info{};
    std::vector<char> m_result = std::vector<char>(Most * (YDIC_ADDRESS_LENGTH + 1));
};

#endif
