#include "kylineedit.h"
