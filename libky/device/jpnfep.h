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
     * (QPEApplication::qwsGetFepIF()). The messages on "QPE/TaskBar" are `inputFepOnReq` or `inputFepOffReq`,
     * where there is something to switch, and `inputFepModeChangedReq()` with the mode as an int.
     * @param mode a number of the input method's own
     */
    static void setInputMode(int mode, bool on);
    static void showInputMethod();
    static void hideInputMethod();
    /**
     * Chooses the input method of that name, such as "Keyboard": the message `changeInputMethod()` on
     * "QPE/TaskBar" with the name as a `const char *`, which is in 32 bits the number of its bytes in UTF-8
     * and one more, the bytes, and a zero byte.
     */
    static void changeInputMethod(const QString &name);
    /** showInputMethod() on a device that is written on (KyMisc::defaultInputDevice() is 2). */
    static void autoShowInputMethod();
    /** hideInputMethod() on every device. */
    static void autoHideInputMethod();
    /** changeInputMethod() on a device that is written on. */
    static void autoChangeInputMethod(const QString &name);
};

#endif
