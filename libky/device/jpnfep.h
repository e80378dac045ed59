#ifndef JPNFEP_H
#define JPNFEP_H

#include "kyexport.h"
#include <QString>

/** Requests to the Japanese input method (the front-end processor), which runs under the task bar. */
class KY_EXPORT JpnFep
{
public:
    JpnFep() = delete;

    /**
     * Switches the front-end processor on or off and sets its mode. Does nothing where there is none
     * (QPEApplication::qwsGetFepIF()).
     * @param mode a number of the input method's own
     */
    static void setInputMode(int mode, bool on);
    static void showInputMethod();
    static void hideInputMethod();
    /** Chooses the input method of that name, such as "Keyboard". */
    static void changeInputMethod(const QString &name);
    /** showInputMethod() on a device that is written on (KyMisc::defaultInputDevice() is 2). */
    static void autoShowInputMethod();
    /** hideInputMethod() on every device. */
    static void autoHideInputMethod();
    /** changeInputMethod() on a device that is written on. */
    static void autoChangeInputMethod(const QString &name);
};

#endif
