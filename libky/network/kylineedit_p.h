#ifndef KYLINEEDIT_P_H
#define KYLINEEDIT_P_H

#include <QString>

struct KYLineEditPrivate
{
    QString padName;           ///< input method; null for none in particular, empty for the present one
    int padMode = 0;           ///< its mode
    bool padFlag = false;      ///< it is switched on, else off
    bool changeAtOnce = false; ///< the first focus takes padName
    bool numLockUsed = false;  ///< the number pad is in use for this edit
};

#endif
