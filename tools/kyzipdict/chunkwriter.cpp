#include "chunkwriter.h"

#include "ydicbytes_p.h"
#include <algorithm>
#include <map>
#include <span>

namespace ZipDict {

namespace {

constexpr size_t LongestChunk = YDIC_CHUNK_LENGTH - 1; ///< what a search by code reads at once
constexpr uint16_t CompleteAddress = 0x8000;
constexpr uint32_t BehindAllCodes = 0xFFFF;

/** Records that share their first five digits and their municipality. */
struct Chunk
{
    uint32_t fiveDigits = 0;
    size_t municipality = NoMunicipality;
    std::vector<const WrittenRecord *> records;
};

bool fitTogether(size_t municipality, size_t other)
{
    return municipality == other || municipality == NoMunicipality || other == NoMunicipality;
}

void append(Chunk &chunk, const std::vector<const WrittenRecord *> &records, size_t municipality)
{
    chunk.records.insert(chunk.records.end(), records.begin(), records.end());
    if (chunk.municipality == NoMunicipality)
        chunk.municipality = municipality;
}

/* The records of one code: a new chunk for each change of the municipality. */
std::vector<Chunk> chunksOfCode(std::span<const WrittenRecord> records)
{
    std::vector<Chunk> chunks;
    for (const WrittenRecord &record : records) {
        if (chunks.empty() || !fitTogether(chunks.back().municipality, record.municipality))
            chunks.push_back({fiveDigits(record.code), NoMunicipality, {}});
        append(chunks.back(), {&record}, record.municipality);
    }
    return chunks;
}

std::string codeText(uint32_t code)
{
    const std::string digits = std::to_string(code);
    return std::string(7 - digits.size(), '0') + digits;
}

class ChunkWriter
{
public:
    ChunkWriter(const Records &records, const OneByteCodes &codes) : m_records(records), m_codes(codes)
    {
        m_chunks.references.resize(records.municipalities.size());
    }

    [[nodiscard]] Chunks write();

private:
    [[nodiscard]] size_t commonLength(size_t municipality) const;
    [[nodiscard]] size_t recordsLength(const Chunk &chunk) const;
    [[nodiscard]] size_t length(const Chunk &chunk) const;
    void plan(std::span<const WrittenRecord> ofOneCode);
    [[nodiscard]] bool joinLast(const Chunk &chunk);
    void writeIndex();
    void writeByAddress();
    void writeChunk(const Chunk &chunk);
    void writeDirect(const WrittenRecord &record);
    [[nodiscard]] uint32_t nextOffset() const;
    void refer(size_t municipality, uint32_t start, uint16_t kind, NameForm form);

    const Records &m_records;
    const OneByteCodes &m_codes;
    std::vector<Chunk> m_planned;
    size_t m_groupLength = 0; ///< of the last planned chunks, those that one search reads together
    Chunks m_chunks;
};

size_t ChunkWriter::commonLength(size_t municipality) const
{
    return municipality == NoMunicipality ? 0 : m_codes.length(m_records.municipalities[municipality].shown);
}

size_t ChunkWriter::recordsLength(const Chunk &chunk) const
{
    size_t length = 0;
    for (const WrittenRecord *record : chunk.records)
        length += m_codes.length(record->text);
    return length;
}

size_t ChunkWriter::length(const Chunk &chunk) const
{
    return YDIC_CHUNK_HEADER + commonLength(chunk.municipality) + recordsLength(chunk);
}

bool ChunkWriter::joinLast(const Chunk &chunk)
{
    if (m_planned.empty() || m_planned.back().fiveDigits != chunk.fiveDigits ||
        !fitTogether(m_planned.back().municipality, chunk.municipality))
        return false;
    Chunk &last = m_planned.back();
    const bool getsCommonText = last.municipality == NoMunicipality;
    const size_t added = recordsLength(chunk) + (getsCommonText ? commonLength(chunk.municipality) : 0);
    if (m_groupLength + added > LongestChunk)
        return false;
    append(last, chunk.records, chunk.municipality);
    m_groupLength += added;
    return true;
}

/* A search reads all chunks that begin with the same last digits, and ends at the first greater ones. So when
 * a code needs several chunks, only the last of them can go on with further codes. */
void ChunkWriter::plan(std::span<const WrittenRecord> ofOneCode)
{
    const std::vector<Chunk> chunks = chunksOfCode(ofOneCode);
    if (chunks.size() == 1 && joinLast(chunks.front()))
        return;
    m_groupLength = 0;
    for (const Chunk &chunk : chunks)
        m_groupLength += length(chunk);
    if (m_groupLength > LongestChunk)
        m_chunks.errors.push_back(codeText(ofOneCode.front().code) + ": too many places for one code");
    m_planned.insert(m_planned.end(), chunks.begin(), chunks.end());
}

uint32_t ChunkWriter::nextOffset() const
{
    const size_t level2Length = (m_planned.size() + 1) * YDIC_LEVEL2_ENTRY;
    return static_cast<uint32_t>(level2Length + m_chunks.bytes.size());
}

/* To all that was written since @p start. */
void ChunkWriter::refer(size_t municipality, uint32_t start, uint16_t kind, NameForm form)
{
    const auto length = static_cast<uint16_t>(nextOffset() - start);
    m_chunks.references[municipality].push_back({start, static_cast<uint16_t>(length | kind), form});
}

void ChunkWriter::writeChunk(const Chunk &chunk)
{
    const uint32_t start = nextOffset();
    m_codes.append(m_chunks.bytes, numberText(chunk.fiveDigits, YDIC_CHUNK_HEADER));
    if (chunk.municipality != NoMunicipality)
        m_codes.append(m_chunks.bytes, m_records.municipalities[chunk.municipality].shown);
    for (const WrittenRecord *record : chunk.records)
        m_codes.append(m_chunks.bytes, record->text);
    if (chunk.municipality != NoMunicipality)
        refer(chunk.municipality, start, 0, NameForm::Both);
}

/* Level 2 of the code index, with an entry behind its end: it ends the last chunk. */
void ChunkWriter::writeIndex()
{
    size_t next = 0;
    for (uint32_t prefix = 0; prefix < YDIC_PREFIXES; ++prefix) {
        const size_t start = m_chunks.level2.size();
        m_codes.append(m_chunks.level1, numberText(m_records.prefectureOfPrefix[prefix], 1) +
                                            numberText(static_cast<uint32_t>(start), 2));
        for (; next < m_planned.size() && m_planned[next].fiveDigits / 1000 == prefix; ++next) {
            const Chunk &chunk = m_planned[next];
            m_codes.append(m_chunks.level2, numberText(chunk.fiveDigits % 1000, 2) +
                                                numberText(static_cast<uint32_t>(m_chunks.bytes.size()), 3) +
                                                numberText(lastDigits(chunk.records.front()->code), 1));
            writeChunk(chunk);
        }
        m_chunks.largestSlice =
            std::max(m_chunks.largestSlice, static_cast<uint32_t>(m_chunks.level2.size() - start));
    }
    if (m_chunks.level2.size() > UINT16_MAX)
        m_chunks.errors.emplace_back("the code index is full: too many areas of five digits");
    const auto end = static_cast<uint32_t>(m_chunks.level2.size());
    m_codes.append(m_chunks.level1, numberText(0, 1) + numberText(end, 2));
    m_codes.append(m_chunks.level2, numberText(BehindAllCodes, 2) +
                                        numberText(static_cast<uint32_t>(m_chunks.bytes.size()), 3) +
                                        numberText(0, 1));
}

/* Chunks that the code index doesn't name. */
void ChunkWriter::writeByAddress()
{
    std::map<std::pair<uint32_t, size_t>, Chunk> open;
    for (const WrittenRecord &record : m_records.byAddress) {
        Chunk &chunk = open[{fiveDigits(record.code), record.municipality}];
        if (length(chunk) + m_codes.length(record.text) > LongestChunk) {
            writeChunk(chunk);
            chunk = {};
        }
        chunk.fiveDigits = fiveDigits(record.code);
        append(chunk, {&record}, record.municipality);
    }
    for (const auto &[key, chunk] : open)
        writeChunk(chunk);
}

void ChunkWriter::writeDirect(const WrittenRecord &record)
{
    const uint32_t start = nextOffset();
    m_codes.append(m_chunks.bytes, record.text);
    refer(record.municipality, start, CompleteAddress, record.form);
}

Chunks ChunkWriter::write()
{
    const std::vector<WrittenRecord> &records = m_records.byCode;
    for (size_t start = 0, end = 0; start < records.size(); start = end) {
        while (end < records.size() && records[end].code == records[start].code)
            ++end;
        plan(std::span(records).subspan(start, end - start));
    }
    writeIndex();
    writeByAddress();
    for (const WrittenRecord &record : m_records.direct)
        writeDirect(record);
    return std::move(m_chunks);
}

} // namespace

Chunks writeChunks(const Records &records, const OneByteCodes &codes)
{
    return ChunkWriter(records, codes).write();
}

} // namespace ZipDict
