#include "kyiphostvalidator.h"
