#ifndef PDTM_SQLITEBOX_H
#define PDTM_SQLITEBOX_H

#include "boxdatabase.h"
#include "boxfile.h"
#include "boxlock.h"
#include "cardcache.h"
#include "scratchcards.h"

#include <array>
#include <set>

namespace pdtm {

/**
 * The one implementation of BoxFile. While it is held (mode 0) it keeps state and cards in memory and writes
 * through; otherwise each call reads the newest commit.
 */
class SqliteBox final : public BoxFile
{
public:
    /** @param path real, canonical path. PdtmMissing, PdtmDamaged, PdtmIoError */
    [[nodiscard]] static PdtmStatus open(const std::string &path, std::shared_ptr<SqliteBox> &box);
    ~SqliteBox() override;

    [[nodiscard]] const std::string &path() const override { return m_path; }
    [[nodiscard]] const Schema &schema() const override { return m_schema; }
    [[nodiscard]] bool isHeld() const override { return m_lock.isHeld(); }
    uint64_t changeCounter() override;
    bool forEachCard(const std::function<bool(CardId, RecordView)> &visit) override;
    PdtmStatus readCard(CardId card, RecordView &record) override;

    /** The file still is the one that was opened, and nobody has touched it since rest(). */
    [[nodiscard]] bool isUntouched() const;
    [[nodiscard]] bool isSameFile(const std::string &realPath) const;
    /** Remembers how the file looks, for isUntouched(). */
    void rest();
    /** The file lost its name; who has it open goes on reading it. */
    void markDeleted() { m_isDeleted = true; }
    [[nodiscard]] bool isDeleted() const { return m_isDeleted; }

    /** Takes the lock of the box. PdtmBusy, PdtmReadOnly, PdtmDamaged, PdtmIoError */
    [[nodiscard]] PdtmStatus hold();
    /** Undoes an open action. */
    void endActions();
    [[nodiscard]] int actionDepth() const { return m_actionDepth; }
    /** Undoes the open action after an operation broke off in the midst.
     * @param depth number of actions that were open when the operation began */
    void abandonAction(int depth, PdtmStatus reason);
    /** Stores what waits in memory and gives the lock back.
     * @param closing the connection ends, too */
    void release(bool closing);
    /** At the end of the process: closes without a word to anybody. */
    void shutDown();

    /** Brings schema and state up to the newest commit; nothing while held. */
    [[nodiscard]] PdtmStatus refresh() { return isHeld() ? PdtmStatus(PdtmOk) : load(); }
    /** The item of a code, null when there is none. */
    [[nodiscard]] const ItemDescription *item(const char *code);
    [[nodiscard]] const BoxState &state() const { return m_state; }
    [[nodiscard]] BoxDatabase &database() { return m_database; }

    /** @name Changes: only while held
     * PdtmNoSuchCard, PdtmOutOfSpace, PdtmTooShort, PdtmIoError; nothing has changed then.
     * @{ */
    [[nodiscard]] PdtmStatus beginAction();
    [[nodiscard]] PdtmStatus endAction();
    [[nodiscard]] PdtmStatus createCard(CardId &card);
    [[nodiscard]] PdtmStatus copyCard(CardId source, CardId &destination);
    [[nodiscard]] PdtmStatus deleteCard(CardId card);
    [[nodiscard]] PdtmStatus deleteCards(uint8_t mask, uint8_t value);
    [[nodiscard]] PdtmStatus writeItem(CardId card, const ItemDescription &item, Bytes value);
    /** Writes an item and tells the indexes nothing but the new counter. */
    [[nodiscard]] PdtmStatus writeItemQuietly(CardId card, const ItemDescription &item, Bytes value);
    [[nodiscard]] PdtmStatus addItems(const std::vector<ItemDescription> &items);
    void advanceSyncId();
    /** @} */

    /** Bytes of the free pages of the file, as far as the action under way has come. */
    [[nodiscard]] PdtmStatus garbageSize(uint64_t &bytes);
    /** Id that the next new card gets. PdtmOutOfSpace when all are used. */
    [[nodiscard]] PdtmStatus expectNewCard(CardId &card);

private:
    explicit SqliteBox(std::string path);
    struct FileLook
    {
        int64_t size = -1;
        int64_t seconds = 0;
        int64_t nanoseconds = 0;
        bool operator==(const FileLook &) const = default;
    };
    static FileLook lookAt(const std::string &path);

    PdtmStatus load();
    PdtmStatus reload();
    PdtmStatus takeOver();
    PdtmStatus readCachedCard(CardId card, RecordView &record);
    template <typename Work> PdtmStatus change(Work work);
    PdtmStatus startTransaction();
    PdtmStatus commit();
    void undo(PdtmStatus reason);
    void riseCounter();
    PdtmStatus writeWholeCard(CardId &card, const std::string &packed);
    PdtmStatus prepareNewCard(CardId card, bool wasChosenHere);
    void skipUsedCard(CardId card, bool wasChosenHere);
    PdtmStatus writeScratchItem(CardId card, const ItemDescription &item, Bytes value);
    PdtmStatus editedCard(CardId card, const ItemDescription &item, Bytes value, std::string &packed);
    PdtmStatus storeCard(CardId card, Bytes packed);
    PdtmStatus eraseCard(CardId card);
    PdtmStatus writeCards();
    PdtmStatus writeOrdinaryCard(CardId card, Bytes packed);
    PdtmStatus removeStoredScratchCards(const ScratchCards &kept);
    PdtmStatus storeScratchCards();
    void flushMemory(bool synchronised);
    bool isInUse(CardId card, PdtmStatus &status);
    void setSchema(Schema schema);

    std::string m_path;
    BoxDatabase m_database;
    BoxLock m_lock;
    Schema m_schema;
    BoxState m_state;
    uint64_t m_device = 0;
    uint64_t m_inode = 0;
    bool m_isDeleted = false;
    FileLook m_restingBox;
    FileLook m_restingLog;

    CardCache m_cache;
    /** Cards that the open action changed in the cache alone, by id: at its end each is written once, in the
     * order of the file. */
    std::set<CardId> m_unwritten;
    uint64_t m_cacheCounter = 0;
    uint64_t m_schemaCounter = 0;
    std::string m_record;
    struct CodeSlot
    {
        ItemCode code{};
        const ItemDescription *item = nullptr;
    };
    std::array<CodeSlot, 256> m_codes;

    ScratchCards *m_scratch = nullptr;
    std::set<CardId> m_storedScratch;       ///< scratch cards of which the file holds a copy
    std::set<CardId> m_storedScratchBefore; ///< the same when the open action began
    bool m_memoryChanged = false;           ///< scratch cards or sync id are ahead of the file
    bool m_committed = false;               ///< a card was changed since the box is held

    int m_actionDepth = 0;
    bool m_inTransaction = false;
    PdtmStatus m_actionFailure = PdtmOk;
    BoxState m_stateBefore;
    uint64_t m_lastCounter = 0; ///< the highest counter ever given out, undone ones included
};

} // namespace pdtm

#endif
