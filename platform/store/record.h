#ifndef PDTM_RECORD_H
#define PDTM_RECORD_H

#include "schema.h"

#include <span>
#include <string>

namespace pdtm {

using Bytes = std::span<const uint8_t>;

/** Bytes that are held as text. */
[[nodiscard]] inline Bytes bytesOf(const std::string &text)
{
    return {reinterpret_cast<const uint8_t *>(text.data()), text.size()};
}

/**
 * A card as it stands in the box: its written items, packed into one value.
 *
 * Layout: for each item that has a length other than 0, by rising storage id: the storage id (one byte), the
 * length (LEB128, at most five bytes), the bytes. The view doesn't own the memory. Reading is bounds-checked:
 * a truncated or contradictory value ends at the last whole item.
 */
class RecordView
{
public:
    RecordView() = default;
    explicit RecordView(Bytes packed) : m_packed(packed) {}

    /** Bytes of an item; empty when it was never written. */
    [[nodiscard]] Bytes item(StorageId storage) const;
    /** The attribute byte, 0 when there is none. */
    [[nodiscard]] uint8_t attribute() const;
    [[nodiscard]] Bytes packed() const { return m_packed; }
    /** True when the whole value parses. */
    [[nodiscard]] bool isValid() const;

    /** Calls visit(StorageId, Bytes) for each item, in order, until it returns false. */
    template <typename Visit> void forEachItem(Visit visit) const
    {
        Bytes rest = m_packed;
        StorageId storage = 0;
        Bytes value;
        while (takeItem(rest, storage, value) && visit(storage, value)) {
        }
    }

private:
    static bool takeItem(Bytes &rest, StorageId &storage, Bytes &value);
    Bytes m_packed;
};

/** Longest packed record that a box takes: a row of SQLite holds a little more. */
constexpr size_t LargestRecord = (64 << 20) - 64;

/** Replaces or adds an item in a packed record or, with an empty value, takes it out. False when the record
 * would be longer than LargestRecord; it is as it was then. @param value no part of @p packed */
[[nodiscard]] bool setItem(std::string &packed, StorageId storage, Bytes value);

} // namespace pdtm

#endif
