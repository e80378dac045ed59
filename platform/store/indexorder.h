#ifndef PDTM_INDEXORDER_H
#define PDTM_INDEXORDER_H

#include "sortkey.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace pdtm {

/** A card is visible when `attribute & mask == value`. */
struct Visibility
{
    uint8_t mask = 0;
    uint8_t value = 0;
    [[nodiscard]] bool shows(uint8_t attribute) const { return (attribute & mask) == value; }
    bool operator==(const Visibility &) const = default;
};

/**
 * The cards of an index in memory: their ids in index order, in blocks with room for more, and tables by card
 * id of block, attribute byte and sort key. A step and a conversion between id and number take constant time,
 * and an insertion moves the ids of one block.
 *
 * Index numbers run from 1; 0 stands before the first card and every number above count() behind the last.
 */
class IndexOrder
{
public:
    [[nodiscard]] uint16_t count() const { return m_starts.back(); }
    /** All cards in order. */
    [[nodiscard]] std::vector<CardId> cards() const;
    /** Index numbers by card id, 0 for a card that is not here: for one who asks for very many. */
    [[nodiscard]] std::vector<uint16_t> numbers() const;
    /** Card at an index number from 1 to count(). */
    [[nodiscard]] CardId cardAt(uint16_t number) const
    {
        const size_t block = blockAt(number);
        return blockSlots(block)[number - 1U - m_starts[block]];
    }
    /** Index number of a card, 0 when it is not here. */
    [[nodiscard]] uint16_t numberOf(CardId card) const;
    [[nodiscard]] bool contains(CardId card) const { return card < m_blocks.size() && m_blocks[card] != 0; }
    /** Attribute byte of a card that is here. */
    [[nodiscard]] uint8_t attributeOf(CardId card) const { return m_attributes[card]; }

    /** Takes cards in the order given, with no keys. False, and empty, when an id is reserved, 0 or there
     * twice. */
    bool assign(const std::vector<CardId> &cards, std::span<const uint8_t> attributes);

    /** The keys of the cards are in memory; without them nothing can be inserted. */
    [[nodiscard]] bool hasKeys() const { return m_hasKeys; }
    /** Says that every card has the empty key: the order is that of the ids. */
    void setEmptyKeys();
    /** Takes the keys of @p cards, which may be others than those that are here. False when one of those
     * lacks its key. */
    bool setKeys(std::span<const CardId> cards, std::span<const uint32_t> ends, std::string bytes);
    [[nodiscard]] std::string_view keyOf(CardId card) const;
    /** Memory that the keys take, with those of removed cards. */
    [[nodiscard]] size_t keyBytes() const { return m_keys.size(); }

    /** Puts a card in at the place of its key. @return its index number */
    uint16_t insert(CardId card, uint8_t attribute, std::string_view key);
    void remove(CardId card);
    /** Removes many cards in one pass. Those that are not here are passed over. */
    void removeAll(std::span<const CardId> cards);
    void setAttribute(CardId card, uint8_t attribute);

    /** @name Visible cards
     * Results are index numbers, 0 for none. */
    /// @{
    [[nodiscard]] uint16_t next(uint16_t from, Visibility visibility) const;
    [[nodiscard]] uint16_t previous(uint16_t from, Visibility visibility) const;
    [[nodiscard]] uint16_t nthBehind(uint16_t start, uint16_t number, Visibility visibility) const;
    [[nodiscard]] uint16_t nthBefore(uint16_t start, uint16_t number, Visibility visibility) const;
    /// @}
    /** Ordinal of an index number among the visible cards; 0 when it is not one of them. */
    [[nodiscard]] uint16_t ordinalOf(uint16_t number, Visibility visibility) const;
    /** Number of visible cards behind an index number. */
    [[nodiscard]] uint16_t visibleBehind(uint16_t start, Visibility visibility) const;

private:
    static constexpr size_t BlockCapacity = 256;
    static constexpr size_t BlockFill = 128; // cards in a block that was just laid out
    static constexpr size_t MostBlocks = 512;

    /** The first 24 bytes of a key, filled up with zeros, as numbers that compare as they do. So many tell
     * most names apart, those of one family or kind of company, too. */
    using KeyBeginning = std::array<uint64_t, 3>;
    struct KeyPlace
    {
        KeyBeginning beginning{}; // so that most comparisons touch nothing else
        uint32_t offset = 0;
        uint32_t length = 0;
    };
    struct SortPlace
    {
        KeyBeginning beginning;
        std::string_view key;
        CardId card;
    };
    [[nodiscard]] static KeyBeginning beginningOf(std::string_view key);

    void growFor(CardId card);
    [[nodiscard]] size_t blockAt(uint16_t number) const;
    [[nodiscard]] size_t blockSize(size_t block) const { return m_starts[block + 1] - m_starts[block]; }
    [[nodiscard]] CardId *blockSlots(size_t block) { return &m_slots[block * BlockCapacity]; }
    [[nodiscard]] const CardId *blockSlots(size_t block) const { return &m_slots[block * BlockCapacity]; }
    [[nodiscard]] size_t blockFor(const SortPlace &place) const;
    [[nodiscard]] const KeyPlace &keyPlaceOf(CardId card) const;
    [[nodiscard]] bool beginsBefore(size_t block, const SortPlace &place) const;
    void noteFirst(size_t block);
    void noteAllFirst();
    void layOut(const std::vector<CardId> &cards);
    void moveStarts(size_t block, int change);
    void forget(CardId card);
    void removeInOnePass(std::span<const CardId> cards);
    void storeKey(CardId card, std::string_view key);
    void compactKeys();
    [[nodiscard]] bool standsBefore(CardId left, const SortPlace &place) const;
    [[nodiscard]] bool isVisible(uint16_t number, Visibility visibility) const;
    [[nodiscard]] uint16_t visibleCount(Visibility visibility) const;
    [[nodiscard]] uint16_t countIn(uint16_t first, uint16_t last, Visibility visibility) const;

    std::vector<CardId> m_slots; // BlockCapacity for each block; none of the blocks is empty
    std::array<uint16_t, MostBlocks + 1>
        m_starts{}; // number of cards before each block; count() behind the last
    // Of the key of the first card of each block but the first: finding a block touches little else.
    std::array<KeyBeginning, MostBlocks> m_beginnings{};
    mutable size_t m_lastBlock = 0;    // where a number was found last
    std::vector<uint16_t> m_blocks;    // by card id, the block plus 1; 0: not here
    std::vector<uint8_t> m_attributes; // by card id
    std::vector<KeyPlace> m_keyPlaces; // by card id, empty when all keys are
    std::string m_keys;
    size_t m_deadKeyBytes = 0;
    bool m_hasKeys = true;
    std::array<uint16_t, 256> m_histogram{}; // number of cards by attribute byte

    struct VisibleCount
    {
        Visibility visibility;
        uint16_t count = 0;
        bool valid = false;
    };
    mutable VisibleCount m_visibleCount; // of the visibility asked for last
};

/** Builds an order from cards that come in any sequence. */
class OrderBuilder
{
public:
    explicit OrderBuilder(const SortKeyMaker &maker) : m_maker(maker) {}
    void add(CardId card, RecordView record);
    /** The cards by key, equal keys by id. */
    [[nodiscard]] IndexOrder finish();

private:
    struct Entry
    {
        uint64_t prefix; // first eight bytes of the key, so that most comparisons touch nothing else
        uint32_t offset;
        uint32_t length;
        CardId card;
        uint8_t attribute;
    };
    [[nodiscard]] bool isLess(const Entry &left, const Entry &right) const;

    const SortKeyMaker &m_maker;
    std::vector<Entry> m_entries;
    std::string m_keys;
};

} // namespace pdtm

#endif
