#ifndef QLISTVALIDATOR_H
#define QLISTVALIDATOR_H

#include "kyexport.h"

#endif
