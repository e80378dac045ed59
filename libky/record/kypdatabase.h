#ifndef KYPDATABASE_H
#define KYPDATABASE_H

#include "kypdatabaseiteminfo.h"
#include "kypdatamanager.h"

class Contact;
class Event;
class Task;

namespace KyCategory {
class KyCategories;
}

namespace KyPDtm {

/**
 * A box of the personal data, its items reached by field numbers: address book, to-do list, calendar, mail
 * and memo.
 *
 * The names and field tables of the standard boxes are static functions here. An application makes its box at
 * every start, which costs little when it is there, and opens it:
 *
 *     KyPDataBase::createAddressbookFile(KyPDataManagerIndexInfo());
 *     KyPDataBase contacts(KyPDataBase::addressbookFileName(false), KyPDataBase::addressbookItems(), nullptr,
 *                          false);
 *     const QString name = contacts.readField(1, contacts.firstCard());
 *
 * **Files.** Where a function takes a flag, false gives the path on internal storage, which begins with
 * `F0:`, true the bare file name. Where it takes a storage number, 1 is the SD card, 2 the CF card, and any
 * other number internal storage; the folder for boxes on a card is made when it is missing. Paths are byte
 * strings because that is what a box is opened by.
 *
 * **Field numbers** are those of the table the object was made with. A number that stands for nothing gives
 * the failure value of the call.
 */
class KY_EXPORT KyPDataBase : public KyPDataManager
{
    Q_OBJECT
public:
    /** In which ids the categories of a record are. */
    enum CategoriesType {
        CategoriesXml = 0,  ///< those of the platform's category file
        CategoriesPdtm = 1, ///< those of the box table, as cards have them
        CategoriesNone = 2  ///< categories are left alone
    };

    /**
     * Opens a box; see KyPDataManager for the arguments and for what follows when it can't be opened.
     * @param items its field table, of which the object keeps a copy
     */
    KyPDataBase(const char *boxFile, const KyPDataBaseItemInfo &items, QWidget *parent, bool readOnly);
    ~KyPDataBase() override;

    /** @name Fields of a card
     * The calls of KyPDataManager by field number: readItem(), readTimeItem(), ... tell the results. Card 0
     * is the current card.
     * @{ */

    /** readItem(). */
    [[nodiscard]] QString readField(int field, unsigned long card = 0) const;
    /** readTimeItem(). */
    [[nodiscard]] QDateTime readTimeField(int field, unsigned long card = 0, bool utc = false) const;
    /** A flag in the place of the card is a mistake. */
    template <std::same_as<bool> Flag> QDateTime readTimeField(int field, Flag utc) const = delete;
    /** readDateItem(). */
    [[nodiscard]] QDate readDateField(int field, unsigned long card = 0) const;
    /** readUcharItem(). */
    [[nodiscard]] int readUcharField(int field, unsigned long card = 0) const;
    /** readUshortItem(). */
    [[nodiscard]] int readUshortField(int field, unsigned long card = 0) const;
    /** The value; 0 on failure too, which can't be told from a stored 0. */
    [[nodiscard]] unsigned long readUlongField(int field, unsigned long card = 0) const;

    bool clearField(int field);                                       ///< empties a field of the work card
    bool writeField(int field, const char *data, unsigned long size); ///< raw bytes; null clears the field
    bool writeField(int field, const QDateTime &time);                ///< a moment, its fields as they stand
    bool writeField(int field, const QDate &date);                    ///< a date with no time
    bool writeField(int field, const QString &text);                  ///< text
    bool writeField(int field, unsigned char value);                  ///< one byte
    bool writeField(int field, unsigned short value);                 ///< two bytes
    bool writeField(int field, unsigned long value);                  ///< four bytes, the low ones
    /** Say the width: cast to one of the three types above. */
    template <typename T>
    requires(std::is_arithmetic_v<T> || std::is_enum_v<T>) bool writeField(int field, T value) = delete;
    /** To clear a field call clearField(). */
    bool writeField(int field, std::nullptr_t) = delete;
    /** @} */

    /** @name View
     * @{ */

    bool sortField(int field, bool ascending); ///< sort() by the item of a field
    /** The next card with a text in a field; see search(). */
    bool searchField(unsigned long *card, const QString &text, int field, unsigned char op, bool forward);
    /** @} */

    /** @name Records
     * The platform's contacts, tasks and events as cards of the standard boxes, @p db being the open box.
     *
     * The `add` calls write a new card, the `edit` calls card @p *card, a new one when that is 0 or
     * ResumeCardId. @p *card gets the id. The card is written first, its categories after it in a second
     * edit; both are one action, on the disk as a whole when the call returns true.
     * A null @p db gives false, or an empty record.
     *
     * Looking up categories by the category file or by another table may run the event loop. When only the
     * categories are refused the result is false, too, with the card written and @p *card its id; any other
     * failure leaves the box as it was. An event without start or end is refused.
     * @{ */

    static bool addAddressbookEntry(KyPDataBase *db, unsigned long *card, const Contact &contact,
                                    CategoriesType type);
    static bool addTodolistEntry(KyPDataBase *db, unsigned long *card, const Task &task, CategoriesType type);
    static bool addDatebookEntry(KyPDataBase *db, unsigned long *card, const Event &event,
                                 CategoriesType type);
    static bool editAddressbookEntry(KyPDataBase *db, unsigned long *card, const Contact &contact,
                                     CategoriesType type);
    static bool editTodolistEntry(KyPDataBase *db, unsigned long *card, const Task &task,
                                  CategoriesType type);
    static bool editDatebookEntry(KyPDataBase *db, unsigned long *card, const Event &event,
                                  CategoriesType type);
    [[nodiscard]] static Contact toContact(KyPDataBase *db, unsigned long card, CategoriesType type);
    [[nodiscard]] static Task toTask(KyPDataBase *db, unsigned long card, CategoriesType type);
    [[nodiscard]] static Event toEvent(KyPDataBase *db, unsigned long card, CategoriesType type);

    /** Copies a card from another box of the same layout; false when it can't be read. @param
     * sourceCategories table that the ids on the source card belong to; null when it is this device's */
    static bool addAddressbookEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                    unsigned long sourceCard, KyCategory::KyCategories *sourceCategories);
    static bool addTodolistEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                 unsigned long sourceCard, KyCategory::KyCategories *sourceCategories);
    static bool addDatebookEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                 unsigned long sourceCard, KyCategory::KyCategories *sourceCategories);
    /** @} */

    /** @name Field numbers
     * @{ */

    /** Type of the item as the record store numbers it (17 text, 4 time, ...), not the ItemType of the table;
     * 0 for an unknown one. */
    [[nodiscard]] int readFieldType(int field) const;
    /** Item number in the box, from 1; 0 for an unknown one. */
    [[nodiscard]] int nameToFieldId(int field) const;
    /** Code of the field, always four bytes; all 0 for a number that stands for nothing. */
    [[nodiscard]] QByteArray itemName(int field) const;
    /** @} */

    /** @name Names of the standard boxes and their indexes
     * @{ */

    [[nodiscard]] static QByteArray addressbookFileName(bool bare);  ///< `KYADRS.BOX`
    [[nodiscard]] static QByteArray todolistFileName(bool bare);     ///< `KYTODO.BOX`
    [[nodiscard]] static QByteArray datebookFileName(bool bare);     ///< `KYDATE.BOX`
    [[nodiscard]] static QByteArray memoFileName(bool bare);         ///< `KYMEMO.BOX`
    [[nodiscard]] static QByteArray mailInboxFileName(int storage);  ///< `kyinbox.box`
    [[nodiscard]] static QByteArray mailOutboxFileName(int storage); ///< `kyoutbox.box`

    [[nodiscard]] static QByteArray addressbookMasterIdx(bool bare);  ///< `KYADRS.IDX`
    [[nodiscard]] static QByteArray todolistMasterIdx(bool bare);     ///< `KYTODO.IDX`
    [[nodiscard]] static QByteArray datebookMasterIdx(bool bare);     ///< `KYDATE.IDX`
    [[nodiscard]] static QByteArray datebookStartIdx(bool bare);      ///< events that don't repeat, by start
    [[nodiscard]] static QByteArray datebookEndIdx(bool bare);        ///< events that don't repeat, by end
    [[nodiscard]] static QByteArray datebookMultiIdx(bool bare);      ///< events of several days
    [[nodiscard]] static QByteArray datebookRepeatIdx(bool bare);     ///< events that repeat
    [[nodiscard]] static QByteArray memoMasterIdx(bool bare);         ///< `KYMEMO.IDX`
    [[nodiscard]] static QByteArray mailInboxMasterIdx(int storage);  ///< `kyinbox.idx`
    [[nodiscard]] static QByteArray mailOutboxMasterIdx(int storage); ///< `kyoutbox.idx`
    /** @} */

    /** @name Field tables of the standard boxes
     * With labels in the language of the application. Memos have no table: their items are `CLAS` title,
     * `MEM1` contents, `dATE` time of change, and the categories.
     * @{ */

    [[nodiscard]] static KyPDataBaseItemInfo addressbookItems(); ///< 47 text fields and the categories
    [[nodiscard]] static KyPDataBaseItemInfo todolistItems();    ///< dates, state and text of a task
    [[nodiscard]] static KyPDataBaseItemInfo datebookItems();    ///< an event with alarm and repetition
    [[nodiscard]] static KyPDataBaseItemInfo maillistItems();    ///< of both mail boxes
    /** @} */

    /** @name Making the standard boxes
     * KyPDataManager::createFile() with the names, items and order of the box; safe at every start. @p
     * indexes are the indexes wanted beside the master index. Always true: whether it worked shows when the
     * box is opened.
     * @{ */

    static bool createAddressbookFile(const KyPDataManagerIndexInfo &indexes); ///< by reading, in text order
    static bool createTodolistFile(const KyPDataManagerIndexInfo &indexes);    ///< by due date
    static bool createDatebookFile(const KyPDataManagerIndexInfo &indexes);    ///< by start
    static bool createMailInboxFile(const KyPDataManagerIndexInfo &indexes, int storage);  ///< by account
    static bool createMailOutboxFile(const KyPDataManagerIndexInfo &indexes, int storage); ///< by account
    static bool createMemoFile(const KyPDataManagerIndexInfo &indexes); ///< by title, in text order
    /** @} */

private:
    Q_DISABLE_COPY_MOVE(KyPDataBase)
    const std::unique_ptr<const KyPDataBaseItemInfo> fields;
};

/**
 * The folder for boxes on a card, made when it is missing.
 * @param mount where the card is mounted, with no slash at the end
 * @return the folder, ending in a slash; also when it could not be made
 */
[[nodiscard]] KY_EXPORT QString getExternalPath(const QString &mount);

} // namespace KyPDtm

using KyPDtm::getExternalPath;
using KyPDtm::KyPDataBase;

#endif
