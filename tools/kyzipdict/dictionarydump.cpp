#include "dictionarycheck.h"

#include "dictionaryfile.h"
#include "jistext.h"
#include "ydictables_p.h"
#include <cinttypes>

namespace ZipDict {

namespace {

struct NamedField
{
    const char *name;
    unsigned at;
    unsigned bytes;
};

constexpr NamedField Fields[] = {
    {"edition", YDIC_AT_EDITION, 1},
    {"code index, level 1", YDIC_AT_CODE_INDEX1, 4},
    {"base A", YDIC_AT_BASE_A, 4},
    {"base B", YDIC_AT_BASE_B, 4},
    {"address index, level 1", YDIC_AT_ADDRESS_INDEX1, 4},
    {"address index, level 1, bytes", YDIC_AT_ADDRESS_INDEX1 + 4, 4},
    {"address index, level 2", YDIC_AT_ADDRESS_INDEX2, 4},
    {"number index", YDIC_AT_NUMBER_INDEX, 4},
    {"number index, bytes", YDIC_AT_NUMBER_INDEX + 4, 4},
    {"number runs", YDIC_AT_NUMBER_RUNS, 4},
    {"change table", YDIC_AT_CHANGES, 4},
    {"change table, bytes", YDIC_AT_CHANGES + 4, 4},
    {"slice limit", YDIC_AT_SLICE_LIMIT, 4},
    {"second range, start", YDIC_AT_SECOND_START, 2},
    {"second range, end", YDIC_AT_SECOND_END, 2},
    {"file size", YDIC_AT_FILE_SIZE, 4},
};
constexpr NamedField PatchFields[] = {
    {"corrects edition", YDIC_AT_CORRECTS, 1},
    {"serial", YDIC_AT_SERIAL, 1},
};

std::string utf8(const std::string &jis)
{
    return toUtf8(fromJis(jis));
}

std::string prefectureText(unsigned number)
{
    return number <= YDIC_PREFECTURES ? utf8(Tdfk_tbl[number]) : "?";
}

void dumpField(const DictionaryFile &file, const NamedField &field, FILE *out)
{
    const uint32_t value = field.bytes == 1   ? file.byteAt(field.at)
                           : field.bytes == 2 ? file.u16(field.at)
                                              : file.u32(field.at);
    std::fprintf(out, "%s: %" PRIu32 "\n", field.name, value);
}

void dumpHeader(const DictionaryFile &file, FILE *out)
{
    std::fprintf(out, "kind: %s\n", file.isPatch() ? "patch" : "dictionary");
    if (file.isPatch()) {
        for (const NamedField &field : PatchFields)
            dumpField(file, field, out);
    }
    for (const NamedField &field : Fields)
        dumpField(file, field, out);
    const std::span<const uint8_t> characters = file.bytes({YDIC_HEADER_LENGTH, YDIC_ASK1JI_LENGTH});
    std::fprintf(out, "one-byte characters: %s\n", utf8({characters.begin(), characters.end()}).c_str());
}

std::string marksOf(const Record &record)
{
    std::string marks;
    const auto add = [&](bool isThere, const char *mark) {
        if (isThere)
            marks += std::string(" [") + mark + "]";
    };
    add(record.cancels, "cancels");
    add(record.isSilent, "silent");
    add(record.isWhole, "whole area");
    add(record.isComplete, "complete");
    return marks;
}

void dumpRecord(const DictionaryFile &file, const Chunk &chunk, const Record &record, FILE *out)
{
    std::fprintf(out, "%05" PRIu32 "%02u %s%s", chunk.fiveDigits, unsigned{record.code},
                 utf8(file.shownRecord(chunk, record)).c_str(), marksOf(record).c_str());
    const std::string matched = file.matchedText(record.text);
    if (matched != file.shownText(record.text))
        std::fprintf(out, " [matches: %s]", utf8(matched).c_str());
    std::fputc('\n', out);
}

void dumpChunk(const DictionaryFile &file, const Section &section, FILE *out)
{
    // What follows in a damaged file is no chunk, and a search doesn't read it.
    const Chunk chunk = file.chunkAt({section.offset, std::min<uint64_t>(section.size, YDIC_CHUNK_LENGTH)});
    for (const Record &record : chunk.records)
        dumpRecord(file, chunk, record, out);
}

void dumpCodes(const DictionaryFile &file, FILE *out)
{
    std::fputs("\ncodes\n", out);
    for (const IndexEntry &entry : file.codeIndex())
        dumpChunk(file, entry.chunk, out);
}

const char *suffixText(const Group &group)
{
    constexpr const char *Suffixes[] = {"", "市", "区", "町", "村"};
    return group.suffix < std::size(Suffixes) ? Suffixes[group.suffix] : "?";
}

void dumpGroup(const std::string &key, const Group &group, FILE *out)
{
    size_t direct = 0;
    for (const Reference &reference : group.references)
        direct += reference.isComplete ? 1 : 0;
    std::fprintf(out, "%s%s%s %s: %zu chunks, %zu records\n", utf8(key).c_str(), utf8(group.key).c_str(),
                 suffixText(group), prefectureText(group.prefecture).c_str(),
                 group.references.size() - direct, direct);
}

void dumpSlice(const DictionaryFile &file, const std::string &key, const Section &slice, FILE *out)
{
    for (uint64_t at = slice.offset; at < slice.end();) {
        const std::optional<Group> group = file.groupAt({at, slice.end() - at});
        if (!group)
            return;
        dumpGroup(key, *group, out);
        at = group->end;
    }
}

void dumpAddresses(const DictionaryFile &file, FILE *out)
{
    std::fputs("\naddresses\n", out);
    for (const AddressKey &key : file.addressKeys())
        dumpSlice(file, key.key, key.slice, out);
    constexpr const char *Kashima = "\x3C\x2F\x45\x67"; // 鹿島
    dumpSlice(file, Kashima, file.secondRange(), out);
}

void dumpChanges(const DictionaryFile &file, FILE *out)
{
    constexpr const char *Kinds[] = {"kept", "added", "removed"};
    const Section table = {file.u32(YDIC_AT_CHANGES), file.u32(YDIC_AT_CHANGES + 4)};
    if (table.size == 0)
        return;
    std::fputs("\nchanges\n", out);
    for (uint64_t at = table.offset; at + YDIC_CHANGE <= std::min(table.end(), file.size());
         at += YDIC_CHANGE) {
        const unsigned kind = file.byteAt(at + 3);
        std::fprintf(out, "%07" PRIu32 " %s\n", file.u24(at), kind < std::size(Kinds) ? Kinds[kind] : "?");
    }
}

} // namespace

bool dumpDictionary(std::span<const uint8_t> bytes, FILE *out)
{
    const DictionaryFile file(bytes);
    if (!file.hasMagic() || bytes.size() < SmallestFile)
        return false;
    dumpHeader(file, out);
    dumpCodes(file, out);
    dumpAddresses(file, out);
    dumpChanges(file, out);
    return true;
}

} // namespace ZipDict
