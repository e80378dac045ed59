#ifndef KYPDATAMANAGER_H
#define KYPDATAMANAGER_H

#include "kyexport.h"
#include <concepts>
#include <cstddef>
#include <memory>
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <type_traits>

class QWidget;

namespace KyCategory {
class KyCategoriesPrivate;
}

/** Record access: boxes of cards with typed items. Everything here is also reachable without the namespace.
 */
namespace KyPDtm {

class KyPDataManagerIndexInfo;
class KyPDataManagerItemInfo;
class KyPDataManagerPrivate;
class KyPDataManagerSortKey;

/** The card that is edited: a scratch copy, see KyPDataManager::startEditCard(). */
constexpr unsigned long WorkCardId = 0xFF00;
/** The id that stands for a card which is yet to be made; see KyPDataManager::resumeCardId(). */
constexpr unsigned long ResumeCardId = 0xFF10;

/** The pseudo category of the cards with no category at all. */
constexpr int UnfiledCategoryId = 254;

/** True for a category that a view can be made of: 1 to 245, or UnfiledCategoryId. */
[[nodiscard]] KY_EXPORT bool FilerCheckCategoryId(int category);

/**
 * The search expression of a category view: `CTGR` 0xFE 0x92 0x0C, the id, and a 0 byte.
 * @param dst room for nine bytes @param length set to 9
 *
 * Both are left alone for an id that FilerCheckCategoryId() refuses.
 */
KY_EXPORT void GetCategory_FilterInfo(unsigned char *dst, unsigned char id, unsigned short *length);

/** KyPDataManager::categoryRemoved() for each box of a folder that can be opened; one that another process
 * holds goes without. */
KY_EXPORT void updateForCategoryRemovedVolume(const QString &dir, int category);

/** True when @p size, in bytes, is above 102400: so much garbage is worth a compaction of its own. */
[[nodiscard]] KY_EXPORT bool IsBigGarbage(unsigned long size);

/** Gives the device's language to the store, once per process: text order and file tests go by it. Everything
 * that reaches the store before a KyPDataManager exists calls it first. */
KY_EXPORT void InitLanguageEnvironment();

/**
 * Typed access to one box: its cards, their items, its indexes.
 *
 * The manager owns the handle of the box, a table of at most ten of its indexes, the current index and
 * direction (the view), the current card, and at most one edit. All of it stays in memory across close() and
 * open().
 *
 *     KyPDataManager box("F0:KYTODO.BOX", nullptr, false);
 *     for (bool found = box.first(); found; found = box.next())
 *         show(box.readItem("TITL"));
 *
 * **Sharing.** One process at a time has a box open for writing. open() asks all others, by the message
 * `closeFile(QString,QString)` on "QPE/System", to let go of it; they open it again when close() sends
 * `openFile(QString,QString)`. A manager that had to let go keeps its view, its current card and its edit,
 * and every call that needs the box fails until it is open again. When several wait for one box, the first
 * has it, and the others end up closed: they call open() again, for instance from a timer.
 *
 * **Items** are named by codes of four characters; a shorter code ends at its terminator. A null code is an
 * unknown item.
 *
 * **Cards** are named by ids of 16 bits; higher bits are cut off. 0 means the current card, or none.
 *
 * **Index names**, where a call takes one, are full paths; null stands for the current index.
 *
 * A manager whose constructor failed has no index table, even after open(): its view holds no card, and what
 * needs an index or the description of the items gives its failure value. Make a new one instead.
 *
 * No call throws. All calls belong to the thread of the application.
 */
class KY_EXPORT KyPDataManager : public QObject
{
    Q_OBJECT
public:
    /** What deleteCard() takes away. The category operations take the first two. */
    enum DeleteMode {
        DeleteSingle = 0,  ///< one card
        DeleteVisible = 1, ///< all cards of the view
        DeleteAll = 2      ///< all cards of the box
    };

    /** Which index a filter chooses its cards from. */
    enum FilterFor {
        FilterCurrent = 0, ///< the current one
        FilterMaster = 1,  ///< the master
        FilterResume = 2   ///< the one that unfilter() would go back to
    };

    /**
     * Opens a box and reads its table of indexes; isOpened() tells whether it is open. The first permanent
     * index that holds all cards becomes the current one, ascending.
     *
     * An index of the box whose sort information can't be read is deleted.
     *
     * @param boxFile path of the box, such as "F0:KYADRS.BOX"
     * @param parent with a widget the user is asked first whether a badly fragmented box is to be compacted,
     *        see checkGarbageAlert(). The manager is not its child: the caller owns it
     * @param readOnly see open()
     */
    KyPDataManager(const char *boxFile, QWidget *parent, bool readOnly);
    /** Closes the box; an edit that is under way is lost. */
    ~KyPDataManager() override;

    /** @name The box
     * @{ */

    /**
     * Opens the box again after close().
     *
     * Up to nine attempts are made, with the events of the application handled between them, so slots can run
     * inside this call. Then every other process is told to close the box, whether or not the attempts
     * worked.
     *
     * @param readOnly true: one attempt, nobody is told, and writing fails
     * @return false when the box can't be opened; when it is open already, with nothing changed; and when
     *         another process has made this manager close, which then opens by itself when the box is free
     */
    bool open(bool readOnly);
    /** Closes the box and tells others that it is free. False when it is closed already or can't be closed.
     */
    bool close();
    /** True while the manager holds its box. */
    [[nodiscard]] bool isOpened() const;
    /** Handle of the box in the record store, 0 while it is closed. */
    [[nodiscard]] quint32 boxHandle() const;
    /** Dead bytes in the box file; 0 when that can't be told. */
    [[nodiscard]] unsigned long garbageSize() const;

    /** True when @p file is a box or an index that can be used as it is. */
    [[nodiscard]] static bool checkFile(const char *file);
    /** Deletes a box that nobody has open. */
    static bool deleteFile(const char *boxFile);
    /** Test of the record store's own data: 0 when it is in order. */
    [[nodiscard]] static int checkDtmGlobal();
    /**
     * Asks the user, when the garbage of a box is big (IsBigGarbage()), whether to compact it, and does so.
     * @param parent the question is shown on it
     * @return true when the user agreed
     */
    static bool checkGarbageAlert(const char *boxFile, QWidget *parent);

    /**
     * Makes or mends the files of a box: the box, its items, its master index and further indexes. Safe to
     * call on every start: what is right is left alone, missing items are added, an index with other
     * expressions is made anew.
     *
     * @param boxFile path of the box
     * @param indexFile path of its master index, a name that ends in ".IDX" or ".idx"
     * @param appId application id; its big-endian bytes spell four characters
     * @param noCheck true: an index that exists is trusted to be readable
     * @param items the items to declare
     * @param sortExp sort expression of the master index, 0 byte included
     * @param sortLength its length, 0 for no order
     * @param indexes further indexes
     * @return true always: whether it worked shows when the box is opened
     */
    static bool createFile(const char *boxFile, const char *indexFile, unsigned long appId, bool noCheck,
                           const KyPDataManagerItemInfo &items, const char *sortExp, int sortLength,
                           const KyPDataManagerIndexInfo &indexes);
    /** As above, with the master's order as keys. More than eight keys give a master with no order. */
    static bool createFile(const char *boxFile, const char *indexFile, unsigned long appId, bool noCheck,
                           const KyPDataManagerItemInfo &items, const KyPDataManagerSortKey &keys,
                           const KyPDataManagerIndexInfo &indexes);
    /** @} */

    /** @name Description of the items
     * @{ */

    /** Number of an item, from 1; 0 for an unknown one. */
    [[nodiscard]] int nameToItemId(const char *code) const;
    /** Type of an item as the record store numbers it (17 text, 4 time, ...); 0 for an unknown one. */
    [[nodiscard]] int readItemType(const char *code) const;
    /** All items of the box, with code, type, kind and label; empty when the box was never open. */
    [[nodiscard]] KyPDataManagerItemInfo items() const;
    /** From now on this manager takes a time item as stored in UTC, see readTimeItem(). Writes nothing to the
     * box. False when it is no time item. */
    bool setInternalUtc(const char *code);
    /** @} */

    /** @name Reading
     * No edit is needed. Each call goes by the type of the item.
     * @{ */

    /** Text of a text item: empty when there is none, null when it is no text item or can't be read. */
    [[nodiscard]] QString readItem(const char *code, unsigned long card = 0) const;
    /** Value of a one-byte number or bit item; -1 on failure. */
    [[nodiscard]] int readUcharItem(const char *code, unsigned long card = 0) const;
    /** Value of a two-byte item; -1 on failure. */
    [[nodiscard]] int readUshortItem(const char *code, unsigned long card = 0) const;
    /** Reads a four-byte number, or a binary item as one. @return false, with @p out as it was, on failure */
    [[nodiscard]] bool readUlongItem(const char *code, unsigned long *out, unsigned long card = 0) const;
    /** Date of a time item as stored; invalid on failure. */
    [[nodiscard]] QDate readDateItem(const char *code, unsigned long card = 0) const;
    /**
     * Moment of a time item. Its fields are taken as UTC when setInternalUtc() said so, as local time
     * otherwise.
     * @param utc true: the result shows UTC fields; false: local ones
     * @return invalid on failure. A date with no time gives midnight where nothing is converted
     */
    [[nodiscard]] QDateTime readTimeItem(const char *code, unsigned long card = 0, bool utc = false) const;
    /** A flag in the place of the card is a mistake. */
    template <std::same_as<bool> Flag> QDateTime readTimeItem(const char *code, Flag utc) const = delete;
    /** @} */

    /** @name Writing
     * All go to the card being edited, and give false at once when no edit is under way. Numbers are written
     * by exactly the types named here: any other arithmetic type doesn't compile, so that a plain `5` can't
     * become a value of the wrong width. A string literal is text, taken as UTF-8.
     * @{ */

    /** Writes raw bytes, whatever the type of the item. @param data null clears the item */
    bool writeItem(const char *code, const char *data, unsigned long size);
    /** Writes a text item: as UTF-8 or Shift-JIS, as the item has it. False for any other type. */
    bool writeItem(const char *code, const QString &text);
    /** Writes the fields of @p time as they stand. False when it is invalid. */
    bool writeItem(const char *code, const QDateTime &time);
    /** Writes a date with no time. False when it is invalid. */
    bool writeItem(const char *code, const QDate &date);
    bool writeItem(const char *code, unsigned char value);  ///< writes one byte
    bool writeItem(const char *code, unsigned short value); ///< writes two bytes
    bool writeItem(const char *code, unsigned long value);  ///< writes four bytes, the low ones
    /** Say the width: cast to one of the three types above. */
    template <typename T>
    requires(std::is_arithmetic_v<T> || std::is_enum_v<T>) bool writeItem(const char *code, T value) = delete;
    /** To clear an item call clearItem(). */
    bool writeItem(const char *code, std::nullptr_t) = delete;
    /** Empties an item. */
    bool clearItem(const char *code);
    /** Writes the present moment, in UTC, to a time item; false for any other type. The flag has no effect.
     */
    bool writeCurrentTime(const char *code, bool utc);
    /**
     * Sets or clears bits of a card's attribute byte in place. Needs no edit, and must not be called inside
     * an open one: that edit would be over, with its work card left behind.
     * @param card 0 for the current card
     * @return false when the attribute can't be read or written
     */
    bool writeAttribute(unsigned long card, unsigned char bits, bool set);
    /** @} */

    /** @name Editing
     * An edit works on a copy of a card, the work card; nothing is seen of it before finishEditCard().
     * @{ */

    /** Begins an edit. @param card 0 for a new card. @return false when one is under way (it goes on), or
     * when the work card can't be made */
    bool startEditCard(unsigned long card);
    /** Begins the edit of a new card. */
    bool editNewCard();
    /**
     * Ends the edit by writing the work card to @p *card, in one step that is on the disk, whole, when this
     * call returns true. The box is compacted when its garbage has grown too much.
     *
     * A new card gets its time of creation and its sync id; a changed one its time of change.
     *
     * @param card in: the id to write to, 0 for a new one; out: the id written to
     * @return false when no edit is under way or nothing could be written. The edit is over in any case but
     *         one: while the box is closed, because it was lent, the edit goes on and can be finished when
     *         the box is open again
     */
    bool finishEditCard(unsigned long *card);
    /** Ends the edit, if there is one, and throws its changes away. Always true. */
    bool cancelEditCard();

    /**
     * Begins an action: all edits and deletions up to the matching endAction() become one transaction with
     * one synchronisation to the disk, and the box is compacted only behind it. Nestable. The application
     * must not return to its event loop in between: a box that is lent meanwhile takes nothing of the action
     * along.
     * @return false while the box is closed or read-only
     */
    bool beginAction();
    /** Ends an action. The outermost end commits. @return false when nothing of the action has happened */
    bool endAction();
    /** @} */

    /** @name Deleting
     * @{ */

    /**
     * Deletes one card, all cards of the view, or all cards of the box, in one step that is on the disk when
     * this call returns true. The box is compacted when its garbage has grown too much. The current card
     * stays as it is, even when it is a deleted one. An edit that is under way goes on; finishEditCard()
     * makes its card anew when it was deleted.
     *
     * DeleteVisible marks the cards with bit 0x40 of their attribute byte first, and deletes all cards of the
     * box that are marked so: those that writeAttribute() marked before, too.
     * @param card for DeleteSingle. In: the card, 0 for the current one; out: the card behind it in the
     * current index, else the one before it, else 0. Unchanged on failure and in the other modes
     */
    bool deleteCard(unsigned long *card, DeleteMode mode);
    /** @} */

    /** @name Categories of cards
     * A card has a list of category ids, 1 to 245; with an empty list it is unfiled. Changes here need no
     * edit; ids are cut to eight bits. The flags at the end have no effect.
     *
     * With DeleteVisible the first two run a loop of a deliberate shape: from the first card of the view on
     * as long as next() finds *nothing*. So a view of several cards is left as it is, with true as result,
     * and only that of a single card is changed; with an empty view the current card is. Walk the view and
     * use DeleteSingle.
     * @{ */

    /** Adds a category to a card, and the card to the view of that category if there is one. 254 empties the
     * list. @return false on failure; an index that can't take the card is deleted then */
    bool addCardToCtgr(unsigned long card, int category, DeleteMode mode, bool flag);
    /** Takes a category from a card, and the card from the view of that category. */
    bool removeCardFromCtgr(unsigned long card, int category, DeleteMode mode, bool flag);
    /**
     * Gives a card, 0 for the current one, another list, in an edit of its own. The views of categories
     * follow, as after any edit; but that of UnfiledCategoryId loses the card even to an empty list, unless
     * it is the current one.
     * @return false on failure, while an edit is under way, and for any mode but DeleteSingle
     */
    bool updateCategories(unsigned long card, const QList<int> &categories, DeleteMode mode, bool flag);
    /** The list of a card, 0 for the current one, without ids that FilerCheckCategoryId() refuses. Empty when
     * it can't be read. */
    [[nodiscard]] QList<int> readCategories(unsigned long card) const;

    /**
     * Takes a category from all cards of this box, whatever the view is, in one step, and from a card that is
     * being edited. Deletes the views that this changes, then makes the master current.
     * @return false for an id that FilerCheckCategoryId() refuses, with nothing changed, and when the cards
     *         could not be changed, as while the box is closed or read-only
     */
    bool categoryRemoved(int category);
    /** categoryRemoved() for each box of every volume: of internal storage and of all cards. A box that
     * another process holds goes without; that process hears of it by the message `categoryRemoved(int)`. */
    static void updateForCategoryRemoved(int category);
    /** @} */

    /** @name The view: order
     * A view is one of the indexes of the box and a direction. The ten indexes that were used last are kept,
     * so that going back to an order costs nothing; a direction is never built into an index.
     *
     * A change that fails leaves the view as it was.
     * @{ */

    /** Sorts by an item, by its pronunciation where the box declares one. A view of a category or a search
     * keeps its cards.
     * @return false for an unknown item, when no index can be made, and for a new order of an empty box */
    bool sort(int item, bool ascending);
    bool sort(const char *code, bool ascending); ///< sort() by the number of a code
    /**
     * Sorts by a sort expression of several keys.
     *
     * On a view of a category or a search the result is inverted: false after success, true after a failure.
     * @param expression six bytes a key, with no 0 byte needed behind them
     * @param length 1 to 50, a second key that the box adds included; otherwise the result is false, whatever
     * the view
     */
    bool sort(const char *expression, int length, bool ascending);
    /** Goes back to the order of the master; a view of a category or a search keeps its cards. */
    void sort(bool ascending);
    /**
     * Makes one of the indexes of the box current, in the order that the view had.
     * @param indexName base name of the index
     * @param makeMaster it becomes the master too, which must be a permanent one; all temporary indexes are
     *        deleted
     * @return false for an unknown name, or a temporary index as master
     */
    bool setCurrentIndex(const char *indexName, bool makeMaster);
    /** Code of the first key of the current index, null when it has none. */
    [[nodiscard]] QString current1stSortKey() const;
    /** Writes all indexes and the view to the debug log. */
    void dumpIndexStatus() const;
    /** @} */

    /** @name The view: which cards
     * @{ */

    /** Shows one category, in the order of the view. The index is kept for the next time, except for that of
     * UnfiledCategoryId. Category 0 leaves a category for the first index without one, which is brought into
     * the order of the view itself: call disableFilter() instead.
     * @return false for an id that is no category, and on failure: the view stays */
    bool enableFilter(int category);
    /** Goes from a category back to all cards, in the order of the view. @param discard deletes the index of
     * the category @return the result of the sort() that restores the order */
    bool disableFilter(bool discard);
    /**
     * Shows the cards that satisfy a search expression. The direction of the view stays.
     * @param searchExp @p searchLen bytes, at most 50; with none of them all cards of the box are shown
     * @param sortExp order of the new view, @p sortLen bytes, at most 50; with none that of the parent
     * @param parent where the cards are chosen from
     * @param keepResume the present view is kept for unfilter(); otherwise it is deleted when it is a search
     * @return false on failure: the view stays
     */
    bool filter(const char *searchExp, unsigned long searchLen, const char *sortExp, unsigned long sortLen,
                FilterFor parent, bool keepResume);
    /** Leaves a search and deletes its index. @param toResume goes to the view that filter() kept, if there
     * is one; else to the master, in the order that it had. @return false when the view is no search */
    bool unfilter(bool toResume);
    /** Forgets the view that filter() kept. */
    void killIdxResume();
    /** True when the current index is the result of a search. A category doesn't count as one. */
    [[nodiscard]] bool isFiltered() const;
    /** @} */

    /** @name Searching and counting
     * Neither changes the view. Three bytes choose which cards take part: `ATTR & mask == value`, the third
     * is 0; the calls without them take those of getAttrValues(). Search expressions carry no length: behind
     * one that ends in a text another byte must be readable, as it is in a QByteArray.
     * @{ */

    /** Counts the cards that match. @param startCard counts behind this card, 0 for all @return false, with
     * @p *result 0, on failure and when there is none */
    bool count(int *result, const char *searchExp, unsigned long startCard, unsigned char mask,
               unsigned char value, unsigned char third, const char *index = nullptr);
    bool count(int *result, const char *searchExp, unsigned long startCard,
               const char *index = nullptr); ///< as above

    /** The next card that matches, as the user sees the view. @param card in: where to start, 0 for the end
     * of the view; out: the match @return false, with @p *card unchanged, when there is none */
    bool search(unsigned long *card, const char *searchExp, bool forward, unsigned char mask,
                unsigned char value, unsigned char third, const char *index = nullptr);
    bool search(unsigned long *card, const char *searchExp, bool forward,
                const char *index = nullptr); ///< as above
    /** The next card with a text. @param item code of the item; null for the one that the box names, else
     * for any text @param op comparison of the store, such as 0x92 for containment */
    bool search(unsigned long *card, const QString &text, const char *item, unsigned char op, bool forward);
    /** @} */

    /** @name Walking
     * Cards come in the order of the view, or of the index when one is named: a named index is always walked
     * forward from first to last. Cards that are marked for deletion are passed over.
     * @{ */

    /** The current card, 0 when there is none. */
    [[nodiscard]] unsigned long cardId() const;

    bool first(const char *index = nullptr); ///< moves to the first card; false, staying, when there is none
    bool last(const char *index = nullptr);  ///< moves to the last card; false, staying, when there is none
    /** Moves to the card behind @p card, 0 for the current card; false, staying, when there is none. */
    bool next(unsigned long card = 0, const char *index = nullptr);
    /** Moves to the card before @p card, 0 for the current card; false, staying, when there is none. */
    bool prev(unsigned long card = 0, const char *index = nullptr);

    /** The first card, 0 when there is none. */
    [[nodiscard]] unsigned long firstCard(const char *index = nullptr) const;
    /** The last card, 0 when there is none. */
    [[nodiscard]] unsigned long lastCard(const char *index = nullptr) const;
    /** The card behind @p card, the first one for 0; 0 when there is none or @p card is not in the index. */
    [[nodiscard]] unsigned long nextCard(unsigned long card, const char *index = nullptr) const;
    /** The card before @p card, the last one for 0; 0 when there is none or @p card is not in the index. */
    [[nodiscard]] unsigned long prevCard(unsigned long card, const char *index = nullptr) const;

    /** The card at a position of the view, counted from 1; 0 on failure. */
    [[nodiscard]] unsigned long cardIdFromNumber(unsigned long number) const;
    /** Position in the view, counted from 1, of a card, 0 for the current one; 0 on failure. */
    [[nodiscard]] unsigned long numberFromCardId(unsigned long card) const;
    /** How many cards the view or the named index shows; -1 on failure. */
    [[nodiscard]] int count(const char *index = nullptr) const;

    /** Item number by which the current index is sorted; 0 for several keys, or none. */
    [[nodiscard]] int sortItem() const;
    /** False when the view runs from the last card of the index to the first. */
    [[nodiscard]] bool ascendent() const;
    /** The id that the next new card will get, 0 on failure. */
    [[nodiscard]] unsigned long expectedCardId() const;
    /** ResumeCardId. */
    [[nodiscard]] unsigned long resumeCardId() const;
    /** @} */

    /** @name Formats of the store
     * @{ */

    /** Writes five bytes: a time as the store has it. Years 0 to 9999; hour 31, minute 63, second 63 mean a
     * date with no time; outside these the destination is left as it is. @return true */
    static bool createPTime(void *destination, int year, int month, int day, int hour, int minute,
                            int second);
    /** Writes the fields of @p time as they stand, five bytes. */
    static void createPTime(void *destination, const QDateTime &time);
    /** The attribute filter of all walking and counting: mask 0x40, value 0, third 0. */
    static void getAttrValues(unsigned char *mask, unsigned char *value, unsigned char *third);
    /** @} */

public slots:
    /** Obeys `closeFile(QString,QString)` and `openFile(QString,QString)` from other applications, and
     * `categoryRemoved(int)`; nothing else is looked at. */
    void systemMessage(const QByteArray &message, const QByteArray &data);

private:
    Q_DISABLE_COPY_MOVE(KyPDataManager)
    friend class KyCategory::KyCategoriesPrivate; // tells "none" from a failure of the store
    bool openInMode();
    bool deleteVisible();
    void markVisible();
    quint16 takeFromAllCards(quint8 category);
    void removeCategoryNowOrLater(int category);
    bool endActionAfter(quint16 status);
    const std::unique_ptr<KyPDataManagerPrivate> d;
};

} // namespace KyPDtm

using KyPDtm::FilerCheckCategoryId;
using KyPDtm::GetCategory_FilterInfo;
using KyPDtm::InitLanguageEnvironment;
using KyPDtm::IsBigGarbage;
using KyPDtm::KyPDataManager;
using KyPDtm::ResumeCardId;
using KyPDtm::UnfiledCategoryId;
using KyPDtm::updateForCategoryRemovedVolume;
using KyPDtm::WorkCardId;

#endif
