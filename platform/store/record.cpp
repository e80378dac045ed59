#include "record.h"

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

void appendBytes(std::string &packed, Bytes bytes)
{
    packed.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

void appendItem(std::string &packed, StorageId storage, Bytes value)
{
    packed.push_back(static_cast<char>(storage));
    size_t length = value.size();
    for (; length >= 0x80; length >>= 7)
        packed.push_back(static_cast<char>(0x80 | (length & 0x7F)));
    packed.push_back(static_cast<char>(length));
    appendBytes(packed, value);
}

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

std::string withItem(RecordView record, StorageId storage, Bytes value)
{
    // What stands before and behind the place is copied as it is.
    const uint8_t *start = record.packed().data();
    size_t before = 0, behind = 0, end = 0;
    record.forEachItem([&](StorageId found, Bytes bytes) {
        end = static_cast<size_t>(bytes.data() + bytes.size() - start);
        before = found < storage ? end : before;
        behind = found <= storage ? end : behind;
        return true;
    });
    std::string packed;
    packed.reserve(end + value.size() + 1 + MaximumLengthBytes);
    appendBytes(packed, record.packed().first(before));
    if (!value.empty())
        appendItem(packed, storage, value);
    appendBytes(packed, record.packed().subspan(behind, end - behind));
    return packed;
}

} // namespace pdtm
