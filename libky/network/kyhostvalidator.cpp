#include "kyhostvalidator.h"
