#include "indexaccess.h"

#include <algorithm>

/** Operations that walk, convert, count and search, and that put single cards in and out. */
namespace pdtm {

namespace {

/** Bytes looked at in an expression that comes without its length. */
constexpr size_t MaximumExpression = size_t{64} * 1024;
constexpr int SteppedCards =
    1024; // a search reads so many cards in index order, then the rest in memory order

IndexRegistry &registry()
{
    return IndexRegistry::instance();
}

/** Stores an index number that was found, unless it is 0. */
PdtmStatus found(uint16_t number, uint16_t *result)
{
    if (number == 0) {
        return PdtmNone;
    }
    *result = number;
    return PdtmOk;
}

/** Runs a look-up that gives an index number, an ordinal, or 0. */
template <typename Lookup> PdtmStatus lookUp(const char *path, uint16_t *result, Lookup lookup) noexcept
{
    return guarded([&]() -> PdtmStatus {
        Index *index = nullptr;
        if (result == nullptr) {
            return PdtmBadArgument;
        }
        const PdtmStatus status = registry().use(path, index);
        return status == PdtmOk ? found(lookup(index->order()), result) : status;
    });
}

/** An index and the box that it is made for. */
PdtmStatus indexAndBox(const char *path, uint32_t handle, Index *&index, std::shared_ptr<BoxFile> &box)
{
    const PdtmStatus status = registry().use(path, index);
    return status == PdtmOk ? boxOf(handle, *index, box) : status;
}

/** Parses an expression whose length isn't known; null is the empty one. */
std::optional<SearchExpression> parseUnmeasured(const void *expression)
{
    const auto *bytes = static_cast<const uint8_t *>(expression);
    if (bytes == nullptr || *bytes == 0) {
        return SearchExpression();
    }
    const size_t length = SearchExpression::measure(bytes, MaximumExpression);
    return length > 0 ? SearchExpression::parse({bytes, length}) : std::nullopt;
}

/** One search or count over the visible cards of an index. */
class Scan
{
public:
    Scan(const IndexOrder &order, BoxFile &box, const SearchExpression &expression, Visibility visibility)
        : m_order(order), m_box(box), m_expression(expression), m_visibility(visibility)
    {
    }

    /** The nearest match behind (or before) a start position; 0 when there is none. */
    PdtmStatus search(uint16_t start, bool backward, uint16_t &match);
    /** All matches behind a start position. */
    PdtmStatus count(uint16_t start, uint16_t &first, uint16_t &matches);

private:
    [[nodiscard]] uint16_t step(uint16_t at, bool backward) const
    {
        return backward ? m_order.previous(at, m_visibility) : m_order.next(at, m_visibility);
    }
    PdtmStatus readAndMatch(CardId card, bool &matches);
    /** Visits the cards of the box in memory order; @p wanted tells by the index number whether one is of
     * use. */
    template <typename Wanted, typename Visit> bool sweep(Wanted wanted, Visit visit);

    const IndexOrder &m_order;
    BoxFile &m_box;
    const SearchExpression &m_expression;
    Visibility m_visibility;
};

PdtmStatus Scan::readAndMatch(CardId card, bool &matches)
{
    RecordView record;
    const PdtmStatus status = m_box.readCard(card, record);
    matches = status == PdtmOk && m_expression.matches(m_box.schema(), record);
    return status == PdtmNoSuchCard ? PdtmStatus{PdtmOk} : status;
}

template <typename Wanted, typename Visit> bool Scan::sweep(Wanted wanted, Visit visit)
{
    const Schema &schema = m_box.schema();
    return m_box.forEachCard([&, numbers = m_order.numbers()](CardId card, RecordView record) {
        const uint16_t number = numbers[card];
        if (number != 0 && wanted(number) && m_visibility.shows(m_order.attributeOf(card)) &&
            m_expression.matches(schema, record)) {
            visit(number);
        }
        return true;
    });
}

PdtmStatus Scan::search(uint16_t start, bool backward, uint16_t &match)
{
    match = 0;
    uint16_t at = start;
    for (int i = 0; i < SteppedCards; ++i) {
        at = step(at, backward);
        bool matches = false;
        const PdtmStatus status = at != 0 ? readAndMatch(m_order.cardAt(at), matches) : PdtmStatus{PdtmOk};
        if (at == 0 || matches || status != PdtmOk) {
            match = matches ? at : uint16_t{0};
            return status;
        }
    }
    const auto isNearer = [&](uint16_t number) {
        return backward ? number < at && number > match : number > at && (match == 0 || number < match);
    };
    return sweep(isNearer, [&](uint16_t number) { match = number; }) ? PdtmOk : PdtmIoError;
}

PdtmStatus Scan::count(uint16_t start, uint16_t &first, uint16_t &matches)
{
    first = 0;
    matches = 0;
    const bool complete = sweep([start](uint16_t number) { return number > start; },
                                [&](uint16_t number) {
                                    ++matches;
                                    first = first == 0 ? number : std::min(first, number);
                                });
    return complete ? PdtmOk : PdtmIoError;
}

PdtmStatus countMatches(const char *path, uint32_t handle, const SearchExpression &expression,
                        Visibility visibility, uint16_t start, uint16_t &first, uint16_t &count)
{
    Index *index = nullptr;
    PdtmStatus status = registry().use(path, index);
    if (status != PdtmOk) {
        return status;
    }
    const IndexOrder &order = index->order();
    if (expression.isEmpty()) { // needs no box
        first = order.next(start, visibility);
        count = order.visibleBehind(start, visibility);
        return PdtmOk;
    }
    std::shared_ptr<BoxFile> box;
    status = boxOf(handle, *index, box);
    return status == PdtmOk ? Scan(order, *box, expression, visibility).count(start, first, count) : status;
}

PdtmStatus searchMatch(const char *path, uint32_t handle, const void *expressionBytes, bool backward,
                       Visibility visibility, uint16_t start, uint16_t *indexNumber)
{
    const std::optional<SearchExpression> expression = parseUnmeasured(expressionBytes);
    if (!expression || indexNumber == nullptr) {
        return PdtmBadArgument;
    }
    Index *index = nullptr;
    std::shared_ptr<BoxFile> box;
    PdtmStatus status = indexAndBox(path, handle, index, box);
    uint16_t match = 0;
    if (status == PdtmOk) {
        status = Scan(index->order(), *box, *expression, visibility).search(start, backward, match);
    }
    return status == PdtmOk ? found(match, indexNumber) : status;
}

PdtmStatus appendCard(Index &index, BoxFile &box, CardId card, uint16_t *indexNumber)
{
    if (index.order().contains(card)) {
        *indexNumber = index.order().numberOf(card);
        return PdtmAlreadyInIndex;
    }
    RecordView record;
    const PdtmStatus status = box.readCard(card, record);
    if (status != PdtmOk) {
        return status;
    }
    const uint16_t number = index.append(box, card, record);
    return number != 0 ? found(number, indexNumber) : PdtmStatus{PdtmIoError};
}

} // namespace

} // namespace pdtm

using namespace pdtm;

PdtmStatus _IndexCount(const char *path, uint32_t handle, const void *expression, int /*flag*/, uint8_t mask,
                       uint8_t value, uint8_t /*third*/, uint16_t start, uint16_t *first, uint16_t *count)
{
    return guarded([&]() -> PdtmStatus {
        const std::optional<SearchExpression> parsed = parseUnmeasured(expression);
        if (!parsed || count == nullptr) {
            return PdtmBadArgument;
        }
        uint16_t firstMatch = 0;
        *count = 0;
        const PdtmStatus status =
            countMatches(path, handle, *parsed, {mask, value}, start, firstMatch, *count);
        if (first != nullptr) {
            *first = firstMatch;
        }
        return status == PdtmOk && *count == 0 ? PdtmStatus{PdtmNone} : status;
    });
}

PdtmStatus _IndexSearch(const char *path, uint32_t handle, const void *expression, int backward, uint8_t mask,
                        uint8_t value, uint8_t /*third*/, uint16_t start, uint16_t *indexNumber)
{
    return guarded([&] {
        return searchMatch(path, handle, expression, backward != 0, {mask, value}, start, indexNumber);
    });
}

PdtmStatus _IndexNoAppend(const char *path, uint32_t handle, uint16_t card, uint16_t *indexNumber)
{
    return guarded([&]() -> PdtmStatus {
        if (card >= PdtmFirstReservedCard || indexNumber == nullptr) {
            return PdtmBadArgument;
        }
        Index *index = nullptr;
        std::shared_ptr<BoxFile> box;
        const PdtmStatus status = indexAndBox(path, handle, index, box);
        return status == PdtmOk ? appendCard(*index, *box, card, indexNumber) : status;
    });
}

PdtmStatus _IndexNoDelete(const char *path, uint16_t indexNumber)
{
    return guarded([&]() -> PdtmStatus {
        Index *index = nullptr;
        const PdtmStatus status = registry().use(path, index);
        if (status != PdtmOk) {
            return status;
        }
        if (indexNumber == 0 || indexNumber > index->order().count()) {
            return PdtmNone;
        }
        const CardId card = index->order().cardAt(indexNumber);
        index->remove({&card, 1});
        return PdtmOk;
    });
}

PdtmStatus _IndexNoToCardID(const char *path, uint16_t indexNumber, uint16_t *card)
{
    return lookUp(path, card, [&](const IndexOrder &order) {
        return indexNumber != 0 && indexNumber <= order.count() ? order.cardAt(indexNumber) : CardId{0};
    });
}

PdtmStatus _CardIDToIndexNo(const char *path, uint16_t card, uint16_t *indexNumber)
{
    const PdtmStatus status =
        lookUp(path, indexNumber, [&](const IndexOrder &order) { return order.numberOf(card); });
    return status == PdtmNone ? PdtmStatus{PdtmNoSuchCard} : status;
}

PdtmStatus _IndexNoToNumber(const char *path, uint8_t mask, uint8_t value, uint8_t /*third*/, int /*flag*/,
                            uint16_t indexNumber, uint16_t *number)
{
    return lookUp(path, number, [&](const IndexOrder &order) {
        return order.ordinalOf(indexNumber, {mask, value});
    });
}

PdtmStatus _NumberToIndexNo(const char *path, int direction, uint8_t mask, uint8_t value, uint8_t /*third*/,
                            uint16_t *indexNumber, uint16_t number)
{
    return lookUp(path, indexNumber, [&](const IndexOrder &order) {
        const Visibility visibility{mask, value};
        return direction == 0 ? order.nthBehind(*indexNumber, number, visibility)
                              : order.nthBefore(*indexNumber, number, visibility);
    });
}

PdtmStatus _NextIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t /*third*/,
                        uint16_t *indexNumber)
{
    return lookUp(path, indexNumber, [&](const IndexOrder &order) {
        return order.next(*indexNumber, {mask, value});
    });
}

PdtmStatus _PrevIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t /*third*/,
                        uint16_t *indexNumber)
{
    return lookUp(path, indexNumber, [&](const IndexOrder &order) {
        return order.previous(*indexNumber, {mask, value});
    });
}
