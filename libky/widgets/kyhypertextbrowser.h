#ifndef KYHYPERTEXTBROWSER_H
#define KYHYPERTEXTBROWSER_H

#include "kyexport.h"

#endif
