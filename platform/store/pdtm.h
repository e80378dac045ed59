/**
 * @file pdtm.h
 * The record store: boxes of cards with typed items, and indexes over them. Plain C, no toolkit.
 *
 * A **box** is a database file, a **card** one record in it, an **item** a field of a card, an **index** a
 * file that orders and optionally restricts the cards of one box. The box is the truth; an index is a cache
 * that is rebuilt from the box whenever it is missing, damaged or stale.
 *
 * Every path may be a plain path or a logical one: `F0:` in front of a file name stands for the box folder of
 * internal storage; a path is 255 bytes long at most, and its name leaves room for `-lock` behind it. Results
 * are a PdtmStatus unless stated otherwise. No operation throws, and none waits for another process to let go
 * of a box (a tenth of a second at most for SQLite's own short locks). A process uses the store from one
 * thread. A forked child uses it only after it has run another program: handles and locks stay with its
 * parent.
 *
 * Any operation may give PdtmBadArgument (a null pointer, an invalid path, a handle that isn't open),
 * PdtmTooShort (memory ran out; nothing has changed, and of an open action nothing is left), PdtmIoError, and
 * PdtmDamaged when the file turns out to be damaged. What is listed at an operation comes on top of these.
 */
#ifndef PDTM_H
#define PDTM_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define PDTM_EXPORT __attribute__((visibility("default")))
#else
#define PDTM_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Result of an operation. 0 is success; each operation lists what else it gives. */
typedef uint16_t PdtmStatus;

/** The values of PdtmStatus. */
enum {
    PdtmOk = 0,
    PdtmBadArgument = 1,       /**< a null pointer, an invalid path, an unknown handle or information id */
    PdtmMissing = 64,          /**< no such file */
    PdtmNoSuchCard = 65,       /**< no such card, or the card is not in the index */
    PdtmNone = 66,             /**< nothing found, or the information is not there */
    PdtmExists = 67,           /**< the file exists already */
    PdtmTooShort = 68,         /**< the buffer is too short, or memory ran out */
    PdtmNoSuchItem = 69,       /**< the box has no item of that code */
    PdtmDamaged = 70,          /**< the file is no box or index, or its contents contradict themselves */
    PdtmOutOfSpace = 71,       /**< the volume is full, or the card ids are used up */
    PdtmAlreadyInIndex = 72,   /**< the card is in the index already */
    PdtmReadOnly = 73,         /**< the handle, the file or its folder can't be written */
    PdtmBusy = 74,             /**< somebody else has the box in mode 0 */
    PdtmWrongApplication = 75, /**< the box belongs to another application id */
    PdtmIoError = 76,          /**< reading or writing failed */
    PdtmOtherLanguage = 135,   /**< the file was made under another language code */
    PdtmNothingToSort = 225,   /**< the index holds no card */
    PdtmGroupFailed = 254      /**< grouping failed: no parent, or a malformed expression */
};

/** Item types: the first byte of ITEMDATA. */
enum {
    ItemTextSjis = 1,
    ItemTime = 4,
    ItemBit = 6,
    ItemUshort = 8,
    ItemBinary = 9,
    ItemUshortAlt = 10,
    ItemUchar = 11,
    ItemCategory = 12,
    ItemColor = 13,
    ItemTextSjis2 = 16,
    ItemTextUtf8 = 17,
    ItemUlong = 18
};

/** Item kinds: the second byte of ITEMDATA. */
enum {
    KindTime = 6,
    KindCategory = 8,
    KindBinary = 11,
    KindColor = 12,
    KindUchar = 13,
    KindUshort = 14,
    KindUlong = 15,
    KindText = 18
};

enum {
    PdtmFirstReservedCard = 0xFF00, /**< ids from here on are scratch cards and never in an index */
    PdtmWorkCard = 0xFF00,          /**< scratch copy of the card being edited */
    PdtmLastOrdinaryCard = 0xFEFF,
    PdtmUnfiledCategory = 254, /**< in a category term: the cards with no category at all */
    PdtmInfoRoom = 50          /**< an index information other than the name has at most this many bytes */
};

/** Index information ids. */
enum {
    InfoBoxName = 1, /**< base name of the box, terminator included */
    InfoSortExpression = 2,
    InfoSearchExpression = 3,
    InfoSubset = 32 /**< one byte of value 1: the index holds a subset */
};

/** Description of an item, 44 bytes. */
typedef struct ITEMDATA
{
    uint8_t type;   /**< ItemTextSjis ... ItemUlong */
    uint8_t kind;   /**< KindTime ... KindText */
    char code[4];   /**< exactly four bytes, no terminator */
    char label[38]; /**< UTF-8, at most 37 bytes used, rest zero */
} ITEMDATA;

/** Names an item of a card, 6 bytes. */
typedef struct CardItemKey
{
    uint16_t card;
    char code[4];
} CardItemKey;

/** A moment or a date, opaque; its five bytes order as time does. See ppsettime(). */
typedef struct PTimeValue
{
    uint8_t bytes[5];
} PTimeValue;

/** An item of an open box, as PioExtBoxInfo lists it. */
typedef struct PioExtItem
{
    char code[4];
    uint8_t type;
    uint8_t kind;
    const char *label;     /**< UTF-8, terminated */
    uint32_t propertyKind; /**< 9: bytes 3 to 6 of the property are the code of a partner item */
    uint8_t *property;     /**< null, or 17 bytes from malloc() that _PioDisposeExtBoxInfo() frees */
} PioExtItem;

/** In-memory description of an open box. */
typedef struct PioExtBoxInfo
{
    char secondSortItem[4]; /**< first byte 0: there is none */
    uint8_t secondSortAscending;
    char defaultSearchItem[4]; /**< first byte 0: there is none */
    uint8_t itemCount;
    PioExtItem *items; /**< indexed by item number minus one; the declared items, then the implicit */
} PioExtBoxInfo;

/** @name Boxes
 * @{ */

/** Makes an empty box, whole or not at all (it is written as NAME.new and renamed).
 * @param applicationId its big-endian bytes spell the four characters
 * @return PdtmExists when a file of that name is there, PdtmMissing when its folder isn't (that of internal
 * storage is made anew), PdtmReadOnly when the folder can't be written, PdtmBusy while another process makes
 * or holds a box of that name, PdtmOutOfSpace */
PDTM_EXPORT PdtmStatus _BoxCreate(const char *path, uint32_t applicationId);

/** Deletes the box file and what belongs to it, its indexes excepted.
 * @return PdtmMissing, PdtmBusy while anybody has it in mode 0, PdtmReadOnly */
PDTM_EXPORT PdtmStatus _BoxDelete(const char *path);

/** Opens a box beside any other user of it, for a short time. Index files may be made through the handle.
 * @return the handle, 0 on failure */
PDTM_EXPORT uint32_t _BoxOpen(const char *path);

/** Opens a box.
 * @param mode 0: read and write; one holder at a time, in this process too. 1: read only, never conflicts,
 * and each call reads the newest commit
 * @return the handle, 0 on failure. Never waits */
PDTM_EXPORT uint32_t _BoxOpenRwMode(const char *path, uint8_t mode);

/** Closes a handle. That of mode 0 undoes an action that is open, writes the changed indexes of the box and
 * gives the lock back; the box file alone is whole then. */
PDTM_EXPORT PdtmStatus _BoxClose(uint32_t handle);

/** As _BoxClose(); @p flag is 1. Non-zero: the box stays open, which comes only from a handle that isn't one.
 */
PDTM_EXPORT PdtmStatus _BoxCloseEx(uint32_t handle, int flag);

/** Compacts a box that nobody has open in mode 0: its garbage is 0 afterwards.
 * @return PdtmBusy while somebody has it in mode 0, PdtmMissing, PdtmReadOnly, PdtmOutOfSpace (the changes go
 *         through the write-ahead file) */
PDTM_EXPORT PdtmStatus _BoxGarbageCollect(const char *path);

/** Dead bytes in the box file, 0xFFFFFFFF when there are more. Works on an open box and beside a holder.
 * @return PdtmMissing; @p size is unchanged on failure */
PDTM_EXPORT PdtmStatus _GetBoxGarbageSize(const char *path, uint32_t *size);

/** Adds the items that the box lacks, in the order given. An item that exists keeps its type and label.
 * Succeeds beside a holder when nothing is to be added.
 * @param added non-zero when any item was added
 * @return PdtmBusy when items are to be added and somebody has the box in mode 0, PdtmOutOfSpace,
 * PdtmTooShort (more than 251 items), PdtmReadOnly, PdtmMissing, PdtmDamaged, PdtmBadArgument (an unknown
 * type) */
PDTM_EXPORT PdtmStatus _BoxItemAppend(const char *path, const ITEMDATA *items, int count, uint32_t *added);

/** Fills an ITEMDATA for a code. The caller's buffer is left alone on failure.
 * @param size in: the room, at least 44; out: 44
 * @return PdtmNoSuchItem, PdtmTooShort for a smaller room */
PDTM_EXPORT PdtmStatus _BoxItemReadHeap(uint32_t handle, const char *code, void *buffer, uint16_t *size);

/** File test for a box: PdtmOk, PdtmMissing, PdtmTooShort, PdtmWrongApplication, PdtmDamaged; never
 * PdtmOtherLanguage. @p level is 3. */
PDTM_EXPORT PdtmStatus _DTMFileCheckAppliID(const char *path, int level, uint32_t applicationId);

/** File test for a box or an index: PdtmOk, PdtmMissing, PdtmTooShort, PdtmOtherLanguage, PdtmDamaged.
 * A stale index is PdtmOk. @p level is 3 or 255. */
PDTM_EXPORT PdtmStatus _DTMFileCheckLevel(const char *path, int level);

/** Description of an open box, null on failure. Free it with _PioDisposeExtBoxInfo(). */
PDTM_EXPORT PioExtBoxInfo *_PioNewExtBoxInfo(const char *path, uint32_t handle);
PDTM_EXPORT void _PioDisposeExtBoxInfo(PioExtBoxInfo *info);

/** Item number of a code, from 1; 0 when unknown. The exact code is tried first, then the code with the case
 * of its first letter folded. */
PDTM_EXPORT uint32_t _PioExtGetItemNo(const PioExtBoxInfo *info, const char *code);

/** Number of the item with the pronunciation of this one: 0, no box declares such pairs. */
PDTM_EXPORT uint32_t _PioExtGetYomiPairItemNo(const PioExtBoxInfo *info, uint32_t itemNumber);

/** Writes one six-byte sort key for an item: the text-ordered kind for text, the plain kind for all others.
 * @return bytes written, 0 for an unknown item number */
PDTM_EXPORT int PioSetSortCond(void *destination, const PioExtBoxInfo *info, uint32_t itemNumber,
                               int ascending);
/** @} */

/** @name Cards
 * Handles of mode 1 and of _BoxOpen() give PdtmReadOnly for every operation that changes something. A change
 * gives PdtmOutOfSpace when the volume is full; nothing has changed then, and of an open action nothing is
 * left. A change of an ordinary card is on the disk, whole, when the call returns with PdtmOk, unless an
 * action is open (DtmBeginAction()). Scratch cards (0xFF00 and above) live in the process until its box
 * closes.
 * @{ */

/** Makes an empty card.
 * @param card in: the id asked for, or 0 for a new one; out: the id it got
 * @return PdtmExists when an ordinary card of that id is there, PdtmOutOfSpace when the ids are used up */
PDTM_EXPORT PdtmStatus _CardCreate(uint32_t handle, uint16_t *card);

/** Copies all items to another card, which is made, or overwritten when it exists.
 * @param destination in: an id, or 0 for a new one; out: the id it got
 * @return PdtmNoSuchCard when there is no source, PdtmOutOfSpace when the ids are used up, too; nothing is
 * changed then */
PDTM_EXPORT PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination);

/** Deletes a card and takes it out of all indexes; PdtmOk when there is none. */
PDTM_EXPORT PdtmStatus _CardDelete(uint32_t handle, uint16_t card);

/** Deletes each ordinary card with `ATTR & mask == value`, in one action; 0, 0, 0 deletes every card. */
PDTM_EXPORT PdtmStatus _CardAllDelete(uint32_t handle, uint8_t mask, uint8_t value, uint8_t third);

/** Reads an item.
 * @param buffer may be null when @p size is 0, to learn the length
 * @param size in: the room; out: the length of the item
 * @return PdtmTooShort (nothing copied), PdtmNoSuchCard, PdtmNoSuchItem. An item never written has length 0
 */
PDTM_EXPORT PdtmStatus _CardRead(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size);

/** Writes an item; size 0 clears it. The bytes are taken as they are, whatever the type of the item.
 * @return PdtmNoSuchCard, PdtmNoSuchItem, PdtmTooShort for a card of more than 64 MB */
PDTM_EXPORT PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size);

/** Adds a category id to the card's list at once, with no index touched; 254 empties the list. PdtmOk when it
 * is there already.
 * @return PdtmNoSuchCard, PdtmNoSuchItem, PdtmBadArgument when the item is no category list */
PDTM_EXPORT PdtmStatus _CardCategoryAppend(uint32_t handle, const CardItemKey *key, uint8_t category);

/** Takes a category id out of the card's list at once, with no index touched; PdtmOk when it is not there.
 * Otherwise as _CardCategoryAppend(). */
PDTM_EXPORT PdtmStatus _CardCategoryDelete(uint32_t handle, const CardItemKey *key, uint8_t category);

/** The id that the next new card will get. Ids rise, and are used again only after 0xFEFF.
 * @return PdtmOutOfSpace when the ids are used up */
PDTM_EXPORT PdtmStatus _ExpectNewCardID(uint32_t handle, uint16_t *card);

/** Begins an action: all changes until the matching DtmEndAction() are one transaction with one
 * synchronisation. Nestable; only the outermost end commits. */
PDTM_EXPORT PdtmStatus DtmBeginAction(uint32_t handle);

/** Ends an action. A status other than PdtmOk at the outermost end: nothing of the action has happened. The
 * status is that of the change that failed, or of the commit; PdtmBadArgument when no action is open. */
PDTM_EXPORT PdtmStatus DtmEndAction(uint32_t handle);
/** @} */

/** @name Indexes
 * Addressed by path, with no open box needed for navigation. Inside an index a card has an index number: 0
 * stands before the first card, 0xFFFF behind the last. A card is visible when `ATTR & mask == value`.
 * @{ */

/** Path of the n-th index of a box's family: permanent ones first (extension beginning with `IDX` or `idx`),
 * then temporary ones, each by the bytes of the name. The directory part is as in @p boxPath.
 * @param ordinal from 1 @param room size of @p path, 256 @param permanent non-zero for a permanent index
 * @return PdtmNone past the end */
PDTM_EXPORT PdtmStatus _GetIndexName(const char *boxPath, uint32_t ordinal, char *path, uint32_t room,
                                     uint32_t *permanent);

/** Makes an empty index. @param kind 17 from a description, 18 a category index. PdtmExists, PdtmReadOnly,
 * PdtmOutOfSpace, PdtmBadArgument */
PDTM_EXPORT PdtmStatus _IndexCreate(const char *path, int kind);

/** Deletes an index.
 * @return PdtmMissing when there was none, PdtmBadArgument for a box or a file beside one, PdtmReadOnly */
PDTM_EXPORT PdtmStatus _IndexDelete(const char *path);

/** New index with the cards and the whole condition of the source and the given sort expression (terminator
 * included). @p kind is 2. It is put in order by _IndexSort().
 * @return PdtmExists, PdtmMissing, PdtmTooShort (more than 50 bytes), PdtmBadArgument (a malformed
 * expression), PdtmReadOnly, PdtmOutOfSpace */
PDTM_EXPORT PdtmStatus _IndexCopy(const char *source, const char *destination, int kind,
                                  const void *sortExpression, int length);

/** Reads an index information. @param size in: the room, 50; out: the length.
 * Of an index that was filled without a sort expression, InfoSortExpression has length 0.
 * @return PdtmNone when the information is not there, PdtmMissing, PdtmDamaged, PdtmTooShort */
PDTM_EXPORT PdtmStatus _IndexInfoRead(const char *path, int id, void *buffer, uint16_t *size);

/** Writes an index information; takes effect with the next sort or group.
 * @return PdtmMissing, PdtmTooShort (more than 50 bytes, of the name more than 256), PdtmReadOnly,
 * PdtmOutOfSpace */
PDTM_EXPORT PdtmStatus _IndexInfoWrite(const char *path, int id, const void *buffer, uint16_t length);

/** As _IndexInfoWrite(), and refuses what the index can't hold (PdtmTooShort) or what is malformed
 * (PdtmBadArgument). */
PDTM_EXPORT PdtmStatus _IndexInfoWriteWithCheck(const char *path, int id, const void *buffer,
                                                uint16_t length);

/** Sorts anew by the stored expression, and writes the index.
 * @return PdtmNothingToSort on an index with no cards; PdtmMissing, PdtmBadArgument (a malformed expression,
 * or a handle of another box), PdtmReadOnly or PdtmOutOfSpace when the file can't be written: nothing changes
 *         then, and the index goes on in memory as it was */
PDTM_EXPORT PdtmStatus _IndexSort(const char *path, uint32_t handle);

/** Fills an index with the cards of @p parent that satisfy its own search expression, in its own order, or in
 * the parent's when it has none. 0, or PdtmNothingToSort on an empty result; PdtmGroupFailed, PdtmTooShort,
 * PdtmOutOfSpace */
PDTM_EXPORT PdtmStatus _IndexGroup(const char *parent, const char *path, uint32_t handle);

/** Fills an index with all cards. Results as for _IndexGroup(). */
PDTM_EXPORT PdtmStatus _IndexUnGroup(const char *path, uint32_t handle);

/** Counts visible cards that match, going forward behind @p start; an empty or null expression matches all.
 * An expression has no length here. When it ends in a text the byte behind that text's 0 is looked at, since
 * a join may stand there: it has to be readable. The same holds for _IndexSearch(). The flag and @p third are
 * 0. PdtmNone with a count of 0 when there is none.
 * @param first index number of the first match, 0 when there is none; may be null */
PDTM_EXPORT PdtmStatus _IndexCount(const char *path, uint32_t handle, const void *expression, int flag,
                                   uint8_t mask, uint8_t value, uint8_t third, uint16_t start,
                                   uint16_t *first, uint16_t *count);

/** Finds the next visible match from @p start, which is itself not a match. PdtmNone when there is none. */
PDTM_EXPORT PdtmStatus _IndexSearch(const char *path, uint32_t handle, const void *expression, int backward,
                                    uint8_t mask, uint8_t value, uint8_t third, uint16_t start,
                                    uint16_t *indexNumber);

/** Puts one card in at its sorted place, whether it satisfies the condition or not. PdtmAlreadyInIndex (with
 * its index number), PdtmNoSuchCard, PdtmBadArgument for a reserved id */
PDTM_EXPORT PdtmStatus _IndexNoAppend(const char *path, uint32_t handle, uint16_t card,
                                      uint16_t *indexNumber);

/** Takes one card out; PdtmNone when there is no such index number. */
PDTM_EXPORT PdtmStatus _IndexNoDelete(const char *path, uint16_t indexNumber);

/** Card id at an index number; PdtmNone. Only the 16 bits of @p card are written. */
PDTM_EXPORT PdtmStatus _IndexNoToCardID(const char *path, uint16_t indexNumber, uint16_t *card);

/** Index number of a card; PdtmNoSuchCard. */
PDTM_EXPORT PdtmStatus _CardIDToIndexNo(const char *path, uint16_t card, uint16_t *indexNumber);

/** Ordinal, from 1, of an index number among the visible cards; PdtmNone. The flag is 0. */
PDTM_EXPORT PdtmStatus _IndexNoToNumber(const char *path, uint8_t mask, uint8_t value, uint8_t third,
                                        int flag, uint16_t indexNumber, uint16_t *number);

/** Index number of the n-th visible card behind the start position.
 * @param direction 0 forward, 1 backward @param indexNumber in: where to start; out: the result. PdtmNone */
PDTM_EXPORT PdtmStatus _NumberToIndexNo(const char *path, int direction, uint8_t mask, uint8_t value,
                                        uint8_t third, uint16_t *indexNumber, uint16_t number);

/** Moves to the next visible card; PdtmNone at the end, with @p indexNumber unchanged. */
PDTM_EXPORT PdtmStatus _NextIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t third,
                                    uint16_t *indexNumber);

/** Moves to the previous visible card; PdtmNone at the start, with @p indexNumber unchanged. */
PDTM_EXPORT PdtmStatus _PrevIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t third,
                                    uint16_t *indexNumber);
/** @} */

/** @name Environment
 * @{ */

/** Sets the language code for text order and file checks, such as "ja"; Japanese until it is called. */
PDTM_EXPORT PdtmStatus DtmSetLanguage(const char *language);

/** Pointer into @p path at the base name, null for an invalid path: an empty one, one longer than 255 bytes,
 * one that names another drive, one without a base name. */
PDTM_EXPORT const char *DtmGetBaseNamePtr(const char *path);

/** Turns a logical path into a file system path. @param destination 4096 bytes */
PDTM_EXPORT PdtmStatus FileGetRealPath(char *destination, const char *logicalPath);

/** Folder of the boxes on internal storage, no slash at the end; made at first use. @param destination 4096
 * bytes */
PDTM_EXPORT PdtmStatus GetBuiltinStorageDtmPath(char *destination);

/** Folder of the boxes on a card, relative to its mount point: "/Applications/dtm". @param destination 64
 * bytes */
PDTM_EXPORT PdtmStatus GetExternalStorageDtmPath(char *destination);

/** Completes a name such as `ppinKYA0.` to a name in @p directory that doesn't exist yet, counting up in the
 * digit field at @p position and adding the extension.
 * @param name in/out, 256 bytes @param digits width of the field
 * @return non-zero on success, 0 when all are taken */
PDTM_EXPORT int GetNewFileName(const char *directory, char *name, const char *extension, int position,
                               int digits);

/** Sync id for a new card, 0 on failure. */
PDTM_EXPORT uint32_t DtmGetSyncId(uint32_t handle);

/** Advances the sync id; it reaches the disk with the next change of a card. */
PDTM_EXPORT PdtmStatus DtmUpdateSyncId(uint32_t handle);

/** Non-zero when the volume has room for marking and deleting all cards of the box. @p kind is 1. */
PDTM_EXPORT int DtmIsEnoughStorageForOperation(uint32_t handle, int kind);

/** Test of the store's data of this process: 0 when it is in order. */
PDTM_EXPORT PdtmStatus CheckFINFO(void);

/** Builds a PTimeValue. Years 0 to 9999, months 0 to 15, days and hours 0 to 31, minutes and seconds 0 to 63
 * are kept; hour 31, minute 63, second 63 mean a date with no time. PdtmBadArgument outside these */
PDTM_EXPORT PdtmStatus ppsettime(void *destination, int year, int month, int day, int hour, int minute,
                                 int second);

/** Takes a PTimeValue apart; each out pointer may be null; @p reserved is 0. */
PDTM_EXPORT PdtmStatus ppgettime(const void *source, int *year, int *month, int *day, int *hour, int *minute,
                                 int *second, int reserved);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
