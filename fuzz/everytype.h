#ifndef EVERYTYPE_H
#define EVERYTYPE_H

#include "record.h"

/** A box description with one item of each type. */
inline pdtm::Schema everyType()
{
    pdtm::Schema schema;
    for (const uint8_t type : {ItemTextSjis, ItemTime, ItemBit, ItemUshort, ItemBinary, ItemUshortAlt,
                               ItemUchar, ItemCategory, ItemColor, ItemTextSjis2, ItemTextUtf8, ItemUlong})
        schema.add({{'I', 'T', 'M', static_cast<char>('A' + type)}, type, 0, {}, 0});
    return schema;
}

#endif
