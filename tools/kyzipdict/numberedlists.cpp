#include "numberedlists.h"

#include <algorithm>
#include <optional>

namespace ZipDict {

namespace {

constexpr std::u16string_view Digits = u"０１２３４５６７８９";
constexpr std::u16string_view Units[] = {u"丁目", u"丁", u"条", u"線", u"区", u"地割"};
constexpr size_t MaximumDigits = 4;

/** head first unit 〜 head last unit: 第１地割〜第３地割. */
struct NumberRange
{
    std::u16string_view head;
    unsigned first = 0;
    unsigned last = 0;
    std::u16string_view unit; ///< may be empty
};

/** Text with a number in it. */
struct Numbered
{
    std::u16string_view head;
    unsigned number = 0;
    std::u16string_view tail;
};

std::optional<Numbered> numberedOf(std::u16string_view text)
{
    const size_t start = text.find_first_of(Digits);
    if (start == std::u16string_view::npos)
        return std::nullopt;
    const size_t end = std::min(text.find_first_not_of(Digits, start), text.size());
    if (end - start > MaximumDigits)
        return std::nullopt;
    unsigned number = 0;
    for (const char16_t digit : text.substr(start, end - start))
        number = number * 10 + (digit - Digits.front());
    return Numbered{text.substr(0, start), number, text.substr(end)};
}

bool isUnit(std::u16string_view text)
{
    return std::ranges::find(Units, text) != std::end(Units);
}

std::optional<NumberRange> rangeOf(std::u16string_view item)
{
    const size_t dash = std::min(item.find(u'～'), item.size());
    const std::optional<Numbered> first = numberedOf(item.substr(0, dash));
    if (!first || !(first->tail.empty() || isUnit(first->tail)))
        return std::nullopt;
    if (dash == item.size())
        return NumberRange{first->head, first->number, first->number, first->tail};
    const std::optional<Numbered> last = numberedOf(item.substr(dash + 1));
    const bool isRange = last && first->head.ends_with(last->head) && first->number <= last->number &&
                         (last->tail.empty() || isUnit(last->tail)) &&
                         (first->tail.empty() || first->tail == last->tail);
    if (!isRange)
        return std::nullopt;
    return NumberRange{first->head, first->number, last->number, last->tail};
}

std::u16string wideNumber(unsigned number)
{
    std::u16string digits;
    for (const char digit : std::to_string(number))
        digits += Digits[static_cast<size_t>(digit - '0')];
    return digits;
}

} // namespace

std::vector<std::u16string_view> listItems(std::u16string_view list)
{
    std::vector<std::u16string_view> items;
    size_t start = 0;
    unsigned depth = 0;
    for (size_t at = 0; at < list.size(); ++at) {
        const char16_t character = list[at];
        if (std::u16string_view(u"「〔（").find(character) != std::u16string_view::npos) {
            ++depth;
        } else if (std::u16string_view(u"」〕）").find(character) != std::u16string_view::npos) {
            depth -= depth > 0 ? 1 : 0;
        } else if (character == u'、' && depth == 0) {
            items.push_back(list.substr(start, at - start));
            start = at + 1;
        }
    }
    items.push_back(list.substr(start));
    return items;
}

std::vector<std::u16string> numberedNames(std::u16string_view list, size_t maximum)
{
    std::vector<std::u16string> names;
    std::vector<NumberRange> waiting; // for the unit that follows: １、３丁目
    for (const std::u16string_view item : listItems(list)) {
        const std::optional<NumberRange> range = rangeOf(item);
        if (!range || (range->unit.empty() && !range->head.empty())) {
            waiting.clear();
            continue;
        }
        waiting.push_back(*range);
        if (range->unit.empty())
            continue;
        for (const NumberRange &each : waiting) {
            for (unsigned number = each.first; number <= each.last && names.size() < maximum; ++number)
                names.push_back(std::u16string(each.head) + wideNumber(number) + std::u16string(range->unit));
        }
        waiting.clear();
    }
    return names;
}

} // namespace ZipDict
