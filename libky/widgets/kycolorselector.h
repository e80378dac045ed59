#ifndef KYCOLORSELECTOR_H
#define KYCOLORSELECTOR_H

#include "kyexport.h"

#endif
