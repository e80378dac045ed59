#include "kyipvalidator.h"
