#include "checkparts_p.h"
#include "jistext.h"
#include "ydicsearch.h"
#include "ydictables_p.h"
#include <cinttypes>

namespace ZipDict {

namespace {

constexpr unsigned LastSuffix = 4; // 村

class AddressCheck
{
public:
    AddressCheck(const DictionaryFile &file, const CodeChunks &codes, Findings &findings)
        : m_file(file), m_codes(codes), m_findings(findings)
    {
    }

    void run();

private:
    bool checkKeys();
    void checkSecondRange();
    void checkSlice(const Section &slice);
    void checkGroup(const Group &group);
    void checkReference(const Reference &reference);
    void checkComplete(const Reference &reference);
    void checkOwnChunk(const Reference &reference);
    [[nodiscard]] bool isAmongCodes(const Section &section) const;
    void checkReached();

    const DictionaryFile &m_file;
    const CodeChunks &m_codes;
    Findings &m_findings;
    std::set<Section> m_reached;
};

bool isText(const std::string &jis)
{
    return fromJis(jis).find(u'\uFFFD') == std::u16string::npos;
}

bool AddressCheck::checkKeys()
{
    const Section level1 = m_file.addressLevel1();
    if (level1.size % YDIC_ADDRESS1_ENTRY != 0) {
        m_findings.add(YDIC_AT_ADDRESS_INDEX1 + 4,
                       "level 1 of the address index has %" PRIu64 " bytes, which are no entries of 6",
                       level1.size);
        return false;
    }
    if (level1.size + YDIC_ADDRESS1_ENTRY > AddressLevel1Room) {
        m_findings.add(YDIC_AT_ADDRESS_INDEX1 + 4,
                       "level 1 of the address index has %" PRIu64 " keys, 1705 at most fit",
                       level1.size / YDIC_ADDRESS1_ENTRY);
        return false;
    }
    bool isGood = true;
    const std::vector<AddressKey> keys = m_file.addressKeys();
    for (size_t i = 0; i < keys.size(); ++i) {
        if (!isText(keys[i].key))
            m_findings.add(keys[i].at, "key %08" PRIx32 " is no text", m_file.u32(keys[i].at));
        else if (i > 0 && keys[i].key <= keys[i - 1].key)
            m_findings.add(keys[i].at, "key %s doesn't stand behind the keys before it",
                           toUtf8(fromJis(keys[i].key)).c_str());
        const unsigned start = m_file.u16(keys[i].at + 4);
        if (const unsigned end = m_file.u16(keys[i].at + YDIC_ADDRESS1_ENTRY + 4); end < start) {
            m_findings.add(keys[i].at, "the slice of key %s ends at %u, before its start %u",
                           toUtf8(fromJis(keys[i].key)).c_str(), end, start);
            isGood = false;
        }
    }
    return isGood;
}

void AddressCheck::checkSecondRange()
{
    const unsigned start = m_file.u16(YDIC_AT_SECOND_START);
    const unsigned end = m_file.u16(YDIC_AT_SECOND_END);
    if (start == 0 ? end != 0 : end <= start)
        m_findings.add(YDIC_AT_SECOND_START, "the second range of the address index goes from %u to %u",
                       start, end);
}

void AddressCheck::checkSlice(const Section &slice)
{
    for (uint64_t at = slice.offset; at < slice.end();) {
        const std::optional<Group> group = m_file.groupAt({at, slice.end() - at});
        if (!group) {
            m_findings.add(at, "a group doesn't end in its slice");
            return;
        }
        checkGroup(*group);
        at = group->end;
    }
}

void AddressCheck::checkGroup(const Group &group)
{
    if (group.prefecture == 0 || group.prefecture > YDIC_PREFECTURES)
        m_findings.add(group.at, "a group is of prefecture %u", group.prefecture);
    if (!isText(group.key))
        m_findings.add(group.at, "the key of a group is no text");
    if (group.keyField != 0 && (group.suffix == 0 || group.suffix > LastSuffix))
        m_findings.add(group.at, "the key of a group ends in class %u", group.suffix);
    for (const Reference &reference : group.references)
        checkReference(reference);
}

bool AddressCheck::isAmongCodes(const Section &section) const
{
    return section.offset < m_codes.all.end() && section.end() > m_codes.all.offset;
}

void AddressCheck::checkReference(const Reference &reference)
{
    if (!m_file.has(reference.target))
        m_findings.add(reference.at, "a reference lies outside the file");
    else if (!m_reached.insert(reference.target).second)
        return;
    else if (reference.isComplete)
        checkComplete(reference);
    else if (reference.target.size > YDIC_READ_LENGTH)
        m_findings.add(reference.at, "a reference has %" PRIu64 " bytes, 10240 at most are read",
                       reference.target.size);
    else if (!isAmongCodes(reference.target))
        checkOwnChunk(reference);
    else if (!m_codes.whole.contains(reference.target))
        m_findings.add(reference.at, "a reference isn't a chunk from its start to its end");
}

void AddressCheck::checkComplete(const Reference &reference)
{
    if (isAmongCodes(reference.target)) {
        if (!m_codes.complete.contains(reference.target))
            m_findings.add(reference.at, "a direct reference isn't a complete record");
        return;
    }
    const Record record = m_file.recordAt(reference.target);
    if (!record.isComplete || record.whole != reference.target)
        m_findings.add(reference.at, "a direct reference isn't a complete record");
    else
        checkRecord(m_file, record, record.completeCode / 100 * 100 + record.code, m_findings);
}

/* A chunk that only addresses lead to: of a place in another prefecture than its code says. */
void AddressCheck::checkOwnChunk(const Reference &reference)
{
    const Chunk chunk = m_file.chunkAt(reference.target);
    checkChunk(m_file, chunk, m_findings);
    for (const Record &record : chunk.records) {
        const uint32_t code = chunk.fiveDigits * 100 + record.code;
        if (!m_file.isPatch() && !m_codes.shownCodes.contains(code))
            m_findings.add(record.whole.offset, "an address leads to code %07" PRIu32 ", which has none",
                           code);
    }
}

void AddressCheck::checkReached()
{
    for (const Section &chunk : m_codes.forAddresses) {
        if (!m_reached.contains(chunk))
            m_findings.add(chunk.offset, "no address leads to the chunk of %05" PRIu32,
                           m_file.u24(chunk.offset));
    }
}

void AddressCheck::run()
{
    if (!checkKeys())
        return;
    for (const AddressKey &key : m_file.addressKeys())
        checkSlice(key.slice);
    checkSecondRange();
    checkSlice(m_file.secondRange());
    checkReached();
}

} // namespace

void checkAddresses(const DictionaryFile &file, const CodeChunks &codes, Findings &findings)
{
    AddressCheck(file, codes, findings).run();
}

} // namespace ZipDict
