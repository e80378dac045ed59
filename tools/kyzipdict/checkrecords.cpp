#include "checkparts_p.h"
#include "jistext.h"
#include <algorithm>
#include <cinttypes>

namespace ZipDict {

namespace {

constexpr unsigned LastCode = 99;
constexpr unsigned LastOneByteCode = 160;

bool isCharacter(unsigned first, unsigned second)
{
    const std::string jis = {static_cast<char>(first & 0x7F), static_cast<char>(second & 0x7F)};
    return first > LastOneByteCode && second > LastOneByteCode && fromJis(jis) != u"\uFFFD";
}

/* Characters only, and the marks that @p marks allows. */
void checkText(const DictionaryFile &file, const Section &text, std::string_view marks, Findings &findings)
{
    for (uint64_t at = text.offset; at < text.end(); ++at) {
        const unsigned byte = file.byteAt(at);
        if (byte < YDIC_ASK1JI_FIRST) {
            if (marks.find(static_cast<char>(byte)) == std::string_view::npos)
                findings.add(at, "byte %u has no meaning in a text", byte);
        } else if (byte > LastOneByteCode) {
            const unsigned second = at + 1 < text.end() ? file.byteAt(at + 1) : 0;
            if (!isCharacter(byte, second)) {
                findings.add(at, "%02x %02x is no character", byte, second);
                return;
            }
            ++at;
        }
    }
}

void checkPairs(const DictionaryFile &file, const Section &text, Findings &findings)
{
    const std::span<const uint8_t> bytes = file.bytes(text);
    for (const unsigned mark : {YDIC_MARK_SHOWN, YDIC_MARK_HIDDEN}) {
        if (std::ranges::count(bytes, mark) % 2 != 0)
            findings.add(text.offset, "mark %02x has no partner", mark);
    }
    if (std::ranges::count(bytes, unsigned{YDIC_MARK_END}) > 1)
        findings.add(text.offset, "the text ends more than once");
}

void checkComplete(const DictionaryFile &file, const Record &record, uint32_t code, Findings &findings)
{
    if (record.isSilencedTooEarly)
        findings.add(record.whole.offset,
                     "record of %07" PRIu32 ": its number stands behind the mark of silence", code);
    if (record.completeCode != code)
        findings.add(record.whole.offset, "record of %07" PRIu32 " says that it is %07" PRIu32, code,
                     record.completeCode);
    if (!record.cancels && file.shownText(record.text).find("\x21\x3F") == std::string::npos)
        findings.add(record.whole.offset, "complete record of %07" PRIu32 " has no solidus", code);
}

} // namespace

void checkRecord(const DictionaryFile &file, const Record &record, uint32_t code, Findings &findings)
{
    if (record.code > LastCode) {
        findings.add(record.whole.offset, "a record begins with byte %u", unsigned{record.code});
        return;
    }
    if (record.cancels && !file.isPatch())
        findings.add(record.whole.offset, "record of %07" PRIu32 " cancels, in a dictionary", code);
    if (record.isComplete)
        checkComplete(file, record, code, findings);
    const bool endsAtOnce = record.text.size == 1 && file.byteAt(record.text.offset) == YDIC_MARK_END;
    if (record.isWhole && record.text.size != 0 && !endsAtOnce)
        findings.add(record.whole.offset, "record of %07" PRIu32 " is the whole area, and has a text", code);
    checkText(file, record.text, "\x65\x66\x67", findings);
    checkPairs(file, record.text, findings);
}

void checkChunk(const DictionaryFile &file, const Chunk &chunk, Findings &findings)
{
    checkText(file, chunk.common, "", findings);
    if (chunk.records.empty())
        findings.add(chunk.whole.offset, "the chunk of %05" PRIu32 " has no record", chunk.fiveDigits);
    unsigned least = 0;
    for (const Record &record : chunk.records) {
        if (record.code < least)
            findings.add(record.whole.offset, "record %02u of %05" PRIu32 " stands behind %02u",
                         unsigned{record.code}, chunk.fiveDigits, least);
        least = std::max<unsigned>(least, record.code);
        checkRecord(file, record, chunk.fiveDigits * 100 + record.code, findings);
    }
}

} // namespace ZipDict
