#include "kycolorselector.h"
