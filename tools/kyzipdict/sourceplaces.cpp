#include "source.h"

#include "townnames.h"
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace ZipDict {

namespace {

/* A town with its prefecture and municipality. */
using TownKey = std::tuple<uint8_t, std::u16string, std::u16string>;
using CodesOfTowns = std::map<TownKey, std::set<uint32_t>>;

size_t roomForTown(const SourceRow &row)
{
    const size_t used = row.prefecture.size() + 1 + row.municipality.size();
    return ShownCharacters - std::min(ShownCharacters, used);
}

TownKey keyOf(const SourceRow &row)
{
    return {prefectureNumber(row.prefecture), row.municipality,
            townNameOf(row.municipality, row.town, false).matched};
}

CodesOfTowns codesOfTowns(const std::vector<SourceRow> &rows)
{
    CodesOfTowns codes;
    for (const SourceRow &row : rows) {
        if (row.business.empty())
            codes[keyOf(row)].insert(row.code);
    }
    return codes;
}

Place placeWithoutTown(const SourceRow &row)
{
    Place place;
    place.code = row.code;
    place.prefecture = prefectureNumber(row.prefecture);
    place.municipality = row.municipality;
    return place;
}

/* Its name stands apart from its address, and matters more than the block. */
Place businessOf(const SourceRow &row)
{
    Place place = placeWithoutTown(row);
    const std::u16string name = u"　" + row.business;
    place.town = row.town + row.businessBlock + name;
    if (place.town.size() > roomForTown(row))
        place.town = row.town + name;
    place.isCodeOnly = true;
    return place;
}

Place townOf(const SourceRow &row, const CodesOfTowns &codes)
{
    const bool hasSeveralCodes = codes.at(keyOf(row)).size() > 1;
    TownName name = townNameOf(row.municipality, row.town, hasSeveralCodes);
    Place place = placeWithoutTown(row);
    place.town = shortenedTown(name.shown, roomForTown(row));
    place.matched = std::move(name.matched);
    place.aliases = std::move(name.aliases);
    return place;
}

/** Places, each once. What differs in silent remarks alone is the same place. */
class PlaceList
{
public:
    void add(Place place)
    {
        const auto [known, isNew] = m_known.try_emplace(
            {place.code, place.prefecture, place.municipality, place.town}, m_places.size());
        if (isNew)
            m_places.push_back(std::move(place));
        else
            addAliases(m_places[known->second], place);
    }

    std::vector<Place> take()
    {
        std::ranges::stable_sort(m_places, {}, &Place::code);
        return std::move(m_places);
    }

private:
    using Key = std::tuple<uint32_t, uint8_t, std::u16string, std::u16string>;

    static void addAliases(Place &place, const Place &same)
    {
        for (const std::u16string &alias : same.aliases) {
            if (place.aliases.size() < MaximumAliases &&
                std::ranges::find(place.aliases, alias) == place.aliases.end())
                place.aliases.push_back(alias);
        }
    }

    std::vector<Place> m_places;
    std::map<Key, size_t> m_known;
};

} // namespace

std::vector<Place> placesOf(const std::vector<SourceRow> &rows)
{
    const CodesOfTowns codes = codesOfTowns(rows);
    PlaceList places;
    for (const SourceRow &row : rows)
        places.add(row.business.empty() ? townOf(row, codes) : businessOf(row));
    return places.take();
}

} // namespace ZipDict
