#include "indexorder.h"

#include <algorithm>
#include <compare>
#include <cstring>

namespace pdtm {

namespace {

constexpr size_t TableStep = 4096; // the tables by card id grow in such steps

/** First eight bytes of a key, as a number that compares as they do. */
uint64_t keyPrefix(std::string_view key)
{
    uint64_t prefix = 0;
    if (!key.empty()) {
        memcpy(&prefix, key.data(), std::min(key.size(), sizeof prefix));
    }
    return __builtin_bswap64(prefix);
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
    if (card < m_blocks.size()) {
        return;
    }
    const size_t size = (card / TableStep + 1) * TableStep;
    m_blocks.resize(size);
    m_attributes.resize(size);
    if (!m_keyPlaces.empty()) {
        m_keyPlaces.resize(size);
    }
}

size_t IndexOrder::blockAt(uint16_t number) const
{
    const uint32_t index = number - 1U;
    if (index - m_starts[m_lastBlock] >= blockSize(m_lastBlock)) {
        size_t block = 0;
        for (size_t step = MostBlocks / 2; step > 0; step /= 2) {
            block += m_starts[block + step] <= index ? step : 0;
        }
        m_lastBlock = block;
    }
    return m_lastBlock;
}

uint16_t IndexOrder::numberOf(CardId card) const
{
    if (!contains(card)) {
        return 0;
    }
    const size_t block = m_blocks[card] - 1U;
    const CardId *slots = blockSlots(block);
    const auto size = static_cast<uint16_t>(blockSize(block));
    uint16_t offset = 0;
    for (uint16_t i = 0; i < size; ++i) { // to the end, so that it is vectorised
        offset = static_cast<uint16_t>(offset | (slots[i] == card ? i : 0));
    }
    return static_cast<uint16_t>(m_starts[block] + offset + 1);
}

std::vector<CardId> IndexOrder::cards() const
{
    std::vector<CardId> cards;
    cards.reserve(count());
    for (size_t block = 0; m_starts[block] < count(); ++block) {
        cards.insert(cards.end(), blockSlots(block), blockSlots(block) + blockSize(block));
    }
    return cards;
}

std::vector<uint16_t> IndexOrder::numbers() const
{
    std::vector<uint16_t> numbers(size_t{UINT16_MAX} + 1);
    uint16_t number = 0;
    for (const CardId card : cards()) {
        numbers[card] = ++number;
    }
    return numbers;
}

/** Spreads the cards evenly over blocks. */
void IndexOrder::layOut(const std::vector<CardId> &cards)
{
    m_slots.resize((cards.size() + BlockFill - 1) / BlockFill * BlockCapacity);
    for (size_t block = 0; block < m_starts.size(); ++block) {
        m_starts[block] = static_cast<uint16_t>(std::min(block * BlockFill, cards.size()));
    }
    for (size_t i = 0; i < cards.size(); ++i) {
        const size_t block = i / BlockFill;
        blockSlots(block)[i % BlockFill] = cards[i];
        m_blocks[cards[i]] = static_cast<uint16_t>(block + 1);
    }
    noteAllFirst();
}

bool IndexOrder::assign(const std::vector<CardId> &cards, std::span<const uint8_t> attributes)
{
    *this = IndexOrder();
    m_hasKeys = cards.empty();
    if (!cards.empty()) {
        growFor(*std::max_element(cards.begin(), cards.end()));
    }
    for (size_t i = 0; i < cards.size(); ++i) {
        const CardId card = cards[i];
        if (!isOrdinary(card) || m_blocks[card] != 0) {
            *this = IndexOrder();
            return false;
        }
        m_blocks[card] = 1; // there; layOut() tells where
        m_attributes[card] = attributes[i];
        ++m_histogram[attributes[i]];
    }
    layOut(cards);
    return true;
}

void IndexOrder::setEmptyKeys()
{
    m_keyPlaces.clear();
    m_keys.clear();
    m_beginnings.fill({});
    m_deadKeyBytes = 0;
    m_hasKeys = true;
}

bool IndexOrder::setKeys(std::span<const CardId> cards, std::span<const uint32_t> ends, std::string bytes)
{
    setEmptyKeys();
    m_keys = std::move(bytes);
    m_keyPlaces.resize(m_blocks.size());
    uint32_t begin = 0;
    size_t known = 0;
    for (size_t i = 0; i < cards.size(); ++i) {
        const uint32_t length = ends[i] - begin;
        if (contains(cards[i])) {
            m_keyPlaces[cards[i]] = {beginningOf(std::string_view(m_keys).substr(begin, length)), begin,
                                     length};
            ++known;
        } else {
            m_deadKeyBytes += length;
        }
        begin = ends[i];
    }
    noteAllFirst();
    m_hasKeys = known == count();
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
        m_keyPlaces.resize(m_blocks.size());
    }
    if (m_deadKeyBytes > TableStep && m_deadKeyBytes > m_keys.size() / 2) {
        compactKeys();
    }
    m_keyPlaces[card] = {beginningOf(key), static_cast<uint32_t>(m_keys.size()),
                         static_cast<uint32_t>(key.size())};
    m_keys += key;
}

void IndexOrder::compactKeys()
{
    std::string compact;
    compact.reserve(m_keys.size() - m_deadKeyBytes);
    for (const CardId card : cards()) {
        const std::string_view key = keyOf(card);
        m_keyPlaces[card].offset = static_cast<uint32_t>(compact.size());
        compact += key;
    }
    m_keys = std::move(compact);
    m_deadKeyBytes = 0;
}

const IndexOrder::KeyPlace &IndexOrder::keyPlaceOf(CardId card) const
{
    static constexpr KeyPlace OfEmptyKey;
    return card < m_keyPlaces.size() ? m_keyPlaces[card] : OfEmptyKey;
}

IndexOrder::KeyBeginning IndexOrder::beginningOf(std::string_view key)
{
    KeyBeginning beginning{};
    for (uint64_t &part : beginning) {
        part = keyPrefix(key);
        key.remove_prefix(std::min(key.size(), sizeof part));
    }
    return beginning;
}

void IndexOrder::noteFirst(size_t block)
{
    m_beginnings[block] = keyPlaceOf(*blockSlots(block)).beginning;
}

void IndexOrder::noteAllFirst()
{
    for (size_t block = 0; m_starts[block] < count(); ++block) {
        noteFirst(block);
    }
}

bool IndexOrder::standsBefore(CardId left, const SortPlace &place) const
{
    const KeyPlace &there = keyPlaceOf(left);
    if (const auto order = there.beginning <=> place.beginning; std::is_neq(order)) {
        return std::is_lt(order);
    }
    // When one of the keys is no longer than that, the other begins with it.
    const bool isTold = std::min<size_t>(there.length, place.key.size()) <= sizeof there.beginning;
    const auto order = isTold ? there.length <=> place.key.size() : compareKeys(keyOf(left), place.key) <=> 0;
    return std::is_lt(order) || (std::is_eq(order) && left < place.card);
}

bool IndexOrder::beginsBefore(size_t block, const SortPlace &place) const
{
    const auto order = m_beginnings[block] <=> place.beginning;
    return std::is_neq(order) ? std::is_lt(order) : standsBefore(*blockSlots(block), place);
}

/** The last block whose first card stands before, else the first one. */
size_t IndexOrder::blockFor(const SortPlace &place) const
{
    size_t first = 0;
    size_t last = m_slots.size() / BlockCapacity;
    while (last - first > 1) {
        const size_t middle = (first + last) / 2;
        (beginsBefore(middle, place) ? first : last) = middle;
    }
    return first;
}

void IndexOrder::moveStarts(size_t block, int change)
{
    for (size_t behind = block + 1; behind < m_starts.size(); ++behind) {
        m_starts[behind] = static_cast<uint16_t>(m_starts[behind] + change);
    }
}

uint16_t IndexOrder::insert(CardId card, uint8_t attribute, std::string_view key)
{
    const SortPlace place{beginningOf(key), key, card};
    growFor(card);
    if (m_slots.empty()) {
        m_slots.resize(BlockCapacity);
    }
    size_t block = blockFor(place);
    if (blockSize(block) == BlockCapacity) {
        layOut(cards());
        block = blockFor(place);
    }
    storeKey(card, key); // nothing behind this fails
    CardId *const begin = blockSlots(block);
    CardId *const end = begin + blockSize(block);
    CardId *const slot =
        std::partition_point(begin, end, [&](CardId left) { return standsBefore(left, place); });
    std::copy_backward(slot, end, end + 1);
    *slot = card; // a block's first only in the first block, whose beginning blockFor() doesn't ask for
    moveStarts(block, 1);
    m_blocks[card] = static_cast<uint16_t>(block + 1);
    m_attributes[card] = attribute;
    ++m_histogram[attribute];
    m_visibleCount.valid = false;
    return static_cast<uint16_t>(m_starts[block] + (slot - begin) + 1);
}

/** Takes a card out of all but the blocks. */
void IndexOrder::forget(CardId card)
{
    m_deadKeyBytes += keyOf(card).size();
    --m_histogram[m_attributes[card]];
    m_visibleCount.valid = false;
    m_blocks[card] = 0;
}

void IndexOrder::remove(CardId card)
{
    if (!contains(card)) {
        return;
    }
    const size_t block = m_blocks[card] - 1U;
    if (blockSize(block) == 1) {
        removeInOnePass({&card, 1}); // so that no block is left empty
        return;
    }
    CardId *const end = blockSlots(block) + blockSize(block);
    CardId *const slot = std::find(blockSlots(block), end, card);
    std::copy(slot + 1, end, slot);
    noteFirst(block);
    moveStarts(block, -1);
    forget(card);
}

void IndexOrder::removeAll(std::span<const CardId> cards)
{
    if (cards.size() == 1) {
        remove(cards.front());
    } else {
        removeInOnePass(cards);
    }
}

void IndexOrder::removeInOnePass(std::span<const CardId> cards)
{
    std::vector<CardId> rest = this->cards();
    for (const CardId card : cards) {
        if (contains(card)) {
            forget(card);
        }
    }
    std::erase_if(rest, [this](CardId card) { return m_blocks[card] == 0; });
    layOut(rest);
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
    for (uint32_t number = from + 1U; number <= count(); ++number) {
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
    for (uint32_t next = first; next <= last;) {
        const size_t block = blockAt(static_cast<uint16_t>(next));
        const CardId *slots = blockSlots(block) + (next - 1 - m_starts[block]);
        const uint32_t size = std::min<uint32_t>(last, m_starts[block + 1]) + 1 - next;
        for (uint32_t i = 0; i < size; ++i) {
            visible += visibility.shows(m_attributes[slots[i]]) ? 1U : 0U;
        }
        next += size;
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
    m_entries.push_back({.prefix = keyPrefix(std::string_view(m_keys).substr(offset)),
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
    order.assign(cards, attributes);
    if (m_keys.empty()) {
        order.setEmptyKeys();
    } else {
        order.setKeys(inKeyOrder, ends, std::move(m_keys));
    }
    return order;
}

} // namespace pdtm
