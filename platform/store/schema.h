#ifndef PDTM_SCHEMA_H
#define PDTM_SCHEMA_H

#include "pdtm.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace pdtm {

using CardId = uint16_t;
using ItemCode = std::array<char, 4>;

/** Names an item inside a packed record. It never changes, unlike the item number of an implicit item, which
 * rises when a box gains items: declared items have 1 to 251 in the order of declaration, implicit ones the
 * fixed values below. */
using StorageId = uint8_t;
inline constexpr StorageId AttributeItem = 252; // ATTR
inline constexpr StorageId CreationItem = 253;  // CTTM
inline constexpr StorageId ModifiedItem = 254;  // MDTM
inline constexpr StorageId SyncIdItem = 255;    // SYID
inline constexpr int MaximumDeclaredItems = 251;

struct ItemDescription
{
    ItemCode code{};
    uint8_t type = 0;
    uint8_t kind = 0;
    std::string label; ///< UTF-8
    StorageId storage = 0;
};

/** The items of a box: the declared ones in their order, then the four implicit ones. */
class Schema
{
public:
    /** With the implicit items alone. */
    Schema();

    /** Appends a declared item and gives it its storage id.
     * @return false at MaximumDeclaredItems or for a type that is none */
    bool add(const ItemDescription &item);

    /** Declared and implicit items; item number n stands at n - 1. */
    [[nodiscard]] const std::vector<ItemDescription> &items() const { return m_items; }
    [[nodiscard]] int declaredCount() const { return static_cast<int>(m_items.size()) - 4; }

    /** The item of a code: the exact code first, then with the case of its first letter folded. Null when
     * there is none. */
    [[nodiscard]] const ItemDescription *find(const char *code) const;
    /** 1-based item number, 0 when unknown. */
    [[nodiscard]] int number(const char *code) const;
    /** The item of a storage id; null when there is none. */
    [[nodiscard]] const ItemDescription *ofStorage(StorageId storage) const;
    /** All texts stand in the records as UTF-8, as they are compared. */
    [[nodiscard]] bool hasPlainTexts() const { return m_hasPlainTexts; }

private:
    std::vector<ItemDescription> m_items;
    bool m_hasPlainTexts = true;
};

/** True for the item types that the store knows. */
[[nodiscard]] bool isKnownItemType(uint8_t type);
/** True for ItemTextSjis, ItemTextSjis2 and ItemTextUtf8. */
[[nodiscard]] bool isTextType(uint8_t type);

/** True when two four-byte codes differ at most in the case of their first letter. */
[[nodiscard]] bool sameCodeFolded(const char *one, const char *other);

/** The one rule by which codes are matched: the exact code first, then with the case of the first letter
 * folded.
 * @p Item has a `code` of four bytes. Null when there is none. */
template <typename Item> const Item *findByCode(std::span<const Item> items, const char *code)
{
    for (const Item &item : items)
        if (std::memcmp(&item.code, code, 4) == 0)
            return &item;
    for (const Item &item : items)
        if (sameCodeFolded(&item.code[0], code))
            return &item;
    return nullptr;
}

/** The letters A to Z in lower case; every other byte as it is. */
[[nodiscard]] constexpr char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

} // namespace pdtm

#endif
