#ifndef CONTACTNAMES_H
#define CONTACTNAMES_H

#include "book.h"

/** The two fields that follow from the others: the name as shown, and the one that the list is sorted by. */
namespace ContactNames {

/** Adds the full name and the full reading to @p changed when what they are made of is another text now, or
 * when the contact has none; a name that came otherwise with an import stays until then. @param original the
 * contact before the change, empty for a new one */
void completeNames(CardValues &changed, const CardValues &original);

} // namespace ContactNames

#endif
