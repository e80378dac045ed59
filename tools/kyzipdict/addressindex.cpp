#include "addressindex.h"

#include "jistext.h"
#include "ydicbytes_p.h"
#include "ydicsearch.h"
#include <algorithm>
#include <map>
#include <numeric>

namespace ZipDict {

namespace {

constexpr size_t MostKeys = size_t{YDIC_READ_LENGTH} / YDIC_ADDRESS1_ENTRY - 1; ///< and the entry behind them
constexpr size_t LongestLevel2 = UINT16_MAX;
constexpr size_t MostReferences = 63; ///< of a group
constexpr size_t KeyCharacters = 2;
constexpr size_t LongestName = KeyCharacters + 15;
constexpr uint8_t Ibaraki = 8;
constexpr uint8_t Saga = 41;

/* A search sees it as the city of Ibaraki, 鹿嶋市, so that it stands in a range of its own. */
constexpr char16_t KashimaCity[] = u"鹿島市";

constexpr char16_t SuffixClasses[] = {u'市', u'区', u'町', u'村'}; ///< the first is class 1

/** A name with its references, as it stands in level 2. */
struct Name
{
    uint8_t prefecture = 0;
    Text characters;
    std::vector<WrittenReference> references;
};

uint8_t suffixClass(char16_t jis)
{
    for (size_t i = 0; i < std::size(SuffixClasses); ++i) {
        if (jisOf(SuffixClasses[i]) == jis)
            return static_cast<uint8_t>(i + 1);
    }
    return 0;
}

std::vector<WrittenReference> referencesOf(const std::vector<WrittenReference> &references, NameForm form)
{
    std::vector<WrittenReference> chosen;
    std::copy_if(references.begin(), references.end(), std::back_inserter(chosen),
                 [form](const WrittenReference &r) { return r.form == form || r.form == NameForm::Both; });
    return chosen;
}

/* K of a group, and what stands behind it. */
size_t keyField(const Name &name)
{
    return name.characters.size() - KeyCharacters;
}

Text keyBytes(const Name &name)
{
    const Text &characters = name.characters;
    Text bytes;
    if (keyField(name) == 0)
        return bytes;
    for (size_t i = KeyCharacters; i + 1 < characters.size(); ++i)
        bytes += numberText(characters[i], 2);
    return bytes + numberText(suffixClass(characters.back()), 1);
}

void appendGroups(Bytes &bytes, const Name &name)
{
    size_t next = 0;
    do {
        const size_t count = std::min(name.references.size() - next, MostReferences);
        const size_t head = size_t{name.prefecture} << 10 | keyField(name) << 6 | count;
        appendBytes(bytes, numberText(static_cast<uint32_t>(head), 2) + keyBytes(name));
        for (const size_t end = next + count; next < end; ++next) {
            appendBytes(bytes, numberText(name.references[next].offset, 3) +
                                   numberText(name.references[next].length, 2));
        }
    } while (next < name.references.size());
}

size_t groupsLength(const Name &name)
{
    Bytes bytes;
    appendGroups(bytes, name);
    return bytes.size();
}

class IndexWriter
{
public:
    void addName(const Municipality &municipality, const std::vector<WrittenReference> &references);
    void addNameWithoutCounty(const Municipality &municipality,
                              const std::vector<WrittenReference> &references);
    [[nodiscard]] AddressIndex write();

private:
    void add(const Text &key, Name name);
    void addSecond(const Name &name);

    std::map<Text, std::vector<Name>> m_keys;
    std::vector<Name> m_second;
    size_t m_level2Length = 0;
    AddressIndex m_index;
};

void IndexWriter::add(const Text &key, Name name)
{
    m_level2Length += groupsLength(name);
    m_keys[key].push_back(std::move(name));
}

/* The fixed range is reached through the key of the other city, which has to be there for it. */
void IndexWriter::addSecond(const Name &name)
{
    add(name.characters.substr(0, KeyCharacters), {Ibaraki, name.characters, {}});
    m_level2Length += groupsLength(name);
    m_second.push_back(name);
}

void IndexWriter::addName(const Municipality &municipality, const std::vector<WrittenReference> &references)
{
    const Name name = {municipality.prefecture, municipality.normalised,
                       referencesOf(references, NameForm::Full)};
    if (municipality.prefecture == Saga && municipality.name.starts_with(KashimaCity))
        addSecond(name);
    else
        add(name.characters.substr(0, KeyCharacters), name);
}

/* Only where there is room. */
void IndexWriter::addNameWithoutCounty(const Municipality &municipality,
                                       const std::vector<WrittenReference> &references)
{
    const Name name = {municipality.prefecture, municipality.withoutCounty,
                       referencesOf(references, NameForm::WithoutCounty)};
    const Text key = name.characters.substr(0, KeyCharacters);
    const bool hasKey = m_keys.contains(key) || m_keys.size() < MostKeys;
    if (hasKey && m_level2Length + groupsLength(name) <= LongestLevel2)
        add(key, name);
    else
        m_index.keysLeftOut.push_back(municipality.name);
}

AddressIndex IndexWriter::write()
{
    if (m_keys.size() > MostKeys)
        m_index.errors.emplace_back(
            "the address index is full: too many municipalities that begin differently");
    if (m_level2Length > LongestLevel2)
        m_index.errors.emplace_back("the address index is full: too many municipalities, or areas of them");
    for (const auto &[key, names] : m_keys) {
        appendBytes(m_index.level1, numberText(key[0], 2) + numberText(key[1], 2) +
                                        numberText(static_cast<uint32_t>(m_index.level2.size()), 2));
        for (const Name &name : names)
            appendGroups(m_index.level2, name);
    }
    const auto end = static_cast<uint32_t>(m_index.level2.size());
    appendBytes(m_index.level1, numberText(UINT32_MAX, 4) + numberText(end, 2));
    for (const Name &name : m_second)
        appendGroups(m_index.level2, name);
    m_index.secondStart = m_second.empty() ? uint16_t{0} : static_cast<uint16_t>(end);
    m_index.secondEnd = m_second.empty() ? uint16_t{0} : static_cast<uint16_t>(m_index.level2.size());
    return std::move(m_index);
}

/* The most places first: names without their 郡 compete for the room that is left. */
std::vector<size_t> orderByPlaces(const std::vector<Municipality> &municipalities)
{
    std::vector<size_t> order(municipalities.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return municipalities[a].places > municipalities[b].places; });
    return order;
}

bool canBeKey(const Text &name)
{
    return name.size() >= KeyCharacters && name.size() <= LongestName && suffixClass(name.back()) != 0;
}

std::string nameError(const Municipality &municipality)
{
    return toUtf8(municipality.name) + ": a municipality ends in 市, 区, 町 or 村 and has 2 to " +
           std::to_string(LongestName) + " characters";
}

} // namespace

AddressIndex writeAddressIndex(const std::vector<Municipality> &municipalities,
                               const std::vector<std::vector<WrittenReference>> &references)
{
    IndexWriter writer;
    std::vector<std::string> errors;
    for (size_t i = 0; i < municipalities.size(); ++i) {
        if (!canBeKey(municipalities[i].normalised))
            errors.push_back(nameError(municipalities[i]));
        else
            writer.addName(municipalities[i], references[i]);
    }
    for (const size_t i : orderByPlaces(municipalities)) {
        if (canBeKey(municipalities[i].withoutCounty))
            writer.addNameWithoutCounty(municipalities[i], references[i]);
    }
    AddressIndex index = writer.write();
    index.errors.insert(index.errors.begin(), errors.begin(), errors.end());
    return index;
}

} // namespace ZipDict
