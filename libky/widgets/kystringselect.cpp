#include "kystringselect.h"
