#ifndef PDTM_CARDCACHE_H
#define PDTM_CARDCACHE_H

#include "boxdatabase.h"

#include <memory>
#include <vector>

namespace pdtm {

/**
 * The packed cards of a box in memory, for the one who holds it in mode 0: nobody else can change it then.
 * At first it keeps the card read last; when many are asked for it takes all of them in, in one pass.
 */
class CardCache
{
public:
    /** Looks a card up. PdtmOk, PdtmNoSuchCard, or PdtmNone when only the file knows. */
    [[nodiscard]] PdtmStatus find(CardId card, RecordView &record) const;
    /** Keeps a card that was read or written. */
    void put(CardId card, Bytes packed);
    void remove(CardId card);
    void clear();

    [[nodiscard]] bool isLoaded() const { return !m_cards.empty(); }
    /** So much of the memory is taken by former states of cards that the cache should be cleared, and taken
     * in anew when many cards are asked for. */
    [[nodiscard]] bool isWasteful() const;
    /** Takes all cards in unless they are too many. */
    void load(BoxDatabase &database);
    /** Counts a card that had to be read from the file; true when it is time to load. */
    [[nodiscard]] bool countMiss() { return !isLoaded() && ++m_misses >= MissesBeforeLoading; }
    void forEach(const std::function<bool(CardId, RecordView)> &visit) const;

private:
    static constexpr int MissesBeforeLoading = 32;
    uint8_t *room(size_t size);
    void append(CardId card, Bytes packed);

    std::vector<uint8_t *> m_cards; ///< by id: the length in four bytes, then the record; empty until loaded
    std::vector<std::unique_ptr<uint8_t[]>> m_blocks;
    size_t m_blockRoom = 0;
    uint8_t *m_free = nullptr;
    size_t m_waste = 0;
    int m_misses = 0;
    CardId m_lastCard = 0;
    std::string m_lastRecord;
};

} // namespace pdtm

#endif
