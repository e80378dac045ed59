#include "currentdpi.h"
#include <QtGlobal>

int qt_currentDpi()
{
    constexpr int lowest = 72;
    constexpr int highest = 8 * lowest;
    const int dpi = qEnvironmentVariableIntValue("KY_DPI");
    return dpi >= lowest && dpi <= highest ? dpi : lowest;
}
