#ifndef RECORDFRAME_P_H
#define RECORDFRAME_P_H

/**
 * @file recordframe_p.h
 * What writing a contact, a task and an event have in common, for the classes of this library.
 */

#include "kypdatabase.h"
#include <functional>
#include <optional>

namespace KyPDtm {

/** Writes the fields of a record to the work card. False at the first that can't be written. */
using FieldWriter = std::function<bool(KyPDataBase &db)>;

/** The categories of a record in the ids of the box table, or none to leave those of the card alone. Called
 * when the fields are written; may run the event loop. */
using CategorySource = std::function<std::optional<QList<int>>()>;

/**
 * Writes a record to a card, and its categories in a second edit. Both are one action, on the disk as a whole
 * when the result is true.
 * @param db null gives false
 * @param source the card that is changed, 0 for a new one
 * @param destination in: where the result goes, which may be ResumeCardId, or 0 for a new id; out: the id
 *        written to. Unchanged when nothing has been written
 * @return false when nothing has been written, and when the card was and its categories were not
 */
[[nodiscard]] bool writeRecord(KyPDataBase *db, unsigned long source, unsigned long *destination,
                               const FieldWriter &writeFields, const CategorySource &categories);

/** writeRecord() to a card itself, or to a new one when @p card is 0 or ResumeCardId. */
[[nodiscard]] bool editRecord(KyPDataBase *db, unsigned long *card, const FieldWriter &writeFields,
                              const CategorySource &categories);

/** Categories of a record in ids of one of the two kinds. @param application whose group of the category file
 * they are in */
[[nodiscard]] CategorySource recordCategories(const QList<int> &ids, KyPDataBase::CategoriesType type,
                                              const QString &application);

/** The categories of a card for a record. @param application whose group of the category file they go to */
[[nodiscard]] QList<int> categoriesOfCard(const KyPDataBase &db, unsigned long card,
                                          KyPDataBase::CategoriesType type, const QString &application);

/** writeRecord() for an event. */
[[nodiscard]] KY_EXPORT bool writeEvent(KyPDataBase *db, unsigned long source, unsigned long *destination,
                                        const Event &event, KyPDataBase::CategoriesType type);

} // namespace KyPDtm

#endif
