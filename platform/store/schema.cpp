#include "schema.h"

#include <algorithm>

namespace pdtm {

namespace {

constexpr int ImplicitItems = 4;

constexpr std::array<uint8_t, 12> KnownTypes = {ItemTextSjis, ItemTime,      ItemBit,      ItemUshort,
                                                ItemBinary,   ItemUshortAlt, ItemUchar,    ItemCategory,
                                                ItemColor,    ItemTextSjis2, ItemTextUtf8, ItemUlong};

} // namespace

Schema::Schema()
    : m_items{{{'A', 'T', 'T', 'R'}, ItemUchar, KindUchar, "Attribute", AttributeItem},
              {{'C', 'T', 'T', 'M'}, ItemTime, KindTime, "Created", CreationItem},
              {{'M', 'D', 'T', 'M'}, ItemTime, KindTime, "Modified", ModifiedItem},
              {{'S', 'Y', 'I', 'D'}, ItemUlong, KindUlong, "Sync id", SyncIdItem}}
{
}

bool Schema::add(const ItemDescription &item)
{
    if (declaredCount() >= MaximumDeclaredItems || !isKnownItemType(item.type))
        return false;
    const auto declared = m_items.insert(m_items.end() - ImplicitItems, item);
    declared->storage = static_cast<StorageId>(declaredCount());
    m_hasPlainTexts &= !isTextType(item.type) || item.type == ItemTextUtf8;
    return true;
}

const ItemDescription *Schema::find(const char *code) const
{
    return findByCode(std::span(m_items), code);
}

int Schema::number(const char *code) const
{
    const ItemDescription *item = find(code);
    return item ? static_cast<int>(item - m_items.data()) + 1 : 0;
}

const ItemDescription *Schema::ofStorage(StorageId storage) const
{
    if (storage >= AttributeItem)
        return &m_items[m_items.size() - ImplicitItems + (storage - AttributeItem)];
    if (storage == 0 || storage > declaredCount())
        return nullptr;
    return &m_items[storage - 1u];
}

bool isKnownItemType(uint8_t type)
{
    return std::ranges::find(KnownTypes, type) != KnownTypes.end();
}

bool isTextType(uint8_t type)
{
    return type == ItemTextSjis || type == ItemTextSjis2 || type == ItemTextUtf8;
}

bool sameCodeFolded(const char *one, const char *other)
{
    return lowerAscii(one[0]) == lowerAscii(other[0]) && std::memcmp(one + 1, other + 1, 3) == 0;
}

} // namespace pdtm
