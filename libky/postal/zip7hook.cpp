#include "ydic.h"

int Zip7Hook(void)
{
    return 0;
}
