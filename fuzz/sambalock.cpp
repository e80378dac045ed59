// A lock file of the file server, behind two bytes for mask and value: what is found agrees with a plain look
// at the bytes.
#include "fuzzsupport.h"
#include "sambalock_p.h"

#include <QBuffer>

namespace {

constexpr size_t HeaderSize = 10, EntrySize = 20, ModeOffset = 8;

uint32_t littleEndian(const uint8_t *bytes, size_t count)
{
    uint32_t number = 0;
    for (size_t i = 0; i < count; ++i)
        number |= uint32_t{bytes[i]} << (8 * i);
    return number;
}

bool expected(const uint8_t *file, size_t size, uint8_t mask, uint8_t value, bool equal)
{
    if (size < HeaderSize)
        return false;
    const auto count = static_cast<int32_t>(littleEndian(file + 4, 4));
    const size_t nameLength = littleEndian(file + 8, 2);
    size_t at = HeaderSize + nameLength;
    for (int32_t i = 0; nameLength > 0 && i < count && at + EntrySize <= size; ++i, at += EntrySize) {
        if (((file[at + ModeOffset] & mask) == value) == equal)
            return true;
    }
    return false;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const uint8_t mask = data[0], value = data[1], *file = data + 2;
    QByteArray bytes(reinterpret_cast<const char *>(file), static_cast<qsizetype>(size - 2));
    for (const bool equal : {false, true}) {
        QBuffer lockFile(&bytes);
        require(lockFile.open(QIODevice::ReadOnly));
        require(hasSambaLockEntry(lockFile, static_cast<char>(mask), static_cast<char>(value), equal) ==
                expected(file, size - 2, mask, value, equal));
    }
    return 0;
}
