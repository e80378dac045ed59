#ifndef PDTM_EXPRESSION_H
#define PDTM_EXPRESSION_H

#include "foldedtext.h"
#include "record.h"

#include <optional>
#include <string>
#include <vector>

namespace pdtm {

/** One key of a sort expression. */
struct SortKey
{
    ItemCode code{};
    bool textOrder = false;
    bool descending = false;

    /** The six bytes of the key. */
    [[nodiscard]] std::array<uint8_t, 6> bytes() const;
};

/**
 * A sort expression: six-byte keys (code, 0xFE, operator 0x80 to 0x83), then one 0 byte, which may be missing
 * at the end of the bytes. An empty expression has no key.
 */
class SortExpression
{
public:
    /** Nothing for a malformed expression; never reads beyond @p bytes. */
    static std::optional<SortExpression> parse(Bytes bytes);
    [[nodiscard]] const std::vector<SortKey> &keys() const { return m_keys; }

private:
    std::vector<SortKey> m_keys;
};

/**
 * A search expression: one or more terms, then one 0 byte; what follows that is not looked at. A term is the
 * item code and one condition or more: 0xFE, an operator, the type byte of the value, the value. Conditions
 * on the same item are joined by 0xFE 0x84, terms by 0xFE 0x86; all must hold. A text value ends in a 0 byte
 * of its own, which is the end of the expression when no join follows it.
 *
 * Operators:
 *
 * | Byte | on text | on times and numbers | on the category list |
 * |------|---------|----------------------|----------------------|
 * | 0x90 | equal, ASCII case ignored | equal | holds this category and no other |
 * | 0x9B | not 0x90 | not 0x90 | not 0x90 |
 * | 0x95 0xFE 0x90 | equal, every byte | as 0x90 | as 0x90 |
 * | 0x95 0xFE 0x9B | not the one above | as 0x9B | as 0x9B |
 * | 0x92 | contains, ASCII case ignored | never | contains the category |
 * | 0x98 | at or after, by bytes | at or after | never |
 * | 0x9A | at or before, by bytes | at or before | never |
 *
 * - Any other operator holds for no card.
 * - A term on an item that the box lacks, or with a value of another class than the item (text, time, number,
 *   category), holds for no card. Numbers of all widths compare by value, texts as UTF-8.
 * - An empty item is in no range and equals nothing except the empty text; 0x9B holds for it.
 * - The category 254 stands for the empty list.
 * - The code of four blanks with text values stands for any text item that isn't empty.
 *
 * Parsed once, bound to a schema when it is used.
 */
class SearchExpression
{
public:
    /** Nothing for a malformed expression; an empty one (no bytes, or a single 0) matches every card. */
    static std::optional<SearchExpression> parse(Bytes bytes);
    /** Length of the expression that begins at @p expression, terminator included, for the operations that
     * get no length. At most @p limit bytes are looked at; 0 for a malformed one. The byte behind a closing
     * text is looked at, since a join may stand there. */
    static size_t measure(const uint8_t *expression, size_t limit);

    [[nodiscard]] bool isEmpty() const { return m_terms.empty(); }
    /** A term is on the item of this code. */
    [[nodiscard]] bool names(const char *code) const;
    [[nodiscard]] bool matches(const Schema &schema, RecordView record) const;

    /** One comparison with a value. */
    struct Condition
    {
        uint8_t op = 0;
        bool exact = false; ///< 0xFE 0x95 stood before the operator
        uint8_t type = 0;
        uint64_t number = 0; ///< a value that is no text: its number, a time by its 40 bits
        std::string text;    ///< UTF-8
        FoldedText folded;
    };

private:
    struct Term
    {
        ItemCode code{};
        std::vector<Condition> conditions;
        [[nodiscard]] bool isAnyText() const;
    };
    class Parser;

    static std::optional<size_t> earliestEnd(const Term &term, const Schema &schema, RecordView record);
    static bool holdsForAny(const Term &term, const Schema &schema, RecordView record);
    static bool holds(const Term &term, const Schema &schema, RecordView record);
    std::vector<Term> m_terms;
};

} // namespace pdtm

#endif
