#ifndef KYLINEEDIT_H
#define KYLINEEDIT_H

#include "kyexport.h"

#endif
