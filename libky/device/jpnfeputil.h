#ifndef JPNFEPUTIL_H
#define JPNFEPUTIL_H

#include "kyexport.h"
#include <QString>

/** The operations of JpnFep on an object, each the same as there. */
class KY_EXPORT JpnFepUtil
{
public:
    JpnFepUtil();

    void setInputMode(int mode, bool on);
    void showInputMethod();
    void hideInputMethod();
    void changeInputMethod(const QString &name);
    void autoShowInputMethod();
    void autoHideInputMethod();
    void autoChangeInputMethod(const QString &name);
};

#endif
