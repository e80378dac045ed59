#ifndef KYCOLORSELECTORPOPUP_H
#define KYCOLORSELECTORPOPUP_H

#include "kyexport.h"

#endif
