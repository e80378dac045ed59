#include "cardcache.h"

#include "guarded.h"

#include <algorithm>
#include <cstring>

namespace pdtm {

namespace {

constexpr uint64_t LargestBox = 64 << 20;
constexpr size_t BlockSize = 1 << 20;
constexpr size_t MostWaste = 8 << 20;
constexpr int MissesAfterRefusal = INT32_MIN; // a box too large is not tried again

uint32_t lengthOf(const uint8_t *card)
{
    uint32_t length = 0;
    std::memcpy(&length, card, sizeof length);
    return length;
}

void fill(uint8_t *card, Bytes packed)
{
    const auto length = static_cast<uint32_t>(packed.size());
    std::memcpy(card, &length, sizeof length);
    if (!packed.empty())
        std::memmove(card + sizeof length, packed.data(), packed.size());
}

RecordView recordOf(const uint8_t *card)
{
    return RecordView(Bytes(card + sizeof(uint32_t), lengthOf(card)));
}

} // namespace

PdtmStatus CardCache::find(CardId card, RecordView &record) const
{
    if (isLoaded()) {
        if (!m_cards[card])
            return PdtmNoSuchCard;
        record = recordOf(m_cards[card]);
        return PdtmOk;
    }
    if (card != m_lastCard || card == 0)
        return PdtmNone;
    record = RecordView(bytesOf(m_lastRecord));
    return PdtmOk;
}

uint8_t *CardCache::room(size_t size)
{
    if (m_blockRoom < size) {
        const size_t blockSize = std::max(size, BlockSize);
        m_blocks.push_back(std::make_unique_for_overwrite<uint8_t[]>(blockSize));
        m_free = m_blocks.back().get();
        m_blockRoom = blockSize;
    }
    uint8_t *place = m_free;
    m_free += size;
    m_blockRoom -= size;
    return place;
}

void CardCache::append(CardId card, Bytes packed)
{
    uint8_t *place = room(sizeof(uint32_t) + packed.size());
    fill(place, packed);
    m_cards[card] = place;
}

void CardCache::put(CardId card, Bytes packed)
{
    if (!isLoaded()) {
        m_lastRecord.assign(reinterpret_cast<const char *>(packed.data()), packed.size());
        m_lastCard = card;
        return;
    }
    uint8_t *present = m_cards[card];
    const size_t former = present ? lengthOf(present) : 0;
    const bool fits = present && packed.size() <= former;
    if (fits)
        fill(present, packed);
    else
        append(card, packed);
    m_waste += fits ? former - packed.size() : former;
}

bool CardCache::isWasteful() const
{
    return m_waste > MostWaste;
}

void CardCache::remove(CardId card)
{
    if (card == m_lastCard)
        m_lastCard = 0;
    if (isLoaded() && m_cards[card]) {
        m_waste += lengthOf(m_cards[card]);
        m_cards[card] = nullptr;
    }
}

void CardCache::clear()
{
    *this = CardCache();
}

void CardCache::load(BoxDatabase &database)
{
    if (isLoaded())
        return;
    clear();
    if (database.fileSize() > LargestBox) {
        m_misses = MissesAfterRefusal;
        return;
    }
    const auto keep = [this](CardId card, RecordView record) {
        append(card, record.packed());
        return true;
    };
    const PdtmStatus status = guarded([&] {
        m_cards.resize(PdtmFirstReservedCard, nullptr);
        return database.forEachCard(1, PdtmLastOrdinaryCard, keep);
    });
    if (status != PdtmOk) { // half of the cards would be taken for all
        clear();
        m_misses = MissesAfterRefusal;
    }
}

void CardCache::forEach(const std::function<bool(CardId, RecordView)> &visit) const
{
    for (size_t card = 0; card < m_cards.size(); ++card) {
        if (m_cards[card] && !visit(static_cast<CardId>(card), recordOf(m_cards[card])))
            return;
    }
}

} // namespace pdtm
