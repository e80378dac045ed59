#include "checksum.h"

#include <bit>
#include <cstring>

namespace pdtm {

namespace {
constexpr size_t StripeSize = 32;
constexpr uint64_t Multiplier = 0x9FB21C651E98DF25;
} // namespace

void Checksum::mix(const uint8_t *stripe)
{
    for (size_t i = 0; i < 4; ++i) {
        uint64_t word;
        memcpy(&word, stripe + 8 * i, sizeof word);
        m_lanes[i] = std::rotl((m_lanes[i] ^ word) * Multiplier, 29);
    }
}

void Checksum::add(const void *data, size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    m_size += size;
    for (; size >= StripeSize; size -= StripeSize, bytes += StripeSize) {
        mix(bytes);
    }
    if (size > 0) {
        uint8_t padded[StripeSize] = {};
        memcpy(padded, bytes, size);
        mix(padded);
    }
}

uint64_t Checksum::result() const
{
    uint64_t sum = m_size * Multiplier;
    for (const uint64_t lane : m_lanes) {
        sum = (std::rotl(sum, 31) ^ lane) * Multiplier;
    }
    return sum ^ (sum >> 32);
}

uint64_t checksumOf(Bytes bytes)
{
    Checksum checksum;
    checksum.add(bytes.data(), bytes.size());
    return checksum.result();
}

} // namespace pdtm
