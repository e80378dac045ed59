#include "pdtm.h"
