#include "kycolorselectorpopup.h"
