#ifndef KYPDATAMANAGERINDEXINFO_H
#define KYPDATAMANAGERINDEXINFO_H

#include "kyexport.h"
#include <QList>
#include <QSharedDataPointer>

namespace KyPDtm {

class KyPDataManagerIndexInfoPrivate;

/** An index of a box as it is described for KyPDataManager::createFile(). */
struct KyPDataManagerIndexEntry
{
    char indexFile[256] = {}; ///< path of the index, terminated
    quint32 sortLength = 0;   ///< bytes used of sortExp, 0 for no order
    quint32 searchLength = 0; ///< bytes used of searchExp, 0 for an index of all cards
    char sortExp[50] = {};    ///< sort expression, 0 byte included
    char searchExp[50] = {};  ///< search expression, 0 byte included
};

/**
 * The indexes of a box beside its master index, in the order in which they are made. Implicitly shared.
 */
class KY_EXPORT KyPDataManagerIndexInfo
{
public:
    /** None. */
    KyPDataManagerIndexInfo();
    KyPDataManagerIndexInfo(const KyPDataManagerIndexInfo &other);            ///< shares the indexes
    KyPDataManagerIndexInfo &operator=(const KyPDataManagerIndexInfo &other); ///< shares the indexes
    ~KyPDataManagerIndexInfo();

    /**
     * Adds an index. A path of 256 bytes or more, or an expression of more than 50 bytes, adds nothing and is
     * logged.
     * @param indexFile path of the index
     * @param searchExp what a card must satisfy to be in it, @p searchLength bytes; not read when that is 0
     * @param sortExp its order, @p sortLength bytes; not read when that is 0
     */
    void addIndexInfo(const char *indexFile, const char *searchExp, unsigned long searchLength,
                      const char *sortExp, unsigned long sortLength);

    /** All indexes, in the order they were added. The reference is good until the next change of this value.
     */
    [[nodiscard]] QList<KyPDataManagerIndexEntry> entries() const;

private:
    QSharedDataPointer<KyPDataManagerIndexInfoPrivate> d;
};

} // namespace KyPDtm

using KyPDtm::KyPDataManagerIndexEntry;
using KyPDtm::KyPDataManagerIndexInfo;

#endif
