#ifndef CONTACTFIELDS_H
#define CONTACTFIELDS_H

#include "addressfields.h"
#include <QMap>
#include <QString>
#include <QStringList>

/** A contact on its way into the address book. */
struct ContactFields
{
    QMap<int, QString> values; ///< By AddressField number; empty fields are left out.
    QStringList categories;    ///< Names, each once.
    QStringList warnings;      ///< What could not be taken over as it was, for the user.
    int line = 0;              ///< Where the card begins in its file.
};

#endif
