#ifndef KYIPVALIDATOR_H
#define KYIPVALIDATOR_H

#include "kyexport.h"

#endif
