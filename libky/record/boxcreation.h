#ifndef KY_BOXCREATION_H
#define KY_BOXCREATION_H

/**
 * @file boxcreation.h
 * The steps of KyPDataManager::createFile(), for the classes of this folder and for tools. The application's
 * language must have reached the store before (InitLanguageEnvironment()).
 *
 * Box paths and index paths may have the prefix `F0:` of internal storage. A process that is killed at any
 * moment leaves files that the next KyPDataManager::createFile() completes or replaces.
 */

#include "kyexport.h"
#include <QByteArray>
#include <QString>

struct ITEMDATA;

namespace KyPDtm {

/**
 * Makes a box unless it is there, and adds the items it lacks. The indexes of the box are deleted when they
 * no longer fit it: when it was made or got items, and when the file turns out to be another one's.
 * @param appId application id; its big-endian bytes spell four characters
 * @param items array of @p count items; the caller keeps it
 * @return 0 done; 1 memory or room ran out: box and indexes are kept, except for the indexes after items
 * could not be added; 2 the file is no box of this application, or can't be written: it is left alone
 */
[[nodiscard]] KY_EXPORT int createBoxFile(const char *boxFile, unsigned long appId, ITEMDATA *items,
                                          int count);

/**
 * Makes an index of a box, or leaves it alone when it is there with the same expressions.
 * @param searchExp what a card must satisfy, @p searchLength bytes; all cards when that is 0
 * @param sortExp the order, @p sortLength bytes; none when that is 0
 * @param noCheck true: an index that is there is not tested as a file before its expressions are compared
 * @param parentIndex the index whose cards are chosen from; used with a search expression only
 * @return 0 done; 1 failed, and there is no such index then
 */
[[nodiscard]] KY_EXPORT int createMIdxFile(const char *indexFile, const char *boxFile, const char *searchExp,
                                           int searchLength, const char *sortExp, int sortLength,
                                           bool noCheck, const char *parentIndex);

/** Deletes all indexes of a box, permanent and temporary. */
KY_EXPORT void DeleteFamilyIndex(const char *boxFile);

/** True when the stored sort expression of an index is exactly these bytes. Of an index whose sort expression
 * can't be read: true when @p length is 0. */
[[nodiscard]] KY_EXPORT bool isSortExprsSame(const char *index, const void *expression, int length);

/** As isSortExprsSame(), for the search expression. */
[[nodiscard]] KY_EXPORT bool isSearchExprsSame(const char *index, const void *expression, int length);

/** Writes a path to @p dst: @p dir, when it is not null, and @p name right behind it. No slash is put
 * between.
 * @param dst room for both and a terminator */
KY_EXPORT void GetFullPathName(unsigned char *dst, const char *dir, const char *name);

/** Text in Shift-JIS; characters that it lacks become '?'. */
[[nodiscard]] KY_EXPORT QByteArray SjisString(const QString &text);

} // namespace KyPDtm

using KyPDtm::createBoxFile;
using KyPDtm::createMIdxFile;
using KyPDtm::DeleteFamilyIndex;
using KyPDtm::GetFullPathName;
using KyPDtm::isSearchExprsSame;
using KyPDtm::isSortExprsSame;
using KyPDtm::SjisString;

#endif
