#ifndef MANYCONTACTS_H
#define MANYCONTACTS_H

#include "book.h"

class CategoryTable;

/** As many invented contacts as wanted, which have the names, firms and categories of the sample file in ever
 * new mixtures. */
[[nodiscard]] QList<Card> manyContacts(int count, CategoryTable &table);

#endif
