#ifndef KYPDATAMANAGERITEMINFO_H
#define KYPDATAMANAGERITEMINFO_H

#include "kyexport.h"
#include <QList>
#include <QSharedDataPointer>
#include <QString>

namespace KyPDtm {

class KyPDataManagerItemInfoPrivate;

/** An item of a box as it is declared. */
struct KyPDataManagerItem
{
    char code[4] = {}; ///< exactly four bytes, no terminator
    quint8 type =
        0;         ///< what stands on the card: 17 text in UTF-8, 4 time, ... as the record store numbers it
    int kind = 0;  ///< the family of the type: 18 text, 6 time, ...
    QString label; ///< name for people; the box keeps its first 37 bytes in UTF-8
};

/**
 * The items of a box, in the order of declaration. Implicitly shared: a copy costs a reference, and a change
 * touches no other copy.
 *
 * A code is always four bytes; no terminator is looked for, so a shorter text must not be passed. Text items
 * are UTF-8: boxes with Shift-JIS text are read, but never declared here.
 *
 *     KyPDataManagerItemInfo items;
 *     items.addTextItem("TITL", tr("title"));
 *     items.addCategoryItem();
 */
class KY_EXPORT KyPDataManagerItemInfo
{
public:
    /** None. */
    KyPDataManagerItemInfo();
    KyPDataManagerItemInfo(const KyPDataManagerItemInfo &other);            ///< shares the items
    KyPDataManagerItemInfo &operator=(const KyPDataManagerItemInfo &other); ///< shares the items
    ~KyPDataManagerItemInfo();

    void addTextItem(const char *code, const QString &label);  ///< text in UTF-8 (type 17, kind 18)
    void addUcharItem(const char *code, const QString &label); ///< one-byte number (type 11, kind 13)
    void addBitItem(const char *code, const QString &label);   ///< one byte of bits (type 6, kind 13)
    /** Two-byte number (kind 14). @param alt false: type 8; true: type 10, read and written alike */
    void addUshortItem(const char *code, const QString &label, bool alt);
    void addUlongItem(const char *code, const QString &label);  ///< four-byte number (type 18, kind 15)
    void addCategoryItem();                                     ///< `CTGR`, with no label (type 12, kind 8)
    void addColorItem(const char *code, const QString &label);  ///< colour, four bytes (type 13, kind 12)
    void addTimeItem(const char *code, const QString &label);   ///< moment or date (type 4, kind 6)
    void addBinaryItem(const char *code, const QString &label); ///< raw bytes (type 9, kind 11)

    /** Adds an item of any type, such as one that a box made by others has. */
    void addItem(const KyPDataManagerItem &item);

    /** All items, in the order they were added. The reference is good until the next change of this value. */
    [[nodiscard]] QList<KyPDataManagerItem> entries() const;

private:
    void add(const char *code, quint8 type, int kind, const QString &label);

    QSharedDataPointer<KyPDataManagerItemInfoPrivate> d;
};

} // namespace KyPDtm

using KyPDtm::KyPDataManagerItem;
using KyPDtm::KyPDataManagerItemInfo;

#endif
