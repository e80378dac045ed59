#ifndef KYDLGWAIT_H
#define KYDLGWAIT_H

#include "kyexport.h"

#endif
