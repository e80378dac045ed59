// The file of an index: as it comes, and with its checksums mended, so that what stands behind them is
// reached.
#include "indexfile.h"
#include "checksum.h"
#include "fuzzsupport.h"
#include "indexorder.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace pdtm;

namespace {

constexpr size_t HeadSize = 24, TailSize = 24, OrderHeaderSize = 40;
using File = std::vector<uint8_t>;

template <typename T> T numberAt(const File &file, size_t offset)
{
    T number;
    std::memcpy(&number, &file[offset], sizeof number);
    return number;
}

void setChecksum(File &file, size_t offset, uint64_t checksum)
{
    std::memcpy(&file[offset], &checksum, sizeof checksum);
}

void mendOrder(File &file, size_t offset)
{
    if (offset + OrderHeaderSize > file.size())
        return;
    setChecksum(file, offset + 8, checksumOf(Bytes(file).subspan(offset, 8)));
    const size_t count = numberAt<uint32_t>(file, offset + 16),
                 keyBytes = numberAt<uint32_t>(file, offset + 20);
    const size_t cards = offset + OrderHeaderSize, attributes = cards + 2 * count, ends = attributes + count;
    if (count > file.size() || ends + 4 * count + keyBytes > file.size())
        return;
    Checksum order, keys;
    order.add(file.data() + offset + 16, 8);
    order.add(file.data() + cards, 2 * count);
    order.add(file.data() + attributes, count);
    keys.add(file.data() + ends, 4 * count);
    keys.add(file.data() + ends + 4 * count, keyBytes);
    setChecksum(file, offset + 24, order.result());
    setChecksum(file, offset + 32, keys.result());
}

void mend(File &file)
{
    if (file.size() < HeadSize + TailSize)
        return;
    const size_t length = numberAt<uint32_t>(file, 8);
    if (HeadSize + length <= file.size()) {
        setChecksum(file, 16, checksumOf(Bytes(file).subspan(HeadSize, length)));
        mendOrder(file, (HeadSize + length + 7) / 8 * 8);
    }
    const size_t tail = file.size() - TailSize, tailLength = numberAt<uint32_t>(file, tail + 8);
    if (tailLength <= tail)
        setChecksum(file, tail, checksumOf(Bytes(file).subspan(tail - tailLength, tailLength)));
}

/** Reads all that there is to be read, as an index does when it is loaded. */
void read(const File &file)
{
    static const int descriptor = memfd_create("index", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    require(ftruncate(descriptor, 0) == 0);
    require(pwrite(descriptor, file.data(), file.size(), 0) == static_cast<ssize_t>(file.size()));
    (void)checkIndexFile(path);
    IndexFileReader reader;
    if (reader.open(path) != PdtmOk)
        return;
    (void)reader.definition().box();
    (void)reader.counter();
    StoredOrder stored;
    StoredKeys keys;
    IndexOrder order;
    if (!reader.readOrder(stored) || !order.assign(stored.cards, stored.attributes))
        return;
    if (!reader.readKeys(stored, keys) || !order.setKeys(stored.cards, keys.ends, keys.bytes))
        return;
    size_t bytes = 0;
    for (const CardId card : order.cards())
        bytes += order.keyOf(card).size();
    require(bytes == keys.bytes.size());
    if (!order.contains(1))
        order.insert(1, 0, "key");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    File file(data, data + size);
    read(file);
    mend(file);
    read(file);
    return 0;
}
