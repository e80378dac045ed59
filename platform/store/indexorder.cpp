#include "indexorder.h"

#include <algorithm>
#include <cstring>

namespace pdtm {

namespace {

constexpr size_t TableStep = 4096; // the tables by card id grow in such steps, and are swept in such blocks

/** Adds @p change to the positions of a block that are @p from or more. The fixed size lets it be vectorised.
 */
void shiftBlock(uint16_t *positions, uint16_t from, uint16_t change)
{
    for (size_t i = 0; i < TableStep; ++i) {
        const auto mask = static_cast<uint16_t>(positions[i] >= from ? 0xFFFF : 0);
        positions[i] = static_cast<uint16_t>(positions[i] + (mask & change));
    }
}

int compareKeys(std::string_view left, std::string_view right)
{
    const size_t common = std::min(left.size(), right.size());
    const int order = common > 0 ? memcmp(left.data(), right.data(), common) : 0;
    if (order != 0) {
        return order;
    }
    return left.size() < right.size() ? -1 : (left.size() > right.size() ? 1 : 0);
}

bool isOrdinary(CardId card)
{
    return card != 0 && card <= PdtmLastOrdinaryCard;
}

} // namespace

void IndexOrder::growFor(CardId card)
{
    if (card < m_positions.size()) {
        return;
    }
    const size_t size = (card / TableStep + 1) * TableStep;
    m_positions.resize(size);
    m_attributes.resize(size);
    if (!m_keyPlaces.empty()) {
        m_keyPlaces.resize(size);
    }
}

bool IndexOrder::assign(std::vector<CardId> cards, std::span<const uint8_t> attributes)
{
    *this = IndexOrder();
    m_hasKeys = cards.empty();
    if (!cards.empty()) {
        growFor(*std::max_element(cards.begin(), cards.end()));
    }
    for (size_t i = 0; i < cards.size(); ++i) {
        const CardId card = cards[i];
        if (!isOrdinary(card) || m_positions[card] != 0) {
            *this = IndexOrder();
            return false;
        }
        m_positions[card] = static_cast<uint16_t>(i + 1);
        m_attributes[card] = attributes[i];
        ++m_histogram[attributes[i]];
    }
    m_cards = std::move(cards);
    return true;
}

void IndexOrder::setEmptyKeys()
{
    m_keyPlaces.clear();
    m_keys.clear();
    m_deadKeyBytes = 0;
    m_hasKeys = true;
}

bool IndexOrder::setKeys(std::span<const CardId> cards, std::span<const uint32_t> ends, std::string bytes)
{
    setEmptyKeys();
    m_keys = std::move(bytes);
    m_keyPlaces.resize(m_positions.size());
    uint32_t begin = 0;
    size_t known = 0;
    for (size_t i = 0; i < cards.size(); ++i) {
        const uint32_t length = ends[i] - begin;
        if (contains(cards[i])) {
            m_keyPlaces[cards[i]] = {begin, length};
            ++known;
        } else {
            m_deadKeyBytes += length;
        }
        begin = ends[i];
    }
    m_hasKeys = known == m_cards.size();
    return m_hasKeys;
}

std::string_view IndexOrder::keyOf(CardId card) const
{
    if (card >= m_keyPlaces.size()) {
        return {};
    }
    return std::string_view(m_keys).substr(m_keyPlaces[card].offset, m_keyPlaces[card].length);
}

void IndexOrder::storeKey(CardId card, std::string_view key)
{
    if (m_keyPlaces.empty()) {
        if (key.empty()) {
            return;
        }
        m_keyPlaces.resize(m_positions.size());
    }
    if (m_deadKeyBytes > TableStep && m_deadKeyBytes > m_keys.size() / 2) {
        compactKeys();
    }
    m_keyPlaces[card] = {static_cast<uint32_t>(m_keys.size()), static_cast<uint32_t>(key.size())};
    m_keys += key;
}

void IndexOrder::compactKeys()
{
    std::string compact;
    compact.reserve(m_keys.size() - m_deadKeyBytes);
    for (const CardId card : m_cards) {
        const std::string_view key = keyOf(card);
        m_keyPlaces[card].offset = static_cast<uint32_t>(compact.size());
        compact += key;
    }
    m_keys = std::move(compact);
    m_deadKeyBytes = 0;
}

void IndexOrder::shiftPositions(uint16_t from, bool up)
{
    const auto change = static_cast<uint16_t>(up ? 1 : -1);
    for (size_t block = 0; block < m_positions.size(); block += TableStep) {
        shiftBlock(&m_positions[block], from, change);
    }
}

bool IndexOrder::standsBefore(CardId left, CardId card, std::string_view key) const
{
    const int order = compareKeys(keyOf(left), key);
    return order < 0 || (order == 0 && left < card);
}

uint16_t IndexOrder::insert(CardId card, uint8_t attribute, std::string_view key)
{
    const auto place = std::partition_point(m_cards.begin(), m_cards.end(),
                                            [&](CardId left) { return standsBefore(left, card, key); });
    const auto number = static_cast<uint16_t>(place - m_cards.begin() + 1);
    growFor(card);
    storeKey(card, key);
    m_cards.insert(place, card); // nothing behind this fails
    if (number < count()) {
        shiftPositions(number, true);
    }
    m_positions[card] = number;
    m_attributes[card] = attribute;
    ++m_histogram[attribute];
    m_visibleCount.valid = false;
    return number;
}

void IndexOrder::remove(CardId card)
{
    const uint16_t number = numberOf(card);
    if (number == 0) {
        return;
    }
    m_deadKeyBytes += keyOf(card).size();
    --m_histogram[m_attributes[card]];
    m_visibleCount.valid = false;
    m_positions[card] = 0;
    m_cards.erase(m_cards.begin() + (number - 1));
    if (number <= count()) {
        shiftPositions(number, false);
    }
}

void IndexOrder::removeAll(std::span<const CardId> cards)
{
    if (cards.size() == 1) {
        remove(cards.front());
        return;
    }
    for (const CardId card : cards) {
        if (contains(card)) {
            m_deadKeyBytes += keyOf(card).size();
            --m_histogram[m_attributes[card]];
            m_positions[card] = 0;
        }
    }
    m_visibleCount.valid = false;
    std::erase_if(m_cards, [this](CardId card) { return m_positions[card] == 0; });
    renumber();
}

void IndexOrder::renumber()
{
    uint16_t number = 0;
    for (const CardId card : m_cards) {
        m_positions[card] = ++number;
    }
}

void IndexOrder::setAttribute(CardId card, uint8_t attribute)
{
    if (!contains(card)) {
        return;
    }
    --m_histogram[m_attributes[card]];
    ++m_histogram[attribute];
    m_attributes[card] = attribute;
    m_visibleCount.valid = false;
}

bool IndexOrder::isVisible(uint16_t number, Visibility visibility) const
{
    return visibility.shows(m_attributes[cardAt(number)]);
}

uint16_t IndexOrder::next(uint16_t from, Visibility visibility) const
{
    for (uint32_t number = from + 1U; number <= m_cards.size(); ++number) {
        if (isVisible(static_cast<uint16_t>(number), visibility)) {
            return static_cast<uint16_t>(number);
        }
    }
    return 0;
}

uint16_t IndexOrder::previous(uint16_t from, Visibility visibility) const
{
    for (uint32_t number = std::min<uint32_t>(from, count() + 1U); number-- > 1;) {
        if (isVisible(static_cast<uint16_t>(number), visibility)) {
            return static_cast<uint16_t>(number);
        }
    }
    return 0;
}

uint16_t IndexOrder::visibleCount(Visibility visibility) const
{
    if (!m_visibleCount.valid || m_visibleCount.visibility != visibility) {
        uint32_t visible = 0;
        for (size_t attribute = 0; attribute < m_histogram.size(); ++attribute) {
            visible += visibility.shows(static_cast<uint8_t>(attribute)) ? m_histogram[attribute] : 0U;
        }
        m_visibleCount = {visibility, static_cast<uint16_t>(visible), true};
    }
    return m_visibleCount.count;
}

uint16_t IndexOrder::countIn(uint16_t first, uint16_t last, Visibility visibility) const
{
    uint32_t visible = 0;
    for (uint32_t number = first; number <= last; ++number) {
        visible += isVisible(static_cast<uint16_t>(number), visibility) ? 1U : 0U;
    }
    return static_cast<uint16_t>(visible);
}

uint16_t IndexOrder::visibleBehind(uint16_t start, Visibility visibility) const
{
    const uint16_t visible = visibleCount(visibility);
    if (start >= count() || visible == 0) {
        return 0;
    }
    if (start == 0) {
        return visible;
    }
    const auto behind = static_cast<uint16_t>(count() - start);
    return visible == count() ? behind : countIn(static_cast<uint16_t>(start + 1), count(), visibility);
}

uint16_t IndexOrder::ordinalOf(uint16_t number, Visibility visibility) const
{
    if (number == 0 || number > count() || !isVisible(number, visibility)) {
        return 0;
    }
    return visibleCount(visibility) == count() ? number : countIn(1, number, visibility);
}

uint16_t IndexOrder::nthBehind(uint16_t start, uint16_t number, Visibility visibility) const
{
    const uint16_t visible = visibleCount(visibility);
    if (number == 0 || number > visible || start >= count()) {
        return 0;
    }
    if (visible == count()) {
        return number <= count() - start ? static_cast<uint16_t>(start + number) : uint16_t{0};
    }
    uint16_t at = start;
    do {
        at = next(at, visibility);
    } while (at != 0 && --number > 0);
    return at;
}

uint16_t IndexOrder::nthBefore(uint16_t start, uint16_t number, Visibility visibility) const
{
    const uint16_t visible = visibleCount(visibility);
    if (number == 0 || number > visible) {
        return 0;
    }
    const auto from = static_cast<uint16_t>(std::min<uint32_t>(start, count() + 1U));
    if (visible == count()) {
        return number < from ? static_cast<uint16_t>(from - number) : uint16_t{0};
    }
    uint16_t at = from;
    do {
        at = previous(at, visibility);
    } while (at != 0 && --number > 0);
    return at;
}

void OrderBuilder::add(CardId card, RecordView record)
{
    const size_t offset = m_keys.size();
    m_maker.append(record, m_keys);
    const size_t length = m_keys.size() - offset;
    uint64_t prefix = 0;
    memcpy(&prefix, m_keys.data() + offset, std::min(length, sizeof prefix));
    m_entries.push_back({.prefix = __builtin_bswap64(prefix),
                         .offset = static_cast<uint32_t>(offset),
                         .length = static_cast<uint32_t>(length),
                         .card = card,
                         .attribute = record.attribute()});
}

bool OrderBuilder::isLess(const Entry &left, const Entry &right) const
{
    if (left.prefix != right.prefix) {
        return left.prefix < right.prefix;
    }
    const std::string_view keys = m_keys;
    const int order =
        compareKeys(keys.substr(left.offset, left.length), keys.substr(right.offset, right.length));
    return order < 0 || (order == 0 && left.card < right.card);
}

IndexOrder OrderBuilder::finish()
{
    std::vector<CardId> inKeyOrder;
    std::vector<uint32_t> ends;
    for (const Entry &entry : m_entries) {
        inKeyOrder.push_back(entry.card);
        ends.push_back(entry.offset + entry.length);
    }
    std::sort(m_entries.begin(), m_entries.end(),
              [this](const Entry &left, const Entry &right) { return isLess(left, right); });
    std::vector<CardId> cards;
    std::vector<uint8_t> attributes;
    for (const Entry &entry : m_entries) {
        cards.push_back(entry.card);
        attributes.push_back(entry.attribute);
    }
    IndexOrder order;
    order.assign(std::move(cards), attributes);
    if (m_keys.empty()) {
        order.setEmptyKeys();
    } else {
        order.setKeys(inKeyOrder, ends, std::move(m_keys));
    }
    return order;
}

} // namespace pdtm
