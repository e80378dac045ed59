#ifndef KYSTRINGSELECT_H
#define KYSTRINGSELECT_H

#include "kyexport.h"

#endif
