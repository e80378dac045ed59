#ifndef KYHOSTVALIDATOR_H
#define KYHOSTVALIDATOR_H

#include "kyexport.h"

#endif
