// A search expression from outside: parsed, measured, and held against a card that is as hostile.
#include "everytype.h"
#include "expression.h"
#include "fuzzsupport.h"

using namespace pdtm;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const Schema schema = everyType();
    const auto expression = SearchExpression::parse({data, size});
    const size_t measured = SearchExpression::measure(data, size);
    require(measured <= size);
    if (!expression) {
        require(measured == 0);
        return 0;
    }
    require(size == 0 || SearchExpression::parse({data, measured}).has_value());
    const RecordView hostile({data + measured, size - measured});
    const bool matched = expression->matches(schema, hostile);
    require(matched || !expression->isEmpty());
    return 0;
}
