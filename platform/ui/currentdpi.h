#ifndef KY_CURRENTDPI_H
#define KY_CURRENTDPI_H

#include "kyexport.h"

/** Resolution of the screen in dots an inch, from which all sizes are scaled: the environment variable KY_DPI
 * when it is a number from 72 to 576, else 72. */
[[nodiscard]] KY_EXPORT int qt_currentDpi();

#endif
