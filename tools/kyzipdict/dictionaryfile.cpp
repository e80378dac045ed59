#include "dictionaryfile.h"

#include "ydictables_p.h"
#include <algorithm>

namespace ZipDict {

namespace {

constexpr uint8_t LastCode = 99;
constexpr unsigned LastOneByteCode = 160;

bool isRecordStart(unsigned byte)
{
    return byte <= LastCode;
}

} // namespace

bool DictionaryFile::has(const Section &section) const
{
    return section.offset <= m_bytes.size() && section.size <= m_bytes.size() - section.offset;
}

std::span<const uint8_t> DictionaryFile::bytes(const Section &section) const
{
    const uint64_t start = std::min<uint64_t>(section.offset, m_bytes.size());
    const uint64_t count = std::min<uint64_t>(section.size, m_bytes.size() - start);
    return m_bytes.subspan(start, count);
}

bool DictionaryFile::hasMagic() const
{
    return byteAt(0) == 0xFF && byteAt(1) == 0x00 && byteAt(2) == 0x28;
}

Section DictionaryFile::sliceOf(unsigned prefix) const
{
    const uint64_t entry = uint64_t{u32(YDIC_AT_CODE_INDEX1)} + uint64_t{prefix} * YDIC_LEVEL1_ENTRY;
    const unsigned start = u16(entry + 1);
    const unsigned end = u16(entry + YDIC_LEVEL1_ENTRY + 1);
    return {uint64_t{u32(YDIC_AT_BASE_A)} + start, end > start ? end - start : 0U};
}

unsigned DictionaryFile::prefectureOf(unsigned prefix) const
{
    return byteAt(uint64_t{u32(YDIC_AT_CODE_INDEX1)} + uint64_t{prefix} * YDIC_LEVEL1_ENTRY);
}

std::vector<IndexEntry> DictionaryFile::codeIndex() const
{
    const uint64_t base = u32(YDIC_AT_BASE_B);
    std::vector<IndexEntry> entries;
    uint64_t done = 0;
    for (unsigned prefix = 0; prefix < YDIC_PREFIXES; ++prefix) {
        const Section slice = sliceOf(prefix);
        if (slice.offset < done)
            continue;
        done = slice.end();
        for (uint64_t at = slice.offset; at + YDIC_LEVEL2_ENTRY <= std::min(slice.end(), size());
             at += YDIC_LEVEL2_ENTRY) {
            const uint32_t start = u24(at + 2);
            const uint32_t end = u24(at + YDIC_LEVEL2_ENTRY + 2);
            entries.push_back(
                {at, prefix, u16(at), byteAt(at + 5), {base + start, end > start ? end - start : 0U}});
        }
    }
    return entries;
}

Record DictionaryFile::recordAt(const Section &section) const
{
    Record record;
    const uint64_t end = std::min(section.end(), size());
    uint64_t at = section.offset;
    const auto takes = [&](unsigned mark) {
        const bool isThere = at < end && byteAt(at) == mark;
        at += isThere ? 1 : 0;
        return isThere;
    };
    record.code = static_cast<uint8_t>(byteAt(at++));
    record.cancels = takes(YDIC_MARK_CANCELS);
    record.isSilent = takes(YDIC_MARK_SILENT);
    if (takes(YDIC_MARK_WHOLE)) {
        record.isWhole = true;
    } else if (takes(YDIC_MARK_COMPLETE)) {
        record.isComplete = true;
        record.isSilencedTooEarly = record.isSilent;
        record.completeCode = u24(at);
        at += 3;
        record.isSilent = takes(YDIC_MARK_SILENT) || record.isSilent;
    }
    at = std::min(at, end);
    record.text.offset = at;
    while (at < end && !isRecordStart(byteAt(at)))
        ++at;
    record.text.size = at - record.text.offset;
    record.whole = {section.offset, at - std::min(at, section.offset)};
    return record;
}

Chunk DictionaryFile::chunkAt(const Section &section) const
{
    Chunk chunk;
    const uint64_t end = std::min(section.end(), size());
    chunk.whole = section;
    chunk.fiveDigits = u24(section.offset);
    uint64_t at = std::min(section.offset + YDIC_CHUNK_HEADER, end);
    chunk.common.offset = at;
    if (byteAt(at) > YDIC_MARK_SILENT) {
        while (at < end && byteAt(at) > YDIC_MARK_SILENT)
            ++at;
    }
    chunk.common.size = at - chunk.common.offset;
    while (at < end) {
        chunk.records.push_back(recordAt({at, end - at}));
        at = chunk.records.back().whole.end();
    }
    return chunk;
}

std::string DictionaryFile::decoded(uint8_t byte) const
{
    if (byte > LastOneByteCode)
        return {static_cast<char>(byte & 0x7F)};
    if (byte < YDIC_ASK1JI_FIRST)
        return {};
    const uint64_t at = YDIC_HEADER_LENGTH + uint64_t{byte - unsigned{YDIC_ASK1JI_FIRST}} * 2;
    return {static_cast<char>(byteAt(at)), static_cast<char>(byteAt(at + 1))};
}

std::string DictionaryFile::shownText(const Section &text) const
{
    std::string shown;
    bool isHidden = false;
    for (const uint8_t byte : bytes(text)) {
        if (byte == YDIC_MARK_END)
            break;
        if (byte == YDIC_MARK_HIDDEN)
            isHidden = !isHidden;
        else if (!isHidden)
            shown += decoded(byte);
    }
    return shown;
}

std::string DictionaryFile::matchedText(const Section &text) const
{
    std::string matched;
    bool isShownOnly = false;
    for (const uint8_t byte : bytes(text)) {
        if (byte == YDIC_MARK_SHOWN)
            isShownOnly = !isShownOnly;
        else if (!isShownOnly)
            matched += decoded(byte);
    }
    return matched;
}

std::string DictionaryFile::shownRecord(const Chunk &chunk, const Record &record) const
{
    if (record.isComplete)
        return shownText(record.text);
    const unsigned prefecture = prefectureOf(chunk.fiveDigits / 1000);
    std::string shown = prefecture <= YDIC_PREFECTURES ? Tdfk_tbl[prefecture] : "";
    shown += "\x21\x3F"; // ／
    shown += shownText(chunk.common);
    if (!record.isWhole)
        shown += shownText(record.text);
    return shown;
}

std::vector<NumberRun> DictionaryFile::numberRuns() const
{
    std::vector<NumberRun> runs;
    const unsigned count = u16(uint64_t{u32(YDIC_AT_NUMBER_INDEX)} + NumberIndexEnd);
    uint64_t at = u32(YDIC_AT_NUMBER_RUNS);
    for (unsigned run = 0; run < count && at + YDIC_RUN <= size(); ++run, at += YDIC_RUN)
        runs.push_back({at, u24(at), byteAt(at + 3)});
    return runs;
}

Section DictionaryFile::addressLevel1() const
{
    return {u24(YDIC_AT_ADDRESS_INDEX1 + 1), u24(YDIC_AT_ADDRESS_INDEX1 + 5)};
}

Section DictionaryFile::addressLevel2() const
{
    const Section level1 = addressLevel1();
    const unsigned keysEnd = u16(level1.offset + level1.size / YDIC_ADDRESS1_ENTRY * YDIC_ADDRESS1_ENTRY + 4);
    const uint64_t start = u24(YDIC_AT_ADDRESS_INDEX2 + 1);
    return {start, std::max(keysEnd, u16(YDIC_AT_SECOND_START) == 0 ? 0U : u16(YDIC_AT_SECOND_END))};
}

Section DictionaryFile::secondRange() const
{
    const unsigned start = u16(YDIC_AT_SECOND_START);
    const unsigned end = u16(YDIC_AT_SECOND_END);
    return {uint64_t{u24(YDIC_AT_ADDRESS_INDEX2 + 1)} + start, start != 0 && end > start ? end - start : 0U};
}

std::vector<AddressKey> DictionaryFile::addressKeys() const
{
    std::vector<AddressKey> keys;
    const Section level1 = addressLevel1();
    const uint64_t base = u24(YDIC_AT_ADDRESS_INDEX2 + 1);
    const uint64_t count = std::min(level1.size, AddressLevel1Room) / YDIC_ADDRESS1_ENTRY;
    for (uint64_t key = 0; key < count; ++key) {
        const uint64_t at = level1.offset + key * YDIC_ADDRESS1_ENTRY;
        const std::span<const uint8_t> characters = bytes({at, 4});
        const unsigned start = u16(at + 4);
        const unsigned end = u16(at + YDIC_ADDRESS1_ENTRY + 4);
        keys.push_back(
            {at, {characters.begin(), characters.end()}, {base + start, end > start ? end - start : 0U}});
    }
    return keys;
}

std::optional<Group> DictionaryFile::groupAt(const Section &section) const
{
    const unsigned head = u16(section.offset);
    Group group;
    group.at = section.offset;
    group.prefecture = head >> 10;
    group.keyField = head >> 6 & 0xF;
    const unsigned count = head & 0x3F;
    uint64_t at = section.offset + 2;
    const uint64_t keyBytes = group.keyField == 0 ? 0 : uint64_t{group.keyField - 1} * 2 + 1;
    group.end = at + keyBytes + uint64_t{count} * YDIC_REFERENCE;
    if (group.end > std::min(section.end(), size()))
        return std::nullopt;
    if (group.keyField != 0) {
        const std::span<const uint8_t> key = bytes({at, keyBytes - 1});
        group.key.assign(key.begin(), key.end());
        group.suffix = byteAt(at + keyBytes - 1);
        at += keyBytes;
    }
    for (; at < group.end; at += YDIC_REFERENCE) {
        const unsigned length = u16(at + 3);
        group.references.push_back(
            {at, {uint64_t{u32(YDIC_AT_BASE_A)} + u24(at), length & 0x7FFFU}, (length & 0x8000U) != 0});
    }
    return group;
}

} // namespace ZipDict
