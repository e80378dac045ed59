#include "ydicaddress_p.h"
#include "ydicbytes_p.h"
#include "ydictables_p.h"

int ydic_variant(const char *character, uint16_t *row, uint16_t *value)
{
    int low = 0;
    int high = YDIC_VARIANT_ROWS;
    while (low < high) {
        const int middle = (low + high) / 2;
        const uint8_t *found = Yuragi_dat[middle];
        const int difference = stncmp(character, reinterpret_cast<const char *>(found), 2);
        if (difference == 0) {
            *row = static_cast<uint16_t>(middle);
            *value = static_cast<uint16_t>(found[2] | found[3] << 8);
            return 1;
        }
        if (difference > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return 0;
}
