#ifndef KYIPHOSTVALIDATOR_H
#define KYIPHOSTVALIDATOR_H

#include "kyexport.h"

#endif
