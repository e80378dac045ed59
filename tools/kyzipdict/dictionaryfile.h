#ifndef DICTIONARYFILE_H
#define DICTIONARYFILE_H

#include "ydicbytes_p.h"
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/**
 * @file dictionaryfile.h
 * A whole file in memory, taken apart for those who look at it rather than search it. Nothing is believed:
 * what lies beyond the end reads as zeros, and what can't be taken apart is left out.
 */

namespace ZipDict {

/** Files above this are no dictionaries: offsets have 24 bits. */
constexpr uint64_t LargestFile = 1U << 24;

constexpr uint32_t LargestCode = 9999999;

/** The header and the one-byte characters, which stand at the start of every file. */
constexpr uint64_t SmallestFile = uint64_t{YDIC_HEADER_LENGTH} + YDIC_ASK1JI_LENGTH;

/** Where the number index has its end mark, behind the entries of all prefixes. */
constexpr uint64_t NumberIndexEnd = uint64_t{YDIC_PREFIXES} * 2;

/** Bytes that the search by address has for level 1 of its index, the end entry included. */
constexpr uint64_t AddressLevel1Room = 10240;

/** Bytes of a section, from the start of the file. */
struct Section
{
    uint64_t offset = 0;
    uint64_t size = 0;

    [[nodiscard]] uint64_t end() const { return offset + size; }
    bool operator==(const Section &) const = default;
    auto operator<=>(const Section &) const = default;
};

/** An entry of level 2 of the code index. */
struct IndexEntry
{
    uint64_t at = 0;
    unsigned prefix = 0; ///< the first two digits, of the slice
    unsigned middle = 0; ///< the next three
    unsigned last2 = 0;
    Section chunk;

    [[nodiscard]] uint32_t fiveDigits() const { return prefix * 1000 + middle; }
};

/** A record of a chunk, or one that stands alone. */
struct Record
{
    Section whole; ///< from its code byte
    Section text;  ///< behind all marks and numbers
    uint8_t code = 0;
    bool cancels = false;
    bool isSilent = false;
    bool isWhole = false;
    bool isComplete = false;
    bool isSilencedTooEarly = false; ///< the mark of silence stands before that of a complete record
    uint32_t completeCode = 0;

    [[nodiscard]] bool isShown() const { return !cancels && !isSilent; }
};

struct Chunk
{
    Section whole;
    Section common; ///< the text of all its records
    uint32_t fiveDigits = 0;
    std::vector<Record> records;
};

/** A reference of a group of the address index. */
struct Reference
{
    uint64_t at = 0;
    Section target;
    bool isComplete = false;
};

/** A group of level 2 of the address index. */
struct Group
{
    uint64_t at = 0;
    uint64_t end = 0;
    unsigned prefecture = 0;
    unsigned keyField = 0;
    std::string key; ///< behind the two characters of level 1, JIS
    unsigned suffix = 0;
    std::vector<Reference> references;
};

/** An entry of level 1 of the address index. */
struct AddressKey
{
    uint64_t at = 0;
    std::string key; ///< two characters, JIS
    Section slice;   ///< of level 2; empty when its end lies before its start
};

/** A run of codes that follow one another. */
struct NumberRun
{
    uint64_t at = 0;
    uint32_t first = 0;
    unsigned length = 0;
};

class DictionaryFile
{
public:
    explicit DictionaryFile(std::span<const uint8_t> bytes) : m_bytes(bytes) {}

    [[nodiscard]] uint64_t size() const { return m_bytes.size(); }
    [[nodiscard]] bool has(const Section &section) const;
    /** What there is of a section. */
    [[nodiscard]] std::span<const uint8_t> bytes(const Section &section) const;
    [[nodiscard]] unsigned byteAt(uint64_t at) const { return at < m_bytes.size() ? m_bytes[at] : 0; }
    [[nodiscard]] unsigned u16(uint64_t at) const { return byteAt(at) << 8 | byteAt(at + 1); }
    [[nodiscard]] uint32_t u24(uint64_t at) const { return u16(at) << 8 | byteAt(at + 2); }
    [[nodiscard]] uint32_t u32(uint64_t at) const { return byteAt(at) << 24 | u24(at + 1); }

    [[nodiscard]] bool hasMagic() const;
    [[nodiscard]] bool isPatch() const { return byteAt(YDIC_AT_TYPE) == YDIC_PATCH; }

    /* The code index. */

    /** The slice of level 2 of a prefix, without the entry behind it; empty when it is turned round.
     * @param prefix 0 to 99 */
    [[nodiscard]] Section sliceOf(unsigned prefix) const;
    [[nodiscard]] unsigned prefectureOf(unsigned prefix) const;
    /** All entries; slices that go back over earlier ones are left out. */
    [[nodiscard]] std::vector<IndexEntry> codeIndex() const;

    /* Chunks. */

    [[nodiscard]] Chunk chunkAt(const Section &section) const;
    /** The record at the start of a section, which it must not leave. */
    [[nodiscard]] Record recordAt(const Section &section) const;
    /** What the search by code shows of a text, in JIS. */
    [[nodiscard]] std::string shownText(const Section &text) const;
    /** What the search by address compares with, in JIS. */
    [[nodiscard]] std::string matchedText(const Section &text) const;
    /** What the search by code shows of a record, in JIS: prefecture, solidus, common text, text. */
    [[nodiscard]] std::string shownRecord(const Chunk &chunk, const Record &record) const;

    /* The numbers and the changes. */

    [[nodiscard]] std::vector<NumberRun> numberRuns() const;

    /* The address index. */

    [[nodiscard]] Section addressLevel1() const;
    [[nodiscard]] Section addressLevel2() const;
    [[nodiscard]] Section secondRange() const;
    [[nodiscard]] std::vector<AddressKey> addressKeys() const;
    /** The group at the start of a section; nothing when it doesn't fit in there. */
    [[nodiscard]] std::optional<Group> groupAt(const Section &section) const;

private:
    [[nodiscard]] std::string decoded(uint8_t byte) const;

    std::span<const uint8_t> m_bytes;
};

} // namespace ZipDict

#endif
