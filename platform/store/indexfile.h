#ifndef PDTM_INDEXFILE_H
#define PDTM_INDEXFILE_H

#include "record.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/**
 * The file of an index. docs/store-format.md gives its layout: the definition at both ends, each with a
 * checksum of its own, and between them the order (card ids and attribute bytes) and the sort keys, again
 * each with one.
 */
namespace pdtm {

/** What an index is, apart from the cards in it. */
struct IndexDefinition
{
    uint8_t kind = 0;
    bool filled = false;                         ///< it was grouped, ungrouped or copied
    std::string boxName;                         ///< InfoBoxName as written, terminator included
    std::optional<std::string> sortExpression;   ///< InfoSortExpression as written
    std::optional<std::string> searchExpression; ///< InfoSearchExpression as written
    std::optional<std::string> subset;           ///< InfoSubset as written
    std::string order;                           ///< sort expression that the cards stand by
    std::vector<std::string> condition; ///< terms that its cards satisfy: the ancestors', then its own
    std::string language;
    uint32_t collator = 0; ///< version of the collation rules; 0 when no key is in text order

    /** Base name of the box, without the terminator; empty when it was never written. */
    [[nodiscard]] std::string box() const;
};

inline constexpr size_t MaximumNameInfo = 256;

/** Tells one state of a file from another. */
struct FileStamp
{
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = -1;
    int64_t modified = 0; ///< ns
    bool operator==(const FileStamp &) const = default;
};

/** Stamp of a file; nothing when there is none. */
[[nodiscard]] std::optional<FileStamp> stampOf(const std::string &realPath);

/** Cards by index number, with their attribute bytes. */
struct StoredOrder
{
    uint64_t counter = 0; ///< change counter of the box that it was built from; 0: unusable
    std::vector<CardId> cards;
    std::vector<uint8_t> attributes;
};

/** Sort keys of the cards of an order, one behind the other. */
struct StoredKeys
{
    std::vector<uint32_t> ends; ///< end of each key in bytes
    std::string bytes;
};

/** Bounds-checked reader of an index file. */
class IndexFileReader
{
public:
    IndexFileReader() = default;
    ~IndexFileReader();
    IndexFileReader(const IndexFileReader &) = delete;
    IndexFileReader &operator=(const IndexFileReader &) = delete;

    /** Opens the file and reads its definition, at the head or else at the tail. PdtmMissing, PdtmDamaged,
     * PdtmTooShort, PdtmIoError */
    PdtmStatus open(const std::string &realPath);
    [[nodiscard]] const IndexDefinition &definition() const { return m_definition; }
    [[nodiscard]] const FileStamp &stamp() const { return m_stamp; }

    /** Change counter of the order, which isn't looked at; 0 when there is none or it is damaged. */
    [[nodiscard]] uint64_t counter() const;
    /** Where the counter stands in the file. */
    [[nodiscard]] uint64_t counterOffset() const { return m_orderOffset; }
    /** Reads the order; false when it is damaged. */
    [[nodiscard]] bool readOrder(StoredOrder &order) const;
    /** Reads the order and its keys; false when either is damaged. */
    [[nodiscard]] bool readKeys(StoredOrder &order, StoredKeys &keys) const;

private:
    struct OrderHeader;
    bool readAt(uint64_t offset, void *buffer, size_t size) const;
    bool readHead();
    bool readTail();
    bool takeDefinition(Bytes bytes, uint64_t checksum);
    bool readHeader(OrderHeader &header) const;

    int m_file = -1;
    FileStamp m_stamp;
    IndexDefinition m_definition;
    uint64_t m_definitionSize = 0;
    uint64_t m_orderOffset = 0;
};

/** What is written behind the definition. The keys stand by index number, as the cards do. */
struct OrderImage
{
    uint64_t counter = 0;
    std::vector<CardId> cards;
    std::string attributes;
    std::vector<uint32_t> keyEnds;
    std::string keys;
};

/** Writes the file as NAME.new and renames it; nothing is left behind on failure. PdtmReadOnly,
 * PdtmOutOfSpace, PdtmTooShort (a definition that is too long among others), PdtmIoError */
PdtmStatus writeIndexFile(const std::string &realPath, const IndexDefinition &definition,
                          const OrderImage &order, FileStamp &stamp);

/** Writes over a file that holds no cards yet, which asks less of the file system than a new file does. What
 * comes of it when the process ends in the middle is a damaged index, and it was of no use before. On failure
 * the file is as it was. @param former what the file holds @param stamp of the file; takes the new one.
 * Results as for writeIndexFile() */
PdtmStatus fillIndexFile(const std::string &realPath, const IndexDefinition &former,
                         const IndexDefinition &definition, const OrderImage &order, FileStamp &stamp);

/** Writes the change counter alone, in place, when the order in the file is that of the box still. Broken off
 * in the middle it leaves a stale order. @param stamp of the file that holds the order; takes the new one.
 * PdtmMissing, PdtmDamaged (another file stands there, or one without an order), PdtmReadOnly, PdtmIoError */
PdtmStatus writeIndexCounter(const std::string &realPath, uint64_t counter, FileStamp &stamp);

/** File test of an index: PdtmOk (a stale or damaged order included), PdtmMissing, PdtmDamaged when neither
 * definition can be read, PdtmOtherLanguage, PdtmTooShort. */
[[nodiscard]] PdtmStatus checkIndexFile(const std::string &realPath);

/** True when SQLite may have the file open, here or elsewhere. Such a file must never be opened and closed as
 * a plain file: that drops the locks that SQLite holds on it in this process. */
[[nodiscard]] bool isDatabaseInUse(const std::string &realPath);

/** The name is that of a file beside a box, which is no index whatever it holds. */
[[nodiscard]] bool isCompanionOfBox(std::string_view path);

/** Status for an errno of an operation that writes. */
[[nodiscard]] PdtmStatus statusOfWriteError(int error);

} // namespace pdtm

#endif
