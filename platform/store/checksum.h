#ifndef PDTM_CHECKSUM_H
#define PDTM_CHECKSUM_H

#include "record.h"

namespace pdtm {

/**
 * A 64-bit checksum against accidental damage: four lanes of xor and multiplication over 8-byte words, so
 * that a megabyte takes about a tenth of a millisecond. Each step is a bijection of the lane, which makes
 * every change of a single word show.
 */
class Checksum
{
public:
    /** Adds a block. The blocks are padded to 32 bytes each, so the same blocks have to be added when
     * comparing. */
    void add(const void *data, size_t size);
    [[nodiscard]] uint64_t result() const;

private:
    void mix(const uint8_t *stripe);
    uint64_t m_lanes[4] = {0x9E3779B97F4A7C15, 0xC2B2AE3D27D4EB4F, 0x165667B19E3779F9, 0x27D4EB2F165667C5};
    uint64_t m_size = 0;
};

[[nodiscard]] uint64_t checksumOf(Bytes bytes);

} // namespace pdtm

#endif
