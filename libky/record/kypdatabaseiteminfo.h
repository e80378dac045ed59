#ifndef KYPDATABASEITEMINFO_H
#define KYPDATABASEITEMINFO_H

#include "kyexport.h"
#include <QSharedDataPointer>
#include <QString>

namespace KyPDtm {

class KyPDataBaseItemInfoPrivate;
class KyPDataManagerItemInfo;
struct KyPdbItemInfo;

/**
 * A field table: what a small number stands for in a box. Implicitly shared.
 */
class KY_EXPORT KyPDataBaseItemInfo
{
public:
    /** What a field holds. */
    enum ItemType {
        Text = 0,
        UnsignedChar = 1,
        UnsignedShort = 2,
        UnsignedLong = 3,
        Color = 4,
        Time = 5,
        Binary = 6,
        Category = 7 ///< the category list; always the item `CTGR`, whatever code the field has
    };

    /** An empty table. */
    KyPDataBaseItemInfo();
    KyPDataBaseItemInfo(const KyPDataBaseItemInfo &other);            ///< shares the fields
    KyPDataBaseItemInfo &operator=(const KyPDataBaseItemInfo &other); ///< shares the fields
    ~KyPDataBaseItemInfo();

    /**
     * Describes a field, in place of what the number stood for before.
     * @param code exactly four bytes, no terminator is looked for
     * @param label name for people
     * @param flag false: the box declares the item with the first letter in lower case; it is read and
     * written by the code as given here all the same
     */
    void addItemInfo(int field, const char *code, ItemType type, const QString &label, bool flag);

    /** A field; an empty one, with a code of four 0 bytes, for a number that stands for nothing. */
    [[nodiscard]] KyPdbItemInfo itemInfo(int field) const;

    /** Adds all fields to @p out as items of a box, by rising field number. */
    void toKyPdtmItemInfo(KyPDataManagerItemInfo *out) const;

private:
    QSharedDataPointer<KyPDataBaseItemInfoPrivate> d;
};

/** A field of a box. */
struct KyPdbItemInfo
{
    char code[4] = {};                                              ///< exactly four bytes, no terminator
    KyPDataBaseItemInfo::ItemType type = KyPDataBaseItemInfo::Text; ///< what it holds
    QString label;                                                  ///< name for people
    bool flag = false; ///< false: declared with the first letter in lower case
};

} // namespace KyPDtm

using KyPDtm::KyPDataBaseItemInfo;
using KyPDtm::KyPdbItemInfo;

#endif
