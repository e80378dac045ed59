// A sort expression from outside, and the key of a card that is as hostile.
#include "everytype.h"
#include "fuzzsupport.h"
#include "sortkey.h"

#include <algorithm>

using namespace pdtm;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const Schema schema = everyType();
    const auto expression = SortExpression::parse({data, size});
    if (!expression)
        return 0;
    std::string written;
    for (const SortKey &key : expression->keys())
        for (const uint8_t byte : key.bytes())
            written += static_cast<char>(byte);
    require(written.size() <= size &&
            std::equal(written.begin(), written.end(), reinterpret_cast<const char *>(data)));

    const RecordView hostile({data + written.size(), size - written.size()});
    const SortKeyMaker keys(*expression, schema, "ja");
    const std::string key = keys.make(hostile);
    require(key == keys.make(hostile));
    return 0;
}
