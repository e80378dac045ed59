// A packed record as it may stand in a damaged box.
#include "fuzzsupport.h"
#include "record.h"

#include <algorithm>

using namespace pdtm;

namespace {

bool same(Bytes one, Bytes other)
{
    return one.size() == other.size() &&
           (one.empty() || std::memcmp(one.data(), other.data(), one.size()) == 0);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const RecordView record({data, size});
    size_t total = 0;
    record.forEachItem([&](StorageId storage, Bytes value) {
        total += value.size();
        require(same(record.item(storage), value));
        return true;
    });
    require(total <= size);
    require(record.item(0).empty());

    const StorageId storage = size ? std::max<StorageId>(data[0], 1) : 1;
    std::string changed(reinterpret_cast<const char *>(data), size);
    require(setItem(changed, storage, {data, size}));
    const RecordView view({reinterpret_cast<const uint8_t *>(changed.data()), changed.size()});
    require(view.isValid());
    require(same(view.item(storage), {data, size}));
    return 0;
}
