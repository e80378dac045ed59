#include "kyhypertextbrowser.h"
