#include "record.h"

#include <array>
#include <cstring>

namespace pdtm {

namespace {

constexpr int MaximumLengthBytes = 5;

/** Takes a LEB128 number off the front. */
bool takeLength(Bytes &rest, uint64_t &length)
{
    length = 0;
    for (int i = 0; i < MaximumLengthBytes && !rest.empty(); ++i) {
        const uint8_t byte = rest.front();
        rest = rest.subspan(1);
        length |= uint64_t(byte & 0x7F) << (7 * i);
        if (byte < 0x80)
            return true;
    }
    return false;
}

/** Storage id and length, as they stand before the bytes of an item. */
struct ItemHead
{
    std::array<char, 1 + MaximumLengthBytes> bytes{};
    size_t size = 0;

    ItemHead(StorageId storage, size_t length)
    {
        bytes[size++] = static_cast<char>(storage);
        for (; length >= 0x80; length >>= 7)
            bytes[size++] = static_cast<char>(0x80 | (length & 0x7F));
        bytes[size++] = static_cast<char>(length);
    }
};

} // namespace

bool RecordView::takeItem(Bytes &rest, StorageId &storage, Bytes &value)
{
    if (rest.size() < 2 || rest.front() <= storage)
        return false;
    Bytes behind = rest.subspan(1);
    uint64_t length = 0;
    if (!takeLength(behind, length) || length == 0 || length > behind.size())
        return false;
    storage = rest.front();
    value = behind.first(static_cast<size_t>(length));
    rest = behind.subspan(static_cast<size_t>(length));
    return true;
}

Bytes RecordView::item(StorageId storage) const
{
    Bytes rest = m_packed;
    StorageId found = 0;
    Bytes value;
    while (takeItem(rest, found, value) && found <= storage) {
        if (found == storage)
            return value;
    }
    return {};
}

uint8_t RecordView::attribute() const
{
    const Bytes value = item(AttributeItem);
    return value.empty() ? uint8_t(0) : value.front();
}

bool RecordView::isValid() const
{
    Bytes rest = m_packed;
    StorageId storage = 0;
    Bytes value;
    while (!rest.empty()) {
        if (!takeItem(rest, storage, value))
            return false;
    }
    return true;
}

bool setItem(std::string &packed, StorageId storage, Bytes value)
{
    const auto *start = reinterpret_cast<const uint8_t *>(packed.data());
    size_t before = 0, behind = 0, end = 0;
    RecordView(Bytes(start, packed.size())).forEachItem([&](StorageId found, Bytes bytes) {
        end = static_cast<size_t>(bytes.data() + bytes.size() - start);
        before = found < storage ? end : before;
        behind = found <= storage ? end : behind;
        return true;
    });
    const ItemHead head(storage, value.size());
    const size_t size = value.empty() ? 0 : head.size + value.size();
    if (value.size() > LargestRecord || end - (behind - before) + size > LargestRecord)
        return false;
    packed.resize(end); // whatever stands behind the last whole item is unreadable
    packed.replace(before, behind - before, size, '\0');
    if (size > 0) {
        std::memcpy(&packed[before], head.bytes.data(), head.size);
        std::memcpy(&packed[before + head.size], value.data(), value.size());
    }
    return true;
}

} // namespace pdtm
