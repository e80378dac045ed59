#ifndef PDTM_BOXDATABASE_H
#define PDTM_BOXDATABASE_H

#include "record.h"
#include "statement.h"

#include <functional>
#include <memory>
#include <string>

namespace pdtm {

/** The one row of the table `box`. */
struct BoxState
{
    uint32_t applicationId = 0;
    uint32_t syncId = 0;
    uint32_t nextCard = 1; ///< where the search for a free card id begins
    uint64_t counter = 1;
    std::string language;
    int64_t birth = 0; ///< random; tells a box from another that had its name before
};

/**
 * The file of a box: SQLite, with the tables that docs/store-format.md tells. Knows nothing of handles,
 * actions or indexes. Every operation gives a status; a failed one leaves no statement running.
 */
class BoxDatabase
{
public:
    static constexpr int LargestRow = 64 << 20;

    BoxDatabase();
    ~BoxDatabase();
    BoxDatabase(const BoxDatabase &) = delete;
    BoxDatabase &operator=(const BoxDatabase &) = delete;

    /** Makes a new file at @p path, whole and synchronised, with nothing beside it. */
    [[nodiscard]] static PdtmStatus create(const std::string &path, const BoxState &state);

    /** Opens and verifies a box; a file that is refused is left as it was. Where folder or file can't be
     * written it is read as it stands, a left-over write-ahead file included. PdtmMissing, PdtmDamaged,
     * PdtmIoError */
    [[nodiscard]] PdtmStatus open(const std::string &path);
    /** @param tidy the caller holds the lock of the box: what is in the write-ahead file goes into the box */
    void close(bool tidy);
    /** Forgets the connection without ending it, in a process that only has a copy of it. */
    void abandon();
    [[nodiscard]] bool isOpen() const { return m_connection != nullptr; }
    /** Opened for reading what can't be written. */
    [[nodiscard]] bool isReadOnly() const { return m_readOnly; }

    [[nodiscard]] PdtmStatus readCounter(uint64_t &counter);
    [[nodiscard]] PdtmStatus readState(BoxState &state);
    [[nodiscard]] PdtmStatus writeState(const BoxState &state);
    [[nodiscard]] PdtmStatus readSchema(Schema &schema);
    [[nodiscard]] PdtmStatus addItem(const ItemDescription &item);

    /** PdtmNoSuchCard when there is none. */
    [[nodiscard]] PdtmStatus readCard(CardId card, std::string &packed);
    /** Inserts or replaces. */
    [[nodiscard]] PdtmStatus writeCard(CardId card, Bytes packed);
    [[nodiscard]] PdtmStatus deleteCard(CardId card);
    /** Visits the cards @p first to @p last by rising id until the visit returns false. */
    [[nodiscard]] PdtmStatus forEachCard(CardId first, CardId last,
                                         const std::function<bool(CardId, RecordView)> &visit);
    /** The lowest id from @p first to @p last that no card has. PdtmOutOfSpace when there is none. */
    [[nodiscard]] PdtmStatus firstFreeCard(CardId first, CardId last, CardId &card);
    /** Size of the box; all cards together are smaller. */
    [[nodiscard]] uint64_t fileSize();

    [[nodiscard]] PdtmStatus begin();
    [[nodiscard]] PdtmStatus commit();
    void rollback();
    /** Whether a commit waits until it is on the disk; it does unless this says otherwise. To be switched off
     * only while the write-ahead file is empty or grows: a restarted one must not mix with its former frames.
     */
    void setSynchronised(bool synchronised);

    [[nodiscard]] PdtmStatus garbageSize(uint64_t &bytes);
    /** Gives all free pages back and empties the write-ahead file. */
    [[nodiscard]] PdtmStatus collectGarbage();
    /** Takes what stands in the write-ahead file over into the box and empties it. PdtmBusy while somebody
     * reads. */
    [[nodiscard]] PdtmStatus emptyLog();
    /** Bytes that the write-ahead file may grow by when every page is changed twice. */
    [[nodiscard]] PdtmStatus bulkChangeSize(uint64_t &bytes);
    /** Reads every page and every card. PdtmDamaged */
    [[nodiscard]] PdtmStatus checkThoroughly();

private:
    struct Statements;
    PdtmStatus connect(const std::string &path);
    PdtmStatus connectReadOnly(const std::string &path);
    PdtmStatus connectToCopy(const std::string &path);
    PdtmStatus openConnection(const std::string &uri, int flags);
    PdtmStatus verify();
    PdtmStatus verifyTables();
    PdtmStatus verifyFile();
    PdtmStatus readNumber(const char *pragma, uint64_t &number);
    PdtmStatus execute(const char *sql);
    PdtmStatus run(Statement &statement);
    PdtmStatus statusOf(int result) const;

    sqlite3 *m_connection = nullptr;
    std::unique_ptr<Statements> m_statements;
    std::string m_path;
    uint64_t m_device = 0;
    uint64_t m_inode = 0;
    bool m_readOnly = false;
};

} // namespace pdtm

#endif
