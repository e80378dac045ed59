#include "qlistvalidator.h"
