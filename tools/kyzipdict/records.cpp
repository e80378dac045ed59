#include "records.h"

#include "matchtext.h"
#include "ydicbytes_p.h"
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <tuple>

namespace ZipDict {

namespace {

constexpr char16_t Solidus[] = u"／";
constexpr char16_t County = u'郡';
constexpr char16_t Island = u'島';

bool isWholeArea(const Place &place)
{
    return place.town.empty() && place.matched.empty();
}

/* Counties have towns and villages, and no cities: 大和郡山市 has no county. An island may stand in the place
 * of a county, as in 八丈島八丈町. */
std::u16string nameWithoutCounty(const std::u16string &name)
{
    const size_t found = name.find(County, 1);
    const size_t county = found != std::u16string::npos ? found : name.find(Island, 1);
    const bool isInCounty = county != std::u16string::npos && county + 2 < name.size() &&
                            (name.back() == u'町' || name.back() == u'村');
    return isInCounty ? name.substr(county + 1) : std::u16string();
}

std::vector<uint8_t> prefecturesOfPrefixes(const std::vector<Entry> &entries)
{
    std::array<std::array<unsigned, YDIC_PREFIXES>, YDIC_PREFIXES> counts{};
    std::set<std::pair<uint32_t, uint8_t>> seen;
    for (const Entry &entry : entries) {
        if (seen.emplace(entry.place.code, entry.place.prefecture).second)
            ++counts[twoDigits(entry.place.code)][entry.place.prefecture];
    }
    std::vector<uint8_t> prefectures;
    prefectures.reserve(counts.size());
    for (const auto &count : counts)
        prefectures.push_back(
            static_cast<uint8_t>(std::max_element(count.begin(), count.end()) - count.begin()));
    return prefectures;
}

class RecordMaker
{
public:
    explicit RecordMaker(const std::vector<Entry> &entries)
    {
        m_records.prefectureOfPrefix = prefecturesOfPrefixes(entries);
        for (const Entry &entry : entries)
            add(entry);
    }

    [[nodiscard]] Records take() { return std::move(m_records); }

private:
    void add(const Entry &entry);
    size_t municipalityOf(const Place &place);
    [[nodiscard]] MatchText matchTextOf(const Place &place, const std::u16string &text) const;
    [[nodiscard]] bool isNewForCode(const Entry &entry, const Text &matched);
    [[nodiscard]] bool isApart(const Place &place) const;
    [[nodiscard]] Text townOf(const Place &place) const;
    [[nodiscard]] bool isForeign(const Place &place) const;
    void addComplete(const Entry &entry);
    void addOrdinary(const Entry &entry, const Text &matched);
    void addAlias(const Entry &entry, const MatchText &alias);
    void addApart(const Entry &entry, const Text &matched);
    void addByAddress(const Entry &entry, const Text &matched);
    void addDirect(const Entry &entry, const Text &matched);

    Records m_records;
    std::map<std::pair<uint8_t, std::u16string>, size_t> m_known;
    size_t m_municipality = 0; ///< of the entry that is being added
    uint32_t m_code = 0;
    std::set<std::tuple<size_t, bool, Text>> m_matched; ///< of this code
};

/* The code byte, and the mark of what is taken away. */
Text headOf(const Entry &entry)
{
    Text text = numberText(lastDigits(entry.place.code), 1);
    if (entry.cancels)
        text += char16_t{YDIC_MARK_CANCELS};
    return text;
}

Text completeHeadOf(const Entry &entry)
{
    return headOf(entry) + char16_t{YDIC_MARK_COMPLETE} + numberText(entry.place.code, 3);
}

void RecordMaker::add(const Entry &entry)
{
    const Place &place = entry.place;
    if (place.isCodeOnly) {
        addComplete(entry);
        return;
    }
    m_municipality = municipalityOf(place);
    ++m_records.municipalities[m_municipality].places;
    const MatchText matched = matchTextOf(place, place.matched);
    const bool isNew = isNewForCode(entry, matched.normalised);
    if (isForeign(place))
        addComplete(entry);
    else
        addOrdinary(entry, isNew ? matched.text : townOf(place));
    if (isNew && isApart(place))
        addApart(entry, matched.normalised);
    for (const std::u16string &text : place.aliases)
        addAlias(entry, matchTextOf(place, text));
}

MatchText RecordMaker::matchTextOf(const Place &place, const std::u16string &text) const
{
    return matchText(place.prefecture, m_records.municipalities[m_municipality].shown, textOf(text));
}

/* A search keeps few candidates, so a code has each text once, however many of its places say the same. */
bool RecordMaker::isNewForCode(const Entry &entry, const Text &matched)
{
    if (entry.place.code != m_code)
        m_matched.clear();
    m_code = entry.place.code;
    return m_matched.emplace(m_municipality, entry.cancels, matched).second;
}

size_t RecordMaker::municipalityOf(const Place &place)
{
    const auto [known, isNew] =
        m_known.try_emplace({place.prefecture, place.municipality}, m_records.municipalities.size());
    if (isNew) {
        const Text shown = textOf(place.municipality);
        const Text withoutCounty = textOf(nameWithoutCounty(place.municipality));
        m_records.municipalities.push_back({place.prefecture, place.municipality, shown,
                                            normalisedText(shown), normalisedText(withoutCounty), 0});
    }
    return known->second;
}

bool RecordMaker::isForeign(const Place &place) const
{
    return m_records.prefectureOfPrefix[twoDigits(place.code)] != place.prefecture;
}

/* What a search by address can't take from the chunks of the code index: text of a code that ends in 00, and
 * a place outside the prefecture of the first two digits. */
bool RecordMaker::isApart(const Place &place) const
{
    return isForeign(place) || (lastDigits(place.code) == 0 && !isWholeArea(place));
}

/* What is shown of a place behind its municipality; a result holds no more. */
Text RecordMaker::townOf(const Place &place) const
{
    const size_t before =
        prefectureName(place.prefecture).size() + std::size(Solidus) - 1 + place.municipality.size();
    const std::u16string shown = shownAddress(place);
    return textOf(shown.substr(std::min(before, shown.size())));
}

/* A result that can't be made from the two digits' prefecture and a municipality. */
void RecordMaker::addComplete(const Entry &entry)
{
    Text text = completeHeadOf(entry);
    if (!entry.cancels)
        text += textOf(shownAddress(entry.place));
    m_records.byCode.push_back({entry.place.code, NoMunicipality, text, NameForm::Both});
}

void RecordMaker::addOrdinary(const Entry &entry, const Text &matched)
{
    const Text body = isWholeArea(entry.place) ? Text(1, char16_t{YDIC_MARK_WHOLE})
                                               : mergedText(townOf(entry.place), matched);
    m_records.byCode.push_back({entry.place.code, m_municipality, headOf(entry) + body, NameForm::Both});
}

void RecordMaker::addAlias(const Entry &entry, const MatchText &alias)
{
    if (!isNewForCode(entry, alias.normalised))
        return;
    if (isForeign(entry.place) || lastDigits(entry.place.code) == 0) {
        addApart(entry, alias.normalised);
        return;
    }
    const Text text = headOf(entry) + char16_t{YDIC_MARK_SILENT} + alias.text;
    m_records.byCode.push_back({entry.place.code, m_municipality, text, NameForm::Both});
}

void RecordMaker::addApart(const Entry &entry, const Text &matched)
{
    if (lastDigits(entry.place.code) == 0 && !matched.empty())
        addDirect(entry, matched);
    else
        addByAddress(entry, matched);
}

void RecordMaker::addByAddress(const Entry &entry, const Text &matched)
{
    const Text body = matched.empty() ? Text(1, char16_t{YDIC_MARK_WHOLE}) : matched;
    m_records.byAddress.push_back({entry.place.code, m_municipality, headOf(entry) + body, NameForm::Both});
}

void RecordMaker::addDirect(const Entry &entry, const Text &matched)
{
    const Municipality &municipality = m_records.municipalities[m_municipality];
    const Text head = completeHeadOf(entry) + textOf(prefectureName(entry.place.prefecture) + Solidus);
    m_records.direct.push_back(
        {entry.place.code, m_municipality, head + municipality.normalised + matched, NameForm::Full});
    if (!municipality.withoutCounty.empty()) {
        m_records.direct.push_back({entry.place.code, m_municipality,
                                    head + municipality.withoutCounty + matched, NameForm::WithoutCounty});
    }
}

} // namespace

Records recordsOf(const std::vector<Entry> &entries)
{
    return RecordMaker(entries).take();
}

} // namespace ZipDict
