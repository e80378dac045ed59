#include "categoryrows_p.h"
#include <utility>

CategoryRows::CategoryRows(const KyCategories &categories)
    : names(categories.labels(false)), areAll(categories.isReachable())
{
    ids = categories.ids(names);
    areAll = areAll && categories.isReachable();
    if (ids.size() != names.size())
        readOneByOne(categories);
}

/** Another application has removed a category since its name was read, or keeps the table: leaves out what
 * has no id, so that names and ids stay together. */
void CategoryRows::readOneByOne(const KyCategories &categories)
{
    ids.clear();
    for (const QString &name : std::exchange(names, {})) {
        const int id = categories.id(name);
        areAll = areAll && categories.isReachable();
        if (!id)
            continue;
        names.append(name);
        ids.append(id);
    }
}
