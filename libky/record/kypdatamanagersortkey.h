#ifndef KYPDATAMANAGERSORTKEY_H
#define KYPDATAMANAGERSORTKEY_H

#include "kyexport.h"
#include <QSharedDataPointer>

namespace KyPDtm {

class KyPDataManagerSortKeyPrivate;

/**
 * The keys of an order, the first one the strongest. Implicitly shared.
 */
class KY_EXPORT KyPDataManagerSortKey
{
public:
    /** None. */
    KyPDataManagerSortKey();
    KyPDataManagerSortKey(const KyPDataManagerSortKey &other);            ///< shares the keys
    KyPDataManagerSortKey &operator=(const KyPDataManagerSortKey &other); ///< shares the keys
    ~KyPDataManagerSortKey();

    /**
     * Adds a key behind those that are there.
     * @param code exactly four bytes, no terminator is looked for
     * @param textOrder true: in the text order of the device's language; false: by bytes, numbers and times
     * by value
     */
    void addSortKey(const char *code, bool textOrder, bool ascending);

    /**
     * Writes the keys as a sort expression: for each key its code, the byte 0xFE and an operator (0x80 text
     * order ascending, 0x81 text order descending, 0x82 plain ascending, 0x83 plain descending), then one 0
     * byte.
     * @param room size of @p dst in bytes
     * @return bytes written, the 0 byte included: six for each key and one; 0, with nothing written, when
     *         @p room is too small
     */
    unsigned long createSortExp(char *dst, unsigned long room) const;

private:
    QSharedDataPointer<KyPDataManagerSortKeyPrivate> d;
};

} // namespace KyPDtm

using KyPDtm::KyPDataManagerSortKey;

#endif
