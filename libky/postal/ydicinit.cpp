#include "ydicsearch.h"

#include "ydicbytes_p.h"

#include <string.h>

namespace {

constexpr uint32_t BytesRead = 256; // the header, the one-byte text codes, and a few of what follows

/** A field whose highest byte isn't looked at. */
uint32_t low24(const uint8_t *field)
{
    return ydic_u24(field + 1);
}

void unpack(const uint8_t *header, ydic_address_fields *fields)
{
    fields->baseA = low24(header + YDIC_AT_BASE_A);
    fields->baseASize = low24(header + YDIC_AT_BASE_A + 4);
    fields->baseB = low24(header + YDIC_AT_BASE_B);
    fields->baseBSize = low24(header + YDIC_AT_BASE_B + 4);
    fields->index1 = low24(header + YDIC_AT_ADDRESS_INDEX1);
    fields->index1Size = low24(header + YDIC_AT_ADDRESS_INDEX1 + 4);
    fields->index2 = low24(header + YDIC_AT_ADDRESS_INDEX2);
    fields->index2Size = low24(header + YDIC_AT_ADDRESS_INDEX2 + 4);
    fields->secondStart = ydic_u16(header + YDIC_AT_SECOND_START);
    fields->secondEnd = ydic_u16(header + YDIC_AT_SECOND_END);
}

} // namespace

int InitDicData(ydic_search *search, ydic_info *info)
{
    static_assert(BytesRead >= uint32_t(YDIC_HEADER_LENGTH) + YDIC_ASK1JI_LENGTH);
    static_assert(BytesRead <= YDIC_READ_LENGTH);
    const int result = ReadDic(0, BytesRead, search->readBuf, search->fileSel, info);
    if (result < 0)
        return result;
    const auto *bytes = reinterpret_cast<const uint8_t *>(search->readBuf);
    unpack(bytes, &search->fields);
    memcpy(search->ask1ji, bytes + YDIC_HEADER_LENGTH, YDIC_ASK1JI_LENGTH);
    return 0;
}
