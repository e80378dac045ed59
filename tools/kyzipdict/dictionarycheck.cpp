#include "dictionarycheck.h"

#include "checkparts_p.h"
#include "jistext.h"
#include <cinttypes>

namespace ZipDict {

namespace {

struct NamedSection
{
    const char *name;
    unsigned field; ///< of the header, where its offset stands
    uint64_t size;
};

bool checkKind(const DictionaryFile &file, Findings &findings)
{
    if (file.size() < SmallestFile)
        findings.add(0, "the file has %" PRIu64 " bytes, its header and characters need 232", file.size());
    else if (file.size() > LargestFile)
        findings.add(0, "the file has %" PRIu64 " bytes, offsets reach 16777216", file.size());
    else if (!file.hasMagic())
        findings.add(0, "the file doesn't begin with FF 00 28");
    else if (const unsigned type = file.byteAt(YDIC_AT_TYPE); type != YDIC_DICTIONARY && type != YDIC_PATCH)
        findings.add(YDIC_AT_TYPE, "type %u is neither a dictionary (2) nor a patch (3)", type);
    return findings.isEmpty();
}

void checkIdentity(const DictionaryFile &file, Findings &findings)
{
    const unsigned edition = file.byteAt(YDIC_AT_EDITION);
    const unsigned corrects = file.byteAt(YDIC_AT_CORRECTS);
    if (edition == 0)
        findings.add(YDIC_AT_EDITION, "edition 0 is never used");
    else if (file.isPatch() && corrects == 0)
        findings.add(YDIC_AT_CORRECTS, "the patch corrects edition 0, which is never used");
    else if (file.isPatch() && corrects >= edition)
        findings.add(YDIC_AT_CORRECTS, "the patch makes edition %u of edition %u", edition, corrects);
    if (const uint32_t stored = file.u32(YDIC_AT_FILE_SIZE); stored != file.size())
        findings.add(YDIC_AT_FILE_SIZE, "the file says it has %" PRIu32 " bytes, and has %" PRIu64, stored,
                     file.size());
}

bool checkSection(const DictionaryFile &file, const NamedSection &section, Findings &findings)
{
    const uint32_t offset = file.u32(section.field);
    if (offset >= LargestFile)
        findings.add(section.field, "offset %" PRIu32 " of %s is above 24 bits", offset, section.name);
    else if (!file.has({offset, section.size}))
        findings.add(section.field, "%s (%" PRIu64 " bytes at %" PRIu32 ") lies outside the file",
                     section.name, section.size, offset);
    else
        return true;
    return false;
}

/* The sizes of the address index and of the runs stand in sections that must be there for it. */
bool checkSections(const DictionaryFile &file, Findings &findings)
{
    const uint32_t numberIndexSize = file.u32(YDIC_AT_NUMBER_INDEX + 4);
    const uint32_t level1Size = file.u32(YDIC_AT_ADDRESS_INDEX1 + 4);
    const NamedSection fixed[] = {
        {"level 1 of the code index", YDIC_AT_CODE_INDEX1, YDIC_LEVEL1_LENGTH},
        {"base A", YDIC_AT_BASE_A, 0},
        {"base B", YDIC_AT_BASE_B, 0},
        {"level 1 of the address index", YDIC_AT_ADDRESS_INDEX1, uint64_t{level1Size} + YDIC_ADDRESS1_ENTRY},
        {"level 2 of the address index", YDIC_AT_ADDRESS_INDEX2, 0},
        {"the number index", YDIC_AT_NUMBER_INDEX, numberIndexSize},
        {"the number runs", YDIC_AT_NUMBER_RUNS, 0},
        {"the change table", YDIC_AT_CHANGES, file.u32(YDIC_AT_CHANGES + 4)},
    };
    bool isGood = true;
    for (const NamedSection &section : fixed)
        isGood = checkSection(file, section, findings) && isGood;
    if (!isGood)
        return false;
    constexpr uint64_t NumberIndexLength = NumberIndexEnd + 2;
    if (numberIndexSize < NumberIndexLength) {
        findings.add(YDIC_AT_NUMBER_INDEX + 4, "the number index has %" PRIu32 " bytes, and needs 202",
                     numberIndexSize);
        return false;
    }
    const unsigned runs = file.u16(uint64_t{file.u32(YDIC_AT_NUMBER_INDEX)} + NumberIndexEnd);
    return checkSection(file, {"the last number run", YDIC_AT_NUMBER_RUNS, uint64_t{runs} * YDIC_RUN},
                        findings) &&
           checkSection(
               file,
               {"the end of level 2 of the address index", YDIC_AT_ADDRESS_INDEX2, file.addressLevel2().size},
               findings);
}

void checkOneByteCharacters(const DictionaryFile &file, Findings &findings)
{
    for (uint64_t at = YDIC_HEADER_LENGTH; at < SmallestFile; at += 2) {
        const std::string jis = {static_cast<char>(file.byteAt(at)), static_cast<char>(file.byteAt(at + 1))};
        if (fromJis(jis) == u"\uFFFD")
            findings.add(at, "one-byte code %u stands for %04x, which is no character",
                         static_cast<unsigned>(YDIC_ASK1JI_FIRST + (at - YDIC_HEADER_LENGTH) / 2),
                         file.u16(at));
    }
}

void checkChanges(const DictionaryFile &file, Findings &findings)
{
    const Section table = {file.u32(YDIC_AT_CHANGES), file.u32(YDIC_AT_CHANGES + 4)};
    if (!file.isPatch() && table.size != 0)
        findings.add(YDIC_AT_CHANGES + 4, "a dictionary has no change table");
    if (table.size % YDIC_CHANGE != 0)
        findings.add(YDIC_AT_CHANGES + 4, "the change table has %" PRIu64 " bytes, which are no records of 4",
                     table.size);
    uint32_t least = 0;
    for (uint64_t at = table.offset; at + YDIC_CHANGE <= table.end(); at += YDIC_CHANGE) {
        const uint32_t code = file.u24(at);
        if (code < least || code > LargestCode)
            findings.add(at, "change of %07" PRIu32 ": not ascending, or no code", code);
        if (const unsigned kind = file.byteAt(at + 3); kind > 2)
            findings.add(at + 3, "change of %07" PRIu32 " is of kind %u", code, kind);
        least = code + 1;
    }
}

} // namespace

std::vector<std::string> checkDictionary(std::span<const uint8_t> bytes)
{
    const DictionaryFile file(bytes);
    Findings findings;
    if (!checkKind(file, findings))
        return findings.lines();
    checkIdentity(file, findings);
    if (!checkSections(file, findings))
        return findings.lines();
    checkOneByteCharacters(file, findings);
    checkChanges(file, findings);
    CodeChunks codes;
    if (checkCodes(file, codes, findings)) {
        checkNumbers(file, codes, findings);
        checkAddresses(file, codes, findings);
    }
    return findings.lines();
}

} // namespace ZipDict
