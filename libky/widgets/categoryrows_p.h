#ifndef CATEGORYROWS_P_H
#define CATEGORYROWS_P_H

#include "kycategories.h"

/** The categories of the device as a widget lists them, in text order. */
struct CategoryRows
{
    explicit CategoryRows(const KyCategories &categories);

    QStringList names;
    QList<int> ids; ///< as many
    /** False where the table was out of reach: there may be others, and no record may lose its categories
     * only because another application has been busy with the table. */
    bool areAll;

private:
    void readOneByOne(const KyCategories &categories);
};

#endif
