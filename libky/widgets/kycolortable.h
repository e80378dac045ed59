#ifndef KYCOLORTABLE_H
#define KYCOLORTABLE_H

#include "kyexport.h"

#endif
