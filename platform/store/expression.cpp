#include "expression.h"

#include "textencoding.h"

#include <algorithm>
#include <string_view>

namespace pdtm {

namespace {

constexpr uint8_t Mark = 0xFE;
constexpr uint8_t TextAscending = 0x80;
constexpr uint8_t PlainDescending = 0x83;
constexpr uint8_t DirectionBit = 1;
constexpr uint8_t PlainBit = 2;
constexpr ItemCode AnyItem = {' ', ' ', ' ', ' '};

enum Operator : uint8_t {
    JoinConditions = 0x84,
    JoinTerms = 0x86,
    Equal = 0x90,
    Contains = 0x92,
    WholeText = 0x95,
    AtOrAfter = 0x98,
    AtOrBefore = 0x9A,
    NotEqual = 0x9B
};

enum class ValueClass : uint8_t { Text, Time, Number, Category };

struct ValueForm
{
    uint8_t type;
    ValueClass valueClass;
    uint8_t width; ///< bytes in an expression; 0: up to a 0 byte
};
constexpr std::array<ValueForm, 12> Forms = {{{ItemTextSjis, ValueClass::Text, 0},
                                              {ItemTextSjis2, ValueClass::Text, 0},
                                              {ItemTextUtf8, ValueClass::Text, 0},
                                              {ItemTime, ValueClass::Time, 5},
                                              {ItemBit, ValueClass::Number, 1},
                                              {ItemUchar, ValueClass::Number, 1},
                                              {ItemUshort, ValueClass::Number, 2},
                                              {ItemUshortAlt, ValueClass::Number, 2},
                                              {ItemBinary, ValueClass::Number, 4},
                                              {ItemColor, ValueClass::Number, 4},
                                              {ItemUlong, ValueClass::Number, 4},
                                              {ItemCategory, ValueClass::Category, 1}}};

const ValueForm *formOf(uint8_t type)
{
    const auto form = std::ranges::find(Forms, type, &ValueForm::type);
    return form == Forms.end() ? nullptr : &*form;
}

/** 40 bits of a time, big-endian; nothing for another width. */
std::optional<uint64_t> timeNumber(Bytes bytes)
{
    if (bytes.size() != sizeof(PTimeValue))
        return std::nullopt;
    uint64_t number = 0;
    for (const uint8_t byte : bytes)
        number = number << 8 | byte;
    return number;
}

template <typename Unsigned> uint64_t nativeNumber(Bytes bytes)
{
    Unsigned number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

/** A number of one, two or four bytes in native order; nothing for another width. */
std::optional<uint64_t> plainNumber(Bytes bytes)
{
    switch (bytes.size()) {
    case 1:
        return bytes[0];
    case 2:
        return nativeNumber<uint16_t>(bytes);
    case 4:
        return nativeNumber<uint32_t>(bytes);
    default:
        return std::nullopt;
    }
}

using Condition = SearchExpression::Condition;

bool textEquals(const Condition &condition, std::string_view text)
{
    return condition.exact ? text == condition.text : condition.folded.equals(text);
}

bool textHolds(const Condition &condition, uint8_t type, Bytes stored)
{
    std::string buffer;
    const std::string_view text = asUtf8(type, stored, buffer);
    switch (condition.op) {
    case Equal:
        return textEquals(condition, text);
    case NotEqual:
        return !textEquals(condition, text);
    case Contains:
        return !condition.exact && condition.folded.isIn(text);
    case AtOrAfter:
        return !condition.exact && !text.empty() && text >= condition.text;
    case AtOrBefore:
        return !condition.exact && !text.empty() && text <= condition.text;
    default:
        return false;
    }
}

bool numberHolds(const Condition &condition, std::optional<uint64_t> stored)
{
    if (condition.op == NotEqual)
        return stored != condition.number;
    if (!stored)
        return false;
    switch (condition.op) {
    case Equal:
        return *stored == condition.number;
    case AtOrAfter:
        return !condition.exact && *stored >= condition.number;
    case AtOrBefore:
        return !condition.exact && *stored <= condition.number;
    default:
        return false;
    }
}

bool categoryHolds(const Condition &condition, Bytes list)
{
    const auto category = static_cast<uint8_t>(condition.number);
    const bool unfiled = category == PdtmUnfiledCategory;
    const bool contained = unfiled ? list.empty() : std::ranges::find(list, category) != list.end();
    const bool alone = contained && list.size() <= 1;
    switch (condition.op) {
    case Equal:
        return alone;
    case NotEqual:
        return !alone;
    case Contains:
        return !condition.exact && contained;
    default:
        return false;
    }
}

bool conditionHolds(const Condition &condition, uint8_t itemType, Bytes stored)
{
    const ValueForm *form = formOf(itemType);
    if (!form || form->valueClass != formOf(condition.type)->valueClass)
        return false;
    switch (form->valueClass) {
    case ValueClass::Text:
        return textHolds(condition, itemType, stored);
    case ValueClass::Time:
        return numberHolds(condition, timeNumber(stored));
    case ValueClass::Number:
        return numberHolds(condition, plainNumber(stored));
    case ValueClass::Category:
        return categoryHolds(condition, stored);
    }
    return false;
}

bool allHold(const std::vector<Condition> &conditions, uint8_t itemType, Bytes stored)
{
    return std::ranges::all_of(
        conditions, [&](const Condition &condition) { return conditionHolds(condition, itemType, stored); });
}

/** Takes bytes off the front of an expression, never beyond its end. */
class Reader
{
public:
    explicit Reader(Bytes bytes) : m_rest(bytes) {}
    [[nodiscard]] Bytes rest() const { return m_rest; }

    std::optional<Bytes> take(size_t count)
    {
        if (m_rest.size() < count)
            return std::nullopt;
        const Bytes taken = m_rest.first(count);
        m_rest = m_rest.subspan(count);
        return taken;
    }
    bool takeIf(uint8_t expected)
    {
        if (m_rest.empty() || m_rest.front() != expected)
            return false;
        m_rest = m_rest.subspan(1);
        return true;
    }
    bool takePair(uint8_t first, uint8_t second)
    {
        if (m_rest.size() < 2 || m_rest[0] != first || m_rest[1] != second)
            return false;
        m_rest = m_rest.subspan(2);
        return true;
    }
    std::optional<uint8_t> takeByte()
    {
        const auto taken = take(1);
        return taken ? std::optional(taken->front()) : std::nullopt;
    }
    std::optional<ItemCode> takeCode()
    {
        const auto taken = take(4);
        if (!taken)
            return std::nullopt;
        ItemCode code;
        std::memcpy(code.data(), taken->data(), code.size());
        return code;
    }
    /** The bytes before the next 0 byte, which is taken too. */
    std::optional<Bytes> takeText()
    {
        const auto end = std::ranges::find(m_rest, uint8_t{0});
        if (end == m_rest.end())
            return std::nullopt;
        const auto text = take(static_cast<size_t>(end - m_rest.begin()));
        take(1);
        return text;
    }

private:
    Bytes m_rest;
};

} // namespace

std::array<uint8_t, 6> SortKey::bytes() const
{
    std::array<uint8_t, 6> bytes{};
    std::memcpy(bytes.data(), code.data(), code.size());
    bytes[4] = Mark;
    bytes[5] =
        static_cast<uint8_t>(TextAscending | (textOrder ? 0 : PlainBit) | (descending ? DirectionBit : 0));
    return bytes;
}

std::optional<SortExpression> SortExpression::parse(Bytes bytes)
{
    SortExpression expression;
    Reader reader(bytes);
    while (!reader.rest().empty() && reader.rest().front() != 0) {
        const auto code = reader.takeCode();
        const bool marked = reader.takeIf(Mark);
        const auto op = reader.takeByte();
        if (!code || !marked || !op || *op < TextAscending || *op > PlainDescending)
            return std::nullopt;
        expression.m_keys.push_back({*code, (*op & PlainBit) == 0, (*op & DirectionBit) != 0});
    }
    return expression;
}

/** Reads an expression term by term. */
class SearchExpression::Parser
{
public:
    explicit Parser(Bytes bytes) : m_reader(bytes), m_length(bytes.size()) {}

    std::optional<std::vector<Term>> terms()
    {
        std::vector<Term> terms;
        if (m_reader.rest().empty() || m_reader.takeIf(0))
            return terms;
        do {
            auto next = term();
            if (!next)
                return std::nullopt;
            terms.push_back(std::move(*next));
        } while (m_reader.takePair(Mark, JoinTerms));
        if (!m_closedByText && !m_reader.takeIf(0))
            return std::nullopt;
        return terms;
    }
    [[nodiscard]] size_t consumed() const { return m_length - m_reader.rest().size(); }

private:
    std::optional<Term> term()
    {
        const auto code = m_reader.takeCode();
        if (!code)
            return std::nullopt;
        Term term{*code, {}};
        do {
            auto next = condition();
            if (!next)
                return std::nullopt;
            term.conditions.push_back(std::move(*next));
        } while (m_reader.takePair(Mark, JoinConditions));
        return term;
    }

    std::optional<Condition> condition()
    {
        Condition condition;
        if (!m_reader.takeIf(Mark) || !takeOperator(condition))
            return std::nullopt;
        const auto type = m_reader.takeByte();
        const ValueForm *form = type ? formOf(*type) : nullptr;
        if (!form)
            return std::nullopt;
        condition.type = form->type;
        const bool whole = form->width == 0 ? takeText(condition) : takeNumber(condition, *form);
        return whole ? std::optional(std::move(condition)) : std::nullopt;
    }

    /** A whole-text byte that no operator follows is itself one, which the store doesn't know. */
    bool takeOperator(Condition &condition)
    {
        auto op = m_reader.takeByte();
        condition.exact = op == WholeText && m_reader.takeIf(Mark);
        if (condition.exact)
            op = m_reader.takeByte();
        condition.op = op.value_or(0);
        return op.has_value();
    }

    bool takeText(Condition &condition)
    {
        const auto bytes = m_reader.takeText();
        if (!bytes)
            return false;
        std::string buffer;
        condition.text = asUtf8(condition.type, *bytes, buffer);
        condition.folded = FoldedText(condition.text);
        m_closedByText = true;
        return true;
    }

    bool takeNumber(Condition &condition, const ValueForm &form)
    {
        const auto bytes = m_reader.take(form.width);
        if (!bytes)
            return false;
        const auto number = form.valueClass == ValueClass::Time ? timeNumber(*bytes) : plainNumber(*bytes);
        condition.number = number.value_or(0);
        m_closedByText = false;
        return true;
    }

    Reader m_reader;
    size_t m_length;
    bool m_closedByText = false;
};

std::optional<SearchExpression> SearchExpression::parse(Bytes bytes)
{
    auto terms = Parser(bytes).terms();
    if (!terms)
        return std::nullopt;
    SearchExpression expression;
    expression.m_terms = std::move(*terms);
    return expression;
}

size_t SearchExpression::measure(const uint8_t *expression, size_t limit)
{
    Parser parser(Bytes(expression, limit));
    return parser.terms() ? parser.consumed() : 0;
}

bool SearchExpression::Term::isAnyText() const
{
    return code == AnyItem && std::ranges::all_of(conditions, [](const Condition &condition) {
               return isTextType(condition.type);
           });
}

bool SearchExpression::names(const char *code) const
{
    return std::ranges::any_of(m_terms,
                               [code](const Term &term) { return sameCodeFolded(term.code.data(), code); });
}

bool SearchExpression::matches(const Schema &schema, RecordView record) const
{
    return std::ranges::all_of(m_terms, [&](const Term &term) { return holds(term, schema, record); });
}

/** The least size of the packed record up to the end of an item for which a term on any text can hold;
 * nothing when it holds for none. The contained texts are looked for in the record as one run of bytes, which
 * is several times faster than from item to item; what is found may yet lie across items, or in one that is
 * no text. */
std::optional<size_t> SearchExpression::earliestEnd(const Term &term, const Schema &schema, RecordView record)
{
    size_t end = 0;
    if (!schema.hasPlainTexts())
        return end;
    const auto *packed = reinterpret_cast<const char *>(record.packed().data());
    const std::string_view bytes(packed, record.packed().size());
    for (const Condition &condition : term.conditions) {
        const size_t found = condition.op == Contains ? condition.folded.findIn(bytes) : 0;
        if (found == std::string_view::npos)
            return std::nullopt;
        end = std::max(end, condition.op == Contains ? found + condition.folded.size() : 0);
    }
    return end;
}

/** @param term as Term::isAnyText() tells */
bool SearchExpression::holdsForAny(const Term &term, const Schema &schema, RecordView record)
{
    const std::optional<size_t> end = earliestEnd(term, schema, record);
    if (!end)
        return false;
    bool found = false;
    record.forEachItem([&](StorageId storage, Bytes value) {
        const auto valueEnd = static_cast<size_t>(value.data() + value.size() - record.packed().data());
        const ItemDescription *item = valueEnd >= *end ? schema.ofStorage(storage) : nullptr;
        found = item && isTextType(item->type) && allHold(term.conditions, item->type, value);
        return !found;
    });
    return found;
}

bool SearchExpression::holds(const Term &term, const Schema &schema, RecordView record)
{
    if (term.isAnyText())
        return holdsForAny(term, schema, record);
    const ItemDescription *item = schema.find(term.code.data());
    return item && allHold(term.conditions, item->type, record.item(item->storage));
}

} // namespace pdtm
