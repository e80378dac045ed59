#ifndef KY_TEST_IMAGEBUILDER_H
#define KY_TEST_IMAGEBUILDER_H

#include "jistext.h"
#include "ydic.h"
#include "ydicbytes_p.h"

#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

/**
 * @file imagebuilder.h
 * Files of the postal dictionary, made by hand: each section is a string of bytes, and what a test leaves out
 * follows from the rest.
 */

namespace imagebuilder {

using Bytes = std::string;

/** The lowest @p count bytes of a number, big-endian. */
inline Bytes number(uint32_t value, int count)
{
    Bytes bytes;
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

inline Bytes u8(uint32_t value)
{
    return number(value, 1);
}
inline Bytes u16(uint32_t value)
{
    return number(value, 2);
}
inline Bytes u24(uint32_t value)
{
    return number(value, 3);
}
inline Bytes u32(uint32_t value)
{
    return number(value, 4);
}

/** Text as addresses are typed and shown: 7-bit JIS. */
inline Bytes jis(std::u16string_view text)
{
    return ZipDict::toJis(text).value();
}

/** Text as records have it: JIS with high bits. */
inline Bytes stored(std::u16string_view text)
{
    Bytes bytes = jis(text);
    for (char &byte : bytes)
        byte = static_cast<char>(byte | 0x80);
    return bytes;
}

/** A record of the last two digits of a code. @param body marks and text, as they stand */
inline Bytes record(uint8_t last2, const Bytes &body)
{
    return u8(last2) + body;
}

/** A reference of the address index. @param offset relative to base A */
inline Bytes reference(uint32_t offset, uint32_t length, bool isComplete = false)
{
    return u24(offset) + u16(length | (isComplete ? 0x8000U : 0U));
}

/** A group of the address index without a key: K is 0. @param references bytes of them */
inline Bytes group(unsigned prefecture, const Bytes &references)
{
    return u16(prefecture << 10 | static_cast<unsigned>(references.size() / YDIC_REFERENCE)) + references;
}

/** A group with a key. @param key 7-bit JIS of the characters behind the first two @param suffix 1 to 4 */
inline Bytes group(unsigned prefecture, const Bytes &key, unsigned suffix, const Bytes &references)
{
    return u16(prefecture << 10 | static_cast<unsigned>(key.size() / 2 + 1) << 6 |
               static_cast<unsigned>(references.size() / YDIC_REFERENCE)) +
           key + u8(suffix) + references;
}

/** The parts of a file. The order in the file is: header, one-byte text codes, level 1 and 2 of the code
 * index, chunks, number index, runs, changes, level 1 and 2 of the address index. */
struct Image
{
    uint8_t type = YDIC_DICTIONARY, corrects = 0, edition = 1, serial = 0;
    Bytes ask1ji{};                            ///< 7-bit JIS; filled up with zeros
    std::map<unsigned, uint8_t> prefectures{}; ///< by the first two digits; Tokyo for those that aren't there
    Bytes level1{};                            ///< empty: follows from addChunk()
    Bytes level2{};
    Bytes chunks{};
    Bytes numberIndex{}; ///< empty: follows from the runs
    Bytes runs{};
    Bytes changes{};
    Bytes address1{}; ///< without its end entry
    Bytes address2{};
    uint32_t sliceLimit = 1024;
    uint16_t secondStart = 0, secondEnd = 0;
    uint32_t chunkDistance = 240;                 ///< from base A to base B; room for 40 entries of level 2
    std::map<uint32_t, uint32_t> chunkPrefixes{}; ///< of addChunk(): first two digits by entry of level 2

    /** Appends a chunk and its entry of level 2. Chunks are added in the order of their codes.
     * @param records from the common text on
     * @param smallest what the entry says that the smallest last two digits are
     * @return length of the chunk */
    uint32_t addChunk(uint32_t firstFive, uint8_t smallest, const Bytes &records)
    {
        chunkPrefixes[static_cast<uint32_t>(level2.size())] = firstFive / 1000;
        level2 += u16(firstFive % 1000) + u24(static_cast<uint32_t>(chunks.size())) + u8(smallest);
        const Bytes chunk = u24(firstFive) + records;
        chunks += chunk;
        return static_cast<uint32_t>(chunk.size());
    }

    /** Where the next chunk will lie, for a reference of the address index. */
    uint32_t nextReference() const { return chunkDistance + static_cast<uint32_t>(chunks.size()); }

    void addRun(uint32_t first, uint8_t length) { runs += u24(first) + u8(length); }
    void addChange(uint32_t code, uint8_t kind) { changes += u24(code) + u8(kind); }

    /** Appends a slice of the address index. @param key two characters @param groups bytes of its groups */
    void addAddressKey(std::u16string_view key, const Bytes &groups)
    {
        address1 += jis(key) + u16(static_cast<uint32_t>(address2.size()));
        address2 += groups;
    }

    /** The whole file. */
    Bytes bytes() const
    {
        Bytes file(YDIC_HEADER_LENGTH, '\0');
        file.replace(0, 6, Bytes("\xFF\0\x28", 3) + u8(type) + u8(corrects) + u8(edition));
        file.replace(YDIC_AT_SERIAL, 1, u8(serial));
        file += padded(ask1ji, YDIC_ASK1JI_LENGTH);
        section(file, YDIC_AT_CODE_INDEX1, level1.empty() ? level1Bytes() : level1);
        section(file, YDIC_AT_BASE_A, padded(level2 + endEntry(), chunkDistance));
        section(file, YDIC_AT_BASE_B, chunks);
        section(file, YDIC_AT_NUMBER_INDEX, numberIndex.empty() ? numberIndexBytes() : numberIndex);
        section(file, YDIC_AT_NUMBER_RUNS, runs);
        section(file, YDIC_AT_CHANGES, changes);
        section(file, YDIC_AT_ADDRESS_INDEX1, address1);
        file += Bytes(4, '\x7F') + u16(static_cast<uint32_t>(address2.size()));
        section(file, YDIC_AT_ADDRESS_INDEX2, address2);
        file.replace(YDIC_AT_SLICE_LIMIT, 4, u32(sliceLimit));
        file.replace(YDIC_AT_SECOND_START, 2, u16(secondStart));
        file.replace(YDIC_AT_SECOND_END, 2, u16(secondEnd));
        file.replace(YDIC_AT_FILE_SIZE, 4, u32(static_cast<uint32_t>(file.size())));
        return file;
    }

    // What bytes() is made of.

    static Bytes padded(const Bytes &bytes, size_t length)
    {
        if (bytes.size() > length)
            throw std::length_error("a section has no room");
        return bytes + Bytes(length - bytes.size(), '\0');
    }

    /** Appends a section and enters its offset and size at a field of the header. */
    static void section(Bytes &file, size_t field, const Bytes &bytes)
    {
        const auto offset = static_cast<uint32_t>(file.size());
        file.replace(field, 8, u32(offset) + u32(static_cast<uint32_t>(bytes.size())));
        file += bytes;
    }

    /** The entry behind the last, which ends the last chunk. */
    Bytes endEntry() const { return u16(0) + u24(static_cast<uint32_t>(chunks.size())) + u8(0); }

    uint32_t level2Start(unsigned prefix) const
    {
        for (const auto &[entry, chunkPrefix] : chunkPrefixes)
            if (chunkPrefix >= prefix)
                return entry;
        return static_cast<uint32_t>(level2.size());
    }

    Bytes level1Bytes() const
    {
        Bytes bytes;
        for (unsigned prefix = 0; prefix <= YDIC_PREFIXES; ++prefix) {
            const auto prefecture = prefectures.find(prefix);
            bytes += u8(prefecture == prefectures.end() ? 13 : prefecture->second) + u16(level2Start(prefix));
        }
        return bytes;
    }

    Bytes numberIndexBytes() const
    {
        Bytes bytes;
        for (uint32_t prefix = 0; prefix <= YDIC_PREFIXES; ++prefix) {
            uint32_t run = 0;
            const auto *at = reinterpret_cast<const uint8_t *>(runs.data());
            while ((run + 1) * YDIC_RUN <= runs.size() &&
                   ydic_u24(at + size_t{run} * YDIC_RUN) < prefix * 100000)
                ++run;
            bytes += u16(run);
        }
        return bytes;
    }
};

/** Files as ZipInit() would have opened them, in memory. */
class OpenImages
{
public:
    explicit OpenImages(Bytes dictionary) : m_dictionary(std::move(dictionary))
    {
        m_info.dictFile = open(m_dictionary);
    }
    OpenImages(Bytes dictionary, Bytes patch) : OpenImages(std::move(dictionary))
    {
        m_patch = std::move(patch);
        m_info.patchFile = open(m_patch);
        m_info.hasPatch = 1;
    }
    ~OpenImages()
    {
        fclose(m_info.dictFile);
        if (m_info.patchFile)
            fclose(m_info.patchFile);
    }
    OpenImages(const OpenImages &) = delete;
    OpenImages &operator=(const OpenImages &) = delete;

    ydic_info *info() { return &m_info; }

private:
    static FILE *open(Bytes &bytes)
    {
        FILE *file = fmemopen(bytes.data(), bytes.size(), "rb");
        if (!file)
            throw std::runtime_error("no stream over memory");
        return file;
    }

    Bytes m_dictionary, m_patch;
    ydic_info m_info{};
};

} // namespace imagebuilder

#endif
