#include "kydlgwait.h"
