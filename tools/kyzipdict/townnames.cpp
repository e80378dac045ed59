#include "townnames.h"

#include "numberedlists.h"
#include <algorithm>

namespace ZipDict {

namespace {

using View = std::u16string_view;
using Text = std::u16string;

constexpr View NotListed = u"以下に掲載がない場合";
constexpr View AllOfIt = u"一円";
constexpr View BehindName = u"の次に";
constexpr View InCase = u"がくる場合";
constexpr View LotOnly = u"番地";
constexpr View Others = u"、他）";

/* What a remark in brackets means to those who look a code up, not to those who sort mail. */
constexpr View SilentRemarks[] = {u"その他", u"丁目",     u"番地", u"大字",           u"各町",
                                  u"全域",   u"番地のみ", u"地階", u"地階・階層不明", u"階層不明"};
constexpr View ExceptBuildings = u"ビルを除く";

/* A number and one of these, alone in brackets, is what an address says next. */
constexpr View AddressUnits[] = {u"丁目", u"丁", u"階"};

/* Marks of an item that is no name of an area. */
constexpr View NoAreaMarks[] = {u"「",   u"〔",   u"（",   u"～",   u"除く", u"以外", u"以上",
                                u"以下", u"以降", u"以内", u"番地", u"場合", u"及び", u"その他"};
constexpr View Digits = u"０１２３４５６７８９";
constexpr View NumberCharacters = u"０１２３４５６７８９－の・";

/* How streets of Kyoto are told. */
constexpr View KyotoPrefix = u"京都市";
constexpr View StreetMarks[] = {u"通", u"入", u"上る", u"下る"};

/** A printed town apart from its brackets. */
struct PrintedTown
{
    Text name;
    std::vector<Text> remarks;
};

bool containsAny(View text, const auto &marks)
{
    return std::ranges::any_of(marks, [text](View mark) { return text.find(mark) != View::npos; });
}

/* Inner brackets stay in the remark; one that never closes ends with the text. */
PrintedTown splitTown(View printed)
{
    PrintedTown town;
    size_t depth = 0;
    for (const char16_t character : printed) {
        if (character == u'（' && ++depth == 1)
            town.remarks.emplace_back();
        else if (character == u'）' && depth <= 1)
            depth = 0;
        else if (depth == 0)
            town.name += character;
        else
            town.remarks.back() += character;
        if (character == u'）' && depth > 1)
            --depth;
    }
    return town;
}

bool isSilent(View remark)
{
    return remark.empty() || remark.ends_with(ExceptBuildings) ||
           std::ranges::find(SilentRemarks, remark) != std::end(SilentRemarks);
}

/* １丁目, ２９階 */
bool isPartOfAddress(View remark)
{
    const size_t end = remark.find_first_not_of(Digits);
    return end != 0 && end != View::npos &&
           std::ranges::find(AddressUnits, remark.substr(end)) != std::end(AddressUnits);
}

bool tellsStreets(View municipality, View remark)
{
    return municipality.starts_with(KyotoPrefix) && containsAny(remark, StreetMarks);
}

bool isArea(View item)
{
    return !item.empty() && !containsAny(item, NoAreaMarks) &&
           item.find_first_not_of(NumberCharacters) != View::npos;
}

/* What stands behind the municipality's name in 小菅村の次に１～６６３番地がくる場合; empty when it isn't
 * that. */
View lotsBehindMunicipality(View municipality, View name)
{
    const size_t mark = name.find(BehindName);
    if (mark == 0 || mark == View::npos || !name.ends_with(InCase) ||
        !municipality.ends_with(name.substr(0, mark)))
        return {};
    const size_t start = mark + BehindName.size();
    return start < name.size() - InCase.size() ? name.substr(start, name.size() - InCase.size() - start)
                                               : View{};
}

bool isWholeMunicipality(View municipality, View name)
{
    if (name.empty() || name == NotListed || lotsBehindMunicipality(municipality, name) == LotOnly)
        return true;
    const bool saysAll = name.ends_with(AllOfIt) && name.size() > AllOfIt.size();
    return saysAll && municipality.ends_with(name.substr(0, name.size() - AllOfIt.size()));
}

/* The brackets stay where two numbers would run into one: サンシャイン６０（２７階） */
Text shownTown(View name, const std::vector<Text> &remarks)
{
    Text shown(name);
    for (const Text &remark : remarks) {
        const bool endsInNumber = !shown.empty() && Digits.find(shown.back()) != View::npos;
        if (isPartOfAddress(remark) && !endsInNumber)
            shown += remark;
        else if (!isSilent(remark))
            shown += u'（' + remark + u'）';
    }
    return shown;
}

/** Aliases of one matched text. */
class AliasList
{
public:
    explicit AliasList(View matched) : m_matched(matched) {}

    void add(const Text &alias)
    {
        if (m_aliases.size() < MaximumAliases && !alias.empty() && alias != m_matched &&
            std::ranges::find(m_aliases, alias) == m_aliases.end())
            m_aliases.push_back(alias);
    }
    [[nodiscard]] std::vector<Text> take() { return std::move(m_aliases); }

private:
    View m_matched;
    std::vector<Text> m_aliases;
};

/* 樺沢１６地割、樺沢１７地割; in 岩田町居村、北郷中 the later names lie in the first one's 町 too. */
void addListedTowns(AliasList &aliases, View name)
{
    const std::vector<View> pieces = listItems(name);
    if (pieces.size() > 1) {
        const size_t town = pieces.front().find(u'町');
        const bool isShared = town != View::npos && town + 1 < pieces.front().size();
        for (const View piece : pieces) {
            aliases.add(Text(piece));
            if (isShared && piece != pieces.front())
                aliases.add(Text(pieces.front().substr(0, town + 1)).append(piece));
        }
    }
    if (pieces.size() > 1 || name.find(u'～') != View::npos) {
        for (const Text &numbered : numberedNames(name, MaximumAliases))
            aliases.add(numbered);
    }
}

/* Areas that are listed with ・ are areas each. */
void addAreas(AliasList &aliases, View name, View remark)
{
    for (View item : listItems(remark)) {
        if (!isArea(item))
            continue;
        for (size_t end = item.find(u'・'); end != View::npos; end = item.find(u'・')) {
            aliases.add(Text(name).append(item.substr(0, end)));
            item.remove_prefix(end + 1);
        }
        aliases.add(Text(name).append(item));
    }
}

std::vector<Text> aliasesOf(View municipality, const PrintedTown &town, bool hasSeveralCodes)
{
    AliasList aliases(town.name);
    addListedTowns(aliases, town.name);
    Text building = town.name; // with the part of it that a remark tells before the floor
    for (const Text &remark : town.remarks) {
        if (tellsStreets(municipality, remark))
            continue;
        if (isPartOfAddress(remark)) {
            aliases.add(town.name + remark);
            aliases.add(building + remark);
            continue;
        }
        for (const Text &numbered : numberedNames(remark, MaximumAliases))
            aliases.add(town.name + numbered);
        if (hasSeveralCodes && !isSilent(remark))
            addAreas(aliases, town.name, remark);
        building += remark;
    }
    return aliases.take();
}

} // namespace

TownName townNameOf(View municipality, View printed, bool hasSeveralCodes)
{
    const PrintedTown town = splitTown(printed);
    if (isWholeMunicipality(municipality, town.name))
        return {};
    const View lots = lotsBehindMunicipality(municipality, town.name);
    if (!lots.empty())
        return {shownTown(lots, town.remarks), {}, {}};
    return {shownTown(town.name, town.remarks), town.name, aliasesOf(municipality, town, hasSeveralCodes)};
}

std::u16string shortenedTown(View shown, size_t room)
{
    const size_t bracket = shown.find(u'（');
    if (shown.size() <= room || bracket == View::npos || !shown.ends_with(u'）'))
        return Text(shown);
    const View list = shown.substr(bracket + 1, shown.size() - bracket - 2);
    size_t fitting = bracket + 1;
    for (const View item : listItems(list)) {
        const size_t end = static_cast<size_t>(item.data() - shown.data()) + item.size();
        if (end + Others.size() > room)
            break;
        fitting = end;
    }
    const bool keepsSome = fitting > bracket + 1;
    return keepsSome ? Text(shown.substr(0, fitting)).append(Others) : Text(shown.substr(0, bracket));
}

} // namespace ZipDict
