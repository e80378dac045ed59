#ifndef KY_GLOBAL_H
#define KY_GLOBAL_H

#include "kyexport.h"
#include <QString>

/** Services of the platform around the running application. */
class KY_EXPORT Global
{
public:
    Global() = delete;

    /** Asks the task bar to show the current input method. */
    static void showInputMethod();
    /** Asks the task bar to hide the input method. */
    static void hideInputMethod();

    /**
     * Starts a program of the platform, which goes on when this one ends. No shell is involved.
     * @param program file name of a program in "bin" of QPEApplication::qpeDir(); nothing else is ever
     * started
     * @param argument passed as one argument, whatever it holds; none when null
     * @return false when there is no such program, when it can't be started, and for an argument with a zero
     * character
     */
    static bool execute(const QString &program, const QString &argument = QString());
};

#endif
