#ifndef FUZZSUPPORT_H
#define FUZZSUPPORT_H

#include "record.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

/** Ends the run, in every build, when something that must hold doesn't. */
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

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
