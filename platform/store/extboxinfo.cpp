#include "boxfile.h"
#include "expression.h"

#include <cstdlib>
#include <new>

using namespace pdtm;

namespace {

/** What _PioNewExtBoxInfo() allocates: the description with the memory that it points into. */
struct OwnedBoxInfo : PioExtBoxInfo
{
    explicit OwnedBoxInfo(const Schema &described) : PioExtBoxInfo{}, schema(described)
    {
        itemArray.reserve(schema.items().size());
        for (const ItemDescription &item : schema.items())
            itemArray.push_back(describe(item));
        itemCount = static_cast<uint8_t>(itemArray.size());
        items = itemArray.data();
    }
    OwnedBoxInfo(const OwnedBoxInfo &) = delete;
    OwnedBoxInfo &operator=(const OwnedBoxInfo &) = delete;
    ~OwnedBoxInfo()
    {
        for (const PioExtItem &item : itemArray)
            std::free(item.property);
    }

    static PioExtItem describe(const ItemDescription &item)
    {
        PioExtItem described{};
        std::memcpy(described.code, item.code.data(), item.code.size());
        described.type = item.type;
        described.kind = item.kind;
        described.label = item.label.c_str();
        return described;
    }

    const Schema schema; ///< owns the labels
    std::vector<PioExtItem> itemArray;
};

const PioExtItem *itemOfNumber(const PioExtBoxInfo *info, uint32_t itemNumber)
{
    return info && itemNumber >= 1 && itemNumber <= info->itemCount ? &info->items[itemNumber - 1] : nullptr;
}

} // namespace

extern "C" PioExtBoxInfo *_PioNewExtBoxInfo(const char *path, uint32_t handle)
{
    const std::shared_ptr<BoxFile> box = BoxFile::ofHandle(handle);
    try {
        const bool isReadable = path && box && box->changeCounter() != 0; // brings the schema up to date
        return isReadable ? new OwnedBoxInfo(box->schema()) : nullptr;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

extern "C" void _PioDisposeExtBoxInfo(PioExtBoxInfo *info)
{
    delete static_cast<OwnedBoxInfo *>(info);
}

extern "C" uint32_t _PioExtGetItemNo(const PioExtBoxInfo *info, const char *code)
{
    if (!info || !code)
        return 0;
    const PioExtItem *item = findByCode(std::span<const PioExtItem>(info->items, info->itemCount), code);
    return item ? static_cast<uint32_t>(item - info->items) + 1 : 0;
}

extern "C" uint32_t _PioExtGetYomiPairItemNo(const PioExtBoxInfo * /*info*/, uint32_t /*itemNumber*/)
{
    return 0;
}

extern "C" int PioSetSortCond(void *destination, const PioExtBoxInfo *info, uint32_t itemNumber,
                              int ascending)
{
    const PioExtItem *item = itemOfNumber(info, itemNumber);
    if (!item || !destination)
        return 0;
    SortKey key;
    std::memcpy(key.code.data(), item->code, key.code.size());
    key.textOrder = isTextType(item->type);
    key.descending = !ascending;
    const auto bytes = key.bytes();
    std::memcpy(destination, bytes.data(), bytes.size());
    return static_cast<int>(bytes.size());
}
