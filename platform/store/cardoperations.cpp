// The operations on cards, of the C interface.
#include "boxregistry.h"
#include "guarded.h"

#include <algorithm>
#include <cstring>
#include <exception>

using namespace pdtm;

namespace {

const OpenHandle *find(uint32_t handle)
{
    return BoxRegistry::instance().find(handle);
}

/** Runs a change through a handle of mode 0. */
template <typename Work> PdtmStatus change(uint32_t handle, Work work)
{
    const OpenHandle *open = find(handle);
    if (!open)
        return PdtmBadArgument;
    if (open->mode != OpenMode::Hold)
        return PdtmReadOnly;
    const int depth = open->box->actionDepth();
    try {
        return work(*open->box);
    } catch (const std::exception &) { // only memory can run short
        open->box->abandonAction(depth, PdtmTooShort);
        return PdtmTooShort;
    }
}

/** Finds the item that a key names and its bytes on the card. */
PdtmStatus findItem(SqliteBox &box, const CardItemKey &key, const ItemDescription *&item, Bytes &value)
{
    item = box.item(key.code);
    if (!item)
        return PdtmNoSuchItem;
    RecordView record;
    const PdtmStatus status = box.readCard(key.card, record);
    value = record.item(item->storage);
    return status;
}

/** Runs a change of a category list: edit(list) gives whether it changed. */
template <typename Edit> PdtmStatus changeCategories(uint32_t handle, const CardItemKey *key, Edit edit)
{
    if (!key)
        return PdtmBadArgument;
    return change(handle, [&](SqliteBox &box) -> PdtmStatus {
        const ItemDescription *item = nullptr;
        Bytes value;
        if (const PdtmStatus status = findItem(box, *key, item, value); status != PdtmOk)
            return status;
        if (item->type != ItemCategory)
            return PdtmBadArgument;
        std::vector<uint8_t> list(value.begin(), value.end());
        return edit(list) ? box.writeItemQuietly(key->card, *item, list) : PdtmStatus(PdtmOk);
    });
}

PdtmStatus readItem(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size)
{
    const OpenHandle *open = find(handle);
    if (!open || !key || !size || (!buffer && *size > 0))
        return PdtmBadArgument;
    if (const PdtmStatus status = open->box->refresh(); status != PdtmOk)
        return status;
    const ItemDescription *item = nullptr;
    Bytes value;
    if (const PdtmStatus status = findItem(*open->box, *key, item, value); status != PdtmOk)
        return status;
    const bool fits = value.size() <= *size;
    if (buffer && fits && !value.empty())
        std::memcpy(buffer, value.data(), value.size());
    *size = static_cast<uint32_t>(value.size());
    return fits ? PdtmOk : PdtmTooShort;
}

} // namespace

PdtmStatus _CardCreate(uint32_t handle, uint16_t *card)
{
    if (!card)
        return PdtmBadArgument;
    return change(handle, [&](SqliteBox &box) { return box.createCard(*card); });
}

PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination)
{
    if (!destination)
        return PdtmBadArgument;
    return change(handle, [&](SqliteBox &box) { return box.copyCard(source, *destination); });
}

PdtmStatus _CardDelete(uint32_t handle, uint16_t card)
{
    return change(handle, [&](SqliteBox &box) { return box.deleteCard(card); });
}

PdtmStatus _CardAllDelete(uint32_t handle, uint8_t mask, uint8_t value, uint8_t)
{
    return change(handle, [&](SqliteBox &box) { return box.deleteCards(mask, value); });
}

PdtmStatus _CardRead(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size)
{
    return guarded([&] { return readItem(handle, key, buffer, size); });
}

PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size)
{
    if (!key || (!buffer && size > 0))
        return PdtmBadArgument;
    return change(handle, [&](SqliteBox &box) -> PdtmStatus {
        const ItemDescription *item = box.item(key->code);
        if (!item)
            return PdtmNoSuchItem;
        return box.writeItem(key->card, *item, {static_cast<const uint8_t *>(buffer), size});
    });
}

PdtmStatus _CardCategoryAppend(uint32_t handle, const CardItemKey *key, uint8_t category)
{
    return changeCategories(handle, key, [category](std::vector<uint8_t> &list) {
        if (category == PdtmUnfiledCategory) {
            const bool wasFiled = !list.empty();
            list.clear();
            return wasFiled;
        }
        const bool isNew = std::ranges::find(list, category) == list.end();
        if (isNew)
            list.push_back(category);
        return isNew;
    });
}

PdtmStatus _CardCategoryDelete(uint32_t handle, const CardItemKey *key, uint8_t category)
{
    return changeCategories(
        handle, key, [category](std::vector<uint8_t> &list) { return std::erase(list, category) > 0; });
}

PdtmStatus _ExpectNewCardID(uint32_t handle, uint16_t *card)
{
    const OpenHandle *open = find(handle);
    if (!open || !card)
        return PdtmBadArgument;
    return guarded([&] { return open->box->expectNewCard(*card); });
}

PdtmStatus DtmBeginAction(uint32_t handle)
{
    return change(handle, [](SqliteBox &box) { return box.beginAction(); });
}

PdtmStatus DtmEndAction(uint32_t handle)
{
    return change(handle, [](SqliteBox &box) { return box.endAction(); });
}

uint32_t DtmGetSyncId(uint32_t handle)
{
    const OpenHandle *open = find(handle);
    const bool isKnown = open && guarded([&] { return open->box->refresh(); }) == PdtmOk;
    return isKnown ? open->box->state().syncId : 0;
}

PdtmStatus DtmUpdateSyncId(uint32_t handle)
{
    return change(handle, [](SqliteBox &box) {
        box.advanceSyncId();
        return PdtmStatus(PdtmOk);
    });
}
