#include "dictionarywriter.h"

#include "addressindex.h"
#include "dictionaryfile.h"
#include "jistext.h"
#include "numberruns.h"
#include "ydicbytes_p.h"
#include "ydictables_p.h"
#include <algorithm>
#include <set>

namespace ZipDict {

namespace {

bool isText(const std::u16string &text)
{
    return toJis(text).has_value();
}

/* What makes an entry unusable; empty: nothing. */
std::string entryError(const Entry &entry)
{
    const Place &place = entry.place;
    const std::string name =
        std::to_string(place.code) + " " + toUtf8(place.municipality + place.town) + ": ";
    if (place.code > LargestCode)
        return name + "a code has seven digits";
    if (place.prefecture == 0 || place.prefecture > YDIC_PREFECTURES)
        return name + "a prefecture has a number from 1 to 47";
    const bool isAllText = isText(place.municipality) && isText(place.town) && isText(place.matched) &&
                           std::all_of(place.aliases.begin(), place.aliases.end(), isText);
    return isAllText ? std::string() : name + "there are characters outside JIS X 0208";
}

std::vector<std::string> entryErrors(const std::vector<Entry> &entries)
{
    std::vector<std::string> errors;
    for (const Entry &entry : entries) {
        if (std::string error = entryError(entry); !error.empty())
            errors.push_back(std::move(error));
    }
    const auto isBefore = [](const Entry &a, const Entry &b) { return a.place.code < b.place.code; };
    if (!std::is_sorted(entries.begin(), entries.end(), isBefore))
        errors.emplace_back("the places are not in the order of their codes");
    return errors;
}

std::vector<uint32_t> existingCodes(const std::vector<Entry> &entries)
{
    std::vector<uint32_t> codes;
    for (const Entry &entry : entries) {
        if (!entry.cancels && (codes.empty() || codes.back() != entry.place.code))
            codes.push_back(entry.place.code);
    }
    return codes;
}

/* Common texts are counted once for five digits, which is about as often as they are written. */
OneByteCodes chooseCodes(const Records &records)
{
    OneByteCodes codes;
    std::set<std::pair<uint32_t, size_t>> seen;
    for (const std::vector<WrittenRecord> *list : {&records.byCode, &records.byAddress, &records.direct}) {
        for (const WrittenRecord &record : *list) {
            codes.count(record.text);
            if (record.municipality != NoMunicipality &&
                seen.emplace(fiveDigits(record.code), record.municipality).second)
                codes.count(records.municipalities[record.municipality].shown);
        }
    }
    codes.choose();
    return codes;
}

Bytes changeTable(const std::vector<Change> &changes)
{
    Text text;
    for (const Change &change : changes)
        text += numberText(change.code, 3) + numberText(static_cast<uint32_t>(change.kind), 1);
    return {text.begin(), text.end()};
}

/** Puts sections one behind the other, and tells the header where. */
class Layout
{
public:
    explicit Layout(const FileIdentity &identity);

    /** @param field offset of the header where the section's place and size go */
    void add(size_t field, const Bytes &section);
    void append(const Bytes &section) { m_bytes.insert(m_bytes.end(), section.begin(), section.end()); }
    void setNumber(size_t field, size_t number, unsigned count);
    [[nodiscard]] Bytes take();

private:
    Bytes m_bytes = Bytes(YDIC_HEADER_LENGTH);
};

Layout::Layout(const FileIdentity &identity)
{
    constexpr uint8_t Magic[] = {0xFF, 0x00, 0x28};
    std::copy(std::begin(Magic), std::end(Magic), m_bytes.begin());
    m_bytes[YDIC_AT_TYPE] = identity.isPatch ? YDIC_PATCH : YDIC_DICTIONARY;
    m_bytes[YDIC_AT_CORRECTS] = identity.corrects;
    m_bytes[YDIC_AT_EDITION] = identity.edition;
    m_bytes[YDIC_AT_SERIAL] = identity.serial;
}

void Layout::add(size_t field, const Bytes &section)
{
    setNumber(field, m_bytes.size(), 4);
    setNumber(field + 4, section.size(), 4);
    append(section);
}

void Layout::setNumber(size_t field, size_t number, unsigned count)
{
    const Text bytes = numberText(static_cast<uint32_t>(number), count);
    std::copy(bytes.begin(), bytes.end(), m_bytes.begin() + static_cast<Bytes::difference_type>(field));
}

Bytes Layout::take()
{
    setNumber(YDIC_AT_FILE_SIZE, m_bytes.size(), 4);
    return std::move(m_bytes);
}

/** The sections of a file. */
struct Sections
{
    Bytes oneByteCodes;
    Chunks chunks;
    NumberRuns numbers;
    Bytes changes;
    AddressIndex addresses;
};

Bytes layOut(const FileIdentity &identity, const Sections &sections)
{
    const AddressIndex &addresses = sections.addresses;
    Layout layout(identity);
    layout.append(sections.oneByteCodes);
    layout.add(YDIC_AT_CODE_INDEX1, sections.chunks.level1);
    layout.add(YDIC_AT_BASE_A, sections.chunks.level2);
    layout.add(YDIC_AT_BASE_B, sections.chunks.bytes);
    layout.add(YDIC_AT_NUMBER_INDEX, sections.numbers.index);
    layout.add(YDIC_AT_NUMBER_RUNS, sections.numbers.runs);
    layout.add(YDIC_AT_CHANGES, sections.changes);
    layout.add(YDIC_AT_ADDRESS_INDEX1, addresses.level1);
    layout.setNumber(YDIC_AT_ADDRESS_INDEX1 + 4, addresses.level1.size() - YDIC_ADDRESS1_ENTRY, 4);
    layout.add(YDIC_AT_ADDRESS_INDEX2, addresses.level2);
    layout.setNumber(YDIC_AT_SLICE_LIMIT, sections.chunks.largestSlice + YDIC_LEVEL2_ENTRY + 1, 4);
    layout.setNumber(YDIC_AT_SECOND_START, addresses.secondStart, 2);
    layout.setNumber(YDIC_AT_SECOND_END, addresses.secondEnd, 2);
    return layout.take();
}

void append(std::vector<std::string> &errors, const std::vector<std::string> &more)
{
    errors.insert(errors.end(), more.begin(), more.end());
}

} // namespace

WrittenFile writeDictionary(const FileIdentity &identity, const std::vector<Entry> &entries,
                            const std::vector<Change> &changes)
{
    WrittenFile file;
    file.errors = entryErrors(entries);
    if (!file.errors.empty())
        return file;
    const Records records = recordsOf(entries);
    const OneByteCodes codes = chooseCodes(records);
    Sections sections = {codes.table(),
                         writeChunks(records, codes),
                         writeNumberRuns(existingCodes(entries)),
                         changeTable(changes),
                         {}};
    sections.addresses = writeAddressIndex(records.municipalities, sections.chunks.references);
    file.keysLeftOut = sections.addresses.keysLeftOut;
    append(file.errors, sections.chunks.errors);
    append(file.errors, sections.numbers.errors);
    append(file.errors, sections.addresses.errors);
    Bytes bytes = layOut(identity, sections);
    if (bytes.size() >= LargestFile)
        file.errors.emplace_back("the file is too large: " + std::to_string(bytes.size()) + " bytes");
    if (file.errors.empty())
        file.bytes = std::move(bytes);
    return file;
}

WrittenFile writeDictionary(uint8_t edition, const std::vector<Place> &places)
{
    std::vector<Entry> entries;
    entries.reserve(places.size());
    for (const Place &place : places)
        entries.push_back({place, false});
    return writeDictionary({edition}, entries, {});
}

} // namespace ZipDict
