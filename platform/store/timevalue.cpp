#include "pdtm.h"

#include <array>
#include <cstddef>

/*
 * A PTimeValue is one number of 40 bits, big-endian, so that its bytes order as time does:
 * year 14, month 4, day 5, hour 5, minute 6, second 6.
 */

namespace {

struct Field
{
    int bits;
    int maximum;
};
constexpr std::array<Field, 6> Fields = {{{14, 9999}, {4, 15}, {5, 31}, {5, 31}, {6, 63}, {6, 63}}};
constexpr int ValueBytes = 5;

} // namespace

extern "C" PdtmStatus ppsettime(void *destination, int year, int month, int day, int hour, int minute,
                                int second)
{
    const std::array<int, 6> parts = {year, month, day, hour, minute, second};
    uint64_t value = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (parts[i] < 0 || parts[i] > Fields[i].maximum)
            return PdtmBadArgument;
        value = value << Fields[i].bits | static_cast<uint64_t>(parts[i]);
    }
    auto *bytes = static_cast<uint8_t *>(destination);
    if (!bytes)
        return PdtmBadArgument;
    for (int i = ValueBytes - 1; i >= 0; --i, value >>= 8)
        bytes[i] = static_cast<uint8_t>(value);
    return PdtmOk;
}

extern "C" PdtmStatus ppgettime(const void *source, int *year, int *month, int *day, int *hour, int *minute,
                                int *second, int /*reserved*/)
{
    const auto *bytes = static_cast<const uint8_t *>(source);
    if (!bytes)
        return PdtmBadArgument;
    uint64_t value = 0;
    for (int i = 0; i < ValueBytes; ++i)
        value = value << 8 | bytes[i];
    const std::array<int *, 6> parts = {year, month, day, hour, minute, second};
    for (size_t i = parts.size(); i-- > 0; value >>= Fields[i].bits)
        if (parts[i])
            *parts[i] = static_cast<int>(value & ((uint64_t{1} << Fields[i].bits) - 1));
    return PdtmOk;
}
