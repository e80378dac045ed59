#ifndef KYPDATAMANAGER_P_H
#define KYPDATAMANAGER_P_H

#include "pdtm.h"
#include <bitset>
#include <cstring>
#include <QByteArray>
#include <QString>

namespace KyPDtm {

constexpr int MaximumIndexes = 10;
constexpr int NameRoom = 256;

/** Cards with bit 0x40 in their attribute byte are marked for deletion and not visible. */
constexpr quint8 AttributeMask = 0x40;
constexpr quint8 AttributeValue = 0;
constexpr quint8 AttributeThird = 0;

/** How the search expression of a category index begins; the id and a 0 byte follow. */
constexpr char CategoryTerm[] = "CTGR\xFE\x92\x0C";
constexpr int CategoryTermLength = 7;

/** Where a walk or a search over a whole index starts. */
constexpr quint16 BeforeFirst = 0;
constexpr quint16 BehindLast = 0xFFFF;

/** One row of the index table. A row that is not in use is all zero. */
struct PIOIDXINFO
{
    quint8 sortItem;              ///< item number of a single sort key; 0 for several keys, or none
    char fileName[NameRoom];      ///< base name of the index file
    bool sticky;                  ///< a permanent index of the family
    quint8 indexAge;              ///< rises each time another index becomes current; the oldest makes room
    bool inUse;                   ///< the row is taken
    quint8 categoryId;            ///< category of a category index, else 0
    bool ascending;               ///< direction of the stored expression
    bool filtered;                ///< holds the result of a search
    quint8 sortExpLength;         ///< length of sortExp; 0 when it is not kept
    quint8 sortExp[PdtmInfoRoom]; ///< the stored expression
    PIOIDXINFO *parent;           ///< of a search: the index it was made from, null for the master

    /** @name What the file of the index said when the box was closed
     * @{ */
    quint8 closedSortLength;
    quint8 closedSort[PdtmInfoRoom];
    quint8 closedSearchLength;
    quint8 closedSearch[PdtmInfoRoom];
    /** @} */

    /** True for the view of a category or a search: a sort has to keep its cards. */
    [[nodiscard]] bool isSubset() const { return categoryId != 0 || filtered; }
    /** True for an index of all cards, which serves every view of its order. */
    [[nodiscard]] bool isPlain() const { return inUse && !isSubset(); }
    /** Notes the order that the index has been given. @param length at most PdtmInfoRoom */
    void keepOrder(quint8 item, const quint8 *expression, int length, bool isAscending);
};

/** A key behind the first one of a sort. */
struct SecondKey
{
    quint8 item; ///< item number, 0 for no second key
    bool ascending;
};

/** Age of a temporary index when it is made. */
constexpr quint8 NewIndexAge = 5;

/** Why the last call of an edit refused. */
enum EditState { EditFine = 0, EditNoWorkCard = 1, EditUnderWay = 3, EditNotUnderWay = 4 };

/** The code of an item with a terminator: four characters, or fewer. Null becomes the empty code, which no
 * box has. */
struct ItemCode
{
    explicit ItemCode(const char *code);
    char text[5] = {};
};

/** An item of a card for the store, which takes the low 16 bits of the id. */
[[nodiscard]] CardItemKey cardItemKey(unsigned long card, const ItemCode &code);

/** The present moment in UTC. */
[[nodiscard]] PTimeValue presentTime();

/** What a KyPDataManager knows of its box. Made zeroed; the current index is null until the table is read. */
class KyPDataManagerPrivate
{
public:
    char boxDir[NameRoom];  ///< directory part of the box path, up to and including `F0:` or the last slash
    char boxName[NameRoom]; ///< base name of the box
    quint32 boxHandle;      ///< 0 while the box is closed
    int indexCapacity;      ///< rows of the index table
    PIOIDXINFO indexes[MaximumIndexes];
    PioExtBoxInfo *extBoxInfo;    ///< from the store, freed by the manager
    PIOIDXINFO *currentIndex;     ///< the index in use
    PIOIDXINFO *masterIndex;      ///< the base index of the box
    PIOIDXINFO *resumeIndex;      ///< index to go back to after a filter
    bool ascendent;               ///< direction of the view
    quint16 lastError;            ///< last status of the store that is worth keeping
    int editState;                ///< EditState
    unsigned long currentCard;    ///< 0 when there is none
    bool editing;                 ///< an edit is under way
    bool editModified;            ///< it has written an item other than `ATTR`
    unsigned long workCard;       ///< the scratch copy
    unsigned long editSourceCard; ///< the card being edited, 0 for a new one
    quint32 garbageAtStart;       ///< garbage when the last edit or deletion began; in an action the first
    bool waitingOpenAgain;        ///< another process made this manager close
    bool closedForAll;            ///< that request named no file
    bool readOnly;                ///< mode of the last open
    quint16 keptWorkCard;         ///< where the work card lies while the box is closed, 0 when there is none
    int openActions;              ///< nested actions that are open
    bool collectionDue;           ///< garbage is to be looked at behind the outermost action
    std::bitset<256> goneCategories; ///< removed while the box was closed

    /** Splits a path into boxDir and boxName. False for an invalid path. */
    bool setBoxPath(const char *path);
    [[nodiscard]] QByteArray boxPath() const;
    [[nodiscard]] QString boxPathText() const;

    /** Fills the index table from the family of the box. */
    void readIndexTable();
    /** True for an index that belongs into the table: in the folder of the box, not one of the reserved
     * names. */
    [[nodiscard]] bool isOwnIndex(const char *indexPath) const;
    /** Reads one index into a row. False when its sort information can't be read. */
    bool readIndexRow(const char *indexPath, bool permanent, PIOIDXINFO *row) const;
    /** Fills categoryId and filtered of a row from the search expression of its index. */
    static void getIndexSearchInfo(const char *indexPath, PIOIDXINFO *row);

    /** Makes a row the current index, and the other temporary ones older. */
    void makeCurrent(PIOIDXINFO *row);
    /** A row, not yet in use, that names a file for a new temporary index; the oldest temporary index makes
     * room when all rows are in use, be it the current one. Null when none can be had.
     * @param kept makes no room, as the one to resume doesn't */
    [[nodiscard]] PIOIDXINFO *takeRow(const PIOIDXINFO *kept = nullptr);
    /** Gives up a row that takeRow() gave, null when it gave none. When the current index had to make room,
     * the master takes its place. @return false */
    bool abandon(PIOIDXINFO *row);
    /** Deletes the index of a row and zeroes the row. It is no longer the one to resume; as current index it
     * stays pointed at, and the view then holds no card. */
    void dropRow(PIOIDXINFO *row);
    /** Zeroes a row, and leaves its file to whoever has it. Otherwise as dropRow(). */
    void forgetRow(PIOIDXINFO *row);
    /** Path of the index of a row. */
    [[nodiscard]] QByteArray rowPath(const PIOIDXINFO *row) const;
    /** Writes the whole sort expression for an item, terminator included, to @p dst of PdtmInfoRoom bytes,
     * with the partner of the item or the second key of the box behind it. Its length, -1 on failure. */
    [[nodiscard]] int createSortCond(quint8 item, quint8 *dst, bool ascending) const;
    /** The second key that the box gives a sort in a direction. */
    [[nodiscard]] SecondKey secondKeyOfBox(bool ascending) const;
    /** Gives the index of a row another sort expression and sorts it; the row itself is left as it is, see
     * PIOIDXINFO::keepOrder(). False on failure, with a log line; lastError has the last status. An index
     * with no card to sort is no failure. */
    bool sortIndexOf(const PIOIDXINFO *row, const quint8 *expression, int length);

    /** Path of the named index, or of the current one for null; empty, which the store refuses, when there is
     * none. */
    [[nodiscard]] QByteArray indexPath(const char *index) const;

    /** The visible card next to @p card in an index, the outermost one for 0; 0 when there is none. */
    [[nodiscard]] unsigned long step(const QByteArray &indexPath, bool forward, unsigned long card) const;

    /** Makes a card current; false, with nothing changed, for 0. */
    bool moveTo(unsigned long card);

    /** Description of an item, null for an unknown one. */
    [[nodiscard]] PioExtItem *item(const ItemCode &code) const;
    /** Type of an item by the open box, 0 for an unknown one. */
    [[nodiscard]] quint8 openItemType(const ItemCode &code) const;
    /** Reads an item into @p room bytes. @param length the length that the store told */
    PdtmStatus read(const ItemCode &code, unsigned long card, void *value, quint32 room,
                    quint32 *length) const;
    /** Reads a time item of five bytes; false when it isn't one. */
    [[nodiscard]] bool readTime(const ItemCode &code, unsigned long card, PTimeValue *time) const;
    /** True when setInternalUtc() or the box marks the item as stored in UTC. */
    [[nodiscard]] bool isStoredInUtc(const ItemCode &code) const;
    /** The card that an argument means: itself, or the current one for 0. */
    [[nodiscard]] unsigned long cardOf(unsigned long card) const { return card ? card : currentCard; }

    /** Makes the work card of an edit: a copy of @p source, or an empty card for 0. Its id, 0 on failure. */
    [[nodiscard]] quint16 makeWorkCard(unsigned long source);

    /** Puts the work card of an edit aside before the box is closed: all managers of a process share one, and
     * another may need it in the meantime. */
    void keepWorkCard();
    /** Takes it back when the box is open for writing again. */
    void restoreWorkCard();

    /** @name The modes of deleteCard() that need only the store
     * @{ */
    bool deleteOne(unsigned long *card);
    bool deleteAll();
    /** @} */

    /** The category list of a card as the store has it; empty when it can't be read, too. */
    [[nodiscard]] QByteArray readCategories(unsigned long card) const;
    /** A card whose list is empty or unreadable is in UnfiledCategoryId, and in nothing else. */
    [[nodiscard]] bool isCardInTheCategory(unsigned long card, int category) const;
    /** Adds a category to a card, and the card to its views. False with lastError on failure. */
    bool addToCategory(unsigned long card, quint8 category);
    /** Takes a category from a card, and the card from its views. False with lastError on failure. */
    bool removeFromCategory(unsigned long card, quint8 category);
    /** Takes a category from a card; its views are left as they are. */
    PdtmStatus takeFromCard(unsigned long card, quint8 category);
    /** Puts a card into all views of a category. False with lastError when one can't take it, which is
     * dropped then. */
    bool putIntoViews(quint8 category, unsigned long card);
    void takeOutOfViews(quint8 category, unsigned long card);
    /** Takes a card out of the views of all categories but UnfiledCategoryId. */
    void takeOutOfFiledViews(unsigned long card);
    /** Drops all views of a category that is removed, and of the unfiled; the master is shown. */
    void leaveCategory(quint8 category);
    /** The master, or, while that is a view of a part of the box, a permanent index of all cards. */
    [[nodiscard]] PIOIDXINFO *wholeRow();

    /** Lets go of the box at another process's request. @param forAll the request named no file */
    void letGo(bool forAll);

    /** Closes the box and keeps the edit. False when it stays open. */
    bool closeHandle();
    /** One attempt to open the box. What the manager knows of it is brought into line with what others did
     * since it was closed, and the edit goes on. */
    bool openHandle();
    /** Deals with a category that was removed while the box is closed. */
    void noteGoneCategory(int category);

    [[nodiscard]] quint32 garbage() const;
    /** Takes the present garbage as garbageAtStart, at the begin of an edit or deletion. */
    void noteGarbage();
    /** Compacts the box when its garbage is big, or has grown too much since garbageAtStart. */
    void collectGarbage();

private:
    [[nodiscard]] PIOIDXINFO *freeRow();
    /** Name of a file for a new temporary index, empty when there is none. When managers that take turns on
     * the box have used up its names, one that this manager doesn't know makes room. */
    [[nodiscard]] QByteArray freeName();
    [[nodiscard]] QByteArray unusedName() const;
    /** Deletes a temporary index that another manager made of this box. False when there is none. */
    bool deleteUnknownIndex();
    /** True when a row has an index of that base name. */
    [[nodiscard]] bool isKnown(const char *fileName) const;
    /** True for an index of this box, and not of another one whose indexes have the same names. */
    [[nodiscard]] bool isOfThisBox(const char *indexPath) const;

    /** Keeps what tells the index of each row from others of the same name. */
    void noteDefinitions();
    /** Takes the file from each row whose index others have deleted or replaced since noteDefinitions(). */
    void loseIndexes();
    /** Shows the same view as before: an index that was lost is made anew when the view needs it, and
     * forgotten otherwise. */
    void restoreView();
    [[nodiscard]] bool isAsLeft(const PIOIDXINFO &row) const;
    /** Gives a row that has lost its file a new one with the same cards in the same order, if that can be. */
    void remake(PIOIDXINFO *row);
    [[nodiscard]] bool makeAsLeft(const PIOIDXINFO &row) const;
    /** Does for goneCategories what is left when somebody else took them from the cards. */
    void leaveGoneCategories();
    /** Drops all views of a category, with a log line each. */
    void dropViews(quint8 category, const char *logLine);
    /** The temporary index that has not been current for the longest time; null when there is none that may
     * go. */
    [[nodiscard]] PIOIDXINFO *oldestRow(const PIOIDXINFO *kept);
    /** The second key of a sort by an item: its partner, or that of the box. */
    [[nodiscard]] SecondKey secondKeyOf(quint8 item, bool ascending) const;
    bool putIntoView(PIOIDXINFO *row, unsigned long card);
    void takeOutOfView(const PIOIDXINFO &row, unsigned long card);
    void compact();
};

} // namespace KyPDtm

#endif
