#include "kycolortable.h"
