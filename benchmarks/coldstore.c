/* coldstore BOX INDEX: opens a box, goes to the first card of an index and reads its name. */
#include "pdtm.h"

#include <string.h>

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    DtmSetLanguage("ja");
    const uint32_t box = _BoxOpenRwMode(argv[1], 0);
    uint16_t place = 0;
    CardItemKey key = {0, {'F', 'U', 'L', 'L'}};
    char name[256];
    uint32_t size = sizeof name;
    if (!box || _NextIndexNo(argv[2], 0x40, 0, 0, &place) != PdtmOk ||
        _IndexNoToCardID(argv[2], place, &key.card) != PdtmOk || _CardRead(box, &key, name, &size) != PdtmOk)
        return 1;
    return _BoxClose(box) == PdtmOk && size > 0 ? 0 : 1;
}
