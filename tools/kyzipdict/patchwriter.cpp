#include "patchwriter.h"

#include <algorithm>
#include <span>

namespace ZipDict {

namespace {

using Places = std::span<const Place>;

/** A code with its places in both editions. */
struct CodePlaces
{
    uint32_t code = 0;
    Places older;
    Places newer;

    [[nodiscard]] ChangeKind kind() const
    {
        return older.empty() ? ChangeKind::Added : newer.empty() ? ChangeKind::Removed : ChangeKind::Kept;
    }
};

Places takeCode(Places &places, uint32_t code)
{
    const auto isOther = [code](const Place &place) { return place.code != code; };
    const auto end = std::ranges::find_if(places, isOther);
    const Places taken(places.begin(), end);
    places = {end, places.end()};
    return taken;
}

std::vector<CodePlaces> codesOf(Places older, Places newer)
{
    std::vector<CodePlaces> codes;
    while (!older.empty() || !newer.empty()) {
        const bool isOlder = newer.empty() || (!older.empty() && older.front().code < newer.front().code);
        CodePlaces next;
        next.code = isOlder ? older.front().code : newer.front().code;
        next.older = takeCode(older, next.code);
        next.newer = takeCode(newer, next.code);
        codes.push_back(next);
    }
    return codes;
}

/* A patch hides all that the dictionary has of a code, so that it repeats the places that stay. */
void addEntries(const CodePlaces &code, std::vector<Entry> &entries)
{
    if (std::ranges::equal(code.older, code.newer))
        return;
    for (const Place &place : code.older) {
        if (std::ranges::find(code.newer, place) == code.newer.end())
            entries.push_back({place, true});
    }
    for (const Place &place : code.newer)
        entries.push_back({place, false});
}

bool isKept(const CodePlaces &code)
{
    return code.kind() == ChangeKind::Kept;
}

/* Between two kept codes of the table a walk follows the dictionary. So the codes on both sides of every
 * change stand in it, too, and nothing in between is left out. */
std::vector<Change> changesOf(const std::vector<CodePlaces> &codes)
{
    std::vector<Change> changes;
    for (size_t i = 0; i < codes.size(); ++i) {
        const bool isBeforeChange = i + 1 < codes.size() && !isKept(codes[i + 1]);
        const bool isBehindChange = i > 0 && !isKept(codes[i - 1]);
        if (!isKept(codes[i]) || isBeforeChange || isBehindChange)
            changes.push_back({codes[i].code, codes[i].kind()});
    }
    return changes;
}

} // namespace

WrittenFile writePatch(const FileIdentity &identity, const std::vector<Place> &older,
                       const std::vector<Place> &newer)
{
    const std::vector<CodePlaces> codes = codesOf(older, newer);
    std::vector<Entry> entries;
    for (const CodePlaces &code : codes)
        addEntries(code, entries);
    return writeDictionary(identity, entries, changesOf(codes));
}

} // namespace ZipDict
