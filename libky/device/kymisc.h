#ifndef KYMISC_H
#define KYMISC_H

#include "kyexport.h"
#include <QString>

/** Device services that belong to no class of their own. */
class KY_EXPORT KyMisc
{
public:
    /** The two-letter code of the device's language: the key "Language" of the settings file "locale", else
     * the environment variable LANG; "en" when that is not exactly two characters long. */
    [[nodiscard]] static QString getLanguage();
};

#endif
