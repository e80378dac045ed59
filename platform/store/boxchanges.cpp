// The changes of a held box: actions, cards, items.
#include "indexfamily.h"
#include "sqlitebox.h"

#include <algorithm>

namespace pdtm {

namespace {

std::string asText(RecordView record)
{
    const Bytes packed = record.packed();
    return {reinterpret_cast<const char *>(packed.data()), packed.size()};
}

} // namespace

/** Runs a change as an action of its own or as part of the open one. When the work fails nothing is left of
 * the action. */
template <typename Work> PdtmStatus SqliteBox::change(Work work)
{
    if (m_actionDepth > 0 && m_actionFailure != PdtmOk)
        return m_actionFailure;
    if (const PdtmStatus status = beginAction(); status != PdtmOk)
        return status;
    PdtmStatus status = startTransaction();
    if (status == PdtmOk)
        status = work();
    if (status != PdtmOk)
        undo(status);
    return endAction();
}

PdtmStatus SqliteBox::beginAction()
{
    if (m_actionDepth == 0)
        m_actionFailure = PdtmOk;
    ++m_actionDepth;
    return PdtmOk;
}

PdtmStatus SqliteBox::endAction()
{
    if (m_actionDepth == 0)
        return PdtmBadArgument;
    --m_actionDepth;
    if (m_actionDepth > 0 || m_actionFailure != PdtmOk)
        return m_actionFailure;
    return m_inTransaction ? commit() : PdtmStatus(PdtmOk);
}

PdtmStatus SqliteBox::startTransaction()
{
    if (m_inTransaction)
        return PdtmOk;
    m_stateBefore = m_state;
    m_storedScratchBefore = m_storedScratch;
    const PdtmStatus status = m_database.begin();
    m_inTransaction = status == PdtmOk;
    return status;
}

PdtmStatus SqliteBox::commit()
{
    PdtmStatus status = writeCards();
    if (status == PdtmOk)
        status = removeStoredScratchCards(*m_scratch);
    if (status == PdtmOk)
        status = m_database.writeState(m_state);
    if (status == PdtmOk)
        status = m_database.commit();
    if (status != PdtmOk) {
        undo(status);
        return status;
    }
    m_inTransaction = false;
    m_committed = true;
    return PdtmOk;
}

void SqliteBox::undo(PdtmStatus reason)
{
    m_actionFailure = reason;
    if (!m_inTransaction)
        return;
    m_inTransaction = false;
    m_database.rollback();
    const uint32_t syncId = m_state.syncId;
    m_state = m_stateBefore;
    m_state.syncId = syncId; // an id that was given out is never given out again
    m_storedScratch = std::move(m_storedScratchBefore);
    m_cache.clear();
    m_unwritten.clear();
    Schema schema;
    if (m_database.readSchema(schema) == PdtmOk)
        setSchema(std::move(schema));
    family::rolledBack(*this);
}

void SqliteBox::riseCounter()
{
    m_lastCounter = std::max(m_lastCounter, m_state.counter) + 1;
    m_state.counter = m_lastCounter;
}

PdtmStatus SqliteBox::storeCard(CardId card, Bytes packed)
{
    PdtmStatus status = PdtmOk;
    if (m_cache.isLoaded())
        m_unwritten.insert(card);
    else
        status = m_database.writeCard(card, packed);
    if (status != PdtmOk)
        return status;
    m_cache.put(card, packed);
    riseCounter();
    if (!m_cache.isWasteful())
        return PdtmOk;
    status = writeCards();
    m_cache.clear();
    return status;
}

PdtmStatus SqliteBox::eraseCard(CardId card)
{
    PdtmStatus status = PdtmOk;
    if (m_cache.isLoaded())
        m_unwritten.insert(card);
    else
        status = m_database.deleteCard(card);
    if (status == PdtmOk)
        m_cache.remove(card);
    return status;
}

/** Brings the file up to what the cache holds. */
PdtmStatus SqliteBox::writeCards()
{
    for (const CardId card : m_unwritten) {
        RecordView record;
        const bool isThere = m_cache.find(card, record) == PdtmOk;
        const PdtmStatus status =
            isThere ? m_database.writeCard(card, record.packed()) : m_database.deleteCard(card);
        if (status != PdtmOk)
            return status;
    }
    m_unwritten.clear();
    return PdtmOk;
}

PdtmStatus SqliteBox::garbageSize(uint64_t &bytes)
{
    const PdtmStatus status = writeCards();
    return status == PdtmOk ? m_database.garbageSize(bytes) : status;
}

PdtmStatus SqliteBox::writeOrdinaryCard(CardId card, Bytes packed)
{
    const PdtmStatus status = storeCard(card, packed);
    if (status == PdtmOk)
        family::cardWritten(*this, card, RecordView(packed));
    return status;
}

bool SqliteBox::isInUse(CardId card, PdtmStatus &status)
{
    RecordView record;
    status = readCachedCard(card, record);
    const bool isUsed = status == PdtmOk;
    status = status == PdtmNoSuchCard ? PdtmStatus(PdtmOk) : status;
    return isUsed;
}

PdtmStatus SqliteBox::expectNewCard(CardId &card)
{
    if (!isHeld()) {
        if (const PdtmStatus status = m_database.readState(m_state); status != PdtmOk)
            return status;
    }
    const auto start = static_cast<CardId>(m_state.nextCard > PdtmLastOrdinaryCard ? 1 : m_state.nextCard);
    PdtmStatus status = PdtmOk;
    if (isHeld() && !isInUse(start, status) && status == PdtmOk) { // as a rule, and then memory often knows
        card = start;
        return PdtmOk;
    }
    if (status == PdtmOk)
        status = writeCards();
    if (status == PdtmOk)
        status = m_database.firstFreeCard(start, PdtmLastOrdinaryCard, card);
    if (status == PdtmOutOfSpace && start > 1)
        status = m_database.firstFreeCard(1, static_cast<CardId>(start - 1), card);
    return status;
}

PdtmStatus SqliteBox::createCard(CardId &card)
{
    static const std::string Empty = {static_cast<char>(AttributeItem), 1, 0};
    PdtmStatus status = PdtmOk;
    if (card != 0 && !isScratchCard(card) && isInUse(card, status))
        return PdtmExists;
    return status == PdtmOk ? writeWholeCard(card, Empty) : status;
}

PdtmStatus SqliteBox::copyCard(CardId source, CardId &destination)
{
    RecordView record;
    const PdtmStatus status = readCard(source, record);
    return status == PdtmOk ? writeWholeCard(destination, asText(record)) : status;
}

/** Writes a scratch card, or an ordinary one under its id, or under a new one when that is 0. */
PdtmStatus SqliteBox::writeWholeCard(CardId &card, const std::string &packed)
{
    if (isScratchCard(card)) {
        (*m_scratch)[card] = packed;
        m_memoryChanged = true;
        return PdtmOk;
    }
    CardId made = card;
    PdtmStatus status = PdtmOk;
    const bool isNew = made == 0 || !isInUse(made, status);
    if (status == PdtmOk && made == 0)
        status = expectNewCard(made);
    if (status != PdtmOk)
        return status;
    status = change([&] {
        const PdtmStatus prepared = isNew ? prepareNewCard(made, card == 0) : PdtmStatus(PdtmOk);
        return prepared == PdtmOk ? writeOrdinaryCard(made, bytesOf(packed)) : prepared;
    });
    if (status == PdtmOk)
        card = made;
    return status;
}

/** A new card should be the last of the file: SQLite appends it to a page then. With a copy of a scratch card
 * behind it, it would be an insertion, for which neighbouring pages are laid out anew. */
PdtmStatus SqliteBox::prepareNewCard(CardId card, bool wasChosenHere)
{
    skipUsedCard(card, wasChosenHere);
    return removeStoredScratchCards({});
}

/** Lets the ids go on behind a new card. One that was asked for never takes them back. */
void SqliteBox::skipUsedCard(CardId card, bool wasChosenHere)
{
    const uint32_t behind = card + 1U;
    m_state.nextCard = wasChosenHere ? behind : std::max(m_state.nextCard, behind);
}

PdtmStatus SqliteBox::deleteCard(CardId card)
{
    if (isScratchCard(card)) {
        m_memoryChanged |= m_scratch->erase(card) > 0 || m_storedScratch.contains(card);
        return PdtmOk;
    }
    PdtmStatus status = PdtmOk;
    if (!isInUse(card, status))
        return status;
    return change([&] {
        const PdtmStatus deleted = eraseCard(card);
        if (deleted == PdtmOk) {
            riseCounter();
            family::cardsDeleted(*this, {&card, 1});
        }
        return deleted;
    });
}

PdtmStatus SqliteBox::deleteCards(uint8_t mask, uint8_t value)
{
    std::vector<CardId> cards;
    const bool isRead = forEachCard([&](CardId card, RecordView record) {
        if ((record.attribute() & mask) == value)
            cards.push_back(card);
        return true;
    });
    if (!isRead)
        return PdtmIoError;
    if (cards.empty())
        return PdtmOk;
    return change([&] {
        for (const CardId card : cards) {
            if (const PdtmStatus status = eraseCard(card); status != PdtmOk)
                return status;
        }
        riseCounter();
        family::cardsDeleted(*this, cards);
        return PdtmStatus(PdtmOk);
    });
}

PdtmStatus SqliteBox::writeScratchItem(CardId card, const ItemDescription &item, Bytes value)
{
    const auto found = m_scratch->find(card);
    if (found == m_scratch->end())
        return PdtmNoSuchCard;
    if (!setItem(found->second, item.storage, value))
        return PdtmTooShort;
    m_memoryChanged = true;
    return PdtmOk;
}

/** The record of a card with one item written. */
PdtmStatus SqliteBox::editedCard(CardId card, const ItemDescription &item, Bytes value, std::string &packed)
{
    RecordView record;
    if (const PdtmStatus status = readCard(card, record); status != PdtmOk)
        return status;
    packed = asText(record);
    return setItem(packed, item.storage, value) ? PdtmOk : PdtmTooShort;
}

PdtmStatus SqliteBox::writeItem(CardId card, const ItemDescription &item, Bytes value)
{
    if (isScratchCard(card))
        return writeScratchItem(card, item, value);
    std::string packed;
    if (const PdtmStatus status = editedCard(card, item, value, packed); status != PdtmOk)
        return status;
    if (item.storage != AttributeItem)
        return change([&] { return writeOrdinaryCard(card, bytesOf(packed)); });
    return change([&] {
        const PdtmStatus status = storeCard(card, bytesOf(packed));
        if (status == PdtmOk)
            family::attributeWritten(*this, card, RecordView(bytesOf(packed)));
        return status;
    });
}

PdtmStatus SqliteBox::writeItemQuietly(CardId card, const ItemDescription &item, Bytes value)
{
    if (isScratchCard(card))
        return writeScratchItem(card, item, value);
    std::string packed;
    if (const PdtmStatus status = editedCard(card, item, value, packed); status != PdtmOk)
        return status;
    return change([&] {
        const PdtmStatus status = storeCard(card, bytesOf(packed));
        if (status == PdtmOk)
            family::counterChanged(*this);
        return status;
    });
}

PdtmStatus SqliteBox::addItems(const std::vector<ItemDescription> &items)
{
    return change([&] {
        for (const ItemDescription &item : items) {
            if (const PdtmStatus status = m_database.addItem(item); status != PdtmOk)
                return status;
        }
        riseCounter();
        Schema schema;
        const PdtmStatus status = m_database.readSchema(schema);
        if (status == PdtmOk)
            setSchema(std::move(schema));
        return status;
    });
}

void SqliteBox::advanceSyncId()
{
    m_state.syncId = m_state.syncId == UINT32_MAX ? 1 : m_state.syncId + 1;
    m_memoryChanged = true;
}

/** Takes the copies of scratch cards out of the file, but for those of @p kept. */
PdtmStatus SqliteBox::removeStoredScratchCards(const ScratchCards &kept)
{
    for (auto card = m_storedScratch.begin(); card != m_storedScratch.end();) {
        if (kept.contains(*card)) {
            ++card;
            continue;
        }
        if (const PdtmStatus status = m_database.deleteCard(*card); status != PdtmOk)
            return status;
        m_memoryChanged |= m_scratch->contains(*card); // the close writes it again
        card = m_storedScratch.erase(card);
    }
    return PdtmOk;
}

PdtmStatus SqliteBox::storeScratchCards()
{
    for (const auto &[card, packed] : *m_scratch) {
        if (const PdtmStatus status = m_database.writeCard(card, bytesOf(packed)); status != PdtmOk)
            return status;
    }
    return PdtmOk;
}

/** Scratch cards and sync id go to the file, without waiting for the disk where that is safe. */
void SqliteBox::flushMemory(bool synchronised)
{
    if (!m_memoryChanged)
        return;
    m_database.setSynchronised(synchronised);
    PdtmStatus status = m_database.begin();
    if (status == PdtmOk)
        status = removeStoredScratchCards(*m_scratch);
    if (status == PdtmOk)
        status = storeScratchCards();
    if (status == PdtmOk)
        status = m_database.writeState(m_state);
    if (status == PdtmOk)
        status = m_database.commit();
    if (status != PdtmOk)
        m_database.rollback();
    m_database.setSynchronised(true);
    m_memoryChanged = status != PdtmOk;
}

} // namespace pdtm
